// Deleting an employee: all of his or her data, or the business data handed to another
// employee; counted table by table on a database where two employees own rows everywhere.

#include "console_fixture.h"
#include "data/dbase.h"
#include "data/session.h"
#include "directory/frm_admin.h"
#include "directory/frm_delete_employee.h"
#include "logon/command_line.h"
#include "platform/convert.h"
#include "util/report_list.h"

#include <QComboBox>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest/QTest>

#include <map>
#include <optional>
#include <set>

namespace {

using platform::RunEnded;
using platform::Msg::No;
using platform::Msg::Yes;

// The tables an employee's data lies in, and the column through which each row is found.
const char* const kTables[] = {
    "udfs",      "reminder", "billcode", "options",  "auto",      "autostep", "budgets",
    "busdev",    "reports",  "rptcntls", "modeling", "clients",   "clntudf",  "clntudf2",
    "history",   "files",    "acctudf",  "projudf",  "RelDocs",   "RelPple",  "balance",
    "billsetup", "charges",  "invoice",  "disburse", "funds",     "trans",    "lists",
    "listflds",  "listmmbr", "listudf",  "reflib",   "extaccess", "users"};

class EmployeeDeletionTestFixture : public ConsoleFixture {
protected:
    void SetUp() override {
        ConsoleFixture::SetUp();
        if (IsSkipped()) {
            return;
        }
        // Brian (2) is deleted; Carmen (3) owns the same kinds of rows; Derek (4) receives.
        seed(2, 100);
        seed(3, 200);
        // Brian's charge and invoice on Carmen's account.
        run("INSERT INTO charges (id, accid, userid) VALUES (150, 201, 2)");
        run("INSERT INTO invoice (id, accid, userid) VALUES (150, 201, 2)");
        logOn();
        before = counts();
    }
    // Rows of every kind for the employee, with ids from `base`: a client with a file, the file's
    // account rows, an invoice with a disbursement, a list with its rows, a report, automation.
    // In each row {u} stands for the employee, and {n}, {r} and {l} for the ids base + 1, 10, 50.
    void seed(int user, int base) {
        const char* const rows[] = {
            "udfs (Parent, Col, Descrpn, Class, userid) VALUES ('clntudf', 'udf5', 'Mine', 2, {u})",
            "reminder (userid, startd) VALUES ({u}, 36766)",
            "billcode (userid, code) VALUES ({u}, 'B{u}')",
            "options (userid, section, value1) VALUES ({u}, 'Options', '1')",
            "auto (id, userid) VALUES ({n}, {u})",
            "autostep (autoid) VALUES ({n})",
            "budgets (parentid, type) VALUES ({u}, 1)",
            "budgets (parentid, type) VALUES ({n}, 0)",
            "busdev (userid) VALUES ({u})",
            "reports (id, userid, Name) VALUES ({r}, {u}, 'Mine')",
            "rptcntls (rptid) VALUES ({r})",
            "modeling (userid) VALUES ({u})",
            "clients (id, userid, Name) VALUES ({n}, {u}, 'Client {u}')",
            "clntudf (id) VALUES ({n})",
            "clntudf2 (id) VALUES ({n})",
            "history (client_id) VALUES ({n})",
            "files (id, ownerid) VALUES ({n}, {n})",
            "acctudf (id) VALUES ({n})",
            "projudf (id) VALUES ({n})",
            "RelDocs (accid) VALUES ({n})",
            "RelPple (accid) VALUES ({n})",
            "balance (accid) VALUES ({n})",
            "billsetup (accid) VALUES ({n})",
            "charges (id, accid, userid) VALUES ({n}, {n}, {u})",
            "invoice (id, accid, userid) VALUES ({n}, {n}, {u})",
            "disburse (invoiceid) VALUES ({n})",
            "funds (accid) VALUES ({n})",
            "trans (acc_id) VALUES ({n})",
            "lists (id, listid, userid) VALUES ({n}, {l}, {u})",
            "listflds (listid) VALUES ({l})",
            "listmmbr (listid) VALUES ({l})",
            "listudf (id) VALUES ({n})",
            "reflib (userid) VALUES ({u})",
        };
        for (const char* row : rows) {
            run(QString("INSERT INTO %1")
                    .arg(row)
                    .replace("{u}", QString::number(user))
                    .replace("{n}", QString::number(base + 1))
                    .replace("{r}", QString::number(base + 10))
                    .replace("{l}", QString::number(base + 50)));
        }
    }
    std::map<QString, qint32> counts() {
        std::map<QString, qint32> result;
        for (const char* table : kTables) {
            result[table] = count(table);
        }
        return result;
    }
    // Deletes Brian through the window, with what the user does there.
    void deleteBrian(const std::function<void(frmDeleteEmployee*)>& choose) {
        console.lstEmployees->selectRow(1);
        inWindow<frmDeleteEmployee>([choose](auto* window) {
            choose(window);
            window->cmdOK->click();
        });
        ui.answers.push_back(Yes);
        console.cmdDelete_Click();
    }

    std::map<QString, qint32> before;
};

class EmployeeDeletionTest : public testing_support::OnEveryBackend<EmployeeDeletionTestFixture> {};

ORVANE_ON_EVERY_BACKEND(EmployeeDeletionTest);

// Failures made with the embedded engine's own triggers and another program's lock on the file.
class FileEmployeeDeletionTest : public EmployeeDeletionTestFixture {};

TEST_P(EmployeeDeletionTest, AllDataLeavesNothingOfTheEmployeeAndTouchesNoOneElse) {
    deleteBrian([](frmDeleteEmployee* w) { w->optAll->setChecked(true); });
    const std::map<QString, qint32> after = counts();
    // Brian had one row in each table; two in charges and invoice (his own account's and the
    // one on Carmen's); two clients and files with the demo's own; extaccess held 1->2 and 6->2.
    const std::set<QString> twice = {"budgets", "clients", "files",
                                     "charges", "invoice", "extaccess"};
    for (const char* table : kTables) {
        EXPECT_EQ(after.at(table), before.at(table) - (twice.count(table) ? 2 : 1)) << table;
    }
    EXPECT_EQ(count("clients", "userid = 3"), 3);
    EXPECT_EQ(count("disburse", "invoiceid = 201"), 1);
    EXPECT_EQ(count("users", "id = 2"), 0);
    EXPECT_EQ(console.lstEmployees->rowCount(), 4);
    EXPECT_FALSE(ui.busy);
}

// The business data goes to the employee whose name was chosen, at every position of the list,
// on a list sorted against the session's own order of entries; the personal data goes.
class HandOverTest : public EmployeeDeletionTestFixture,
                     public ::testing::WithParamInterface<int> {};

TEST_P(HandOverTest, GivesTheBusinessDataToTheChosenEmployeeAndRemovesThePersonal) {
    console.lstColumnClick(console.lstEmployees, 0);  // descending: Erin, Derek, Carmen, Brian
    console.lstEmployees->selectRow(3);
    QString chosen;
    inWindow<frmDeleteEmployee>([&](auto* window) {
        window->cmbEmployee->setCurrentIndex(GetParam());
        chosen = window->cmbEmployee->currentText();
        window->cmdOK->click();
    });
    ui.answers.push_back(Yes);
    console.cmdDelete_Click();
    ASSERT_FALSE(chosen.isEmpty());
    SCOPED_TRACE(chosen.toStdString());
    const std::map<QString, qint32> after = counts();
    const std::map<QString, qint32> personal = {
        {"udfs", 1},     {"reminder", 1},  {"billcode", 1}, {"options", 1}, {"auto", 1},
        {"autostep", 1}, {"budgets", 2},   {"busdev", 1},   {"reports", 1}, {"rptcntls", 1},
        {"modeling", 1}, {"extaccess", 2}, {"users", 1}};
    for (const char* table : kTables) {
        const auto it = personal.find(table);
        EXPECT_EQ(after.at(table), before.at(table) - (it == personal.end() ? 0 : it->second))
            << table;
    }
    const QString receiver =
        QString::number(number("SELECT id FROM users WHERE Name = '" + chosen + "'"));
    for (const char* table : {"clients", "lists", "invoice", "charges"}) {
        EXPECT_EQ(count(table, "id = 101 AND userid = " + receiver), 1) << table;
    }
    // Carmen (3) owns rows of her own; Brian had two clients.
    EXPECT_EQ(count("reflib", "userid = " + receiver), receiver == "3" ? 2 : 1);
    EXPECT_EQ(count("clients", "userid = 3"), receiver == "3" ? 5 : 3);
    // Not of his own clients: kept as they were, still naming him.
    EXPECT_EQ(count("invoice", "id = 150 AND userid = 2"), 1);
    EXPECT_EQ(count("charges", "id = 150 AND userid = 2"), 1);
    EXPECT_EQ(count("files", "ownerid = 101"), 1);
}

INSTANTIATE_TEST_SUITE_P(EveryPosition, HandOverTest, ::testing::Range(0, 4));

TEST_P(EmployeeDeletionTest, ANameTypedInCountsOnlyWhenTheListHasIt) {
    console.lstEmployees->selectRow(1);
    inWindow<frmDeleteEmployee>([&](auto* window) {
        window->cmbEmployee->setEditText("Nobody at all");
        window->cmdOK->click();  // stopped before the question: nothing ran
        EXPECT_TRUE(window->isVisible());
        EXPECT_TRUE(window->bCanceled);
        EXPECT_EQ(counts(), before);
        window->cmbEmployee->setEditText("Derek Evans");  // typed, not chosen
        window->cmdOK->click();
    });
    ui.answers = {platform::Msg::OK, Yes};
    console.cmdDelete_Click();
    EXPECT_EQ(ui.texts(),
              std::vector<QString>({"Choose from the list the employee who is to receive the data, "
                                    "or choose to delete all of the employee's data.",
                                    "Are you sure you want to delete this user?"}));
    EXPECT_EQ(ui.messages[0].title, "Delete Employee");
    EXPECT_EQ(number("SELECT userid FROM clients WHERE id = 101"), 4);
    EXPECT_EQ(count("users", "id = 2"), 0);
}

// A deletion that fails, midway or at its commit, leaves every row as it was and the window open;
// tried again once the obstacle is gone, it goes through.
TEST_F(FileEmployeeDeletionTest, AFailedDeletionChangesNothingAndCanBeTriedAgain) {
    // The statements on clients come after the personal ones, whichever the choice.
    testing_support::runOnFile(demoDatabase(),
                               "CREATE TRIGGER refused BEFORE DELETE ON clients BEGIN SELECT "
                               "RAISE(ABORT, 'refused'); END; CREATE TRIGGER alsoRefused BEFORE "
                               "UPDATE ON clients BEGIN SELECT RAISE(ABORT, 'refused'); END");
    std::optional<testing_support::OtherProgram> reader;
    const struct {
        const char* obstacle;
        bool all;
        bool locked;  // else refused midway, and left at that
    } cases[] = {
        {"a statement refused, all data", true, false},
        {"a statement refused, handing over", false, false},
        {"a lock at the commit", true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.obstacle);
        if (c.locked) {
            testing_support::runOnFile(demoDatabase(),
                                       "DROP TRIGGER refused; DROP TRIGGER alsoRefused");
            reader.emplace(demoDatabase(), testing_support::kReading);
        }
        ui.messages.clear();
        console.lstEmployees->selectRow(1);
        inWindow<frmDeleteEmployee>([&](auto* window) {
            (c.all ? window->optAll : window->optGive)->setChecked(true);
            window->cmdOK->click();
            EXPECT_TRUE(window->isVisible());
            EXPECT_TRUE(window->bCanceled);
            EXPECT_FALSE(ui.busy);
            EXPECT_EQ(counts(), before);
            if (c.locked) {
                reader->letGo();
                window->cmdOK->click();
            }
        });
        ui.answers = {Yes, platform::Msg::OK, Yes};
        console.cmdDelete_Click();
    }
    EXPECT_EQ(ui.texts(), std::vector<QString>({"Are you sure you want to delete this user?",
                                                "Couldn't update; currently locked.",
                                                "Are you sure you want to delete this user?"}));
    EXPECT_EQ(count("users", "id = 2"), 0);
    EXPECT_EQ(count("clients", "userid = 2"), 0);
    EXPECT_EQ(console.lstEmployees->rowCount(), 4);
}

TEST_P(EmployeeDeletionTest, CancelAndNoChangeNothing) {
    console.lstEmployees->selectRow(1);
    inWindow<frmDeleteEmployee>([](auto* window) { window->cmdCancel->click(); });
    console.cmdDelete_Click();
    inWindow<frmDeleteEmployee>([](auto* window) {
        window->cmdOK->click();  // answered No: the window stays
        EXPECT_TRUE(window->isVisible());
        EXPECT_TRUE(window->bCanceled);
        window->close();
    });
    ui.answers.push_back(No);
    console.cmdDelete_Click();
    EXPECT_EQ(counts(), before);
    EXPECT_EQ(console.lstEmployees->rowCount(), 5);
    EXPECT_EQ(ui.texts(), std::vector<QString>{"Are you sure you want to delete this user?"});
    EXPECT_EQ(ui.messages[0].buttons, platform::Msg::YesNo);
    EXPECT_EQ(ui.messages[0].defaultButton, 2);  // Enter answers No
}

TEST_P(EmployeeDeletionTest, YouCannotDeleteYourself) {
    console.lstEmployees->selectRow(0);
    console.cmdDelete_Click();
    EXPECT_EQ(ui.texts(), std::vector<QString>{
                              "You cannot delete yourself from the employees list.  Logon as a "
                              "different administrator to remove yourself."});
    EXPECT_TRUE(ui.modalWindows.empty());
    EXPECT_EQ(counts(), before);
    EXPECT_EQ(console.lstEmployees->rowCount(), 5);
}

TEST_P(EmployeeDeletionTest, TheWindowOffersTheOtherEmployeesInTheListsOrder) {
    console.lstColumnClick(console.lstEmployees, 0);  // descending: Erin first
    console.lstEmployees->selectRow(3);               // Brian
    QStringList offered;
    QString defaultButton;
    inWindow<frmDeleteEmployee>([&](auto* window) {
        EXPECT_TRUE(window->optGive->isChecked());
        for (int i = 0; i < window->cmbEmployee->count(); ++i) {
            offered << window->cmbEmployee->itemText(i) + "=" +
                           window->cmbEmployee->itemData(i).toString();
        }
        defaultButton = window->cmdCancel->isDefault() ? "cmdCancel" : "cmdOK";
        QTest::mouseClick(window->Label1[0], Qt::LeftButton);
        EXPECT_TRUE(window->optAll->isChecked());
        QTest::mouseClick(window->Label1[1], Qt::LeftButton);
        EXPECT_TRUE(window->optGive->isChecked());
        QTest::keyClick(window, Qt::Key_Escape);  // Escape presses OK, which asks first
        EXPECT_EQ(window->windowTitle(), "Delete Employee");
        window->cmdCancel->click();
    });
    ui.answers.push_back(No);
    console.cmdDelete_Click();
    EXPECT_EQ(offered,
              QStringList({"Erin Ford=5", "Derek Evans=4", "Carmen Diaz=3", "Alice Admin=1"}));
    EXPECT_EQ(defaultButton, "cmdCancel");
    EXPECT_EQ(ui.texts(), std::vector<QString>{"Are you sure you want to delete this user?"});
}

TEST(DeleteEmployeeWindow, TheOnlyEmployeeLeavesOnlyAllData) {
    ReportList employees("lstEmployees");
    employees.setColumns({{"Employee", 3881}});
    employees.addRow("Lone Ranger", 7);
    platform::ScriptedUi ui;
    platform::setUi(&ui);
    frmDeleteEmployee window(&employees);
    window.id = 7;
    window.ShowModal();
    EXPECT_EQ(window.cmbEmployee->count(), 0);
    EXPECT_FALSE(window.cmbEmployee->isEnabled());
    EXPECT_FALSE(window.optGive->isEnabled());
    EXPECT_TRUE(window.optAll->isChecked());
    EXPECT_TRUE(window.bCanceled);
    platform::setUi(nullptr);
}

}  // namespace
