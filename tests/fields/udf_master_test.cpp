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
#include "util/frm_config.h"

#include <functional>
#include <optional>

namespace {

using testing_support::errorOf;

const QString kLockedText = QStringLiteral(
    "Unable to modify user defined fields because the data is locked by another process.  You "
    "can either close all other windows or restart  to free the process.");
const QStringList kInstalled = {"udf1|Birthday|0|0", "udf2|Referred By|0|0"};

class UDFMasterTest : public testing_support::OptionsSessionTest {
protected:
    void SetUp() override {
        OptionsSessionTest::SetUp();
        gCurrentUDF = UDFDefinition();
        grid.Cols(3);
        grid.TextMatrix(0, 2, "Label");
        for (const char* id : {"1", "2"}) {
            execute(QStringLiteral("INSERT INTO clntudf (id, udf1, udf2, udf3, udf4, udf5, udf7) "
                                   "VALUES (%1, 'a', 'b', 'c', 'd', 'e', 'g')")
                        .arg(id));
        }
    }

    // Labels the installer's free row of that column of clntudf.
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
        const QStringList rows =
            query("SELECT value1 FROM options WHERE section = 'UDFOrder' AND userid = 1");
        return rows.value(0, "<none>");
    }
    QStringList query(const QString& sql) { return testing_support::rowsOf(*gDBase.theDb, sql); }
    // Descrpn|Type|Decimals|Class|Choice1|Choice24 of that row of udfs.
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
    qint16 registered(const QString& table, qint32 user = 1) {
        qint16 nPos = 0;
        master.RegisterUDFControl(table, nPos, user, false, nullptr);
        return nPos;
    }
    void fillGrid() { master.FillUDFList("clntudf", 1, true, true, false, &grid, false, nullptr); }
    // col|order|label of each row below the heading.
    QStringList gridRows() const {
        QStringList rows;
        for (int r = 1; r < grid.Rows(); ++r) {
            rows << QStringList{grid.TextMatrix(r, 0), grid.TextMatrix(r, 1), grid.TextMatrix(r, 2)}
                        .join('|');
        }
        return rows;
    }
    // col:order of each row below the heading.
    QString shown() const {
        QStringList rows;
        for (int r = 1; r < grid.Rows(); ++r) {
            rows << grid.TextMatrix(r, 0) + ':' + grid.TextMatrix(r, 1);
        }
        return rows.join(' ');
    }
    qint16 gridRowOf(const QString& col) const {
        for (int r = 1; r < grid.Rows(); ++r) {
            if (grid.TextMatrix(r, 0) == col) {
                return qint16(r);
            }
        }
        ADD_FAILURE() << "no grid row for " << col.toStdString();
        return 0;
    }
    // col|label|class|owner of an entry, through FillUDF.
    QString entryText(const QString& table, qint32 user, qint16 row) {
        QString col, desc;
        qint16 nType = 0, decimals = 0, nClass = 0;
        qint32 owner = 0;
        rt::Array<QString> choices;
        choices.redim(23);
        EXPECT_TRUE(rt::CBool(
            master.FillUDF(table, user, row, col, desc, nType, decimals, choices, nClass, owner)));
        return QStringLiteral("%1|%2|%3|%4").arg(col, desc).arg(nClass).arg(owner);
    }
    QStringList listed(const QString& table, qint32 user = 1) {
        QStringList entries;
        for (qint16 row = 1; row <= master.GetNumUDFs(table, user); ++row) {
            entries << entryText(table, user, row);
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
    void prepareField(const QString& desc, qint16 nOrder, qint16 nClass = 0, qint32 owner = 0) {
        gCurrentUDF = {.col = QString(),
                       .desc = desc,
                       .nType = 3,
                       .nClass = nClass,
                       .lUser = owner,
                       .decimals = 2,
                       .Choices = {"Yes"},
                       .nOrder = nOrder};
        gCurrentUDF.Choices[23] = QStringLiteral("Last");
    }

    UDFMaster master;
    FlexGrid grid;
};

// --- The catalogue ---

TEST_F(UDFMasterTest, AListHoldsTheSharedFieldsAndOnlyTheReadersOwn) {
    define(3, "Spouse", 1);
    addPersonal("clntudf", "udf4", 1, "Golf");
    addPersonal("clntudf", "udf4", 7, "Tennis");
    addPersonal("clntudf2", "udf4", 1, "Elsewhere");
    const struct {
        qint32 user;
        qint16 position;
        QStringList own;
    } readers[] = {{1, 1, {"udf4|Golf|2|1"}}, {7, 2, {"udf4|Tennis|2|7"}}, {9, 3, {}}};
    for (const auto& reader : readers) {
        EXPECT_EQ(registered("clntudf", reader.user), reader.position);
        EXPECT_EQ(listed("clntudf", reader.user),
                  kInstalled + QStringList{"udf3|Spouse|1|0"} + reader.own);
    }
    EXPECT_EQ(master.FindUDFPos("clntudf", 7), 2);
}

TEST_F(UDFMasterTest, ReadingAListAgainRefreshesItInPlaceAndKeepsStaleEntriesBehindTheCount) {
    qint16 nPos = registered("clntudf");
    registered("acctudf");
    execute("UPDATE udfs SET Descrpn = '' WHERE Parent = 'clntudf' AND Col = 'udf2'");
    master.RegisterUDFControl("clntudf", nPos, 1, false, nullptr);
    EXPECT_EQ(nPos, 1);
    EXPECT_EQ(listed("clntudf"), QStringList{kInstalled[0]});
    EXPECT_EQ(master.FindRowPos(nPos, "udf2"), 0);

    execute("UPDATE udfs SET Descrpn = '' WHERE Parent = 'clntudf'");
    master.RegisterUDFControl("clntudf", nPos, 1, false, nullptr);
    EXPECT_EQ(master.GetNumUDFs("clntudf", 1), 0);
    EXPECT_EQ(master.FindRowPos(nPos, "udf1"), 0);
    EXPECT_EQ(entryText("clntudf", 1, 1), kInstalled[0]) << "the old element stays readable";
    EXPECT_EQ(master.FindUDFPos("acctudf", 1), 2);
}

TEST_F(UDFMasterTest, ListsAreFoundByTheNameAsGivenWhileRowsMatchWithoutRegardToCase) {
    registered("clntudf");
    EXPECT_EQ(master.FindUDFPos("CLNTUDF", 1), 0);
    EXPECT_EQ(master.FindUDFPos("clntudf", 2), 0);
    EXPECT_EQ(registered("CLNTUDF"), 2);
    EXPECT_EQ(listed("CLNTUDF"), kInstalled);
}

void fillUDF(UDFMaster& m, const QString& table, qint16 row) {
    QString col, desc;
    qint16 n = 0;
    qint32 owner = 0;
    rt::Array<QString> choices;
    choices.redim(23);
    m.FillUDF(table, 1, row, col, desc, n, n, choices, n, owner);
}

TEST_F(UDFMasterTest, MisusesAreErrorsForTheCallerAndLeaveTheHourglass) {
    const struct {
        const char* name;
        std::function<void(UDFMaster&)> call;
        int number;
    } misuses[] = {
        {"count of an unknown list", [](UDFMaster& m) { m.GetNumUDFs("clntudf", 99); }, 9},
        {"entry of an empty list", [](UDFMaster& m) { fillUDF(m, "nosuch", 1); }, 9},
        {"entry past the count", [](UDFMaster& m) { fillUDF(m, "clntudf", 3); }, 9},
        {"field of an unknown column", [](UDFMaster& m) { m.FillMyUDF("clntudf", "udf9", 1); }, 9},
        {"field of an unknown list", [](UDFMaster& m) { m.FillMyUDF("projudf", "udf1", 1); }, 9},
        {"edit of an unknown column",
         [](UDFMaster& m) { m.EditUDF("clntudf", "udf9", nullptr, false); }, 9},
        {"grid asked for but none given",
         [](UDFMaster& m) { m.FillUDFList("clntudf", 1, false, true, false, nullptr, false, {}); },
         rt::ObjectNotSet},
    };
    registered("clntudf");
    qint16 empty = 0;
    master.RegisterUDFControl("nosuch", empty, 1, false, nullptr);
    EXPECT_EQ(master.GetNumUDFs("nosuch", 1), 0) << "a list without rows still has a position";
    const QStringList before = udfsRow("udf1");
    for (const auto& misuse : misuses) {
        gCurrentUDF.col = gCurrentUDF.desc = QStringLiteral("udf1");
        EXPECT_EQ(errorOf([&] { misuse.call(master); }), misuse.number) << misuse.name;
        EXPECT_EQ(gCurrentUDF.col, "udf1") << misuse.name;
    }
    EXPECT_TRUE(ui.busy);
    EXPECT_EQ(udfsRow("udf1"), before);
    EXPECT_EQ(storedOrder(), "<none>");
}

TEST_F(UDFMasterTest, LoadingAllFillsTheSharedInstanceFromOneReadInItsOrder) {
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
    const qint16 counts[] = {2, 1, 2, 1, 1, 1};
    for (qint16 i = 0; i < 6; ++i) {
        EXPECT_EQ(UDFMaster1().FindUDFPos(tables[i], 1), i + 1);
        EXPECT_EQ(UDFMaster1().GetNumUDFs(tables[i], 1), counts[i]) << tables[i].toStdString();
    }
    EXPECT_EQ(announced, tables + tables);
    qint16 nPos = 0;
    UDFMaster1().RegisterUDFControl("clntudf", nPos, 2, false, nullptr);
    EXPECT_EQ(nPos, 7) << "reading all again made no new lists";
    EXPECT_EQ(UDFMaster1().parent(), &frmConfig::instance());
    EXPECT_FALSE(ui.busy);
}

TEST_F(UDFMasterTest, TheChangeIsAnnouncedWithTheListCompleteAndItsOrderNotYetRead) {
    storeOrder("2,1");
    QStringList seen;
    QObject::connect(&master, &UDFMaster::UDFChange, [&](const QString& table) {
        master.FillMyUDF(table, "udf1", 1);
        seen << QStringLiteral("%1 %2 %3")
                    .arg(table)
                    .arg(master.GetNumUDFs(table, 1))
                    .arg(gCurrentUDF.nOrder);
    });
    fillGrid();
    EXPECT_EQ(seen, QStringList{"clntudf 2 0"});
    EXPECT_EQ(orders({"udf1", "udf2"}), (QList<int>{2, 1}));
}

TEST_F(UDFMasterTest, TheGridShowsTheDisplayOrderAndAnOldSnapshotUntilReadAgain) {
    storeOrder("2,1");
    fillGrid();
    EXPECT_EQ(gridRows(), (QStringList{"udf2|1|Referred By", "udf1|2|Birthday"}));
    EXPECT_EQ(grid.TextMatrix(0, 2), "Label");
    EXPECT_EQ(grid.RowHeight(1), 300);
    EXPECT_EQ(grid.RowHeight(2), 300);
    EXPECT_EQ(grid.Col(), 1);
    EXPECT_EQ(grid.ColSel(), 1);

    define(3, "Spouse");
    storeOrder("1,2");
    master.FillUDFList("clntudf", 1, false, true, false, &grid, false, nullptr);
    EXPECT_EQ(gridRows(), (QStringList{"udf1|1|Birthday", "udf2|2|Referred By"}));
    fillGrid();
    EXPECT_EQ(gridRows(), (QStringList{"udf1|1|Birthday", "udf2|2|Referred By", "udf3|2|Spouse"}));
    EXPECT_FALSE(ui.busy);
}

TEST(FlexGridTest, SortsByTheNumberInColumnColKeepingEqualNumbersInOrder) {
    FlexGrid g;
    g.Cols(2);
    g.Rows(41);
    g.TextMatrix(0, 0, "heading");
    for (int r = 1; r <= 40; ++r) {
        g.TextMatrix(r, 0, QString::number(r));
        // Text that is no number sorts as 0.
        g.TextMatrix(r, 1, r == 40 ? QStringLiteral("x") : QString::number((r * 7) % 11));
    }
    g.Col(1);
    g.Sort(FlexGrid::kSortNumericAscending);
    EXPECT_EQ(g.TextMatrix(0, 0), "heading");
    for (int r = 2; r <= 40; ++r) {
        const double key = rt::Val(g.TextMatrix(r, 1));
        const double keyBefore = rt::Val(g.TextMatrix(r - 1, 1));
        ASSERT_GE(key, keyBefore) << "row " << r;
        if (key == keyBefore) {
            ASSERT_GT(g.TextMatrix(r, 0).toInt(), g.TextMatrix(r - 1, 0).toInt()) << "row " << r;
        }
    }
    EXPECT_EQ(errorOf([&] { g.TextMatrix(41, 0); }), 381);
    EXPECT_EQ(errorOf([&] { g.TextMatrix(1, 2, "x"); }), 381);
    EXPECT_EQ(errorOf([&] { g.Sort(1); }), rt::InvalidPropertyValue);
}

// --- The display order ---

struct StoredOrder {
    const char* name;
    const char* stored;  // nullptr: nothing stored
    QList<int> orders;
};

class GetOrderTest : public UDFMasterTest, public ::testing::WithParamInterface<StoredOrder> {};

TEST_P(GetOrderTest, ReadsTheCommaListOverTheEntriesInListOrder) {
    define(3, "Spouse");
    define(4, "Golf");
    if (GetParam().stored) {
        storeOrder(GetParam().stored);
    }
    master.GetOrder(registered("clntudf"), "clntudf");
    EXPECT_EQ(orders({"udf1", "udf2", "udf3", "udf4"}), GetParam().orders);
}

INSTANTIATE_TEST_SUITE_P(
    CommaLists, GetOrderTest,
    ::testing::Values(StoredOrder{"NoneStored", nullptr, {1, 2, 3, 4}},
                      StoredOrder{"FewerNumbersRepeatTheLast", "2,1", {2, 1, 1, 1}},
                      StoredOrder{"MoreNumbersAreIgnored", "4,3,2,1,9,9", {4, 3, 2, 1}},
                      StoredOrder{"ADigitAndACommaIsNeverCut", "3,", {1, 2, 3, 4}},
                      StoredOrder{"NonNumbersKeepTheirIndex", "x,3,y,1", {1, 3, 3, 1}},
                      StoredOrder{"ZeroAndDuplicatesAsTheyStand", "0,2,2,3", {0, 2, 2, 3}},
                      StoredOrder{"NumbersRoundHalfToEven", "2.5,1.5", {2, 2, 2, 2}}),
    [](const auto& info) { return std::string(info.param.name); });

// --- Adding, changing and removing a field ---

struct Addition {
    const char* name;
    qint16 asked;
    const char* saved;
    const char* orders;  // of the four fields in the grid
};

class AddUDFTest : public UDFMasterTest, public ::testing::WithParamInterface<Addition> {};

TEST_P(AddUDFTest, TheNewFieldTakesTheFreeRowAndComesLastWhileTheOthersMakeRoom) {
    define(3, "Spouse");
    fillGrid();
    prepareField("Anniversary", GetParam().asked);

    master.AddUDF("clntudf", &grid, "udf4");

    EXPECT_EQ(gCurrentUDF.col, "udf4");
    EXPECT_EQ(udfsRow("udf4"), QStringList{"Anniversary|3|2|0|Yes|Last"}) << "no second row";
    EXPECT_EQ(storedOrder(), GetParam().saved);
    EXPECT_EQ(shown(), GetParam().orders);
    EXPECT_FALSE(ui.busy);
}

INSTANTIATE_TEST_SUITE_P(
    Positions, AddUDFTest,
    ::testing::Values(Addition{"AtTheEnd", 4, "1,2,3,4", "udf1:1 udf2:2 udf3:3 udf4:4"},
                      Addition{"InTheMiddle", 2, "1,3,4,4", "udf1:1 udf2:3 udf3:4 udf4:4"},
                      Addition{"AtTheTop", 1, "2,3,4,4", "udf1:2 udf2:3 udf3:4 udf4:4"}),
    [](const auto& info) { return std::string(info.param.name); });

struct Move {
    const char* col;
    qint16 to;
    const char* saved;
    const char* shown;  // col:order in grid order
};

class EditUDFMoveTest : public UDFMasterTest, public ::testing::WithParamInterface<Move> {};

TEST_P(EditUDFMoveTest, MovingAFieldShiftsOnlyTheFieldsBetween) {
    const Move move = GetParam();
    for (int column = 3; column <= 6; ++column) {
        define(column, QStringLiteral("Field %1").arg(column));
    }
    fillGrid();
    master.FillMyUDF("clntudf", move.col, 1);
    gCurrentUDF.desc = QStringLiteral("Renamed");
    gCurrentUDF.nOrder = move.to;

    master.EditUDF("clntudf", move.col, &grid, false);

    EXPECT_EQ(storedOrder(), move.saved);
    EXPECT_EQ(shown(), move.shown);
    EXPECT_EQ(grid.TextMatrix(gridRowOf(move.col), 2), "Renamed");
    EXPECT_EQ(udfsRow(move.col).value(0).section('|', 0, 0), "Renamed");
    EXPECT_FALSE(ui.busy);
}

INSTANTIATE_TEST_SUITE_P(
    Moves, EditUDFMoveTest,
    ::testing::Values(Move{"udf5", 2, "1,3,4,5,2,6", "udf1:1 udf5:2 udf2:3 udf3:4 udf4:5 udf6:6"},
                      Move{"udf2", 5, "1,5,2,3,4,6", "udf1:1 udf3:2 udf4:3 udf5:4 udf2:5 udf6:6"},
                      Move{"udf3", 3, "1,2,3,4,5,6", "udf1:1 udf2:2 udf3:3 udf4:4 udf5:5 udf6:6"}),
    [](const auto& info) {
        return std::string(info.param.col) + "To" + std::to_string(info.param.to);
    });

TEST_F(UDFMasterTest, AChangedClassLivesInMemoryUntilTheListIsReadAgain) {
    fillGrid();
    master.FillMyUDF("clntudf", "udf1", 1);
    gCurrentUDF.nClass = 1;
    gCurrentUDF.nType = 7;
    gCurrentUDF.decimals = 4;
    gCurrentUDF.Choices[1] = QStringLiteral("Second");

    master.EditUDF("clntudf", "udf1", &grid, false);

    EXPECT_EQ(listed("clntudf")[0], "udf1|Birthday|1|0");
    gCurrentUDF = UDFDefinition();
    master.FillMyUDF("clntudf", "udf1", 1);
    EXPECT_EQ(gCurrentUDF.nType, 3) << "the type of a field never changes";
    EXPECT_EQ(gCurrentUDF.decimals, 4);
    EXPECT_EQ(gCurrentUDF.Choices[1], "Second");
    EXPECT_EQ(query("SELECT Type, Decimals, Class, Choice2 FROM udfs WHERE Parent = 'clntudf' "
                    "AND Col = 'udf1' AND userid = 0"),
              QStringList{"3|4|0|Second"});
    fillGrid();
    EXPECT_EQ(listed("clntudf")[0], "udf1|Birthday|0|0");
}

class SharedRemovalTest : public UDFMasterTest, public ::testing::WithParamInterface<int> {};

TEST_P(SharedRemovalTest, BlanksTheRowWipesTheValuesClosesTheGapAndFreesTheColumn) {
    const int nClass = GetParam();
    define(3, "Spouse");
    define(4, "Golf");
    execute(QStringLiteral("UPDATE udfs SET Type = 3, Decimals = 2, Choice1 = 'x', Class = %1 "
                           "WHERE Parent = 'clntudf' AND Col = 'udf1'")
                .arg(nClass));
    storeOrder("2,1,3,4");
    fillGrid();
    ASSERT_EQ(grid.TextMatrix(2, 0), "udf1");

    master.DeleteUDF("clntudf", 2, &grid, qint16(nClass), 0);

    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(udfsRow("udf1"), QStringList{QStringLiteral("|3|2|%1|x|Null").arg(nClass)});
    EXPECT_EQ(values(), QStringList(2, "|b|c|d|e|g"));
    EXPECT_EQ(storedOrder(), "1,2,3");
    EXPECT_EQ(gridRows(), (QStringList{"udf2|1|Referred By", "udf3|2|Spouse", "udf4|3|Golf"}));
    EXPECT_FALSE(ui.busy);

    prepareField("Born on", 4, 1);
    gCurrentUDF.nType = 8;
    master.AddUDF("clntudf", &grid, "udf1");
    EXPECT_EQ(udfsRow("udf1"), QStringList{"Born on|8|2|1|Yes|Last"}) << "no second row";
}

INSTANTIATE_TEST_SUITE_P(SharedClasses, SharedRemovalTest, ::testing::Values(0, 1));

TEST_F(UDFMasterTest, APersonalFieldHasARowOfItsOwnAndItsRemovalDeletesOnlyThatRow) {
    addPersonal("clntudf", "udf5", 7, "Theirs");
    fillGrid();
    prepareField("Mine", 3, 2, 1);
    master.AddUDF("clntudf", &grid, "udf5");
    EXPECT_EQ(udfsRow("udf5", 1), QStringList{"Mine|3|2|2|Yes|Last"});
    EXPECT_EQ(listed("clntudf"), kInstalled + QStringList{"udf5|Mine|2|1"});

    master.DeleteUDF("clntudf", gridRowOf("udf5"), &grid, 2, 1);

    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(udfsRow("udf5", 1), QStringList());
    EXPECT_EQ(udfsRow("udf5", 7), QStringList{"Theirs|0|0|2|Null|Null"});
    EXPECT_EQ(udfsRow("udf5", 0), QStringList{"|0|0|0|Null|Null"});
    EXPECT_EQ(values(), QStringList(2, "a|b|c|d||g")) << "every record loses the value";
    EXPECT_EQ(gridRows(), (QStringList{"udf1|1|Birthday", "udf2|2|Referred By"}));
}

TEST_F(UDFMasterTest, AQuoteInAColumnNameIsEscapedInRemovalOnly) {
    execute(
        "INSERT INTO udfs (Parent, Col, Descrpn, Type, Decimals, Class, userid) VALUES "
        "('clntudf', 'it''s', 'Quoted', 0, 0, 0, 0)");
    fillGrid();
    master.FillMyUDF("clntudf", "it's", 1);
    EXPECT_NE(errorOf([&] { master.EditUDF("clntudf", "it's", &grid, false); }), 0);
    EXPECT_TRUE(ui.busy);

    master.DeleteUDF("clntudf", gridRowOf("it's"), &grid, 0, 0);

    EXPECT_EQ(ui.texts(), std::vector<QString>{kLockedText}) << "the data table has no such column";
    EXPECT_EQ(query("SELECT Descrpn FROM udfs WHERE Col = 'it''s'"), QStringList{""});
    EXPECT_EQ(master.GetNumUDFs("clntudf", 1), 3);
}

// --- A removal that fails ---

class LockedDataTest : public UDFMasterTest {
protected:
    void SetUp() override {
        engine::setLockWait(300);  // the database is opened with it
        UDFMasterTest::SetUp();
    }
    void TearDown() override {
        UDFMasterTest::TearDown();
        engine::setLockWait(3000);
    }
};

TEST_F(LockedDataTest, EveryFailureIsToldAsALockAndLeavesMemoryAsItWas) {
    const struct {
        const char* name;
        const char* otherProgram;  // what another program holding the file runs, if any
        const char* trigger;       // made on the file beforehand, if any
        const char* cell;          // written over the field's name in the grid, if any
        qint16 therow;
        const char* udf2Label;  // in udfs afterwards
        const char* values;     // of each record afterwards
    } failures[] = {
        {"another program has the data table open", "BEGIN; SELECT count(*) FROM clntudf;", nullptr,
         nullptr, 2, "Referred By", "a|b|c|d|e|g"},
        {"the data table refuses the wipe after the definition was blanked", nullptr,
         "CREATE TRIGGER held BEFORE UPDATE ON clntudf BEGIN SELECT RAISE(ABORT, 'x'); END",
         nullptr, 2, "", "a|b|c|d|e|g"},
        {"a row outside the grid", nullptr, nullptr, nullptr, 3, "Referred By", "a|b|c|d|e|g"},
        {"a column not in the list runs both statements first", nullptr, nullptr, "udf7", 2,
         "Referred By", "a|b|c|d|e|"},
    };
    storeOrder("1,2");
    for (const auto& failure : failures) {
        SCOPED_TRACE(failure.name);
        fillGrid();
        ui.messages.clear();
        if (failure.trigger) {
            testing_support::runOnFile(databasePath, failure.trigger);
        }
        if (failure.cell) {
            grid.TextMatrix(2, 0, failure.cell);
        }
        const QStringList before = gridRows();
        {
            std::optional<testing_support::OtherProgram> other;
            if (failure.otherProgram) {
                other.emplace(databasePath, failure.otherProgram);
            }
            master.DeleteUDF("clntudf", failure.therow, &grid, 0, 0);
        }
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text, kLockedText);
        EXPECT_EQ(ui.messages[0].icon, platform::Msg::Exclamation);
        EXPECT_EQ(ui.messages[0].buttons, platform::Msg::OKOnly);
        EXPECT_EQ(ui.messages[0].title, platform::kApplicationTitle);
        EXPECT_FALSE(ui.busy);
        EXPECT_EQ(udfsRow("udf2").value(0).section('|', 0, 0), failure.udf2Label);
        EXPECT_EQ(values(), QStringList(2, failure.values));
        EXPECT_EQ(listed("clntudf"), kInstalled);
        EXPECT_EQ(orders({"udf1", "udf2"}), (QList<int>{1, 2}));
        EXPECT_EQ(storedOrder(), "1,2");
        EXPECT_EQ(gridRows(), before);
        testing_support::runOnFile(databasePath, "DROP TRIGGER IF EXISTS held");
        define(2, "Referred By");
    }
}

}  // namespace
