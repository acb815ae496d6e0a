// The installer's tool: what it writes opens in the sqlite3 shell with every table and index,
// and every misuse gets a clear message and a non-zero exit.

#include "platform/os.h"
#include "schema.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {

struct ToolRun {
    int exitCode;
    QString out;
    QString err;
};

// What the sqlite3 shell prints for the statements, one output line a row.
QStringList shell(const QString& database, const QString& sql) {
    const QString sqlite3 = QStandardPaths::findExecutable("sqlite3");
    if (sqlite3.isEmpty()) {
        ADD_FAILURE() << "the sqlite3 shell is not installed";
        return {};
    }
    QProcess process;
    process.start(sqlite3, {database, sql});
    process.waitForFinished(30000);
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return QString::fromUtf8(process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
}

class LattimerDbTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return dir.filePath(name); }
    // The tool, with the user's configuration, and with it the system directory, in `dir`.
    ToolRun run(const QStringList& arguments) const {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_CONFIG_HOME", path("config"));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(LATTIMER_DB), arguments);
        process.waitForFinished(60000);
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }
    QTemporaryDir dir;
};

#ifdef Q_OS_UNIX
// The permission bits of a file in octal, "" when it is missing.
QString mode(const QString& file) {
    struct stat info {};
    const bool found = ::stat(QFile::encodeName(file).constData(), &info) == 0;
    return found ? QString::number(info.st_mode & 0777, 8) : QString();
}
#endif

TEST_F(LattimerDbTest, CreateWritesEveryTableAndIndexWithTheShippedRows) {
    const QString db = path("new.mdb");
    const ToolRun result = run({"create", db});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(shell(db, "PRAGMA integrity_check"), QStringList({"ok"}));

    QStringList tables;
    int indexes = 0;
    for (const installer::TableDef& table : installer::schema()) {
        tables << table.name;
        indexes += int(table.indexes.size());
    }
    tables.sort(Qt::CaseInsensitive);
    EXPECT_EQ(
        shell(db,
              "SELECT name FROM sqlite_master WHERE type = 'table' AND name <> 'sqlite_sequence' "
              "ORDER BY name COLLATE NOCASE"),
        tables);
    EXPECT_EQ(
        shell(db, "SELECT count(*) FROM sqlite_master WHERE type = 'index' AND name LIKE 'ix_%'"),
        QStringList({QString::number(indexes)}));
    for (const char* needed :
         {"users",    "extaccess",    "rts",     "sysinfo",  "options",    "udfs",
          "clntudf",  "clntudf2",     "projudf", "listudf",  "acctudf",    "produdf",
          "reminder", "watch_branch", "reports", "rptcntls", "reportsdef", "rptcntlsdef",
          "clients",  "files",        "invoice", "disburse"}) {
        EXPECT_TRUE(tables.contains(needed)) << needed;
    }
    EXPECT_EQ(shell(db, "SELECT dbversion, level10name FROM sysinfo"),
              QStringList({"6.5|Administrator"}));
    EXPECT_EQ(shell(db, "SELECT id, Name, accLevel, Type FROM users"),
              QStringList({"1|New User|10|0"}));
    EXPECT_EQ(shell(db, "SELECT count(*), sum(Descrpn <> '') FROM udfs"), QStringList({"60|7"}));
    EXPECT_EQ(shell(db, "SELECT count(*) FROM reminder WHERE startd BETWEEN 36756 AND 36776"),
              QStringList({"5"}));
    EXPECT_EQ(shell(db,
                    "SELECT (SELECT count(*) FROM reports), (SELECT count(*) FROM reportsdef), "
                    "(SELECT count(*) FROM rptcntlsdef)"),
              QStringList({"3|3|6"}));
    EXPECT_EQ(shell(db, "SELECT count(*) FROM users WHERE Name = 'NEW USER'"),
              QStringList({"1"}));  // no case
}

TEST_F(LattimerDbTest, InstallLaysOutTheProgramFolder) {
    const QString folder = path("suite");
    const ToolRun result =
        run({"install", folder, "--logon", "boss", "--name", "Pat Boss", "--company=O'Neil & Sons",
             "--address1", "1 Main St", "--address3", "Suite 4"});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(shell(QDir(folder).filePath("lattimer.mdb"), "SELECT Name FROM users"),
              QStringList({"New User"}));
    EXPECT_EQ(shell(QDir(folder).filePath("tarnell.new"),
                    "SELECT name FROM sqlite_master WHERE type = 'table' "
                    "AND name <> 'sqlite_sequence' ORDER BY name"),
              QStringList({"reports", "rptcntls"}));
    const QString temp = QDir(folder).filePath("temp.tmp");
    auto key = [&](const char* name) {
        QString value;
        platform::GetPrivateProfileString("Temp", name, "<none>", value, 128, temp);
        return value;
    };
    EXPECT_EQ(key("Logon"), "boss");
    EXPECT_EQ(key("Name"), "Pat Boss");
    EXPECT_EQ(key("Company"), "O'Neil & Sons");
    EXPECT_EQ(key("CompanyAddress1"), "1 Main St");
    EXPECT_EQ(key("CompanyAddress2"), "<none>");
    EXPECT_EQ(key("CompanyAddress3"), "Suite 4");
    EXPECT_EQ(key("Password"), "<none>");
#ifdef Q_OS_UNIX
    EXPECT_EQ(mode(temp), "600");  // it may hold the first user's password
#endif
}

TEST_F(LattimerDbTest, DemoHasTheSampleDirectoryAndAFirstRunPendingInTheConsoleFolder) {
    const QString folder = path("demo");
    const QString console = path("console");
    // An earlier demo's first run, still pending there, gives way; its tarnell.new is reused.
    ASSERT_EQ(run({"install", console, "--logon", "old", "--name", "Old Name"}).exitCode, 0);
    const ToolRun result = run({"demo", folder, "--console-folder", console});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.out.contains("logon 'admin', password 'orvane'"));
    const QString database = QDir(folder).filePath("lattimer.mdb");
    EXPECT_EQ(shell(database, "SELECT Type, count(*) FROM users GROUP BY Type"),
              QStringList({"0|5", "1|2", "2|2", "3|2"}));
    EXPECT_EQ(shell(database, "SELECT Name, fslevel FROM users WHERE id = 1"),
              QStringList({"New User|3"}));
    EXPECT_EQ(shell(database, "SELECT companyemail FROM sysinfo"),
              QStringList({"office@example.com"}));
    const QString temp = QDir(console).filePath("temp.tmp");
    QStringList keys;
    for (const char* key : {"Name", "Logon", "Password", "Company", "CompanyPhone",
                            "CompanyAddress1", "CompanyAddress2", "CompanyAddress3"}) {
        QString value;
        platform::GetPrivateProfileString("Temp", key, "<none>", value, 128, temp);
        keys << value;
    }
    EXPECT_EQ(keys, QStringList({"Alice Admin", "admin", "orvane", "Lattimer Demo Company",
                                 "555-0100", "12 Harbor Street", "Port Ellen", "<none>"}));
    EXPECT_EQ(shell(QDir(console).filePath("tarnell.new"),
                    "SELECT name FROM sqlite_master WHERE type = 'table' "
                    "AND name <> 'sqlite_sequence' ORDER BY name"),
              QStringList({"reports", "rptcntls"}));
#ifdef Q_OS_UNIX
    EXPECT_EQ(mode(temp), "600");
    EXPECT_EQ(mode(path("config/Lattimer/tarnell.ini")), "600");  // it may hold a saved password
#endif
}

TEST_F(LattimerDbTest, MisuseGetsAClearMessage) {
    QFile(path("existing.mdb")).open(QIODevice::WriteOnly);
    QFile(path("plainfile")).open(QIODevice::WriteOnly);
    const struct {
        QStringList arguments;
        int exitCode;
        const char* message;
    } cases[] = {
        {{}, 2, "a command is needed."},
        {{"create"}, 2, "a command and its target are needed."},
        {{"frobnicate", "x"}, 2, "unknown command 'frobnicate'."},
        {{"create", path("x.mdb"), "--force"}, 2, "unknown option --force for 'create'."},
        {{"install", path("i"), "--logon"}, 2, "the option --logon needs a value."},
        {{"create", path("existing.mdb")},
         1,
         "already exists; the installer never overwrites a database."},
        {{"create", path("no/such/folder/x.mdb")}, 1, "cannot create a database at"},
        {{"install", path("plainfile/sub"), "--logon", "boss"}, 1, "cannot write to the folder"},
        {{"install", path("i")}, 1, "the first user's logon is needed (--logon)."},
        {{"install", path("i"), "--logon", "toolongname"},
         1,
         "a logon has at most 8 characters and no quotes."},
        {{"install", path("i"), "--logon", "o'neil"},
         1,
         "a logon has at most 8 characters and no quotes."},
        {{"demo", path("plainfile/sub")}, 1, "cannot write to the folder"},
    };
    for (const auto& c : cases) {
        const ToolRun result = run(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode) << c.arguments.join(' ').toStdString();
        EXPECT_TRUE(result.err.startsWith("lattimer-db: ")) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(c.message)) << result.err.toStdString();
    }
    EXPECT_FALSE(QFile::exists(path("x.mdb")));
    EXPECT_FALSE(QDir(path("i")).exists("lattimer.mdb"));
}

}  // namespace
