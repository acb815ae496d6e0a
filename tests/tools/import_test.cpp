// An office's legacy database brought along: the Jet files of the test data land with every row
// and value as mdb-export reads them, a database of the suite's own tables opens in the console
// as before, and a file that can't be read is refused with nothing left behind.

#include "import.h"
#include "../directory/console_fixture.h"
#include "installation.h"
#include "legacy_source.h"
#include "mdb_source.h"
#include "platform/convert.h"
#include "platform/os.h"
#include "schema.h"
#include "settings/settings_file.h"

#include <QDateTime>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>

#include <algorithm>
#include <cmath>

namespace {

using installer::LegacyColumn;
using testing_support::Backend;
using Type = LegacyColumn::Type;

const QString kLegacyJet = QStringLiteral(LEGACY_JET);
const auto kQuiet = [](const QString&) {};

// The rows mdb-export prints for a table, each value as printed, a null as kNull.
const QString kNull = QStringLiteral("<null>");

std::vector<QStringList> exported(const QString& file, const QString& table) {
    const QString tool = QStandardPaths::findExecutable("mdb-export");
    if (tool.isEmpty()) {
        ADD_FAILURE() << "mdb-export is not installed";
        return {};
    }
    QProcess process;
    process.start(tool, {"-H", "-0", kNull, "-T", "%Y-%m-%d %H:%M:%S", "-D", "%Y-%m-%d %H:%M:%S",
                         file, table});
    process.waitForFinished(60000);
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    const QString text = QString::fromUtf8(process.readAllStandardOutput());
    // CSV: a quoted value may hold commas, line ends and doubled quotes.
    std::vector<QStringList> rows;
    QStringList row;
    QString value;
    bool quoted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (quoted) {
            if (c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
                value += c;
                ++i;
            } else if (c == '"') {
                quoted = false;
            } else {
                value += c;
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == ',') {
            row << value;
            value.clear();
        } else if (c == '\n') {
            row << value;
            rows.push_back(row);
            row.clear();
            value.clear();
        } else {
            value += c;
        }
    }
    return rows;
}

// Whether the value in the new database is the one mdb-export printed, compared as a value.
bool sameValue(const rt::Variant& value, const QString& printed, Type type) {
    if (printed == kNull) {
        return value.isNull();
    }
    if (value.isNull()) {
        return false;
    }
    switch (type) {
        case Type::Boolean:
            return rt::CBool(value) == (printed == "1");
        case Type::Currency:
            return rt::CCur(value) == std::llround(printed.toDouble() * 10000);
        case Type::DateTime: {
            const QDateTime moment = QDateTime::fromString(printed, "yyyy-MM-dd HH:mm:ss");
            const double serial = double(QDate(1899, 12, 30).daysTo(moment.date())) +
                                  moment.time().msecsSinceStartOfDay() / 86400000.0;
            return value.isDate() && std::abs(value.realValue() - serial) < 1e-6;
        }
        case Type::Byte:
        case Type::Integer:
        case Type::Long:
        case Type::Numeric:
            return rt::CDbl(value) == printed.toDouble();
        case Type::Single:
        case Type::Double:
            return std::abs(rt::CDbl(value) - printed.toDouble()) <=
                   1e-6 * std::max(1.0, std::abs(printed.toDouble()));
        default:
            return rt::CStr(value) == printed;
    }
}

class LegacyFileFixture : public ::testing::Test {
protected:
    void SetUp() override {
        if (testing_support::lacksServer(backend)) {
            GTEST_SKIP() << testing_support::kNoServer;
        }
    }
    Backend backend = Backend::Sqlite;
    QTemporaryDir dir;
};

class LegacyFileTest : public testing_support::OnEveryBackend<LegacyFileFixture> {};

ORVANE_ON_EVERY_BACKEND(LegacyFileTest);

// Each file of the test data: every table with mdb-export's row count and values, Jet 3 and
// Jet 4, texts, numbers, currency, dates, yes/no, replication ids, numerics and memos.
TEST_P(LegacyFileTest, EveryTableAndValueAsMdbExportReadsIt) {
    for (const char* file : {"testV1997.mdb", "testV2000.mdb", "fixedNumericTestV2000.mdb"}) {
        SCOPED_TRACE(file);
        const QString legacy = kLegacyJet + "/" + file;
        const QString target =
            testing_support::newDatabaseLocation(backend, dir, QString(file).section('.', 0, 0));
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
            size_t r = 0;
            for (; !rows->eof(); rows->moveNext(), ++r) {
                ASSERT_LT(r, expected.size());
                ASSERT_EQ(rows->fieldCount(), int(expected[r].size()));
                for (int c = 0; c < rows->fieldCount(); ++c) {
                    EXPECT_TRUE(sameValue(rows->fieldValue(c), expected[r][c], columns[c].type))
                        << "row " << r << " " << columns[c].name.toStdString() << ": "
                        << (rows->fieldValue(c).isNull()
                                ? "Null"
                                : rt::CStr(rows->fieldValue(c)).toStdString())
                        << " against " << expected[r][c].toStdString();
                }
            }
            EXPECT_EQ(r, expected.size());
        }
        EXPECT_EQ(tables.join(',').toLower(), db->tableNames().join(',').toLower());
        db->close();
    }
}

// A source of the suite's own tables and rows, as an office's file would hold them.
class FakeSource : public installer::LegacySource {
public:
    struct Table {
        QString name;
        std::vector<LegacyColumn> columns;
        std::vector<std::vector<rt::Variant>> rows;
    };

    // Every table of `db`, typed as the legacy engine types the suite's columns.
    static FakeSource of(engine::Database& db) {
        FakeSource source;
        for (const QString& name : db.tableNames()) {
            Table& table = source.tables_.emplace_back();
            table.name = name;
            for (const installer::ColumnDef& column : ourTable(name).columns) {
                table.columns.push_back(legacyColumn(column));
            }
            auto rows = db.openRecordset("SELECT * FROM [" + name + "]");
            for (; !rows->eof(); rows->moveNext()) {
                std::vector<rt::Variant>& row = table.rows.emplace_back();
                for (int c = 0; c < rows->fieldCount(); ++c) {
                    row.push_back(rows->fieldValue(c));
                }
            }
        }
        return source;
    }

    Table& table(const QString& name) {
        for (Table& table : tables_) {
            if (table.name.compare(name, Qt::CaseInsensitive) == 0) {
                return table;
            }
        }
        return tables_.emplace_back(Table{name, {}, {}});
    }

    QStringList tables() override {
        QStringList names;
        for (const Table& table : tables_) {
            names << table.name;
        }
        return names;
    }
    std::vector<LegacyColumn> columns(const QString& name) override { return table(name).columns; }
    void readRows(const QString& name,
                  const std::function<void(std::vector<rt::Variant>&&)>& row) override {
        for (std::vector<rt::Variant> values : table(name).rows) {
            row(std::move(values));
        }
    }

private:
    // A server gives the names in lower case.
    static const installer::TableDef& ourTable(const QString& name) {
        const auto& schema = installer::schema();
        return *std::find_if(schema.begin(), schema.end(), [&](const installer::TableDef& table) {
            return table.name.compare(name, Qt::CaseInsensitive) == 0;
        });
    }

    static LegacyColumn legacyColumn(const installer::ColumnDef& column) {
        static const QHash<QString, Type> types = {
            {"COUNTER", Type::Long},      {"MEMO", Type::Memo},
            {"SHORT", Type::Integer},     {"LONG", Type::Long},
            {"SINGLE", Type::Single},     {"DOUBLE", Type::Double},
            {"CURRENCY", Type::Currency}, {"DATETIME", Type::DateTime},
            {"BIT", Type::Boolean},       {"LONGBINARY", Type::OleObject},
        };
        LegacyColumn legacy{column.name, types.value(column.type, Type::Text)};
        legacy.autoNumber = column.type == "COUNTER";
        legacy.size = column.type.startsWith("TEXT(") ? column.type.mid(5).chopped(1).toInt() : 0;
        return legacy;
    }

    std::vector<Table> tables_;
};

class FakeSourceFixture : public LegacyFileFixture {};
class FakeSourceTest : public testing_support::OnEveryBackend<FakeSourceFixture> {};

ORVANE_ON_EVERY_BACKEND(FakeSourceTest);

// A table the suite does not know lands as the file declares it, each kind of value exactly,
// and its autonumber goes on after the highest number imported.
TEST_P(FakeSourceTest, EachKindOfValueLandsExactly) {
    FakeSource source;
    FakeSource::Table& table = source.table("Ledger");
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
    table.rows = {
        {7, "Größe „à la“", true, qint16(255), qint16(-32768),
         rt::Variant::currency(-922337203685477LL), 1.5f, 0.1 + 0.2, rt::Variant::date(36526.75),
         QString(70000, 'm'), bytes, bytes, "{6A9C5C34-1B2D-4E5F-8A9B-0C1D2E3F4A5B}",
         "-12345678901234.5678", "123456.123456"},
        {42, "", false, qint16(0), qint16(1), rt::Variant::currency(1), 1e-7f, -1e300,
         rt::Variant::date(-1.25), "", QByteArray(), QByteArray(), rt::Variant::null(), "0.5000",
         "0"},
        {3, rt::Variant::null(), false, rt::Variant::null(), rt::Variant::null(),
         rt::Variant::null(), rt::Variant::null(), rt::Variant::null(), rt::Variant::null(),
         rt::Variant::null(), rt::Variant::null(), rt::Variant::null(), rt::Variant::null(),
         rt::Variant::null(), rt::Variant::null()},
    };
    const QString target = testing_support::newDatabaseLocation(backend, dir, "ledger");
    installer::importDatabase(source, target, kQuiet);

    auto db = engine::openDatabase(target);
    auto rows = db->openRecordset("SELECT * FROM Ledger ORDER BY Entry");
    std::vector<std::vector<rt::Variant>> expected = {table.rows[2], table.rows[0], table.rows[1]};
    for (auto& row : expected) {
        // A numeric comes back as the number its digits say.
        for (int c : {13, 14}) {
            if (!row[c].isNull()) {
                row[c] = rt::Variant(row[c].text().toDouble());
            }
        }
    }
    for (const auto& row : expected) {
        ASSERT_FALSE(rows->eof());
        for (int c = 0; c < rows->fieldCount(); ++c) {
            const rt::Variant value = rows->fieldValue(c);
            if (c == 5 && !value.isNull()) {
                EXPECT_EQ(rt::CCur(value), row[c].integerValue());  // four decimals exact
            } else if (c >= 13 && !value.isNull()) {
                EXPECT_DOUBLE_EQ(rt::CDbl(value), row[c].realValue()) << c;
            } else if (c == 6 && !value.isNull()) {
                EXPECT_EQ(rt::CSng(value), float(row[c].realValue()));
            } else {
                EXPECT_EQ(value, row[c])
                    << table.columns[size_t(c)].name.toStdString() << " "
                    << (value.isNull() ? "Null" : rt::CStr(value).toStdString());
            }
        }
        rows->moveNext();
    }
    EXPECT_TRUE(rows->eof());
    rows->close();
    EXPECT_EQ(rt::CStr(rt::Variant::date(36526.75)), "1/1/2000 6:00:00 PM");

    // The counter goes on after 42, and a text compares without regard to case.
    db->execute("INSERT INTO Ledger (Note) VALUES ('next')");
    EXPECT_EQ(
        rt::CLng(
            db->openRecordset("SELECT Entry FROM Ledger WHERE Note = 'NEXT'")->field(0).value()),
        43);
    db->close();
}

// An office's database of the suite's own tables: logged on to through the real logon, with
// the console's lists as on the database it came from; counters go on after the highest row,
// and a column the office added is kept.
class ImportedOfficeFixture : public ConsoleFixture {
protected:
    // The console's four lists after the administrator logs on to the database at `location`.
    QList<QStringList> listsOn(const QString& location) {
        WriteIni("Database", FolderSection(platform::programFolder()), location);
        frmAdmin window;
        SetCommandLine("-ladmin -porvane");
        window.Form_Activate();
        QList<QStringList> lists;
        for (ReportList* list :
             {window.lstEmployees, window.lstWorkGroups, window.lstEquipment, window.lstBranches}) {
            lists << rows(list);
        }
        window.hide();
        testing_support::endSession();
        return lists;
    }
};

class ImportedOfficeTest : public testing_support::OnEveryBackend<ImportedOfficeFixture> {};

ORVANE_ON_EVERY_BACKEND(ImportedOfficeTest);

TEST_P(ImportedOfficeTest, LogsOnAndFillsTheConsoleAsBefore) {
    const QList<QStringList> before = listsOn(demoDatabase());
    ASSERT_FALSE(before[0].isEmpty());

    FakeSource source = FakeSource::of(*db);
    FakeSource::Table& users = source.table("users");
    users.name = "USERS";  // the legacy engine matches names whatever their case
    users.columns.push_back({"Pager", Type::Text, 20});
    for (auto& row : users.rows) {
        row.push_back("555-0100");
    }
    // A session row numbered far beyond the others: the counter goes on after it.
    FakeSource::Table& sessions = source.table("rts");
    ASSERT_FALSE(sessions.rows.empty());
    sessions.rows.back()[0] = 90;
    const QString target = testing_support::newDatabaseLocation(backend, folder, "office");
    const auto imported = installer::importDatabase(source, target, kQuiet);
    ASSERT_EQ(imported.size(), installer::schema().size());

    auto office = engine::openDatabase(target);
    EXPECT_EQ(rt::CStr(office->openRecordset("SELECT dbversion FROM sysinfo")->field(0).value()),
              "6.5");
    EXPECT_EQ(office->counterPosition("rts"), 90);
    EXPECT_EQ(office->counterPosition("users"),
              rt::CLng(office->openRecordset("SELECT max(id) FROM users")->field(0).value()));
    EXPECT_EQ(rt::CLng(office
                           ->openRecordset("SELECT count(*) FROM users WHERE Pager = '555-0100' "
                                           "AND logon = 'ADMIN'")
                           ->field(0)
                           .value()),
              1);
    // The tables the installer makes, the suite's every one.
    QStringList expected;
    for (const installer::TableDef& table : installer::schema()) {
        expected << table.name.toLower();
    }
    QStringList made = office->tableNames().join(',').toLower().split(',');
    expected.sort();
    made.sort();
    EXPECT_EQ(made, expected);
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

// A database of another version is imported as it is, and the console refuses it as it refuses
// that version today.
TEST_P(ImportedOfficeTest, AnotherVersionIsRefusedByTheGate) {
    listsOn(demoDatabase());  // the first logon, which sets up the administrator
    FakeSource source = FakeSource::of(*db);
    FakeSource::Table& sysinfo = source.table("sysinfo");
    ASSERT_EQ(sysinfo.columns[1].name, "dbversion");
    sysinfo.rows[0][1] = 6.4f;
    const QString target = testing_support::newDatabaseLocation(backend, folder, "older");
    installer::importDatabase(source, target, kQuiet);

    ui.messages.clear();
    WriteIni("Database", FolderSection(platform::programFolder()), target);
    SetCommandLine("-ladmin -porvane");
    EXPECT_THROW(console.Form_Activate(), platform::RunEnded);
    const std::vector<QString> shown = ui.texts();
    const QString all = QStringList(shown.begin(), shown.end()).join('\n');
    EXPECT_TRUE(
        all.contains("The database you are trying to open is a 6.4 version of the database."))
        << all.toStdString();
}

// The tool on files that are no Jet database or are damaged: a message, a non-zero exit, and
// nothing at the target; and a target that holds tables is refused and left as it was.
class ImportToolTest : public ::testing::Test {
protected:
    struct Run {
        int exitCode;
        QString out;
        QString err;
    };
    Run run(const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral(LATTIMER_DB), arguments);
        process.waitForFinished(180000);
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }
    QString write(const QString& name, const QByteArray& bytes) {
        QFile file(dir.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }
    static QByteArray legacy(const QString& name) {
        QFile file(kLegacyJet + "/" + name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    QTemporaryDir dir;
};

TEST_F(ImportToolTest, ImportsAFileAndSumsUpItsTables) {
    const QString target = dir.filePath("office.mdb");
    const Run result = run({"import", kLegacyJet + "/testV2000.mdb", target});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.out.contains("Table1: 2 rows")) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains("Table4: 0 rows")) << result.out.toStdString();
    EXPECT_TRUE(result.err.contains("importing Table2")) << result.err.toStdString();

    // Again onto the same target: refused, and the target keeps its rows.
    const Run again = run({"import", kLegacyJet + "/testV1997.mdb", target});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_TRUE(again.err.contains("already holds tables")) << again.err.toStdString();
    auto db = engine::openDatabase(target);
    EXPECT_EQ(rt::CLng(db->openRecordset("SELECT count(*) FROM Table1")->field(0).value()), 2);
    EXPECT_EQ(
        rt::CStr(db->openRecordset("SELECT A FROM Table1 WHERE E = 333333333")->field(0).value()),
        "abcdefg");
    db->close();
}

TEST_F(ImportToolTest, ABadFileGetsAMessageAndLeavesNothing) {
    const QByteArray jet3 = legacy("testV1997.mdb");
    const QByteArray jet4 = legacy("testV2000.mdb");
    QByteArray noise(64 * 1024, '\0');
    QRandomGenerator generator(7);
    for (char& byte : noise) {
        byte = char(generator.bounded(256));
    }
    // A damaged page in the middle of a file whose header is sound.
    QByteArray scrambled = jet3;
    for (qsizetype at = 2048 * 3; at < scrambled.size(); at += 97) {
        scrambled[at] = char(generator.bounded(256));
    }
    // A table's definition blanked: libmdb aborts on it, or, where fresh memory isn't zeroed
    // (under a sanitizer), goes round in circles; either way the file is told as damaged.
    QByteArray blanked = jet3;
    blanked.replace(46 * 2048, 2048, QByteArray(2048, '\0'));
    const struct {
        const char* name;
        QByteArray bytes;
        const char* message;
    } cases[] = {
        {"empty", QByteArray(), "is not a Jet database file"},
        {"noise", noise, "is not a Jet database file"},
        {"cut mid-page", jet4.left(100000), "is cut short"},
        {"cut at a page", jet3.left(64 * 1024), "is damaged"},
        {"cut after the catalog", jet4.left(40 * 4096), "damaged"},
        {"scrambled", scrambled, "damaged"},
        {"a table blanked", blanked, "damaged"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString legacyFile = write(QString(c.name) + ".mdb", c.bytes);
        const QString target = dir.filePath(QString(c.name) + "-target.mdb");
        const Run result = run({"import", legacyFile, target});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.err.startsWith("lattimer-db: ")) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(c.message)) << result.err.toStdString();
        EXPECT_FALSE(QFile::exists(target));
    }
}

}  // namespace
