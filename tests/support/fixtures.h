#pragma once

#include "backends.h"
#include "data/dbase.h"
#include "platform/scripted_ui.h"

#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

// Failures print texts as texts.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace testing_support {

// The number of the run-time failure the action raises, 0 when it raises none.
int errorOf(const std::function<void()>& action);

// Whether the one message shown so far is this box: its text, its style (buttons, icon and
// default button, as the code passes them) and its title. A box that asks before something
// destructive is only right whole: a changed default button is as wrong as a changed text.
::testing::AssertionResult saidOnly(const platform::ScriptedUi& ui, const QString& text,
                                    int style = platform::Msg::OKOnly,
                                    const QString& title = platform::kApplicationTitle);

// A test with the scripted seam installed and a folder of its own, which it may fill with a
// database as the installer ships it.
class SeamTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // A fresh database made by the installer, in the test's folder or on the test server.
    QString newDatabase(const QString& name = QStringLiteral("test.mdb"));
    QString path(const QString& name) const { return folder.filePath(name); }

    platform::ScriptedUi ui;
    QTemporaryDir folder;
    // Where the test's databases are made; OnEveryBackend sets it.
    Backend backend = Backend::Sqlite;
};

// A demo installation that the console in the tests' program folder remembers, with a settings
// file of its own; nothing is open yet. The first logon sets up the demo's administrator and
// company, as on a new installation; a test that ends without one leaves no first run pending
// for the next test.
class DemoTest : public SeamTest {
protected:
    void SetUp() override;
    void TearDown() override;

    QString demoDatabase() const { return demoLocation_; }

private:
    QString demoLocation_;
};

// A session: a fresh database opened on gDBase, with the given user as gUsers(0).
class SessionTest : public SeamTest {
protected:
    void SetUp() override;
    void TearDown() override;

    void execute(const QString& sql) { gDBase.Execute(sql); }
    // The one value of a query, such as a count.
    rt::Variant scalar(const QString& sql);
    qint32 count(const QString& table, const QString& where = QString());
    std::unique_ptr<RecSet> open(const QString& sql) { return gDBase.OpenRecordset(sql); }

    QString databasePath;
};

// Another program with a transaction open on the database file, in a process of its own so that
// its lock really is another process's. It holds the lock until it lets go.
class OtherProgram {
public:
    // Returns once `statements`, which begin the transaction, have run.
    OtherProgram(const QString& path, const char* statements);
    ~OtherProgram() { letGo(); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    // Ends the other program's transaction and waits for it to exit.
    void letGo();

private:
    int child_ = -1;
    int letGo_ = -1;  // a byte written to it tells the other program to let go
};

// What another program reading the file runs: its shared lock lets this process write but not
// commit.
inline constexpr const char* kReading = "BEGIN; SELECT count(*) FROM sqlite_master;";

// Runs SQL on the file directly, as another tool would (a trigger, say, that the dialect can't
// write).
void runOnFile(const QString& path, const char* sql);

// Every row of the query as text, one line a row.
QStringList rowsOf(engine::Database& db, const QString& sql);

// A session with the user's options open, as a logon leaves it.
class OptionsSessionTest : public SessionTest {
protected:
    void SetUp() override;
};

// Closes the database and clears the session state a logon fills.
void endSession();

// Adds a row to users and gives its id.
qint32 addEntry(const QString& name, qint16 type, const QString& logon = QStringLiteral("zq"),
                const QString& password = QStringLiteral("zq"), qint16 level = 1,
                qint16 edition = 0);

}  // namespace testing_support
