#include "fixtures.h"

#include "data/dbase.h"
#include "data/session.h"
#include "installation.h"
#include "logon/command_line.h"
#include "platform/convert.h"
#include "platform/os.h"
#include "settings/settings_file.h"

#include <QFile>

namespace testing_support {

int errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const rt::Error& e) {
        return e.number();
    }
    return 0;
}

void SeamTest::SetUp() {
    ASSERT_TRUE(folder.isValid());
    platform::setUi(&ui);
}

void SeamTest::TearDown() {
    platform::setUi(nullptr);
}

QString SeamTest::path(const QString& name) const {
    return folder.filePath(name);
}

QString SeamTest::newDatabase(const QString& name) {
    const QString file = path(name);
    installer::createDatabase(file);
    return file;
}

void DemoTest::SetUp() {
    SeamTest::SetUp();
    gSystemDir = GetSystemDir();
    QFile::remove(platform::joinPath(gSystemDir, "tarnell.ini"));
    installer::createDemo(path("demo"), platform::programFolder());
}

void DemoTest::TearDown() {
    endSession();
    SetCommandLine(QString());
    SeamTest::TearDown();
}

QString DemoTest::demoDatabase() const {
    return platform::joinPath(path("demo"), installer::kDatabaseFile);
}

void SessionTest::SetUp() {
    SeamTest::SetUp();
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

void endSession() {
    gDBase.CloseDB();
    gDBase.theDb.reset();
    gUsers.erase();
    gUserCount = 0;
    gLogonTime = rt::Variant();
    gWatchdogOff = false;
}

void SessionTest::execute(const QString& sql) {
    gDBase.Execute(sql);
}

rt::Variant SessionTest::scalar(const QString& sql) {
    auto rs = gDBase.OpenRecordset(sql);
    return rs->Eof() ? rt::Variant::null() : rs->ColsWithNull(0);
}

qint32 SessionTest::count(const QString& table, const QString& where) {
    return rt::CLng(scalar("SELECT count(*) FROM " + table +
                           (where.isEmpty() ? QString() : " WHERE " + where)));
}

std::unique_ptr<RecSet> SessionTest::open(const QString& sql) {
    return gDBase.OpenRecordset(sql);
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
