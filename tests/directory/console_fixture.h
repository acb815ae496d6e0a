#pragma once

#include "directory/frm_admin.h"
#include "fixtures.h"
#include "logon/command_line.h"
#include "platform/convert.h"
#include "platform/engine/engine.h"
#include "util/report_list.h"

#include <QAction>
#include <QPushButton>
#include <QTabWidget>

#include <memory>

// The console on the demo installation, beside a connection of the test's own to the same file.
class ConsoleFixture : public testing_support::DemoTest {
protected:
    void SetUp() override {
        DemoTest::SetUp();
        if (!IsSkipped()) {
            db = engine::openDatabase(demoDatabase());
        }
    }
    void TearDown() override {
        console.hide();
        if (db) {
            db->close();
        }
        DemoTest::TearDown();
    }
    // The administrator logs on from the command line, which fills the console.
    void logOn() {
        SetCommandLine("-ladmin -porvane");
        console.Form_Activate();
    }
    void run(const QString& sql) { db->execute(sql); }
    // The one value of a query, such as an id, as a number.
    qint32 number(const QString& sql) { return rt::CLng(db->openRecordset(sql)->field(0).value()); }
    qint32 count(const QString& table, const QString& where = QStringLiteral("1 = 1")) {
        return number("SELECT count(*) FROM " + table + " WHERE " + where);
    }
    // Shows the tab and gives its list; the employees' for a tab without one.
    ReportList* showTab(int tab) {
        console.tabAdmin->setCurrentIndex(tab);
        ReportList* const lists[] = {console.lstEmployees, console.lstWorkGroups,
                                     console.lstEquipment, console.lstEmployees,
                                     console.lstEmployees, console.lstBranches};
        return lists[tab];
    }
    static void select(ReportList* list, qint32 entry) {
        for (int row = 0; row < list->rowCount(); ++row) {
            if (list->tag(row).toInt() == entry) {
                list->selectRow(row);
            }
        }
    }
    // Each row as "tag:cell|cell|...".
    static QStringList rows(ReportList* list) {
        QStringList result;
        for (int r = 0; r < list->rowCount(); ++r) {
            QStringList cells;
            for (int c = 0; c < list->cellCount(r); ++c) {
                cells << list->cell(r, c);
            }
            result << list->tag(r).toString() + ':' + cells.join('|');
        }
        return result;
    }
    // Edit and Delete, on the buttons and the menu, are enabled together.
    bool entryCommandsEnabled() const {
        const bool enabled = console.cmdEdit->isEnabled();
        EXPECT_EQ(console.cmdDelete->isEnabled(), enabled);
        EXPECT_EQ(console.mnEdit->isEnabled(), enabled);
        EXPECT_EQ(console.mnDelete->isEnabled(), enabled);
        return enabled;
    }
    // What the user does in the next modal window, which is a Window.
    template <class Window, class Script>
    void inWindow(Script script) {
        ui.modalScripts.push_back([script](QWidget* w) { script(static_cast<Window*>(w)); });
    }

    std::unique_ptr<engine::Database> db;
    frmAdmin console;
};
