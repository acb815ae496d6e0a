// The start of the run through the console: the console as loaded, the administrator test, the
// version gate ending the run, and the console's older version test.

#include "data/dbase.h"
#include "data/session.h"
#include "directory/frm_admin.h"
#include "fixtures.h"
#include "logon/command_line.h"
#include "logon/frm_startup.h"
#include "logon/logon_state.h"
#include "logon/version_gate.h"
#include "platform/os.h"
#include "settings/settings_file.h"
#include "settings/terminology.h"
#include "util/report_list.h"

#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>

namespace {

using platform::RunEnded;

class ConsoleStartTest : public testing_support::DemoTest {
protected:
    void TearDown() override {
        gAccessLevel = 0;
        DemoTest::TearDown();
    }
    void logOnAs(const QString& logon, const QString& password) {
        ui.modalScripts.push_back([logon, password](QWidget* w) {
            auto* window = static_cast<frmStartUp*>(w);
            window->txtLogon->setText(logon);
            window->txtPassword->setText(password);
            window->cmdOK_Click();
        });
    }
    void run(const QString& sql) { engine::openDatabase(demoDatabase())->execute(sql); }

    frmAdmin console;
};

TEST_F(ConsoleStartTest, TheConsoleAsLoaded) {
    EXPECT_EQ(gConsoleForm, &console);
    EXPECT_EQ(console.windowTitle(), "Administration");
    EXPECT_FALSE(console.bStarted);
    QStringList tabs;
    for (int i = 0; i < console.tabAdmin->count(); ++i) {
        tabs << console.tabAdmin->tabText(i);
    }
    EXPECT_EQ(tabs, QStringList({"Employees", "Scheduling Workgroups", "Equipment", "Access Levels",
                                 "User Fields", "Branches"}));
    EXPECT_FALSE(console.tabAdmin->isTabVisible(frmAdmin::Branches));
    QStringList entries;
    for (QMenu* menu : {console.mnFile, console.mnActions, console.mnHelp}) {
        entries << menu->title();
        for (QAction* action : menu->actions()) {
            entries << action->objectName() + "=" + action->text();
        }
    }
    EXPECT_EQ(entries, QStringList({"&File", "mnClearRTS=&Clear RTS", "mnSeparator=",
                                    "mnExit=E&xit", "&Actions", "mnNew=&New...", "mnEdit=&Edit...",
                                    "mnDelete=&Delete", "mnSeparator2=", "mnLogOff=&Log User Off",
                                    "&Help", "mnHelpTopics=&Help Topics", "mnAbout=&About..."}));
    EXPECT_EQ(console.cmdSave->text(), "&Save Changes");
}

TEST_F(ConsoleStartTest, AnAdministratorGetsTheConsoleAndItsHelp) {
    logOnAs("admin", "orvane");
    console.Form_Activate();
    EXPECT_TRUE(console.bStarted);
    EXPECT_TRUE(console.isVisible());
    EXPECT_FALSE(ui.busy);
    EXPECT_TRUE(gWatchdogOff);
    EXPECT_EQ(gTermFinancial, "Financial");
    EXPECT_EQ(console.tabAdmin->currentIndex(), 0);
    EXPECT_EQ(gCompanyName, "Lattimer Demo Company");
    EXPECT_TRUE(ui.messages.empty());
    console.Form_Activate();  // later activations do nothing
    EXPECT_EQ(ui.modalWindows.size(), 1u);
    console.mnHelpTopics->trigger();
    EXPECT_EQ(ui.helpShown,
              std::vector<QString>{platform::joinPath(platform::programFolder(), "lattsers.hlp")});
    console.hide();
}

// The program's own order: the logon window stands alone, and the console is built after it.
TEST_F(ConsoleStartTest, TheLogonWindowComesBeforeAnyConsoleIsBuilt) {
    auto gone = std::make_unique<frmAdmin>();
    gone.reset();
    bool consoleBehind = true;
    ui.modalScripts.push_back([&](QWidget* w) {
        consoleBehind = gConsoleForm != nullptr;
        auto* window = static_cast<frmStartUp*>(w);
        window->txtLogon->setText("admin");
        window->txtPassword->setText("orvane");
        window->cmdOK_Click();
    });
    frmAdmin::LogOn();
    EXPECT_FALSE(consoleBehind);
    frmAdmin later;
    later.OpenSession();
    EXPECT_TRUE(later.isVisible());
    EXPECT_GT(later.lstEmployees->rowCount(), 0);
    later.hide();
}

TEST_F(ConsoleStartTest, ALevelNineLogonIsRefusedAfterItsSettingsWereWritten) {
    logOnAs("devans", "derek");
    run("UPDATE users SET accLevel = 9 WHERE id = 4");
    EXPECT_THROW(console.Form_Activate(), RunEnded);
    EXPECT_EQ(ui.texts(),
              std::vector<QString>{"You must be an administrator to access this program."});
    EXPECT_EQ(ui.messages[0].title, "Orvane Administration");
    EXPECT_EQ(ui.exitStatus, platform::kExitFailure);
    EXPECT_EQ(ReadIni("LG"), "devans");
    EXPECT_FALSE(console.isVisible());
}

TEST_F(ConsoleStartTest, AStaleDatabaseEndsTheRunFromInsideTheLogon) {
    run("UPDATE sysinfo SET dbversion = 6.49");
    logOnAs("admin", "orvane");
    EXPECT_THROW(console.Form_Activate(), RunEnded);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].title, "Database Upgrade");
    EXPECT_FALSE(ui.busy);
    EXPECT_FALSE(ReadIni("Database").isEmpty());  // it opened, so it is remembered
}

TEST_F(ConsoleStartTest, TheCommandLineRouteAndItsFailure) {
    SetCommandLine("-ladmin -pwrong");
    EXPECT_THROW(console.Form_Activate(), RunEnded);
    EXPECT_EQ(ui.texts(), std::vector<QString>{"You have entered an invalid password."});
    EXPECT_TRUE(ui.modalWindows.empty());
    EXPECT_EQ(ui.exitStatus, platform::kExitFailure);  // a script can tell
}

class VerifyDatabaseTest : public testing_support::SessionTest {
protected:
    bool verify() {
        std::unique_ptr<RecSet> rs;
        return console.VerifyDatabase(rs);
    }
    frmAdmin console;
};

TEST_F(VerifyDatabaseTest, TheOlderLogic) {
    EXPECT_TRUE(verify());
    EXPECT_TRUE(ui.messages.empty());

    execute("UPDATE sysinfo SET dbversion = 6.51");
    EXPECT_FALSE(verify());
    EXPECT_EQ(ui.texts().back(),
              "The database you are trying to open is a 6.51 version, which is more recent than "
              "the version of Wrenfold you are running.  You must upgrade the program to this "
              "version before you can open this database.");

    // No version, and no row at all, count as version 2.
    for (const char* change : {"UPDATE sysinfo SET dbversion = NULL", "DELETE FROM sysinfo"}) {
        ui.answers.push_back(platform::Msg::Cancel);
        execute(change);
        EXPECT_FALSE(verify()) << change;
        EXPECT_EQ(ui.messages.back().text,
                  gDatabasePath + " is a 2 version of the database.  It will be updated now.");
        EXPECT_EQ(ui.messages.back().title, "Wrenfold Upgrade");
        EXPECT_EQ(ui.messages.back().buttons, platform::Msg::OKCancel);
    }

    ui.messages.clear();
    ui.answers.push_back(platform::Msg::OK);
    EXPECT_FALSE(verify());  // the database is closed under the reads that follow
    ASSERT_EQ(ui.messages.size(), 3u);
    EXPECT_EQ(ui.messages[1].text,
              "The Lattimer Series will make a backup of your database named 'databasename.bck'.  "
              "This may take a few moments depending on the size of the database.");
    EXPECT_EQ(ui.messages[2].text, "Object is invalid or not set.");
}

}  // namespace
