// The installer's tool: what it writes opens in the sqlite3 shell with every table and index, an
// import sums up what it brought, and every misuse or unreadable file gets a clear message, a
// non-zero exit and nothing at the target.

#include "platform/os.h"
#include "program_run.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

namespace {

// What the sqlite3 shell prints for the statements, one output line a row.
QStringList shell(const QString& database, const QString& sql) {
    const ProgramRun run = runProgram("sqlite3", {database, sql});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    return run.out.split('\n', Qt::SkipEmptyParts);
}

// Whether only the user can read or write the file, which may hold a password.
bool isPrivate(const QString& file) {
    return QFile::permissions(file) ==
           (QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
}

// The details of the first run waiting in a program folder, "<none>" for a key left out.
QStringList firstRun(const QString& folder) {
    QStringList values;
    for (const char* key : {"Name", "Logon", "Password", "Company", "CompanyPhone",
                            "CompanyAddress1", "CompanyAddress2", "CompanyAddress3"}) {
        QString value;
        platform::GetPrivateProfileString("Temp", key, "<none>", value, 128, folder + "/temp.tmp");
        values << value;
    }
    return values;
}

const QString kLegacyJet = QStringLiteral(LEGACY_JET);

QByteArray legacyFile(const QString& name) {
    QFile file(kLegacyJet + "/" + name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

const char* const kTablesOf =
    "SELECT name FROM sqlite_master WHERE type = 'table' AND name <> 'sqlite_sequence' "
    "ORDER BY name COLLATE NOCASE";

class LattimerDbTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return dir.filePath(name); }
    // The tool, with the user's configuration, and with it the system directory, in `dir`.
    ProgramRun run(const QStringList& arguments) const {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_CONFIG_HOME", path("config"));
        return runProgram(QStringLiteral(LATTIMER_DB), arguments, environment);
    }
    QTemporaryDir dir;
};

TEST_F(LattimerDbTest, CreateWritesEveryTableAndIndexWithTheShippedRows) {
    const QString db = path("new.mdb");
    const ProgramRun result = run({"create", db});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    const struct {
        const char* sql;
        const char* rows;  // joined by ','
    } cases[] = {
        {"PRAGMA integrity_check", "ok"},
        {kTablesOf,
         "acctudf,auto,autostep,balance,billcode,billsetup,budgets,busdev,charges,clients,clntudf,"
         "clntudf2,disburse,extaccess,files,funds,history,invoice,listflds,listmmbr,lists,listudf,"
         "modeling,options,produdf,projudf,reflib,RelDocs,RelPple,reminder,reports,reportsdef,"
         "rptcntls,rptcntlsdef,rts,sysinfo,trans,udfs,users,watch_branch"},
        {"SELECT count(*) FROM sqlite_master WHERE type = 'index' AND name LIKE 'ix_%'", "49"},
        {"SELECT dbversion, level10name FROM sysinfo", "6.5|Administrator"},
        {"SELECT id, Name, accLevel, Type FROM users", "1|New User|10|0"},
        {"SELECT count(*), sum(Descrpn <> '') FROM udfs", "60|7"},
        {"SELECT count(*) FROM reminder WHERE startd BETWEEN 36756 AND 36776", "5"},
        {"SELECT count(*) FROM reports UNION ALL SELECT count(*) FROM reportsdef "
         "UNION ALL SELECT count(*) FROM rptcntlsdef",
         "3,3,6"},
        {"SELECT count(*) FROM users WHERE Name = 'NEW USER'", "1"},  // without regard to case
    };
    for (const auto& c : cases) {
        EXPECT_EQ(shell(db, c.sql).join(','), c.rows) << c.sql;
    }
}

// An install leaves its first run waiting in the program folder; a demo's first run sent there
// takes its place and keeps its tarnell.new.
TEST_F(LattimerDbTest, InstallAndDemoLeaveTheFirstRunInTheProgramFolder) {
    const QString console = path("console");
    const ProgramRun install =
        run({"install", console, "--logon", "boss", "--name", "Pat Boss", "--company=O'Neil & Sons",
             "--address1", "1 Main St", "--address3", "Suite 4"});
    ASSERT_EQ(install.exitCode, 0) << install.err.toStdString();
    EXPECT_EQ(shell(console + "/lattimer.mdb", "SELECT Name FROM users"), QStringList{"New User"});
    EXPECT_EQ(firstRun(console), QStringList({"Pat Boss", "boss", "<none>", "O'Neil & Sons",
                                              "<none>", "1 Main St", "<none>", "Suite 4"}));
    EXPECT_EQ(shell(console + "/tarnell.new", kTablesOf), QStringList({"reports", "rptcntls"}));
    EXPECT_TRUE(isPrivate(console + "/temp.tmp"));

    const QString demo = path("demo");
    const ProgramRun result = run({"demo", demo, "--console-folder", console});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.out.contains("logon 'admin', password 'orvane'"));
    EXPECT_EQ(
        shell(demo + "/lattimer.mdb",
              "SELECT Type, count(*) FROM users GROUP BY Type;"
              "SELECT Name, fslevel FROM users WHERE id = 1; SELECT companyemail FROM sysinfo"),
        QStringList({"0|5", "1|2", "2|2", "3|2", "New User|3", "office@example.com"}));
    EXPECT_EQ(firstRun(console),
              QStringList({"Alice Admin", "admin", "orvane", "Lattimer Demo Company", "555-0100",
                           "12 Harbor Street", "Port Ellen", "<none>"}));
    EXPECT_EQ(shell(console + "/tarnell.new", kTablesOf), QStringList({"reports", "rptcntls"}));
    EXPECT_TRUE(isPrivate(console + "/temp.tmp"));
    EXPECT_TRUE(isPrivate(path("config/Lattimer/tarnell.ini")));
}

TEST_F(LattimerDbTest, ImportSumsUpItsTablesAndNeverAddsToATargetThatHoldsSome) {
    const QString target = path("office.mdb");
    const ProgramRun result = run({"import", kLegacyJet + "/testV2000.mdb", target});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.out.contains("  Table1: 2 rows\n  Table2: 0 rows\n"))
        << result.out.toStdString();
    EXPECT_TRUE(result.err.contains("importing Table2")) << result.err.toStdString();

    const ProgramRun again = run({"import", kLegacyJet + "/testV1997.mdb", target});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_TRUE(again.err.contains("already holds tables")) << again.err.toStdString();
    EXPECT_EQ(shell(target, "SELECT A FROM Table1"), QStringList({"abcdefg", "a"}));
}

TEST_F(LattimerDbTest, MisuseOrAnUnreadableFileGetsAClearMessage) {
    QFile(path("existing.mdb")).open(QIODevice::WriteOnly);
    QFile(path("plainfile")).open(QIODevice::WriteOnly);
    const char* const kLogonRule = "a logon has at most 8 characters and no quotes.";
    struct Misuse {
        QStringList arguments;
        int exitCode;
        const char* message;
    };
    std::vector<Misuse> cases = {
        {{}, 2, "a command is needed."},
        {{"create"}, 2, "a command and its target are needed."},
        {{"frobnicate", "x"}, 2, "unknown command 'frobnicate'."},
        {{"create", path("x.mdb"), "--force"}, 2, "unknown option --force for 'create'."},
        {{"install", path("i"), "--logon"}, 2, "the option --logon needs a value."},
        {{"create", path("existing.mdb")}, 1, "already exists; the installer never overwrites"},
        {{"create", path("no/such/folder/x.mdb")}, 1, "cannot create a database at"},
        {{"install", path("plainfile/sub"), "--logon", "boss"}, 1, "cannot write to the folder"},
        {{"install", path("i")}, 1, "the first user's logon is needed (--logon)."},
        {{"install", path("i"), "--logon", "toolongname"}, 1, kLogonRule},
        {{"install", path("i"), "--logon", "o'neil"}, 1, kLogonRule},
        {{"demo", path("plainfile/sub")}, 1, "cannot write to the folder"},
    };
    const QByteArray jet3 = legacyFile("testV1997.mdb"), jet4 = legacyFile("testV2000.mdb");
    QRandomGenerator generator(7);
    QByteArray noise(64 * 1024, '\0');
    for (char& byte : noise) {
        byte = char(generator.bounded(256));
    }
    QByteArray scrambled = jet3;  // a damaged page in the middle of a file whose header is sound
    for (qsizetype at = 2048 * 3; at < scrambled.size(); at += 97) {
        scrambled[at] = char(generator.bounded(256));
    }
    // A table's definition blanked: libmdb aborts on it, or, where fresh memory isn't zeroed
    // (under a sanitizer), goes round in circles; either way the file is told as damaged.
    const QByteArray blanked = QByteArray(jet3).replace(46 * 2048, 2048, QByteArray(2048, '\0'));
    const std::tuple<const char*, QByteArray, const char*> unreadable[] = {
        {"empty", QByteArray(), "is not a Jet database file"},
        {"noise", noise, "is not a Jet database file"},
        {"cut mid-page", jet4.left(100000), "is cut short"},
        {"cut at a page", jet3.left(64 * 1024), "is damaged"},
        {"cut after the catalog", jet4.left(40 * 4096), "damaged"},
        {"scrambled", scrambled, "damaged"},
        {"a table blanked", blanked, "damaged"},
    };
    for (const auto& [name, bytes, message] : unreadable) {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        cases.push_back({{"import", file.fileName(), path("x.mdb")}, 1, message});
    }
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const ProgramRun result = run(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_TRUE(result.err.startsWith("lattimer-db: ")) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(c.message)) << result.err.toStdString();
        EXPECT_FALSE(QFile::exists(path("x.mdb")));
    }
    EXPECT_FALSE(QDir(path("i")).exists("lattimer.mdb"));
}

}  // namespace
