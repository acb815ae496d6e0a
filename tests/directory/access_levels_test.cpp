// The Access Levels tab of a logged-on console: loading a level into its two lists, ticks and
// names as edits, the prompts on a change of level and on closing, and what a save stores.

#include "access/right_catalogue.h"
#include "console_fixture.h"
#include "directory/frm_employee.h"

#include <QComboBox>
#include <QFocusEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QtTest/QTest>

namespace {

namespace Msg = platform::Msg;
using platform::RunEnded;

// Positions of the catalogue that the tests work on.
constexpr int kContacts = 0, kAccounts = 1, kAdministration = 8, kLibrary = 84;
constexpr int kModifyNameOfClients = 11, kClientAccountsNumber = 23, kAccessAllClients = 76;

class AccessLevelsTestFixture : public ConsoleFixture {
protected:
    // Logs on and opens the tab, which loads the first level.
    void start() {
        logOn();
        console.tabAdmin->setCurrentIndex(frmAdmin::AccessLevels);
    }
    // The administrator's choice of a level on the list.
    void chooseLevel(int index) {
        console.cmbLevel->setCurrentIndex(index);
        emit console.cmbLevel->activated(index);
    }
    static QListWidgetItem* rowOf(QListWidget* list, int position) {
        for (int r = 0; r < list->count(); ++r) {
            if (list->item(r)->data(Qt::UserRole).toInt() == position) {
                return list->item(r);
            }
        }
        return nullptr;
    }
    // The row of a group, or of a right after selecting its group.
    QListWidgetItem* showRight(int position) {
        if (gRightGroups(position) == -1) {
            return rowOf(console.lstAccessGroups, position);
        }
        console.lstAccessGroups->setCurrentItem(
            rowOf(console.lstAccessGroups, gRightGroups(position)));
        return rowOf(console.lstAccess, position);
    }
    // The ticks shown at those positions, as "1" and "0".
    QString shownTicks(std::initializer_list<int> positions) {
        QString ticks;
        for (int position : positions) {
            ticks += showRight(position)->checkState() == Qt::Checked ? '1' : '0';
        }
        return ticks;
    }
    void tick(int position, bool ticked) {
        showRight(position)->setCheckState(ticked ? Qt::Checked : Qt::Unchecked);
    }
    QString stored(const QString& column) {
        return rt::CStr(db->openRecordset("SELECT " + column + " FROM sysinfo")->field(0).value());
    }
    void setStored(const QString& column, const QString& text) {
        run("UPDATE sysinfo SET " + column + " = '" + text + "'");
    }
};

class AccessLevelsTest : public testing_support::OnEveryBackend<AccessLevelsTestFixture> {};

ORVANE_ON_EVERY_BACKEND(AccessLevelsTest);

TEST_P(AccessLevelsTest, TheFirstVisitLoadsTheFirstLevelIntoBothLists) {
    start();
    EXPECT_EQ(console.cmbLevel->itemText(3), "Senior Associate");
    EXPECT_EQ(console.nLevelIndex, 0);
    EXPECT_EQ(console.txtAccessLevel->text(), "Clerk");
    EXPECT_FALSE(console.bLevelDirty || console.bLevelLoading);
    // Groups by position, so the library, catalogued ninth, comes last.
    QStringList groups;
    for (int r = 0; r < console.lstAccessGroups->count(); ++r) {
        groups << console.lstAccessGroups->item(r)->text();
    }
    EXPECT_EQ(groups, QStringList({"Contacts", "Accounts", "Billing Accounts", "Projects",
                                   "Planner and Scheduling", "Lists and Marketing", "Products",
                                   "Reports", "Administration", "Library"}));
    EXPECT_EQ(console.lstAccessGroups->currentRow(), 0);
    ASSERT_EQ(console.lstAccess->count(), 12);
    EXPECT_EQ(console.lstAccess->item(1)->text(), "Modify Name of Clients");
    EXPECT_EQ(console.lstAccess->currentRow(), 0);

    console.lstAccessGroups->setCurrentItem(rowOf(console.lstAccessGroups, kAccounts));
    // Posting is catalogued first among the accounts' rights but stands by its position.
    EXPECT_EQ(console.lstAccess->item(console.lstAccess->count() - 1)->text(),
              "Access to Posting of Transactions");
    EXPECT_EQ(console.lstAccess->currentRow(), 0);

    // The installer denies a clerk the administration and the library, and with them their
    // rights.
    EXPECT_EQ(shownTicks({kContacts, kModifyNameOfClients, kAdministration, kAccessAllClients,
                          kLibrary, 83}),
              "110000");
    EXPECT_FALSE(console.bLevelDirty);  // showing a group is no edit
}

// A group's tick or untick leaves its rights as they stand. The stored text covers positions 0
// to 244 in "1" and "0" only: free positions are written denied and whatever stood beyond is
// gone; the name goes in as typed.
TEST_P(AccessLevelsTest, ASaveStoresTheTicksInHandAsTheFirst245PositionsAndTheNameAsTyped) {
    QString text = QString(245, '1') + QString(55, 'x');
    text[9] = 'x';
    text[100] = '1';
    text[kAdministration] = '0';
    setStored("level2", text);
    start();
    tick(kModifyNameOfClients, false);
    EXPECT_TRUE(console.bLevelDirty);
    tick(kAdministration, true);
    tick(kLibrary, true);
    tick(83, true);
    tick(kLibrary, false);
    EXPECT_EQ(shownTicks({kModifyNameOfClients, kAccessAllClients, 83}), "001");
    console.cmdSave->click();
    EXPECT_FALSE(console.bLevelDirty);
    const QString level1 = stored("level1");
    QString ticks;
    ASSERT_EQ(level1.size(), 245);
    for (int p :
         {kModifyNameOfClients, kAdministration, kAccessAllClients, kLibrary, 83, kContacts}) {
        ticks += level1[p];
    }
    EXPECT_EQ(ticks, "010011");
    EXPECT_EQ(stored("level1name"), "Clerk");
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_FALSE(ui.busy);

    chooseLevel(1);
    EXPECT_EQ(gLevelText.size(), 255);
    console.txtAccessLevel->setText(" Paralegal ");
    console.SaveAccesslevel();
    QString expected(245, '1');
    for (int p : {9, 46, 47, 48, 57, 58, 59, 72, 73}) {
        expected[p] = '0';
    }
    expected.replace(85, 160, QString(160, '0'));
    for (int p : {kAdministration, 76, 77, 78, 79, 80}) {
        expected[p] = '0';  // the denied administration group and, with it, its rights
    }
    EXPECT_EQ(stored("level2"), expected);
    EXPECT_EQ(gLevelText, expected + QString(10, ' '));
    EXPECT_EQ(stored("level2name"), " Paralegal ");
    EXPECT_EQ(gLevelNames(1), " Paralegal ");
}

TEST_P(AccessLevelsTest, AChangeOfLevelOffersToSaveUnderTheLevelInHand) {
    const struct {
        const char* what;
        int answer, nextLevel;
        QString typedName;
        QString storedName;  // of level 1, in gLevelNames and the next entry editor too
        QChar storedRight;
    } cases[] = {
        {"Yes saves the edits", Msg::Yes, 4, "Trainee", "Trainee", '0'},
        {"No drops them", Msg::No, 4, "Junior", "Clerk", '1'},
        {"No on the level in hand reloads it", Msg::No, 0, "Intern", "Clerk", '1'},
    };
    start();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        chooseLevel(0);
        ui.messages.clear();
        console.txtAccessLevel->setText(c.typedName);
        EXPECT_EQ(console.cmbLevel->itemText(0), c.typedName);  // the list follows the box
        tick(kClientAccountsNumber, false);
        ui.answers.push_back(c.answer);
        chooseLevel(c.nextLevel);
        EXPECT_TRUE(testing_support::saidOnly(ui, "Save changes?", Msg::YesNo));
        EXPECT_EQ(stored("level1name"), c.storedName);
        EXPECT_EQ(stored("level1")[kClientAccountsNumber], c.storedRight);
        EXPECT_EQ(gLevelNames(0), c.storedName);
        EXPECT_EQ(frmEmployee().cmbAccess->itemText(0), c.storedName);
        // The level list keeps the typed name for the run, whatever was answered.
        EXPECT_EQ(console.cmbLevel->itemText(0), c.typedName);

        EXPECT_EQ(console.nLevelIndex, c.nextLevel);
        EXPECT_EQ(console.txtAccessLevel->text(), console.cmbLevel->itemText(c.nextLevel));
        // The new level shows from its first group on.
        EXPECT_EQ(console.lstAccessGroups->currentRow(), 0);
        EXPECT_EQ(console.lstAccess->item(0)->text(), "Create/Delete Clients");
        EXPECT_EQ(shownTicks({kClientAccountsNumber}), "1");
        EXPECT_FALSE(console.bLevelDirty);
        chooseLevel(c.nextLevel);  // nothing unsaved: no question
        EXPECT_EQ(ui.messages.size(), 1u);
        setStored("level1name", "Clerk");
        setStored("level1", QString(245, '1'));
    }
}

TEST_P(AccessLevelsTest, TheNameBox) {
    start();
    console.txtAccessLevel->clear();
    QTest::keyClicks(console.txtAccessLevel, "A name of more than twenty-five characters");
    EXPECT_EQ(console.txtAccessLevel->text(), "A name of more than twent");
    EXPECT_EQ(console.cmbLevel->itemText(0), "A name of more than twent");

    console.txtAccessLevel->clear();
    EXPECT_TRUE(ui.messages.empty());  // emptied, but not yet left
    QFocusEvent leaving(QEvent::FocusOut, Qt::TabFocusReason);
    QCoreApplication::sendEvent(console.txtAccessLevel, &leaving);
    EXPECT_EQ(ui.texts(), std::vector<QString>{"You must enter a level name."});
    EXPECT_EQ(console.txtAccessLevel->text(), "Enter Name Here");
    EXPECT_EQ(console.cmbLevel->itemText(0), "Enter Name Here");
    QCoreApplication::sendEvent(console.txtAccessLevel, &leaving);
    EXPECT_EQ(ui.messages.size(), 1u);  // a name again

    console.SaveAccesslevel();
    EXPECT_EQ(stored("level1name"), "Enter Name Here");
}

TEST_P(AccessLevelsTest, ClosingWithUnsavedChangesAsksAndEndsEitherWay) {
    start();
    EXPECT_THROW(console.Form_Unload(), RunEnded);  // nothing unsaved: no question
    EXPECT_TRUE(ui.messages.empty());
    for (const auto& [answer, storedRight] : {std::pair{Msg::Yes, '0'}, {Msg::No, '1'}}) {
        SCOPED_TRACE(answer);
        chooseLevel(0);
        ui.messages.clear();
        tick(kModifyNameOfClients, false);
        ui.answers.push_back(answer);
        EXPECT_THROW(console.Form_Unload(), RunEnded);
        EXPECT_TRUE(testing_support::saidOnly(ui, "Save access level changes?", Msg::YesNo));
        EXPECT_EQ(stored("level1")[kModifyNameOfClients], storedRight);
        EXPECT_EQ(ui.exitStatus, platform::kExitNormal);
        setStored("level1", QString(245, '1'));
    }
}

}  // namespace
