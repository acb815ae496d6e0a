// The console with a logged-on administrator: the lists and their cells, the enabling on every
// tab, the shared sort order, and New and Edit through the entry editor.

#include "console_fixture.h"
#include "data/dbase.h"
#include "data/session.h"
#include "directory/frm_employee.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QtTest/QTest>

namespace {

using platform::RunEnded;

QString column(ReportList* list, int c) {
    QStringList cells;
    for (int r = 0; r < list->rowCount(); ++r) {
        cells << list->cell(r, c);
    }
    return cells.join(',');
}

class ConsoleTest : public testing_support::OnEveryBackend<ConsoleFixture> {};

ORVANE_ON_EVERY_BACKEND(ConsoleTest);

// Each list's rows; the employees' with an edition only in the four.
const QStringList kExpected[] = {
    {"12:aaron lower|alow|Senior Associate|12|No|CSD", "1:Alice Admin|admin|Administrator|1|No|CSD",
     "2:Brian Cole|bcole|Agent|2|Yes|AGD", "3:Carmen Diaz||Associate|3|No|ASD",
     "4:Derek Evans|devans|Manager|4|Yes|AGP", "5:Erin Ford|eford|Clerk|5|No"},
    {"6:Sales Team|2|6", "7:Support Desk|0|7"},
    {"13:Annex|13", "8:Conference Room|8", "9:Projector|9"},
    {"10:Downtown Office|2|10", "11:Northside Office|0|11"},
};

TEST_P(ConsoleTest, EveryListShowsItsCellsAndKeepsItsSortThroughAFill) {
    // Carmen has no rts row, Derek one, Brian two; rows of nobody and of a workgroup count for
    // no employee.
    for (const char* uid : {"2", "2", "6", "NULL", "999"}) {
        run(QString("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), %1, 0)").arg(uid));
    }
    run("UPDATE users SET fslevel = 7 WHERE id = 5");
    run("UPDATE users SET fslevel = NULL, Logon = NULL WHERE id = 3");
    run("UPDATE users SET num = NULL WHERE id = 7");
    run("INSERT INTO users (Name, Logon, Password, accLevel, fslevel, Type, num) "
        "VALUES ('aaron lower', 'alow', 'x', 4, 3, 0, 0), ('Annex', 'zq', 'zq', 1, 0, 2, NULL)");
    logOn();
    const struct {
        int tab;
        std::unique_ptr<RecSet>& cursor;
    } cases[] = {{frmAdmin::Employees, console.rsEmployees},
                 {frmAdmin::Workgroups, console.rsWorkgroups},
                 {frmAdmin::Equipment, console.rsEquipment},
                 {frmAdmin::Branches, console.rsBranches}};
    for (int i = 0; i < 4; ++i) {
        ReportList* list = showTab(cases[i].tab);
        SCOPED_TRACE(list->objectName().toStdString());
        EXPECT_EQ(rows(list), kExpected[i]);
        EXPECT_EQ(list->selectedRow(), 0);
        console.lstColumnClick(list, 1);
        const QStringList sorted = rows(list);
        console.LoadUserlist(i == 3 ? 3 : qint16(cases[i].tab), cases[i].cursor);
        EXPECT_EQ(rows(list), sorted);
        EXPECT_EQ(list->selectedRow(), 0);
        EXPECT_TRUE(cases[i].cursor->FindFirst("id = " + list->tag(0).toString()));
    }
}

// At one cursor per employee, 40 employees would overflow a run's 16-bit count of opened cursors
// within 800 reloads.
TEST_P(ConsoleTest, TheEmployeeListReloadsAThousandTimesInOneRun) {
    for (int i = 0; i < 35; ++i) {
        run(QStringLiteral("INSERT INTO users (Name, Logon, Password, accLevel, fslevel, Type) "
                           "VALUES ('Extra %1', 'x%1', 'x', 1, 0, 0)")
                .arg(i));
    }
    logOn();
    ResetSessionCheck();
    const QStringList first = rows(console.lstEmployees);
    ASSERT_EQ(first.size(), 40);
    for (int i = 0; i < 1000; ++i) {
        console.LoadUserlist(0, console.rsEmployees);
    }
    EXPECT_EQ(rows(console.lstEmployees), first);
    EXPECT_TRUE(ui.messages.empty());
    ResetSessionCheck();
}

// Whatever the mouse and keyboard do to a list, it keeps a selected row, so that Edit, Delete and
// Log User Off always have an entry to act on.
TEST_P(ConsoleTest, EveryListKeepsASelectedRowForItsCommands) {
    logOn();
    const auto below = [](ReportList* list) { return QPoint(20, list->viewport()->height() - 5); };
    const struct {
        const char* action;
        std::function<void(ReportList*)> act;
    } actions[] = {
        {"a click below the rows",
         [&](auto* list) { QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, below(list)); }},
        {"Ctrl+click on the selected row",
         [](auto* list) {
             QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                               list->rowRect(*list->selectedRow()).center());
         }},
        {"Ctrl+Space",
         [](auto* list) { QTest::keyClick(list, Qt::Key_Space, Qt::ControlModifier); }},
        {"a double-click below the rows",
         [&](auto* list) {
             QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, below(list));
         }},
    };
    for (int tab : {frmAdmin::Employees, frmAdmin::Workgroups, frmAdmin::Equipment}) {
        ReportList* list = showTab(tab);
        list->setFocus();
        for (const auto& a : actions) {
            SCOPED_TRACE(std::string(a.action) + " on " + list->objectName().toStdString());
            list->selectRow(list->rowCount() - 1);
            const size_t editors = ui.modalWindows.size();
            a.act(list);
            EXPECT_EQ(list->selectedRow(), list->rowCount() - 1);
            // Each command finds its entry; none ends the run.
            console.cmdEdit->click();
            console.cmdDelete->click();
            console.mnLogOff->trigger();
            EXPECT_FALSE(ui.ended);
            EXPECT_GE(ui.modalWindows.size(), editors + 1);
        }
    }
}

TEST_P(ConsoleTest, WhatEachTabShowsAndEnables) {
    run("DELETE FROM users WHERE type = 2");
    logOn();
    const struct {
        int tab;
        bool save, entryButtons, enabled;
    } cases[] = {
        {frmAdmin::Employees, false, true, true},     {frmAdmin::Workgroups, false, true, true},
        {frmAdmin::Equipment, false, true, false},    {frmAdmin::AccessLevels, true, false, false},
        {frmAdmin::UserFields, false, false, false},  {frmAdmin::Branches, false, true, true},
        {frmAdmin::Workgroups, false, true, true},  // back again: no new query needed
        {frmAdmin::AccessLevels, true, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tab);
        showTab(c.tab);
        EXPECT_EQ(console.cmdSave->isVisibleTo(&console), c.save);
        for (QPushButton* button : {console.cmdNew, console.cmdEdit, console.cmdDelete}) {
            EXPECT_EQ(button->isVisibleTo(&console), c.entryButtons);
        }
        EXPECT_EQ(console.mnActions->menuAction()->isVisible(), c.entryButtons);
        EXPECT_EQ(entryCommandsEnabled(), c.enabled);
        EXPECT_TRUE(console.cmdNew->isEnabled() && console.mnClearRTS->isVisible());
    }
    EXPECT_EQ(console.cmbLevel->count(), 10);  // the second visit added nothing
    EXPECT_EQ(console.cmbUDF->count(), 5);
    EXPECT_EQ(console.cmbUDF->itemText(1), "Financial Contact User Fields");

    showTab(frmAdmin::Equipment);  // an empty list: double-click does nothing
    console.lstDblClick(console.lstEquipment);
    EXPECT_TRUE(ui.modalWindows.empty());
}

TEST_P(ConsoleTest, OneSortOrderAlternatesAcrossAllLists) {
    run("UPDATE users SET id = 12 WHERE id = 3");  // "12" sorts before "2" as text
    run("UPDATE extaccess SET extid = 12 WHERE extid = 3");
    logOn();
    console.lstColumnClick(console.lstEmployees, 3);  // the first click of a run: descending
    EXPECT_EQ(column(console.lstEmployees, 3), "5,4,2,12,1");
    showTab(frmAdmin::Workgroups);
    console.lstColumnClick(console.lstWorkGroups, 0);  // continues: ascending
    EXPECT_EQ(column(console.lstWorkGroups, 0), "Sales Team,Support Desk");
    console.lstColumnClick(console.lstEmployees, 0);
    EXPECT_EQ(column(console.lstEmployees, 0),
              "Erin Ford,Derek Evans,Carmen Diaz,Brian Cole,Alice Admin");
    console.lstColumnClick(console.lstEmployees, 3);
    EXPECT_EQ(column(console.lstEmployees, 3), "1,12,2,4,5");
}

// A failure on the way to a filled console ends the run, with a status that says so: a console
// without its cursors would fail at the first command. So does one in a later fill.
TEST_P(ConsoleTest, AFailureFillingTheConsoleEndsTheRun) {
    const struct {
        const char *fault, *message;
    } cases[] = {
        {"UPDATE users SET accLevel = 11 WHERE id = 3", "Subscript out of range"},
        {"UPDATE users SET accLevel = NULL WHERE id = 1", "Item not found in this collection."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        ui.messages.clear();
        run(c.fault);
        SetCommandLine("-ladmin -porvane");
        frmAdmin fresh;
        EXPECT_THROW(fresh.Form_Activate(), RunEnded);
        EXPECT_EQ(ui.texts(), std::vector<QString>{c.message});
        EXPECT_EQ(ui.exitStatus, platform::kExitFailure);
        EXPECT_FALSE(fresh.isVisible());
        run("UPDATE users SET accLevel = 10 WHERE id = 1");
        run("UPDATE users SET accLevel = 1 WHERE id = 3");
        testing_support::endSession();
    }

    logOn();
    ui.messages.clear();
    run("UPDATE users SET accLevel = 11 WHERE id = 3");
    inWindow<frmEmployee>([](auto* editor) { editor->cmdOK_Click(); });
    EXPECT_THROW(platform::runHandler([this] { console.cmdEdit_Click(); }), RunEnded);
    EXPECT_EQ(ui.texts(), std::vector<QString>{"Subscript out of range"});
}

TEST_P(ConsoleTest, NewEntriesGoAtTheEndAndAreSelected) {
    run("DELETE FROM users WHERE type = 1");
    logOn();
    showTab(frmAdmin::Workgroups);
    EXPECT_FALSE(entryCommandsEnabled());
    QString caption;
    inWindow<frmEmployee>([&](auto* editor) {
        caption = editor->windowTitle();
        editor->txtName->setText("Night Shift");
        editor->lstExtended->item(0)->setCheckState(Qt::Checked);
        editor->lstExtended->item(2)->setCheckState(Qt::Checked);
        editor->cmdOK->click();
    });
    console.cmdNew_Click();
    EXPECT_EQ(caption, "New Workgroup");
    const QString id = QString::number(number("SELECT max(id) FROM users"));
    EXPECT_EQ(rows(console.lstWorkGroups), QStringList({id + ":Night Shift|2|" + id}));
    EXPECT_EQ(console.lstWorkGroups->selectedRow(), 0);
    EXPECT_TRUE(entryCommandsEnabled());
    EXPECT_EQ(count("users",
                    "Name = 'Night Shift' AND Logon = 'zq' AND Password = 'zq' AND "
                    "fslevel = 0 AND accLevel = 1 AND Type = 1 AND num = 2 AND addedby = 1"),
              1);
    EXPECT_EQ(count("extaccess", "userid = " + id + " AND extid IN (1, 3)"), 2);

    showTab(frmAdmin::Employees);
    const qint32 entries = count("users");
    inWindow<frmEmployee>([](auto* editor) {
        editor->txtName->setText("Never Saved");
        editor->cmdCancel->click();
    });
    console.cmdNew_Click();
    EXPECT_EQ(count("users"), entries);
    inWindow<frmEmployee>([](auto* editor) {
        editor->txtName->setText("Aaron Able");
        editor->txtLogon->setText(" aable ");
        editor->txtPassword->setText("pw");
        editor->cmbLevel->setCurrentIndex(2);
        editor->cmdOK_Click();
    });
    console.cmdNew_Click();
    const QString aaron = QString::number(number("SELECT max(id) FROM users"));
    EXPECT_EQ(rows(console.lstEmployees).last(),
              aaron + ":Aaron Able|aable|Clerk|" + aaron + "|No|AGP");
    EXPECT_EQ(console.lstEmployees->selectedRow(), 5);  // at the end, not in name order
    EXPECT_FALSE(ui.busy);
}

TEST_P(ConsoleTest, AnAcceptedEditReloadsTheListAndACancelledOneDoesNot) {
    logOn();
    console.lstColumnClick(console.lstEmployees, 1);  // the list's own sort is on: descending
    console.lstEmployees->selectRow(console.lstEmployees->rowCount() - 1);  // admin, sorted last
    inWindow<frmEmployee>([](auto* editor) { editor->cmdCancel->click(); });
    console.cmdEdit_Click();
    EXPECT_EQ(column(console.lstEmployees, 1), "eford,devans,cdiaz,bcole,admin");

    run("INSERT INTO users (Name, Logon, Password, accLevel, fslevel, Type, num) VALUES "
        "('Zed Zane', 'zzane', '', 1, 0, 0, 0)");
    console.lstEmployees->selectRow(1);  // Derek
    QString caption;
    inWindow<frmEmployee>([&](auto* editor) {
        caption = editor->windowTitle();
        editor->txtName->setText("Aaron Evans");
        editor->lstExtended->item(0)->setCheckState(Qt::Unchecked);  // Carmen, ticked
        editor->cmdOK_Click();
    });
    console.cmdEdit_Click();
    EXPECT_EQ(caption, "Edit Employee");
    EXPECT_EQ(column(console.lstEmployees, 1),
              "zzane,eford,devans,cdiaz,bcole,admin");  // the kept sort
    EXPECT_EQ(count("extaccess", "userid = 4") + number("SELECT num FROM users WHERE id = 4"), 0);
    EXPECT_EQ(count("users", "Name = 'Aaron Evans' AND lastmodby = 1"), 1);
}

}  // namespace
