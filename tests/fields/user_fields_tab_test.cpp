// The User Fields page on real widgets over an installed database: what each kind of record
// lists, and moving a field between the classes.

#include "fields/user_fields_tab.h"
#include "data/dbase.h"
#include "fixtures.h"
#include "platform/convert.h"
#include "settings/terminology.h"
#include "util/report_list.h"

#include <QComboBox>
#include <QRadioButton>
#include <QVBoxLayout>
#include <QtTest/QTest>

#include <optional>

namespace {

using platform::Msg::No;
using platform::Msg::Yes;

class UserFieldsTabTest : public testing_support::SessionTest {
protected:
    void SetUp() override {
        SessionTest::SetUp();
        gTermFinancial = QStringLiteral("Wealth");
        gTermProject = QStringLiteral("Engagement");
        auto* layout = new QVBoxLayout(&page);
        layout->addWidget(cmbUDF);
        layout->addWidget(lstUDF);
        for (QRadioButton* option : optClass) {
            layout->addWidget(option);
        }
        lstUDF->setColumns({{"User Field", 2400}, {"Description", 5000}, {"Class", 1500}});
        page.resize(500, 600);
        page.show();
        tab.emplace(cmbUDF, lstUDF, std::array{optClass[0], optClass[1], optClass[2]});
    }
    void TearDown() override {
        tab.reset();
        SessionTest::TearDown();
    }

    void setClass(const QString& parent, const QString& col, int nClass,
                  const QString& description) {
        execute(QStringLiteral("UPDATE udfs SET Class = %1, Descrpn = '%2' WHERE Parent = '%3' "
                               "AND Col = '%4'")
                    .arg(nClass)
                    .arg(description, parent, col));
    }
    void addPersonalRow(const QString& parent, const QString& col, qint32 user) {
        execute(QStringLiteral("INSERT INTO udfs (Parent, Col, Descrpn, Type, Decimals, Class, "
                               "userid) VALUES ('%1', '%2', 'My own', 0, 0, 2, %3)")
                    .arg(parent, col)
                    .arg(user));
    }
    qint16 storedClass(const QString& parent, const QString& col) {
        return rt::CInt(scalar(QStringLiteral("SELECT Class FROM udfs WHERE userid = 0 AND "
                                              "Parent = '%1' AND Col = '%2'")
                                   .arg(parent, col)));
    }
    QStringList rows() const {
        QStringList result;
        for (int r = 0; r < lstUDF->rowCount(); ++r) {
            result << QStringList{lstUDF->cell(r, 0), lstUDF->cell(r, 1), lstUDF->cell(r, 2)}.join(
                '|');
        }
        return result;
    }
    int rowOf(const QString& col) const {
        for (int r = 0; r < lstUDF->rowCount(); ++r) {
            if (lstUDF->tag(r).toString() == col) {
                return r;
            }
        }
        ADD_FAILURE() << "no row for " << col.toStdString();
        return 0;
    }
    void clickRow(const QString& col) {
        const QRect cell = lstUDF->rowRect(rowOf(col));
        QTest::mouseClick(lstUDF->viewport(), Qt::LeftButton, {}, cell.center());
    }
    // On the button's circle, which is inside its click area whatever its width.
    void clickClass(int nIndex) {
        QTest::mouseClick(optClass[nIndex], Qt::LeftButton, {},
                          QPoint(6, optClass[nIndex]->height() / 2));
    }
    std::optional<int> checkedClass() const {
        for (int i = 0; i < 3; ++i) {
            if (optClass[i]->isChecked()) {
                return i;
            }
        }
        return std::nullopt;
    }

    QWidget page;
    QComboBox* cmbUDF = new QComboBox(&page);
    ReportList* lstUDF = new ReportList(QStringLiteral("lstUDF"), &page);
    QRadioButton* optClass[3] = {new QRadioButton("Class A", &page),
                                 new QRadioButton("Class B", &page),
                                 new QRadioButton("Class C (Personal)", &page)};
    std::optional<UserFieldsTab> tab;
};

struct Kind {
    int index;
    const char* name;
    const char* parent;
    const char* firstField;  // the installer's description of its udf1
};

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.parent;
}

class KindListingTest : public UserFieldsTabTest, public ::testing::WithParamInterface<Kind> {};

TEST_P(KindListingTest, ListsTheDefinitionRowsOfItsTableWithTheirClasses) {
    const Kind kind = GetParam();
    for (const char* parent : {"clntudf", "clntudf2", "listudf", "projudf", "acctudf"}) {
        setClass(parent, "udf2", 1, "Second");
        setClass(parent, "udf3", 2, "Hobby");
        setClass(parent, "udf4", 3, "Odd");
        addPersonalRow(parent, "udf3", 1);
    }

    tab->FillKinds();
    cmbUDF->setCurrentIndex(kind.index);

    EXPECT_EQ(cmbUDF->count(), 5);
    EXPECT_EQ(cmbUDF->currentText(), kind.name);
    ASSERT_EQ(lstUDF->rowCount(), 10) << "the users' own rows are not listed";
    EXPECT_EQ(rows().mid(0, 5), (QStringList{QStringLiteral("udf1|%1|A").arg(kind.firstField),
                                             "udf2|Second|B", "udf3||C", "udf4|Odd|B", "udf5||A"}));
    const int shown[] = {0, 1, 2, 1, 0};
    for (int r = 0; r < 5; ++r) {
        EXPECT_EQ(lstUDF->tag(r).toString(), QStringLiteral("udf%1").arg(r + 1));
        EXPECT_EQ(tab->shownClass(r), shown[r]) << "row " << r;
    }
    EXPECT_EQ(lstUDF->selectedRow(), 0);
    EXPECT_EQ(checkedClass(), 0);
    clickRow("udf3");
    EXPECT_EQ(checkedClass(), 2);
    clickRow("udf4");
    EXPECT_EQ(checkedClass(), 1) << "an unknown class is shown as B";
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_FALSE(ui.busy);
}

INSTANTIATE_TEST_SUITE_P(
    EveryKind, KindListingTest,
    ::testing::Values(Kind{0, "Personal Contact User Fields", "clntudf", "Birthday"},
                      Kind{1, "Wealth Contact User Fields", "clntudf2", "Risk Tolerance"},
                      Kind{2, "List User Fields", "listudf", "Campaign"},
                      Kind{3, "Engagement User Fields", "projudf", "Due Date"},
                      Kind{4, "Account User Fields", "acctudf", "Account Type"}),
    [](const auto& info) { return std::string(info.param.parent); });

struct Move {
    const char* name;
    int from;
    int to;
    std::optional<int> answer;  // to the question, when one is asked
    int stored;                 // the class in udfs afterwards
    const char* letter;         // in the list afterwards
    bool personalRowsKept;
};

void PrintTo(const Move& move, std::ostream* out) {
    *out << move.name;
}

class ClassMoveTest : public UserFieldsTabTest, public ::testing::WithParamInterface<Move> {};

TEST_P(ClassMoveTest, WritesTheClassAndClearsPersonalRowsOnlyWhenAgreed) {
    const Move move = GetParam();
    setClass("clntudf", "udf3", move.from, "Hobby");
    addPersonalRow("clntudf", "udf3", 5);
    addPersonalRow("clntudf", "udf3", 6);
    // The same column of another kind and another column of this kind keep their rows.
    addPersonalRow("clntudf2", "udf3", 5);
    addPersonalRow("clntudf", "udf5", 5);
    tab->FillKinds();
    // Sorted, the rows no longer stand in the cursor's order: the field is found by its column.
    lstUDF->sortByColumn(0, 1);
    clickRow("udf3");
    ASSERT_EQ(checkedClass(), move.from);
    if (move.answer) {
        ui.answers.push_back(*move.answer);
    }

    clickClass(move.to);

    if (move.answer) {
        EXPECT_TRUE(testing_support::saidOnly(
            ui,
            "If you change a user field from C to A or B all information for that user field "
            "will be cleared.  Do you wish to continue?",
            platform::Msg::YesNo | platform::Msg::DefaultButton2));
    } else {
        EXPECT_TRUE(ui.messages.empty());
    }
    EXPECT_EQ(storedClass("clntudf", "udf3"), move.stored);
    EXPECT_EQ(count("udfs", "userid <> 0 AND Parent = 'clntudf' AND Col = 'udf3'"),
              move.personalRowsKept ? 2 : 0);
    EXPECT_EQ(count("udfs", "userid <> 0"), move.personalRowsKept ? 4 : 2);
    EXPECT_EQ(count("udfs", "userid = 0 AND Parent = 'clntudf' AND Col = 'udf3'"), 1);
    EXPECT_EQ(count("udfs", "userid = 0 AND Class <> 0"), move.stored == 0 ? 0 : 1)
        << "no other field moved";
    const int row = rowOf("udf3");
    EXPECT_EQ(lstUDF->cell(row, 2), move.letter);
    EXPECT_EQ(tab->shownClass(row), move.stored);
    EXPECT_EQ(checkedClass(), move.to) << "the button stays on the class clicked";

    clickRow("udf3");
    EXPECT_EQ(checkedClass(), move.stored) << "selecting the row again shows its class";
}

INSTANTIATE_TEST_SUITE_P(EveryMove, ClassMoveTest,
                         ::testing::Values(Move{"AToB", 0, 1, std::nullopt, 1, "B", true},
                                           Move{"BToA", 1, 0, std::nullopt, 0, "A", true},
                                           Move{"AToC", 0, 2, std::nullopt, 2, "C", true},
                                           Move{"CToARefused", 2, 0, No, 2, "C", true},
                                           Move{"CToBRefused", 2, 1, No, 2, "C", true},
                                           Move{"CToAAgreed", 2, 0, Yes, 0, "A", false},
                                           Move{"CToBAgreed", 2, 1, Yes, 1, "B", false}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(UserFieldsTabTest, AKindWithoutDefinitionsIsToldAndTheOtherKindsStillWork) {
    execute("DELETE FROM udfs WHERE Parent = 'listudf'");
    tab->FillKinds();

    cmbUDF->setCurrentIndex(2);

    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_TRUE(ui.messages[0].text.contains("\"List User Fields\""))
        << ui.messages[0].text.toStdString();
    EXPECT_EQ(ui.messages[0].icon, platform::Msg::Exclamation);
    EXPECT_EQ(lstUDF->rowCount(), 0);
    EXPECT_FALSE(ui.ended);
    EXPECT_FALSE(ui.busy);
    clickClass(1);
    EXPECT_EQ(count("udfs", "Class <> 0"), 0) << "with no field listed no class moves";

    cmbUDF->setCurrentIndex(0);
    EXPECT_EQ(lstUDF->rowCount(), 10);
    clickRow("udf2");
    clickClass(2);
    EXPECT_EQ(storedClass("clntudf", "udf2"), 2);
    EXPECT_EQ(ui.messages.size(), 1u);
}

}  // namespace
