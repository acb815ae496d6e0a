#include "fixtures.h"

#include "data/session.h"
#include "installation.h"
#include "logon/command_line.h"
#include "platform/convert.h"
#include "platform/os.h"
#include "settings/options.h"
#include "settings/settings_file.h"

#include <QFile>

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace testing_support {

int errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const rt::Error& e) {
        return e.number();
    }
    return 0;
}

namespace {

std::string boxText(const QString& text, int buttons, int icon, int defaultButton,
                    const QString& title) {
    return QStringLiteral("\"%1\" (title \"%2\", buttons %3, icon %4, default button %5)")
        .arg(text, title, QString::number(buttons), QString::number(icon),
             QString::number(defaultButton))
        .toStdString();
}

}  // namespace

::testing::AssertionResult saidOnly(const platform::ScriptedUi& ui, const QString& text, int style,
                                    const QString& title) {
    namespace Msg = platform::Msg;
    const std::string wanted = boxText(text, Msg::buttonsOf(style), Msg::iconOf(style),
                                       Msg::defaultButtonOf(style), title);
    std::string shown;
    for (const auto& m : ui.messages) {
        shown += "\n  " + boxText(m.text, m.buttons, m.icon, m.defaultButton, m.title);
    }
    if (ui.messages.size() == 1 && shown == "\n  " + wanted) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "wanted only " << wanted << "\nshown:" << (shown.empty() ? " nothing" : shown);
}

void SeamTest::SetUp() {
    if (lacksServer(backend)) {
        GTEST_SKIP() << kNoServer;
    }
    ASSERT_TRUE(folder.isValid());
    platform::setUi(&ui);
}

void SeamTest::TearDown() {
    platform::setUi(nullptr);
}

QString SeamTest::newDatabase(const QString& name) {
    const QString location = newDatabaseLocation(backend, folder, name.section('.', 0, 0));
    installer::createDatabase(location);
    return location;
}

void DemoTest::SetUp() {
    SeamTest::SetUp();
    if (IsSkipped()) {
        return;
    }
    engine::setLockWait(300);  // a held lock fails a command soon
    gSystemDir = GetSystemDir();
    QFile::remove(platform::joinPath(gSystemDir, "tarnell.ini"));
    const bool onServer = backend == Backend::Postgresql;
    demoLocation_ = onServer ? newDatabaseLocation(backend, folder, QStringLiteral("demo"))
                             : platform::joinPath(path("demo"), installer::kDatabaseFile);
    installer::createDemo(path("demo"), platform::programFolder(),
                          onServer ? demoLocation_ : QString());
}

void DemoTest::TearDown() {
    endSession();
    QFile::remove(platform::joinPath(platform::programFolder(), installer::kFirstRunFile));
    engine::setLockWait(3000);
    SetCommandLine(QString());
    SeamTest::TearDown();
}

void SessionTest::SetUp() {
    SeamTest::SetUp();
    if (IsSkipped()) {
        return;
    }
    databasePath = newDatabase();
    gDBase.theDb = engine::openDatabase(databasePath);
    gUsers.redim(1);
    gUsers(0).id = 1;
    gUsers(0).Name = QStringLiteral("New User");
    gUserCount = 1;
}

void SessionTest::TearDown() {
    endSession();
    SeamTest::TearDown();
}

OtherProgram::OtherProgram(const QString& path, const char* statements) {
    int ready[2], letGo[2];
    if (pipe(ready) != 0 || pipe(letGo) != 0) {
        ADD_FAILURE() << "no pipe to the other program";
        return;
    }
    child_ = fork();
    if (child_ == 0) {
        // Only the test's ends stay open, so that the child also lets go when the test dies.
        close(ready[0]);
        close(letGo[1]);
        sqlite3* other = nullptr;
        sqlite3_open(path.toUtf8().constData(), &other);
        sqlite3_exec(other, statements, nullptr, nullptr, nullptr);
        char byte = 'x';
        (void)!write(ready[1], &byte, 1);
        (void)!read(letGo[0], &byte, 1);
        sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
        _exit(0);
    }
    close(ready[1]);
    close(letGo[0]);
    letGo_ = letGo[1];
    char byte;
    EXPECT_EQ(read(ready[0], &byte, 1), 1) << "the other program never took its lock";
    close(ready[0]);
}

void OtherProgram::letGo() {
    if (child_ <= 0) {
        return;
    }
    (void)!write(letGo_, "x", 1);
    close(letGo_);
    pid_t ended = -1;
    while ((ended = waitpid(child_, nullptr, 0)) < 0 && errno == EINTR) {
    }
    EXPECT_EQ(ended, child_) << strerror(errno);
    child_ = -1;
}

void runOnFile(const QString& path, const char* sql) {
    sqlite3* db = nullptr;
    sqlite3_open(path.toUtf8().constData(), &db);
    char* message = nullptr;
    if (sqlite3_exec(db, sql, nullptr, nullptr, &message) != SQLITE_OK) {
        ADD_FAILURE() << message << " in " << sql;
        sqlite3_free(message);
    }
    sqlite3_close(db);
}

QStringList rowsOf(engine::Database& db, const QString& sql) {
    QStringList rows;
    for (auto rs = db.openRecordset(sql); !rs->eof(); rs->moveNext()) {
        QStringList values;
        for (int f = 0; f < rs->fieldCount(); ++f) {
            values << (rs->fieldValue(f).isNull() ? "Null" : rt::CStr(rs->fieldValue(f)));
        }
        rows << values.join('|');
    }
    return rows;
}

void OptionsSessionTest::SetUp() {
    SessionTest::SetUp();
    if (IsSkipped()) {
        return;
    }
    gOptionsRS = open(QStringLiteral("SELECT * FROM options"));
}

void endSession() {
    gOptionsRS.reset();
    gDBase.CloseDB();
    gDBase.theDb.reset();
    gUsers.erase();
    gUserCount = 0;
    gLogonTime = rt::Variant();
    gWatchdogOff = false;
}

rt::Variant SessionTest::scalar(const QString& sql) {
    auto rs = open(sql);
    return rs->Eof() ? rt::Variant::null() : rs->ColsWithNull(0);
}

qint32 SessionTest::count(const QString& table, const QString& where) {
    return rt::CLng(scalar("SELECT count(*) FROM " + table +
                           (where.isEmpty() ? QString() : " WHERE " + where)));
}

qint32 addEntry(const QString& name, qint16 type, const QString& logon, const QString& password,
                qint16 level, qint16 edition) {
    auto rs = gDBase.OpenRecordset(QStringLiteral("users"));
    rs->AddNew();
    const qint32 id = rt::CLng(rs->Cols("id"));
    rs->Cols("Name") = name;
    rs->Cols("Logon") = logon;
    rs->Cols("Password") = password;
    rs->Cols("accLevel") = level;
    rs->Cols("fslevel") = edition;
    rs->Cols("Type") = type;
    rs->Cols("num") = qint16(0);
    rs->Update();
    rs->CloseRS();
    return id;
}

}  // namespace testing_support
