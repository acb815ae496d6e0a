// The User Fields page on real widgets over an installed database on every backend: what each
// kind of record lists, and moving a field between the classes.

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

class UserFieldsTabFixture : public testing_support::SessionTest {
protected:
    void SetUp() override {
        SessionTest::SetUp();
        if (IsSkipped()) {
            return;
        }
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
            result << lstUDF->cell(r, 0) + '|' + lstUDF->cell(r, 1) + '|' + lstUDF->cell(r, 2);
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
        QTest::mouseClick(lstUDF->viewport(), Qt::LeftButton, {},
                          lstUDF->rowRect(rowOf(col)).center());
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

class UserFieldsTabTest : public testing_support::OnEveryBackend<UserFieldsTabFixture> {};

ORVANE_ON_EVERY_BACKEND(UserFieldsTabTest);

TEST_P(UserFieldsTabTest, EachKindListsTheDefinitionRowsOfItsTableWithTheirClasses) {
    for (const char* parent : {"clntudf", "clntudf2", "listudf", "projudf", "acctudf"}) {
        setClass(parent, "udf2", 1, "Second");
        setClass(parent, "udf3", 2, "Hobby");
        setClass(parent, "udf4", 3, "Odd");  // an unknown class is shown as B
        addPersonalRow(parent, "udf3", 1);
    }
    // Each kind's name, then the installer's description of its udf1.
    const std::pair<QString, QString> kinds[] = {{"Personal Contact User Fields", "Birthday"},
                                                 {"Wealth Contact User Fields", "Risk Tolerance"},
                                                 {"List User Fields", "Campaign"},
                                                 {"Engagement User Fields", "Due Date"},
                                                 {"Account User Fields", "Account Type"}};
    tab->FillKinds();
    ASSERT_EQ(cmbUDF->count(), 5);
    for (int i = 0; i < 5; ++i) {
        cmbUDF->setCurrentIndex(i);
        EXPECT_EQ(cmbUDF->currentText(), kinds[i].first);
        ASSERT_EQ(lstUDF->rowCount(), 10) << "the users' own rows are not listed";
        EXPECT_EQ(rows().mid(0, 5), QStringList({"udf1|" + kinds[i].second + "|A", "udf2|Second|B",
                                                 "udf3||C", "udf4|Odd|B", "udf5||A"}));
        EXPECT_EQ(lstUDF->selectedRow(), 0);
    }
    EXPECT_EQ(checkedClass(), 0);
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_FALSE(ui.busy);
}

// Sorted, the rows no longer stand in the cursor's order: the field is found by its column. A
// refused move leaves the button on the class clicked until the row is selected again.
TEST_P(UserFieldsTabTest, AMoveWritesTheClassAndClearsPersonalRowsOnlyWhenAgreed) {
    const QString question =
        "If you change a user field from C to A or B all information for that user field will be "
        "cleared.  Do you wish to continue?";
    // From, to, and the answer to the question when one is asked, then the class stored.
    const std::tuple<int, int, std::optional<int>, int> moves[] = {
        {0, 1, std::nullopt, 1}, {1, 0, std::nullopt, 0}, {0, 2, std::nullopt, 2}, {2, 0, No, 2},
        {2, 1, No, 2},           {2, 0, Yes, 0},          {2, 1, Yes, 1}};
    tab->FillKinds();
    lstUDF->sortByColumn(0, 1);
    for (const auto& [from, to, answer, stored] : moves) {
        SCOPED_TRACE(testing::Message() << from << " to " << to);
        execute("DELETE FROM udfs WHERE userid <> 0");
        setClass("clntudf", "udf3", from, "Hobby");
        // The same column of another kind and another column of this kind keep their rows.
        for (const auto& [parent, col, user] : {std::tuple("clntudf", "udf3", 5),
                                                {"clntudf", "udf3", 6},
                                                {"clntudf2", "udf3", 5},
                                                {"clntudf", "udf5", 5}}) {
            addPersonalRow(parent, col, user);
        }
        cmbUDF->setCurrentIndex(1);
        cmbUDF->setCurrentIndex(0);
        clickRow("udf3");
        ASSERT_EQ(checkedClass(), from);
        ui.messages.clear();
        if (answer) {
            ui.answers.push_back(*answer);
        }

        clickClass(to);

        EXPECT_TRUE(answer ? testing_support::saidOnly(
                                 ui, question, platform::Msg::YesNo | platform::Msg::DefaultButton2)
                           : testing::AssertionResult(ui.messages.empty()));
        const bool cleared = answer == Yes;
        EXPECT_EQ(storedClass("clntudf", "udf3"), stored);
        EXPECT_EQ(count("udfs", "userid <> 0 AND Parent = 'clntudf' AND Col = 'udf3'"),
                  cleared ? 0 : 2);
        EXPECT_EQ(count("udfs", "userid <> 0"), cleared ? 2 : 4);
        EXPECT_EQ(count("udfs", "userid = 0 AND Class <> 0"), stored == 0 ? 0 : 1)
            << "no other field moved";
        EXPECT_EQ(lstUDF->cell(rowOf("udf3"), 2), QString("ABC")[stored]);
        EXPECT_EQ(tab->shownClass(rowOf("udf3")), stored);
        EXPECT_EQ(checkedClass(), to);
        clickRow("udf3");
        EXPECT_EQ(checkedClass(), stored) << "selecting the row again shows its class";
    }
}

TEST_P(UserFieldsTabTest, AKindWithoutDefinitionsIsToldAndTheOtherKindsStillWork) {
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
