// The start of the run through the console: the first activation, the administrator test,
// the version gate ending the run, the unload rule, and the console's older version test.

#include "data/dbase.h"
#include "data/session.h"
#include "directory/frm_admin.h"
#include "fixtures.h"
#include "installation.h"
#include "logon/command_line.h"
#include "logon/frm_startup.h"
#include "logon/logon_state.h"
#include "logon/version_gate.h"
#include "platform/os.h"
#include "settings/settings_file.h"
#include "settings/terminology.h"

#include <QDir>
#include <QFile>
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
    void setVersion(const QString& version) {
        auto db = engine::openDatabase(demoDatabase());
        db->execute("UPDATE sysinfo SET dbversion = " + version);
    }

    frmAdmin console;
};

TEST_F(ConsoleStartTest, TheConsoleAsLoaded) {
    EXPECT_EQ(gConsoleForm, &console);
    EXPECT_EQ(console.windowTitle(), "Administration");
    EXPECT_FALSE(console.bStarted);
    ASSERT_EQ(console.tabAdmin->count(), 6);
    const QStringList captions = {"Employees",     "Scheduling Workgroups", "Equipment",
                                  "Access Levels", "User Fields",           "Branches"};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(console.tabAdmin->tabText(i), captions[i]);
    }
    EXPECT_FALSE(console.tabAdmin->isTabVisible(frmAdmin::Branches));
    EXPECT_EQ(console.mnFile->title(), "&File");
    EXPECT_EQ(console.mnActions->title(), "&Actions");
    EXPECT_EQ(console.mnHelp->title(), "&Help");
    QStringList entries;
    for (QMenu* menu : {console.mnFile, console.mnActions, console.mnHelp}) {
        for (QAction* action : menu->actions()) {
            entries << action->objectName() + "=" + action->text();
        }
    }
    EXPECT_EQ(entries, QStringList({"mnClearRTS=&Clear RTS", "mnSeparator=", "mnExit=E&xit",
                                    "mnNew=&New...", "mnEdit=&Edit...", "mnDelete=&Delete",
                                    "mnSeparator2=", "mnLogOff=&Log User Off",
                                    "mnHelpTopics=&Help Topics", "mnAbout=&About..."}));
    EXPECT_EQ(console.cmdSave->text(), "&Save Changes");
}

TEST_F(ConsoleStartTest, AnAdministratorGetsTheConsole) {
    logOnAs("admin", "orvane");
    console.Form_Activate();
    EXPECT_TRUE(console.bStarted);
    EXPECT_TRUE(console.isVisible());
    EXPECT_FALSE(ui.busy);
    EXPECT_TRUE(gWatchdogOff);
    EXPECT_EQ(gTermFinancial, "Financial");
    EXPECT_EQ(console.tabAdmin->currentIndex(), 0);
    EXPECT_FALSE(console.cmdSave->isVisibleTo(&console));
    EXPECT_TRUE(console.cmdNew->isVisibleTo(&console));
    EXPECT_TRUE(console.helpFile().endsWith("lattsers.hlp"));
    EXPECT_EQ(gCompanyName, "Lattimer Demo Company");
    EXPECT_TRUE(ui.messages.empty());
    console.Form_Activate();  // later activations do nothing
    EXPECT_EQ(ui.modalWindows.size(), 1u);
    console.hide();
}

TEST_F(ConsoleStartTest, ALevelNineLogonIsRefusedAfterItsSettingsWereWritten) {
    logOnAs("devans", "derek");
    ASSERT_TRUE(engine::openDatabase(demoDatabase()) != nullptr);
    {
        auto db = engine::openDatabase(demoDatabase());
        db->execute("UPDATE users SET accLevel = 9 WHERE id = 4");
    }
    EXPECT_THROW(console.Form_Activate(), RunEnded);
    EXPECT_EQ(ui.texts(),
              std::vector<QString>{"You must be an administrator to access this program."});
    EXPECT_EQ(ui.messages[0].title, "Orvane Administration");
    EXPECT_EQ(ReadIni("LG"), "devans");
    EXPECT_FALSE(console.isVisible());
}

TEST_F(ConsoleStartTest, AStaleDatabaseEndsTheRunFromInsideTheLogon) {
    setVersion("6.49");
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

TEST_F(ConsoleStartTest, ClosingEndsTheRunAndAsksOnlyAboutUnsavedLevels) {
    EXPECT_THROW(console.Form_Unload(), RunEnded);
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(ui.exitStatus, platform::kExitNormal);
    console.bLevelDirty = true;
    ui.answers.push_back(platform::Msg::No);
    EXPECT_THROW(console.Form_Unload(), RunEnded);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text, "Save access level changes?");
    EXPECT_EQ(ui.messages[0].buttons, platform::Msg::YesNo);
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
              "the version of "
              "Wrenfold you are running.  You must upgrade the program to this version before you "
              "can open this "
              "database.");

    execute("UPDATE sysinfo SET dbversion = NULL");
    ui.answers.push_back(platform::Msg::Cancel);
    EXPECT_FALSE(verify());
    EXPECT_EQ(ui.messages.back().text,
              gDatabasePath + " is a 2 version of the database.  It will be updated now.");
    EXPECT_EQ(ui.messages.back().title, "Wrenfold Upgrade");
    EXPECT_EQ(ui.messages.back().buttons, platform::Msg::OKCancel);

    ui.messages.clear();
    ui.answers.push_back(platform::Msg::OK);
    EXPECT_FALSE(verify());  // the database is closed under the reads that follow
    ASSERT_EQ(ui.messages.size(), 3u);
    EXPECT_EQ(ui.messages[1].text,
              "The Lattimer Series will make a backup of your database named 'databasename.bck'.  "
              "This may take a "
              "few moments depending on the size of the database.");
    EXPECT_EQ(ui.messages[2].text, "Object is invalid or not set.");
}

TEST_F(VerifyDatabaseTest, NoRowCountsAsVersionTwo) {
    execute("DELETE FROM sysinfo");
    ui.answers.push_back(platform::Msg::Cancel);
    EXPECT_FALSE(verify());
    EXPECT_EQ(ui.messages.back().text,
              gDatabasePath + " is a 2 version of the database.  It will be updated now.");
}

}  // namespace
