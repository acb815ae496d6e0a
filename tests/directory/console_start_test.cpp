// The start of the run through the console: the administrator test, the version gate ending the
// run, and the console's older version test.

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

#include <QAction>
#include <QLineEdit>
#include <QTabWidget>

namespace {

using platform::RunEnded;

class ConsoleStartTest : public testing_support::DemoTest {
protected:
    void TearDown() override {
        gAccessLevel = 0;
        DemoTest::TearDown();
    }
    // What the user types in the logon window, after `first` has looked around.
    void logOnAs(
        const QString& logon, const QString& password, const std::function<void()>& first = [] {}) {
        ui.modalScripts.push_back([=](QWidget* w) {
            first();
            auto* window = static_cast<frmStartUp*>(w);
            window->txtLogon->setText(logon);
            window->txtPassword->setText(password);
            window->cmdOK_Click();
        });
    }
    void run(const QString& sql) { engine::openDatabase(demoDatabase())->execute(sql); }

    frmAdmin console;
};

TEST_F(ConsoleStartTest, AnAdministratorGetsTheConsoleAndItsHelp) {
    logOnAs("admin", "orvane");
    console.Form_Activate();
    EXPECT_TRUE(console.bStarted && console.isVisible());
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

// The program's own order: the logon window stands alone, before any console is built.
TEST_F(ConsoleStartTest, TheLogonWindowComesBeforeAnyConsoleIsBuilt) {
    auto gone = std::make_unique<frmAdmin>();
    gone.reset();
    bool consoleBehind = true;
    logOnAs("admin", "orvane", [&] { consoleBehind = gConsoleForm != nullptr; });
    frmAdmin::LogOn();
    EXPECT_FALSE(consoleBehind);
}

// A refused administrator, a wrong password on the command line and a stale database each end
// the run with a failure and no console; the logon's settings are written once the database
// opened.
TEST_F(ConsoleStartTest, EachRefusalEndsTheRunWithAFailure) {
    const struct {
        const char* change;
        const char* commandLine;  // else the logon window, as Derek
        QString message;
        const char* title;
    } cases[] = {
        {"UPDATE users SET accLevel = 9 WHERE id = 4", nullptr,
         "You must be an administrator to access this program.", "Orvane Administration"},
        {nullptr, "-ladmin -pwrong", "You have entered an invalid password.", "Logon"},
        {"UPDATE sysinfo SET dbversion = 6.49", nullptr,
         "The database you are trying to open is a 6.49 version of the database.  Use the Upkeep "
         "Tool program from your Start Menu to upgrade it to the new version.",
         "Database Upgrade"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message.toStdString());
        testing_support::endSession();
        ui.messages.clear();
        ui.exitStatus = -1;
        if (c.change) {
            run(c.change);
        }
        SetCommandLine(c.commandLine ? c.commandLine : "");
        if (!c.commandLine) {
            logOnAs("devans", "derek");
        }
        const size_t windows = ui.modalWindows.size();
        frmAdmin fresh;
        EXPECT_THROW(fresh.Form_Activate(), RunEnded);
        if (c.title != QString("Orvane Administration")) {
            EXPECT_FALSE(ui.busy);  // the hourglass goes with a refusal inside the logon
        }
        EXPECT_TRUE(testing_support::saidOnly(ui, c.message, platform::Msg::OKOnly, c.title));
        EXPECT_EQ(ui.exitStatus, platform::kExitFailure);
        EXPECT_EQ(ui.modalWindows.size(), windows + (c.commandLine ? 0 : 1));
        EXPECT_FALSE(fresh.isVisible());
        // A refused level's logon is written, a wrong password's is not.
        EXPECT_EQ(ReadIni("LG"), "devans");
        EXPECT_FALSE(ReadIni("Database").isEmpty());
    }
}

class VerifyDatabaseTest : public testing_support::SessionTest {};

TEST_F(VerifyDatabaseTest, TheOlderLogic) {
    frmAdmin console;
    std::unique_ptr<RecSet> rs;
    const auto verify = [&] { return console.VerifyDatabase(rs); };
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
