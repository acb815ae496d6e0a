// An office's legacy database brought along: the Jet files of the test data land with every row
// and value as mdb-export reads them, and a database of the suite's own tables opens in the
// console as before.

#include "import.h"
#include "../directory/console_fixture.h"
#include "installation.h"
#include "mdb_source.h"
#include "platform/convert.h"
#include "platform/formats.h"
#include "platform/os.h"
#include "program_run.h"
#include "schema.h"
#include "settings/settings_file.h"

#include <QFile>

#include <algorithm>
#include <cmath>

namespace {

using installer::LegacyColumn;
using testing_support::Backend;
using Type = LegacyColumn::Type;

const QString kLegacyJet = QStringLiteral(LEGACY_JET);
const auto kQuiet = [](const QString&) {};

// The rows mdb-export prints for a table, each value as printed, a null as kNull. Separators
// that no value holds spare us reading quotes.
const QString kNull = QStringLiteral("<null>");

std::vector<QStringList> exported(const QString& file, const QString& table) {
    const QString moment = QStringLiteral("%Y-%m-%d %H:%M:%S");
    const ProgramRun run =
        runProgram("mdb-export", {"-H", "-Q", "-d", "\x1f", "-R", "\x1e", "-0", kNull, "-T", moment,
                                  "-D", moment, file, table});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    std::vector<QStringList> rows;
    for (const QString& row : run.out.split('\x1e', Qt::SkipEmptyParts)) {
        rows.push_back(row.split('\x1f'));
    }
    return rows;
}

// Whether the value in the new database is the one mdb-export printed, compared as a value.
bool sameValue(const rt::Variant& value, const QString& printed, Type type) {
    if (printed == kNull || value.isNull()) {
        return printed == kNull && value.isNull();
    }
    const double number = printed.toDouble();
    switch (type) {
        case Type::Boolean:
            return rt::CBool(value) == (printed == "1");
        case Type::Currency:
            return rt::CCur(value) == std::llround(number * 10000);
        case Type::DateTime:
            return value.isDate() && rt::Format(value, "yyyy-mm-dd hh:nn:ss") == printed;
        case Type::Byte:
        case Type::Integer:
        case Type::Long:
        case Type::Numeric:
            return rt::CDbl(value) == number;
        case Type::Single:
        case Type::Double:
            return std::abs(rt::CDbl(value) - number) <= 1e-6 * std::max(1.0, std::abs(number));
        default:
            return rt::CStr(value) == printed;
    }
}

class ImportFixture : public ::testing::Test {
protected:
    void SetUp() override {
        if (testing_support::lacksServer(backend)) {
            GTEST_SKIP() << testing_support::kNoServer;
        }
    }
    Backend backend = Backend::Sqlite;
    QTemporaryDir dir;
};

class ImportTest : public testing_support::OnEveryBackend<ImportFixture> {};

ORVANE_ON_EVERY_BACKEND(ImportTest);

// Each file of the test data: every table with mdb-export's row count and values, Jet 3 and
// Jet 4, texts, numbers, currency, dates, yes/no, replication ids, numerics and memos.
TEST_P(ImportTest, EveryTableAndValueAsMdbExportReadsIt) {
    for (const QString file : {"testV1997", "testV2000", "fixedNumericTestV2000"}) {
        SCOPED_TRACE(file.toStdString());
        const QString legacy = kLegacyJet + "/" + file + ".mdb";
        const QString target = testing_support::newDatabaseLocation(backend, dir, file);
        installer::MdbSource source(legacy);
        const auto imported = installer::importDatabase(source, target, kQuiet);
        auto db = engine::openDatabase(target);
        QStringList tables;
        for (const installer::ImportedTable& table : imported) {
            tables << table.name;
            SCOPED_TRACE(table.name.toStdString());
            const std::vector<LegacyColumn> columns = source.columns(table.name);
            const std::vector<QStringList> expected = exported(legacy, table.name);
            EXPECT_EQ(table.rows, qint64(expected.size()));
            auto rows = db->openRecordset("SELECT * FROM [" + table.name + "]");
            for (const QStringList& printed : expected) {
                ASSERT_FALSE(rows->eof());
                ASSERT_EQ(rows->fieldCount(), printed.size());
                for (int c = 0; c < rows->fieldCount(); ++c) {
                    EXPECT_TRUE(sameValue(rows->fieldValue(c), printed[c], columns[c].type))
                        << columns[c].name.toStdString() << " against " << printed[c].toStdString();
                }
                rows->moveNext();
            }
            EXPECT_TRUE(rows->eof());
        }
        EXPECT_EQ(tables.join(',').toLower(), db->tableNames().join(',').toLower());
        db->close();
    }
}

// A source of tables held here, as an office's file would hold them.
struct FakeSource : installer::LegacySource {
    struct Table {
        std::vector<LegacyColumn> columns;
        std::vector<std::vector<rt::Variant>> rows;
    };
    QMap<QString, Table> held;

    QStringList tables() override { return held.keys(); }
    std::vector<LegacyColumn> columns(const QString& name) override { return held[name].columns; }
    void readRows(const QString& name,
                  const std::function<void(std::vector<rt::Variant>&&)>& row) override {
        for (std::vector<rt::Variant> values : held[name].rows) {
            row(std::move(values));
        }
    }
};

// The suite's tables of `db` with their rows. Where the suite knows a table its own types
// decide, so the file's are left as text.
FakeSource officeSource(engine::Database& db) {
    FakeSource source;
    for (const installer::TableDef& definition : installer::schema()) {
        FakeSource::Table& table = source.held[definition.name];
        for (const installer::ColumnDef& column : definition.columns) {
            table.columns.push_back({column.name, Type::Text});
        }
        for (auto rows = db.openRecordset("SELECT * FROM [" + definition.name + "]"); !rows->eof();
             rows->moveNext()) {
            std::vector<rt::Variant>& row = table.rows.emplace_back();
            for (int c = 0; c < rows->fieldCount(); ++c) {
                row.push_back(rows->fieldValue(c));
            }
        }
    }
    return source;
}

// A table the suite does not know lands as the file declares it, each kind of value exactly,
// and its autonumber goes on after the highest number imported.
TEST_P(ImportTest, EachKindOfValueLandsExactly) {
    FakeSource source;
    FakeSource::Table& table = source.held["Ledger"];
    table.columns = {{"Entry", Type::Long, 0, 0, 0, true},
                     {"Note", Type::Text, 20},
                     {"Flag", Type::Boolean},
                     {"Small", Type::Byte},
                     {"Tally", Type::Integer},
                     {"Amount", Type::Currency},
                     {"Ratio", Type::Single},
                     {"Measure", Type::Double},
                     {"Booked", Type::DateTime},
                     {"Body", Type::Memo},
                     {"Picture", Type::OleObject},
                     {"Stamp", Type::Binary},
                     {"Replica", Type::ReplicationId},
                     {"Exact", Type::Numeric, 0, 18, 4},
                     {"Wide", Type::Numeric, 0, 28, 6}};
    const QByteArray bytes("\x00\x01\xfe\xff", 4);
    const rt::Variant null = rt::Variant::null();
    table.rows = {
        {7, "Größe „à la“", true, qint16(255), qint16(-32768),
         rt::Variant::currency(-922337203685477LL), 1.5f, 0.1 + 0.2, rt::Variant::date(36526.75),
         QString(70000, 'm'), bytes, bytes, "{6A9C5C34-1B2D-4E5F-8A9B-0C1D2E3F4A5B}",
         "-12345678901234.5678", "123456.123456"},
        {42, "", false, qint16(0), qint16(1), rt::Variant::currency(1), 1e-7f, -1e300,
         rt::Variant::date(-1.25), "", QByteArray(), QByteArray(), null, "0.5000", "0"},
        {3, null, false, null, null, null, null, null, null, null, null, null, null, null, null},
    };
    const QString target = testing_support::newDatabaseLocation(backend, dir, "ledger");
    installer::importDatabase(source, target, kQuiet);

    auto db = engine::openDatabase(target);
    auto rows = db->openRecordset("SELECT * FROM Ledger ORDER BY Entry");
    for (const std::vector<rt::Variant>& row : {table.rows[2], table.rows[0], table.rows[1]}) {
        ASSERT_FALSE(rows->eof());
        for (int c = 0; c < rows->fieldCount(); ++c) {
            const rt::Variant value = rows->fieldValue(c);
            // A numeric comes back as the number its digits say.
            const rt::Variant expected =
                c >= 13 && !row[c].isNull() ? rt::Variant(row[c].text().toDouble()) : row[c];
            EXPECT_EQ(value, expected) << table.columns[size_t(c)].name.toStdString() << ": "
                                       << (value.isNull() ? "Null" : rt::CStr(value).toStdString());
        }
        rows->moveNext();
    }
    EXPECT_TRUE(rows->eof());
    rows->close();

    // The counter goes on after 42, and a text compares without regard to case.
    db->execute("INSERT INTO Ledger (Note) VALUES ('next')");
    EXPECT_EQ(testing_support::rowsOf(*db, "SELECT Entry FROM Ledger WHERE Note = 'NEXT'"),
              QStringList{"43"});
    db->close();
}

// An office's database of the suite's own tables: logged on to through the real logon, with
// the console's lists as on the database it came from; counters go on after the highest row,
// a column the office added is kept, and a database of another version is refused as today.
class ImportedOfficeFixture : public ConsoleFixture {
protected:
    void logOnTo(const QString& location, frmAdmin& window) {
        WriteIni("Database", FolderSection(platform::programFolder()), location);
        SetCommandLine("-ladmin -porvane");
        window.Form_Activate();
    }
    // The console's four lists after the administrator logs on to the database at `location`.
    QList<QStringList> listsOn(const QString& location) {
        frmAdmin window;
        logOnTo(location, window);
        QList<QStringList> lists;
        for (ReportList* list :
             {window.lstEmployees, window.lstWorkGroups, window.lstEquipment, window.lstBranches}) {
            lists << rows(list);
        }
        window.hide();
        testing_support::endSession();
        return lists;
    }
    // The demo's tables as an office's file, imported at a new location.
    QString imported(FakeSource& source, const QString& stem) {
        const QString target = testing_support::newDatabaseLocation(backend, folder, stem);
        EXPECT_EQ(installer::importDatabase(source, target, kQuiet).size(),
                  installer::schema().size());
        return target;
    }
};

class ImportedOfficeTest : public testing_support::OnEveryBackend<ImportedOfficeFixture> {};

ORVANE_ON_EVERY_BACKEND(ImportedOfficeTest);

TEST_P(ImportedOfficeTest, LogsOnAndFillsTheConsoleAsBefore) {
    const QList<QStringList> before = listsOn(demoDatabase());
    ASSERT_FALSE(before[0].isEmpty());

    FakeSource source = officeSource(*db);
    // The legacy engine matches names whatever their case.
    FakeSource::Table& users = source.held["USERS"] = source.held.take("users");
    users.columns.push_back({"Pager", Type::Text, 20});
    for (auto& row : users.rows) {
        row.push_back("555-0100");
    }
    // A session row numbered far beyond the others: the counter goes on after it.
    source.held["rts"].rows.back()[0] = 90;
    const QString target = imported(source, "office");

    auto office = engine::openDatabase(target);
    EXPECT_EQ(office->counterPosition("rts"), 90);
    EXPECT_EQ(testing_support::rowsOf(
                  *office, "SELECT logon FROM users WHERE Pager = '555-0100' ORDER BY id"),
              testing_support::rowsOf(*db, "SELECT logon FROM users ORDER BY id"));
    if (backend == Backend::Sqlite) {
        // The installer's indexes; the first run makes two tables anew without theirs.
        installer::createDatabase(path("fresh.mdb"));
        auto fresh = engine::openDatabase(path("fresh.mdb"));
        const QString indexes = "SELECT name FROM sqlite_master WHERE type = 'index' ORDER BY name";
        EXPECT_EQ(testing_support::rowsOf(*office, indexes),
                  testing_support::rowsOf(*fresh, indexes));
        fresh->close();
    }
    office->close();

    EXPECT_EQ(listsOn(target), before);
}

TEST_P(ImportedOfficeTest, AnotherVersionIsRefusedByTheGate) {
    listsOn(demoDatabase());  // the first logon, which sets up the administrator
    FakeSource source = officeSource(*db);
    source.held["sysinfo"].rows[0][1] = 6.4f;  // dbversion
    EXPECT_THROW(logOnTo(imported(source, "older"), console), platform::RunEnded);
    const std::vector<QString> shown = ui.texts();
    EXPECT_TRUE(QStringList(shown.begin(), shown.end())
                    .join('\n')
                    .contains("The database you are trying to open is a 6.4 version"));
}

}  // namespace
