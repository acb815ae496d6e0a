// The field manager on a database as the installer ships it: the lists per table and user, a
// field's life through adding, moving, changing and removing it, the stored display order, and
// the one message of a removal that fails.

#include "fields/udf_master.h"
#include "data/dbase.h"
#include "fixtures.h"
#include "platform/convert.h"
#include "platform/engine/engine.h"
#include "settings/options.h"
#include "util/flex_grid.h"

#include <optional>

namespace {

using testing_support::errorOf;

const QString kLockedText = QStringLiteral(
    "Unable to modify user defined fields because the data is locked by another process.  You "
    "can either close all other windows or restart  to free the process.");
const QStringList kInstalled = {"udf1|Birthday|0|0", "udf2|Referred By|0|0"};

class UDFMasterTestFixture : public testing_support::OptionsSessionTest {
protected:
    void SetUp() override {
        engine::setLockWait(300);  // the database is opened with it; a held lock fails soon
        OptionsSessionTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        grid.Cols(3);
        for (const char* id : {"1", "2"}) {
            execute(QStringLiteral("INSERT INTO clntudf (id, udf1, udf2, udf3, udf4, udf5, udf7) "
                                   "VALUES (%1, 'a', 'b', 'c', 'd', 'e', 'g')")
                        .arg(id));
        }
    }
    void TearDown() override {
        OptionsSessionTest::TearDown();
        engine::setLockWait(3000);
    }

    // Labels the installer's row of that column of clntudf; an empty label frees it.
    void define(int column, const QString& label, int nClass = 0) {
        execute(QStringLiteral("UPDATE udfs SET Descrpn = '%1', Class = %2 WHERE Parent = "
                               "'clntudf' AND Col = 'udf%3' AND userid = 0")
                    .arg(label)
                    .arg(nClass)
                    .arg(column));
    }
    void addPersonal(const QString& table, const QString& col, qint32 user, const QString& label) {
        execute(QStringLiteral("INSERT INTO udfs (Parent, Col, Descrpn, Type, Decimals, Class, "
                               "userid) VALUES ('%1', '%2', '%3', 0, 0, 2, %4)")
                    .arg(table, col, label)
                    .arg(user));
    }
    void storeOrder(const QString& order) { SaveOption(1, "UDFOrder", order, false); }
    QString storedOrder() {
        return query("SELECT value1 FROM options WHERE section = 'UDFOrder' AND userid = 1")
            .value(0, "<none>");
    }
    QStringList query(const QString& sql) { return testing_support::rowsOf(*gDBase.theDb, sql); }
    // Descrpn|Type|Decimals|Class|Choice1|Choice24 of each row of that column of clntudf.
    QStringList udfsRow(const QString& col, qint32 user = 0) {
        return query(QStringLiteral("SELECT Descrpn, Type, Decimals, Class, Choice1, Choice24 "
                                    "FROM udfs WHERE Parent = 'clntudf' AND Col = '%1' AND "
                                    "userid = %2")
                         .arg(col)
                         .arg(user));
    }
    QStringList values() {
        return query("SELECT udf1, udf2, udf3, udf4, udf5, udf7 FROM clntudf ORDER BY id");
    }
    void fillGrid(bool reRead = true) {
        master.FillUDFList("clntudf", 1, reRead, true, false, &grid, false, nullptr);
    }
    // col:order, or col:order:label, of each row below the heading.
    QString shown(int cols = 2) const {
        QStringList rows;
        for (int r = 1; r < grid.Rows(); ++r) {
            QStringList cells;
            for (int c = 0; c < cols; ++c) {
                cells << grid.TextMatrix(r, c);
            }
            rows << cells.join(':');
        }
        return rows.join(' ');
    }
    qint16 gridRowOf(const QString& col) const {
        return qint16(grid.findItems(col, Qt::MatchExactly).value(0)->row() + 1);
    }
    // col|label|class|owner of each entry of the list, through FillUDF.
    QStringList listed(const QString& table, qint32 user = 1) {
        QStringList entries;
        QString col, desc;
        qint16 nType = 0, decimals = 0, nClass = 0;
        qint32 owner = 0;
        rt::Array<QString> choices;
        choices.redim(23);
        for (qint16 row = 1; row <= master.GetNumUDFs(table, user); ++row) {
            master.FillUDF(table, user, row, col, desc, nType, decimals, choices, nClass, owner);
            entries << QStringLiteral("%1|%2|%3|%4").arg(col, desc).arg(nClass).arg(owner);
        }
        return entries;
    }
    // The display positions of those columns in user 1's clntudf list, through FillMyUDF.
    QList<int> orders(const QStringList& cols) {
        QList<int> result;
        for (const QString& col : cols) {
            master.FillMyUDF("clntudf", col, 1);
            result << gCurrentUDF.nOrder;
        }
        return result;
    }
    UDFMaster master;
    FlexGrid grid;
};

class UDFMasterTest : public testing_support::OnEveryBackend<UDFMasterTestFixture> {};

ORVANE_ON_EVERY_BACKEND(UDFMasterTest);

// Failures made with another program's lock on the database file.
class FileUDFMasterTest : public UDFMasterTestFixture {};

TEST_P(UDFMasterTest, AListHoldsTheSharedFieldsAndOnlyTheReadersOwn) {
    define(3, "Spouse", 1);
    addPersonal("clntudf", "udf4", 1, "Golf");
    addPersonal("clntudf", "udf4", 7, "Tennis");
    addPersonal("clntudf2", "udf4", 1, "Elsewhere");
    const std::pair<qint32, QStringList> readers[] = {
        {1, {"udf4|Golf|2|1"}}, {7, {"udf4|Tennis|2|7"}}, {9, {}}};
    for (const auto& [user, own] : readers) {
        qint16 nPos = 0;
        master.RegisterUDFControl("clntudf", nPos, user, false, nullptr);
        EXPECT_EQ(listed("clntudf", user), kInstalled + QStringList{"udf3|Spouse|1|0"} + own);
    }
    EXPECT_EQ(master.FindUDFPos("clntudf", 7), 2);
    EXPECT_EQ(master.FindUDFPos("CLNTUDF", 1), 0);
}

TEST_P(UDFMasterTest, LoadingAllFillsTheSharedInstanceFromOneReadInItsOrder) {
    delete &UDFMaster1();
    addPersonal("projudf", "udf2", 1, "Mine");
    addPersonal("listudf", "udf2", 5, "Theirs");
    QStringList announced;
    QObject listener;
    QObject::connect(&UDFMaster1(), &UDFMaster::UDFChange, &listener,
                     [&](const QString& table) { announced << table; });

    master.LoadAllUDFs();
    master.LoadAllUDFs();

    EXPECT_EQ(master.FindUDFPos("clntudf", 1), 0) << "the instance at hand is not filled";
    const QStringList tables = {"clntudf", "clntudf2", "projudf", "listudf", "acctudf", "produdf"};
    QStringList lists;
    for (const QString& table : tables) {
        lists << QString("%1 %2")
                     .arg(UDFMaster1().FindUDFPos(table, 1))
                     .arg(UDFMaster1().GetNumUDFs(table, 1));
    }
    EXPECT_EQ(lists.join(", "), "1 2, 2 1, 3 2, 4 1, 5 1, 6 1");
    EXPECT_EQ(announced, tables + tables);
}

// The change is announced with the list complete and its order not yet read; a grid filled
// without reading again shows the old list.
TEST_P(UDFMasterTest, TheGridShowsTheDisplayOrderAndAnOldSnapshotUntilReadAgain) {
    storeOrder("2,1");
    QStringList seen;
    QObject::connect(&master, &UDFMaster::UDFChange, [&](const QString& table) {
        master.FillMyUDF(table, "udf1", 1);
        seen << QString("%1 %2 %3")
                    .arg(table)
                    .arg(master.GetNumUDFs(table, 1))
                    .arg(gCurrentUDF.nOrder);
    });
    fillGrid();
    EXPECT_EQ(seen, QStringList{"clntudf 2 0"});
    EXPECT_EQ(shown(3), "udf2:1:Referred By udf1:2:Birthday");
    define(3, "Spouse");
    storeOrder("1,2");
    fillGrid(false);
    EXPECT_EQ(shown(), "udf1:1 udf2:2");
    fillGrid();
    EXPECT_EQ(shown(), "udf1:1 udf2:2 udf3:2");
}

// Enough rows that an unstable sort shows; text that is no number sorts as 0.
TEST(FlexGridTest, SortsByTheNumberInColumnColKeepingEqualNumbersInOrder) {
    FlexGrid g;
    g.Rows(41);
    g.TextMatrix(0, 0, "heading");
    for (int r = 1; r <= 40; ++r) {
        g.TextMatrix(r, 0, QString::number(r));
        g.TextMatrix(r, 1, r == 40 ? QStringLiteral("x") : QString::number((r * 7) % 11));
    }
    g.Col(1);
    g.Sort(FlexGrid::kSortNumericAscending);
    EXPECT_EQ(g.TextMatrix(0, 0), "heading");
    for (int r = 2; r <= 40; ++r) {
        const auto key = [&](int row) {
            return std::pair(rt::Val(g.TextMatrix(row, 1)), g.TextMatrix(row, 0).toInt());
        };
        ASSERT_LT(key(r - 1), key(r)) << "row " << r;
    }
    EXPECT_EQ(errorOf([&] { g.TextMatrix(41, 0); }), 381);
    EXPECT_EQ(errorOf([&] { g.Sort(1); }), rt::InvalidPropertyValue);
}

TEST_P(UDFMasterTest, TheStoredOrderIsACommaListOverTheEntriesInListOrder) {
    define(3, "Spouse");
    define(4, "Golf");
    qint16 nPos = 0;
    master.RegisterUDFControl("clntudf", nPos, 1, false, nullptr);
    const std::pair<const char*, QList<int>> cases[] = {
        {nullptr, {1, 2, 3, 4}},        // nothing stored yet
        {"2,1", {2, 1, 1, 1}},          // the last number repeats
        {"4,3,2,1,9,9", {4, 3, 2, 1}},  // more numbers than entries
        {"3,", {1, 2, 3, 4}},           // a digit and a comma is never cut
        {"x,3,y,1", {1, 3, 3, 1}},      // a non-number keeps its entry's index
    };
    for (const auto& [stored, expected] : cases) {
        if (stored) {
            storeOrder(stored);
        }
        master.GetOrder(nPos, "clntudf");
        EXPECT_EQ(orders({"udf1", "udf2", "udf3", "udf4"}), expected) << stored;
    }
}

// A new field takes over the row a removed one left blank, or has a row of its own when it is
// personal, and comes last while the others make room at the position asked for.
TEST_P(UDFMasterTest, ANewFieldTakesTheFreeRowAndComesLastWhileTheOthersMakeRoom) {
    define(3, "Spouse");
    // The column, its class and owner, the position asked for, then the order saved and shown.
    const std::tuple<QString, qint16, qint32, qint16, const char*, const char*> cases[] = {
        {"udf4", 0, 0, 4, "1,2,3,4", "udf1:1 udf2:2 udf3:3 udf4:4"},
        {"udf4", 0, 0, 2, "1,3,4,4", "udf1:1 udf2:3 udf3:4 udf4:4"},  // nothing takes 2
        {"udf5", 2, 1, 4, "1,2,3,4", "udf1:1 udf2:2 udf3:3 udf5:4"},
    };
    for (const auto& [col, nClass, owner, asked, saved, order] : cases) {
        define(4, "");
        storeOrder("1,2,3");
        fillGrid();
        gCurrentUDF = {QString(), "Anniversary", 8, nClass, owner, 2, {"Yes"}, asked};
        gCurrentUDF.Choices[23] = QStringLiteral("Last");
        master.AddUDF("clntudf", &grid, col);
        EXPECT_EQ(udfsRow(col, owner),
                  QStringList{QString("Anniversary|8|2|%1|Yes|Last").arg(nClass)});
        EXPECT_EQ(storedOrder(), saved);
        EXPECT_EQ(shown(), order);
    }
    EXPECT_FALSE(ui.busy);
}

// Type and class are not written: a changed class lives in memory until the list is read again.
TEST_P(UDFMasterTest, AChangeMovesOnlyTheFieldsBetweenAndKeepsTypeAndClassInTheTable) {
    for (int column = 3; column <= 6; ++column) {
        define(column, QStringLiteral("Field %1").arg(column));
    }
    // The field moved and where to, then the order saved and shown.
    const std::tuple<QString, qint16, const char*, const char*> moves[] = {
        {"udf5", 2, "1,3,4,5,2,6", "udf1:1 udf5:2 udf2:3 udf3:4 udf4:5 udf6:6"},
        {"udf2", 5, "1,5,2,3,4,6", "udf1:1 udf3:2 udf4:3 udf5:4 udf2:5 udf6:6"},
    };
    for (const auto& [col, to, saved, order] : moves) {
        storeOrder("1,2,3,4,5,6");
        fillGrid();
        master.FillMyUDF("clntudf", col, 1);
        const QString type = QString::number(gCurrentUDF.nType);
        gCurrentUDF = {col, "Renamed", 7, 1, 0, 4, {"First"}, to};
        master.EditUDF("clntudf", col, &grid, false);
        EXPECT_EQ(storedOrder(), saved);
        EXPECT_EQ(shown(), order);
        EXPECT_EQ(grid.TextMatrix(gridRowOf(col), 2), "Renamed");
        EXPECT_EQ(udfsRow(col), QStringList{"Renamed|" + type + "|4|0|First|"});
        EXPECT_EQ(listed("clntudf").filter(col + "|"), QStringList{col + "|Renamed|1|0"});
    }
    fillGrid();
    EXPECT_EQ(listed("clntudf").filter("|1|"), QStringList());
}

// A shared field is blanked for everybody, a personal one loses its owner's row alone; either
// way every record loses the value and the fields after it close up.
TEST_P(UDFMasterTest, ARemovalFreesTheFieldWipesItsValuesAndClosesTheOrder) {
    define(1, "Birthday", 1);
    define(3, "Spouse");
    addPersonal("clntudf", "udf5", 1, "Mine");
    addPersonal("clntudf", "udf5", 7, "Theirs");
    storeOrder("2,1,3,4");
    fillGrid();
    // The column, its class and owner, then its row left, the values, the order saved and shown.
    const std::tuple<QString, qint16, qint32, QStringList, QString, QString, QString> cases[] = {
        {"udf1", 1, 0, {"|3|0|1|Null|Null"}, "|b|c|d|e|g", "1,2,3", "udf2:1 udf3:2 udf5:3"},
        {"udf5", 2, 1, {}, "|b|c|d||g", "1,2", "udf2:1 udf3:2"},
    };
    for (const auto& [col, nClass, owner, left, record, saved, order] : cases) {
        master.DeleteUDF("clntudf", gridRowOf(col), &grid, nClass, owner);
        EXPECT_EQ(udfsRow(col, owner), left);
        EXPECT_EQ(values(), QStringList(2, record));
        EXPECT_EQ(storedOrder(), saved);
        EXPECT_EQ(shown(), order);
    }
    EXPECT_EQ(udfsRow("udf5", 7), QStringList{"Theirs|0|0|2|Null|Null"});
    EXPECT_EQ(grid.TextMatrix(1, 2), "Referred By");
}

TEST_P(UDFMasterTest, AQuoteInAColumnNameIsEscapedInRemovalOnly) {
    execute(
        "INSERT INTO udfs (Parent, Col, Descrpn, Type, Decimals, Class, userid) VALUES "
        "('clntudf', 'it''s', 'Quoted', 0, 0, 0, 0)");
    fillGrid();

    master.DeleteUDF("clntudf", gridRowOf("it's"), &grid, 0, 0);

    EXPECT_EQ(ui.texts(), std::vector<QString>{kLockedText}) << "the data table has no such column";
    EXPECT_EQ(query("SELECT Descrpn FROM udfs WHERE Col = 'it''s'"), QStringList{""});
    EXPECT_EQ(master.GetNumUDFs("clntudf", 1), 3);
}

// Another program holding the data table, or a trigger refusing the wipe once the definition
// was blanked.
TEST_F(FileUDFMasterTest, EveryFailureOfARemovalIsToldAsALockAndLeavesMemoryAsItWas) {
    const std::tuple<const char*, const char*, const char*> failures[] = {
        {"BEGIN; SELECT count(*) FROM clntudf;", nullptr, "Referred By"},
        {nullptr,
         "CREATE TRIGGER held BEFORE UPDATE ON clntudf BEGIN SELECT RAISE(ABORT, 'x'); END", ""},
    };
    storeOrder("1,2");
    for (const auto& [otherProgram, trigger, udf2Label] : failures) {
        fillGrid();
        if (trigger) {
            testing_support::runOnFile(databasePath, trigger);
        }
        {
            std::optional<testing_support::OtherProgram> other;
            if (otherProgram) {
                other.emplace(databasePath, otherProgram);
            }
            master.DeleteUDF("clntudf", 2, &grid, 0, 0);
        }
        ASSERT_EQ(ui.texts(), std::vector<QString>{kLockedText});
        EXPECT_EQ(ui.messages[0].icon, platform::Msg::Exclamation);
        EXPECT_FALSE(ui.busy);
        EXPECT_EQ(udfsRow("udf2").value(0).section('|', 0, 0), udf2Label);
        EXPECT_EQ(values(), QStringList(2, "a|b|c|d|e|g"));
        EXPECT_EQ(listed("clntudf"), kInstalled);
        EXPECT_EQ(orders({"udf1", "udf2"}), (QList<int>{1, 2}));
        EXPECT_EQ(storedOrder(), "1,2");
        ui.messages.clear();
    }
}

}  // namespace
