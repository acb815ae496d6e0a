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

class EmployeeDeletionTest : public ConsoleFixture {
protected:
    void SetUp() override {
        ConsoleFixture::SetUp();
        // Brian (2) is deleted; Carmen (3) owns the same kinds of rows; Derek (4) receives.
        seed(2, 100);
        seed(3, 200);
        // Brian's charge and invoice on Carmen's account.
        run("INSERT INTO charges (id, accid, userid) VALUES (150, 201, 2)");
        run("INSERT INTO invoice (id, accid, userid) VALUES (150, 201, 2)");
        logOn();
        before = counts();
    }
    void run(const QString& sql) { db->execute(sql); }
    // Rows of every kind for the employee, with ids from `base`: a client with a file, the file's
    // account rows, an invoice with a disbursement, a list with its rows, a report, automation.
    void seed(int user, int base) {
        const QString u = QString::number(user);
        auto n = [&](int offset) { return QString::number(base + offset); };
        const QStringList statements = {
            "INSERT INTO udfs (Parent, Col, Descrpn, Class, userid) VALUES ('clntudf', 'udf5', "
            "'Mine', 2, " +
                u + ")",
            "INSERT INTO reminder (userid, startd) VALUES (" + u + ", 36766)",
            "INSERT INTO billcode (userid, code) VALUES (" + u + ", 'B" + u + "')",
            "INSERT INTO options (userid, section, value1) VALUES (" + u + ", 'Options', '1')",
            "INSERT INTO auto (id, userid) VALUES (" + n(1) + ", " + u + ")",
            "INSERT INTO autostep (autoid) VALUES (" + n(1) + ")",
            "INSERT INTO budgets (parentid, type) VALUES (" + u + ", 1)",
            "INSERT INTO budgets (parentid, type) VALUES (" + n(1) + ", 0)",
            "INSERT INTO busdev (userid) VALUES (" + u + ")",
            "INSERT INTO reports (id, userid, Name) VALUES (" + n(10) + ", " + u + ", 'Mine')",
            "INSERT INTO rptcntls (rptid) VALUES (" + n(10) + ")",
            "INSERT INTO modeling (userid) VALUES (" + u + ")",
            "INSERT INTO clients (id, userid, Name) VALUES (" + n(1) + ", " + u + ", 'Client " + u +
                "')",
            "INSERT INTO clntudf (id) VALUES (" + n(1) + ")",
            "INSERT INTO clntudf2 (id) VALUES (" + n(1) + ")",
            "INSERT INTO history (client_id) VALUES (" + n(1) + ")",
            "INSERT INTO files (id, ownerid) VALUES (" + n(1) + ", " + n(1) + ")",
            "INSERT INTO acctudf (id) VALUES (" + n(1) + ")",
            "INSERT INTO projudf (id) VALUES (" + n(1) + ")",
            "INSERT INTO RelDocs (accid) VALUES (" + n(1) + ")",
            "INSERT INTO RelPple (accid) VALUES (" + n(1) + ")",
            "INSERT INTO balance (accid) VALUES (" + n(1) + ")",
            "INSERT INTO billsetup (accid) VALUES (" + n(1) + ")",
            "INSERT INTO charges (id, accid, userid) VALUES (" + n(1) + ", " + n(1) + ", " + u +
                ")",
            "INSERT INTO invoice (id, accid, userid) VALUES (" + n(1) + ", " + n(1) + ", " + u +
                ")",
            "INSERT INTO disburse (invoiceid) VALUES (" + n(1) + ")",
            "INSERT INTO funds (accid) VALUES (" + n(1) + ")",
            "INSERT INTO trans (acc_id) VALUES (" + n(1) + ")",
            "INSERT INTO lists (id, listid, userid) VALUES (" + n(1) + ", " + n(50) + ", " + u +
                ")",
            "INSERT INTO listflds (listid) VALUES (" + n(50) + ")",
            "INSERT INTO listmmbr (listid) VALUES (" + n(50) + ")",
            "INSERT INTO listudf (id) VALUES (" + n(1) + ")",
            "INSERT INTO reflib (userid) VALUES (" + u + ")",
        };
        for (const QString& statement : statements) {
            run(statement);
        }
    }
    std::map<QString, qint32> counts() {
        std::map<QString, qint32> result;
        for (const char* table : kTables) {
            result[table] = rt::CLng(
                db->openRecordset(QString("SELECT count(*) FROM ") + table)->field(0).value());
        }
        return result;
    }
    qint32 count(const QString& sql) { return rt::CLng(db->openRecordset(sql)->field(0).value()); }
    // Deletes Brian through the window, with what the user does there.
    void deleteBrian(const std::function<void(frmDeleteEmployee*)>& choose) {
        console.lstEmployees->selectRow(1);
        ui.modalScripts.push_back([choose](QWidget* w) {
            auto* window = static_cast<frmDeleteEmployee*>(w);
            choose(window);
            window->cmdOK->click();
        });
        ui.answers.push_back(Yes);
        console.cmdDelete_Click();
    }

    std::map<QString, qint32> before;
};

TEST_F(EmployeeDeletionTest, AllDataLeavesNothingOfTheEmployeeAndTouchesNoOneElse) {
    deleteBrian([](frmDeleteEmployee* w) { w->optAll->setChecked(true); });
    const std::map<QString, qint32> after = counts();
    // Brian had one row in each table; two in charges and invoice (his own account's and the
    // one on Carmen's); two clients and files with the demo's own; extaccess held 1->2 and 6->2.
    std::map<QString, qint32> gone;
    for (const char* table : kTables) {
        gone[table] = 1;
    }
    gone["budgets"] = 2;
    gone["clients"] = 2;
    gone["files"] = 2;
    gone["charges"] = 2;
    gone["invoice"] = 2;
    gone["extaccess"] = 2;
    for (const char* table : kTables) {
        EXPECT_EQ(after.at(table), before.at(table) - gone.at(table)) << table;
    }
    EXPECT_EQ(count("SELECT count(*) FROM clients WHERE userid = 3"), 3);
    EXPECT_EQ(count("SELECT count(*) FROM disburse WHERE invoiceid = 201"), 1);
    EXPECT_EQ(count("SELECT count(*) FROM users WHERE id = 2"), 0);
    EXPECT_EQ(console.lstEmployees->rowCount(), 4);
    EXPECT_FALSE(ui.busy);
}

TEST_F(EmployeeDeletionTest, HandingOverGivesTheBusinessDataAndRemovesThePersonal) {
    deleteBrian([](frmDeleteEmployee* w) {
        EXPECT_TRUE(w->optGive->isChecked());
        w->cmbEmployee->setCurrentIndex(2);  // Derek
    });
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
    EXPECT_EQ(count("SELECT count(*) FROM clients WHERE id = 101 AND userid = 4"), 1);
    EXPECT_EQ(count("SELECT count(*) FROM lists WHERE id = 101 AND userid = 4"), 1);
    EXPECT_EQ(count("SELECT count(*) FROM reflib WHERE userid = 4"), 1);
    EXPECT_EQ(count("SELECT count(*) FROM invoice WHERE id = 101 AND userid = 4"), 1);
    EXPECT_EQ(count("SELECT count(*) FROM charges WHERE id = 101 AND userid = 4"), 1);
    // Not of his own clients: kept as they were, still naming him.
    EXPECT_EQ(count("SELECT count(*) FROM invoice WHERE id = 150 AND userid = 2"), 1);
    EXPECT_EQ(count("SELECT count(*) FROM charges WHERE id = 150 AND userid = 2"), 1);
    EXPECT_EQ(count("SELECT count(*) FROM files WHERE ownerid = 101"), 1);
    EXPECT_EQ(count("SELECT count(*) FROM clients WHERE userid = 3"), 3);
}

// The data goes to the employee whose name was chosen, at every position of the list, on a
// list sorted against the session's own order of entries.
class HandOverReceiverTest : public EmployeeDeletionTest,
                             public ::testing::WithParamInterface<int> {};

TEST_P(HandOverReceiverTest, TheReceiverIsTheEmployeeWhoseNameWasChosen) {
    console.lstColumnClick(console.lstEmployees, 0);  // descending: Erin, Derek, Carmen, Brian
    QString chosen;
    console.lstEmployees->selectRow(3);
    ui.modalScripts.push_back([&](QWidget* w) {
        auto* window = static_cast<frmDeleteEmployee*>(w);
        window->cmbEmployee->setCurrentIndex(GetParam());
        chosen = window->cmbEmployee->currentText();
        window->cmdOK->click();
    });
    ui.answers.push_back(Yes);
    console.cmdDelete_Click();
    ASSERT_FALSE(chosen.isEmpty());
    const qint32 receiver = count("SELECT id FROM users WHERE Name = '" + chosen + "'");
    EXPECT_EQ(count("SELECT userid FROM clients WHERE id = 101"), receiver) << chosen.toStdString();
    EXPECT_EQ(count("SELECT userid FROM lists WHERE id = 101"), receiver) << chosen.toStdString();
}

INSTANTIATE_TEST_SUITE_P(EveryPosition, HandOverReceiverTest, ::testing::Range(0, 4));

TEST_F(EmployeeDeletionTest, ANameTypedInCountsOnlyWhenTheListHasIt) {
    console.lstEmployees->selectRow(1);
    ui.modalScripts.push_back([&](QWidget* w) {
        auto* window = static_cast<frmDeleteEmployee*>(w);
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
    ASSERT_EQ(ui.messages.size(), 2u);
    EXPECT_EQ(ui.messages[0].title, "Delete Employee");
    EXPECT_EQ(ui.messages[1].text, "Are you sure you want to delete this user?");
    EXPECT_EQ(count("SELECT userid FROM clients WHERE id = 101"), 4);
    EXPECT_EQ(count("SELECT count(*) FROM users WHERE id = 2"), 0);
}

TEST_F(EmployeeDeletionTest, AStatementFailingAfterThePersonalOnesLeavesNothingDone) {
    testing_support::runOnFile(demoDatabase(),
                               "CREATE TRIGGER refused BEFORE DELETE ON clients BEGIN SELECT "
                               "RAISE(ABORT, 'refused'); END; CREATE TRIGGER alsoRefused BEFORE "
                               "UPDATE ON clients BEGIN SELECT RAISE(ABORT, 'refused'); END");
    for (const bool all : {true, false}) {
        deleteBrian(
            [all](frmDeleteEmployee* w) { (all ? w->optAll : w->optGive)->setChecked(true); });
        EXPECT_EQ(counts(), before);
        EXPECT_EQ(console.lstEmployees->rowCount(), 5);
    }
}

TEST_F(EmployeeDeletionTest, ALockHeldByAnotherProgramUndoesTheWholeDeletion) {
    testing_support::OtherProgram reader(demoDatabase(), testing_support::kReading);
    console.lstEmployees->selectRow(1);
    ui.modalScripts.push_back([&](QWidget* w) {
        auto* window = static_cast<frmDeleteEmployee*>(w);
        window->optAll->setChecked(true);
        window->cmdOK->click();  // every statement runs; the commit can't
        EXPECT_TRUE(window->isVisible());
        EXPECT_TRUE(window->bCanceled);
        EXPECT_FALSE(ui.busy);
        EXPECT_EQ(counts(), before);
        reader.letGo();
        window->cmdOK->click();  // and the same deletion goes through
    });
    ui.answers = {Yes, platform::Msg::OK, Yes};
    console.cmdDelete_Click();
    EXPECT_EQ(ui.texts(), std::vector<QString>({"Are you sure you want to delete this user?",
                                                "Couldn't update; currently locked.",
                                                "Are you sure you want to delete this user?"}));
    EXPECT_EQ(count("SELECT count(*) FROM users WHERE id = 2"), 0);
    EXPECT_EQ(count("SELECT count(*) FROM clients WHERE userid = 2"), 0);
    EXPECT_EQ(console.lstEmployees->rowCount(), 4);
}

TEST_F(EmployeeDeletionTest, CancelAndNoChangeNothing) {
    console.lstEmployees->selectRow(1);
    ui.modalScripts.push_back(
        [](QWidget* w) { static_cast<frmDeleteEmployee*>(w)->cmdCancel->click(); });
    console.cmdDelete_Click();
    ui.modalScripts.push_back([](QWidget* w) {
        auto* window = static_cast<frmDeleteEmployee*>(w);
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

TEST_F(EmployeeDeletionTest, YouCannotDeleteYourself) {
    console.lstEmployees->selectRow(0);
    console.cmdDelete_Click();
    EXPECT_EQ(ui.texts(), std::vector<QString>{
                              "You cannot delete yourself from the employees list.  Logon as a "
                              "different administrator to remove yourself."});
    EXPECT_TRUE(ui.modalWindows.empty());
    EXPECT_EQ(counts(), before);
    EXPECT_EQ(console.lstEmployees->rowCount(), 5);
}

TEST_F(EmployeeDeletionTest, TheWindowOffersTheOtherEmployeesInTheListsOrder) {
    console.lstColumnClick(console.lstEmployees, 0);  // descending: Erin first
    console.lstEmployees->selectRow(3);               // Brian
    QStringList offered;
    QString defaultButton;
    ui.modalScripts.push_back([&](QWidget* w) {
        auto* window = static_cast<frmDeleteEmployee*>(w);
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
