#include "installation.h"

#include "platform/engine/engine.h"
#include "platform/os.h"
#include "platform/rt_error.h"
#include "schema.h"
#include "settings/settings_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace installer {

namespace {

QString sqlText(const QString& text) {
    return "'" + QString(text).replace("'", "''") + "'";
}

QString numberText(double value) {
    return QString::number(value, 'g', 17);
}

// The rights of a level as its text: a "1" grants, a "0" denies.
QString levelText(int level) {
    QString text(245, '1');
    for (int free : {9, 46, 47, 48, 57, 58, 59, 72, 73}) {
        text[free] = '0';
    }
    for (int p = 85; p < 245; ++p) {
        text[p] = '0';
    }
    if (level < 7) {
        text[8] = '0';  // Administration, and with it every right beneath it
    } else if (level < 9) {
        for (int configure = 77; configure <= 80; ++configure) {
            text[configure] = '0';  // managers reach all clients but configure nothing
        }
    }
    if (level < 3) {
        text[84] = '0';  // Library
    }
    return text;
}

const QStringList kLevelNames = {"Clerk",      "Assistant",    "Associate", "Senior Associate",
                                 "Agent",      "Senior Agent", "Counsel",   "Manager",
                                 "Supervisor", "Administrator"};

void insertSysinfo(engine::Database& db) {
    QStringList columns{"dbversion",  "CompanyName",  "Address",        "companyphone",
                        "companyfax", "companyemail", "companywebsite", "Disclaimer"};
    QStringList values{"6.5", "'Your Company'", "''", "''", "''", "''", "''", "''"};
    for (int level = 1; level <= 10; ++level) {
        columns << "level" + QString::number(level) << "level" + QString::number(level) + "name";
        values << sqlText(levelText(level)) << sqlText(kLevelNames[level - 1]);
    }
    db.execute("INSERT INTO sysinfo (" + columns.join(",") + ") VALUES (" + values.join(",") + ")");
}

void insertFieldDefinitions(engine::Database& db) {
    struct Defined {
        const char* table;
        int column;
        const char* description;
        int type;
        QStringList choices;
    };
    const Defined defined[] = {
        {"clntudf", 1, "Birthday", 3, {}},
        {"clntudf", 2, "Referred By", 0, {}},
        {"clntudf2", 1, "Risk Tolerance", 0, {"Low", "Medium", "High"}},
        {"projudf", 1, "Due Date", 3, {}},
        {"listudf", 1, "Campaign", 0, {}},
        {"acctudf", 1, "Account Type", 0, {"Individual", "Joint", "Trust"}},
        {"produdf", 1, "Sector", 0, {}},
    };
    for (const char* table : {"clntudf", "clntudf2", "projudf", "listudf", "acctudf", "produdf"}) {
        for (int column = 1; column <= 10; ++column) {
            QString description;
            int type = 0;
            QStringList choices;
            for (const Defined& d : defined) {
                if (QLatin1String(d.table) == QLatin1String(table) && d.column == column) {
                    description = d.description;
                    type = d.type;
                    choices = d.choices;
                }
            }
            QStringList names{"Parent", "Col", "Descrpn", "Type", "Decimals", "Class", "userid"};
            QStringList values{sqlText(table),
                               sqlText("udf" + QString::number(column)),
                               sqlText(description),
                               QString::number(type),
                               "0",
                               "0",
                               "0"};
            for (int c = 0; c < choices.size(); ++c) {
                names << "Choice" + QString::number(c + 1);
                values << sqlText(choices[c]);
            }
            db.execute("INSERT INTO udfs (" + names.join(",") + ") VALUES (" + values.join(",") +
                       ")");
        }
    }
}

void insertSampleReminders(engine::Database& db) {
    const struct {
        int day;
        const char* subject;
        int type;
    } reminders[] = {
        {-3, "Quarterly review call", 1},  {0, "Client lunch", 5},
        {1, "Send account statements", 2}, {2, "Team meeting", 6},
        {7, "Portfolio rebalancing", 7},
    };
    for (const auto& r : reminders) {
        db.execute("INSERT INTO reminder (userid, startd, endd, subject, acttype) VALUES (1, " +
                   numberText(kSampleReferenceDay + r.day + 0.375) + ", " +
                   numberText(kSampleReferenceDay + r.day + 0.4375) + ", " + sqlText(r.subject) +
                   ", " + QString::number(r.type) + ")");
    }
}

void insertSampleReports(engine::Database& db) {
    const char* names[] = {"Client List", "Birthday List", "Activity Report"};
    int id = 0;
    for (const char* name : names) {
        ++id;
        db.execute("INSERT INTO reports (id, userid, Name, rpttype) VALUES (" +
                   QString::number(id) + ", 0, " + sqlText(name) + ", 0)");
        db.execute("INSERT INTO rptcntls (rptid, cntlname, cntlvalue) VALUES (" +
                   QString::number(id) + ", 'Title', " + sqlText(name) + ")");
        db.execute("INSERT INTO rptcntls (rptid, cntlname, cntlvalue) VALUES (" +
                   QString::number(id) + ", 'SortBy', 'Name')");
    }
    db.execute("INSERT INTO reportsdef SELECT * FROM reports");
    db.execute("INSERT INTO rptcntlsdef SELECT * FROM rptcntls");
}

std::unique_ptr<engine::Database> newDatabase(const QString& path) {
    if (QFileInfo::exists(path)) {
        throw InstallError(path + " already exists; the installer never overwrites a database.");
    }
    try {
        return engine::createDatabase(path);
    } catch (const rt::Error& failure) {
        throw InstallError("cannot create a database at " + path + ": " + failure.description());
    }
}

void makeFolder(const QString& folder) {
    if (!QDir().mkpath(folder) || !QFileInfo(folder).isWritable()) {
        throw InstallError("cannot write to the folder " + folder + ".");
    }
}

void createReportsDatabase(const QString& path) {
    auto db = newDatabase(path);
    createTable(*db, tableDef("reports"));
    createTable(*db, tableDef("rptcntls"));
    db->close();
}

// Settings of a program folder in the settings file of the system directory.
void rememberForConsole(const QString& consoleFolder, const QString& key, const QString& value) {
    gSystemDir = GetSystemDir();
    if (WriteIni(key, FolderSection(consoleFolder), value) == 0) {
        throw InstallError("cannot write the settings file in " + gSystemDir + ".");
    }
}

// The first user keeps the placeholder's name for the first logon to set up; the edition is no
// detail temp.tmp carries, so the demo's administrator gets it here.
void insertSampleDirectory(engine::Database& db) {
    db.execute("UPDATE users SET fslevel = 3 WHERE id = 1");
    db.execute("UPDATE sysinfo SET companyemail = 'office@example.com'");
    const struct {
        int id;
        const char* name;
        const char* logon;
        const char* password;
        int level;
        int edition;
        int type;
        int members;
    } entries[] = {
        {2, "Brian Cole", "bcole", "brian", 5, 1, 0, 0},
        {3, "Carmen Diaz", "cdiaz", "carmen", 3, 0, 0, 0},
        {4, "Derek Evans", "devans", "derek", 8, 2, 0, 0},
        {5, "Erin Ford", "eford", "erin", 1, 0, 0, 0},
        {6, "Sales Team", "zq", "zq", 1, 0, 1, 2},
        {7, "Support Desk", "zq", "zq", 1, 0, 1, 1},
        {8, "Conference Room", "zq", "zq", 1, 0, 2, 1},
        {9, "Projector", "zq", "zq", 1, 0, 2, 0},
        {10, "Downtown Office", "zq", "zq", 1, 0, 3, 2},
        {11, "Northside Office", "zq", "zq", 1, 0, 3, 0},
    };
    for (const auto& e : entries) {
        db.execute(
            QStringLiteral(
                "INSERT INTO users (id, Name, Logon, Password, accLevel, fslevel, Type, num) "
                "VALUES (%1, %2, %3, %4, %5, %6, %7, %8)")
                .arg(e.id)
                .arg(sqlText(e.name), sqlText(e.logon), sqlText(e.password))
                .arg(e.level)
                .arg(e.edition)
                .arg(e.type)
                .arg(e.members));
    }
    const int links[][2] = {{1, 2}, {4, 3}, {6, 2}, {6, 4}, {7, 3}, {8, 5}, {10, 1}, {10, 3}};
    for (const auto& link : links) {
        db.execute(QStringLiteral("INSERT INTO extaccess (userid, extid) VALUES (%1, %2)")
                       .arg(link[0])
                       .arg(link[1]));
    }
    db.execute("UPDATE users SET num = 1 WHERE id IN (1, 4)");
    db.execute("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 4, 2)");
    db.execute(
        "INSERT INTO clients (id, userid, Name) VALUES (1, 2, 'Harbor Foods'), (2, 3, 'Nova "
        "Dental'), "
        "(3, 3, 'Pine Street Books')");
    db.execute(
        "INSERT INTO files (id, ownerid, Name, acctno) VALUES (1, 1, 'Harbor Foods Retirement', "
        "'HF-001'), "
        "(2, 2, 'Nova Dental Growth', 'ND-001'), (3, 3, 'Pine Street Income', 'PS-001')");
}

// temp.tmp: the first user's and the company's details for the first logon.
void writeFirstRunFile(const QString& firstRun, const FirstRunDetails& details) {
    const std::pair<const char*, QString> keys[] = {
        {"Name", details.name},
        {"Logon", details.logon},
        {"Password", details.password},
        {"Company", details.company},
        {"CompanyPhone", details.companyPhone},
        {"CompanyAddress1", details.companyAddress1},
        {"CompanyAddress2", details.companyAddress2},
        {"CompanyAddress3", details.companyAddress3},
    };
    for (const auto& [key, value] : keys) {
        if (!value.isEmpty() && !platform::WritePrivateProfileString(
                                    "Temp", QString::fromLatin1(key), value, firstRun)) {
            throw InstallError("cannot write " + firstRun + ".");
        }
    }
}

// The console looks for a first run's files in its own folder. A first run that an earlier demo
// left pending there gives way to this one; a tarnell.new there is reused, as the first run
// replaces its tables.
void prepareDemoFirstRun(const QString& consoleFolder) {
    makeFolder(consoleFolder);
    const QString firstRun = platform::joinPath(consoleFolder, kFirstRunFile);
    if (QFileInfo::exists(firstRun) && !QFile::remove(firstRun)) {
        throw InstallError("cannot replace " + firstRun + ".");
    }
    const QString reports = platform::joinPath(consoleFolder, kReportsDatabaseFile);
    if (!QFileInfo::exists(reports)) {
        createReportsDatabase(reports);
    }
    writeFirstRunFile(
        firstRun, {QStringLiteral("Alice Admin"), kDemoLogon, kDemoPassword,
                   QStringLiteral("Lattimer Demo Company"), QStringLiteral("555-0100"),
                   QStringLiteral("12 Harbor Street"), QStringLiteral("Port Ellen"), QString()});
}

}  // namespace

void createDatabase(const QString& path) {
    auto db = newDatabase(path);
    try {
        engine::Transaction transaction(*db);
        for (const TableDef& table : schema()) {
            createTable(*db, table);
        }
        insertSysinfo(*db);
        db->execute(
            "INSERT INTO users (id, Name, Logon, Password, accLevel, fslevel, Type, num) "
            "VALUES (1, 'New User', 'new', '', 10, 0, 0, 0)");
        insertFieldDefinitions(*db);
        insertSampleReminders(*db);
        insertSampleReports(*db);
        transaction.commit();
        db->close();
    } catch (const rt::Error& failure) {
        db->close();
        engine::removeDatabase(path);
        throw InstallError("cannot set up the database " + path + ": " + failure.description());
    }
}

void installProgramFolder(const QString& folder, const FirstRunDetails& details,
                          const QString& database) {
    if (details.logon.isEmpty()) {
        throw InstallError(QStringLiteral("the first user's logon is needed (--logon)."));
    }
    if (details.logon.size() > 8 || details.logon.contains('\'') || details.logon.contains('"')) {
        throw InstallError(QStringLiteral("a logon has at most 8 characters and no quotes."));
    }
    if (details.password.size() > 8) {
        throw InstallError(QStringLiteral("a password has at most 8 characters."));
    }
    makeFolder(folder);
    const QString firstRun = platform::joinPath(folder, kFirstRunFile);
    if (QFileInfo::exists(firstRun)) {
        throw InstallError(firstRun + " already exists; the folder holds an installation.");
    }
    createDatabase(database.isEmpty() ? platform::joinPath(folder, kDatabaseFile) : database);
    createReportsDatabase(platform::joinPath(folder, kReportsDatabaseFile));
    writeFirstRunFile(firstRun, details);
}

void createDemo(const QString& folder, const QString& consoleFolder, const QString& location) {
    makeFolder(folder);
    const QString database =
        location.isEmpty() ? QDir(folder).absoluteFilePath(kDatabaseFile) : location;
    createDatabase(database);
    try {
        auto db = engine::openDatabase(database);
        engine::Transaction transaction(*db);
        insertSampleDirectory(*db);
        transaction.commit();
        db->close();
    } catch (const rt::Error& failure) {
        throw InstallError("cannot fill the demo database: " + failure.description());
    }
    prepareDemoFirstRun(consoleFolder);
    rememberForConsole(consoleFolder, "Database",
                       location.isEmpty() ? QDir::toNativeSeparators(database) : database);
    rememberForConsole(consoleFolder, "LG", kDemoLogon);
}

}  // namespace installer
