// The logon window through the UI seam: its fold, what it loads from the settings, the modal
// and the command-line routes, and the ways the run ends inside it.

#include "data/dbase.h"
#include "data/session.h"
#include "fixtures.h"
#include "installation.h"
#include "logon/command_line.h"
#include "logon/frm_startup.h"
#include "logon/logon_state.h"
#include "platform/os.h"
#include "settings/settings_file.h"
#include "util/product.h"
#include "util/twips.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

using platform::RunEnded;

frmStartUp* logonWindow(QWidget* w) {
    return static_cast<frmStartUp*>(w);
}

class StartUpTest : public testing_support::DemoTest {
protected:
    void SetUp() override {
        DemoTest::SetUp();
        database = ReadIni("Database");
    }
    // The user's part in the next modal window: type a password and press Logon.
    void logOnWith(const QString& password) {
        ui.modalScripts.push_back([password](QWidget* w) {
            logonWindow(w)->txtPassword->setText(password);
            logonWindow(w)->cmdOK->click();
        });
    }

    QString database;
    frmStartUp window;
};

TEST_F(StartUpTest, TheWindowAndItsDatabaseFrameFoldedByTheHeight) {
    EXPECT_EQ(window.windowTitle(), "Logon");
    EXPECT_EQ(window.txtLogon->maxLength(), 8);
    EXPECT_EQ(window.txtPassword->maxLength(), 8);
    EXPECT_EQ(window.txtPassword->echoMode(), QLineEdit::Password);
    EXPECT_EQ(window.txtDatabase->maxLength(), 255);
    EXPECT_EQ(window.chkPassword->text(), "&Save Password");
    EXPECT_EQ(window.cmdOK->text(), "&Logon");
    EXPECT_EQ(window.cmdCancel->text(), "&Cancel");
    EXPECT_EQ(window.cmdBrowse->text(), "..");
    // The frame lies below the folded height.
    EXPECT_GE(window.frameDT->geometry().top(), twipsToPixels(2850) - 2);

    const struct {
        int height;
        const char* caption;
    } folds[] = {{2850, "&Database >>"}, {3850, "<< &Hide"}, {2850, "&Database >>"}};
    for (const auto& fold : folds) {
        EXPECT_EQ(window.Height(), fold.height);
        EXPECT_EQ(window.height(), twipsToPixels(fold.height));
        EXPECT_EQ(window.cmdDatabases->text(), fold.caption);
        window.cmdDatabases->click();
    }
    window.setHeight(3850);  // set anywhere else, the height alone decides
    window.cmdDatabases_Click();
    EXPECT_EQ(window.Height(), 2850);
}

TEST_F(StartUpTest, AReturningUserSeesTheStoredLogonAndAStoredPasswordTicksTheBox) {
    WriteIni("WP", ProgramSection(), "orvane");
    QString seenLogon;
    QString seenPassword;
    bool ticked = false;
    int height = 0;
    ui.modalScripts.push_back([&](QWidget* w) {
        seenLogon = logonWindow(w)->txtLogon->text();
        seenPassword = logonWindow(w)->txtPassword->text();
        ticked = logonWindow(w)->chkPassword->isChecked();
        height = logonWindow(w)->Height();
        logonWindow(w)->cmdOK->click();
    });
    EXPECT_TRUE(window.ShowMe(false, false, true));
    EXPECT_EQ(seenLogon, "admin");
    EXPECT_EQ(seenPassword, "orvane");
    EXPECT_TRUE(ticked);
    EXPECT_EQ(height, 2850);  // a stored database keeps the frame folded
    EXPECT_EQ(window.txtDatabase->text(), database);
    EXPECT_EQ(window.Label2[0]->text(), "");
    EXPECT_EQ(window.Label2[1]->text(), gVersionText);
    EXPECT_TRUE(gVersionText.startsWith("Version "));
    EXPECT_EQ(ui.modalWindows, std::vector<QString>{"frmStartUp"});
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(ReadIni("WP"), "orvane");  // kept: the box stayed ticked
}

TEST_F(StartUpTest, AnEmptyStoredPasswordLeavesTheBoxClearAndSavingIsDecidedAgain) {
    logOnWith("orvane");
    EXPECT_TRUE(window.ShowMe(false, false, true));
    EXPECT_FALSE(window.chkPassword->isChecked());
    EXPECT_EQ(ReadIni("WP", ProgramSection(), "<none>"), "<none>");
}

TEST_F(StartUpTest, CancelAndClosingTheWindowEndTheRun) {
    QFile::remove(QDir(gSystemDir).filePath("tarnell.ini"));
    int height = 0;
    ui.modalScripts.push_back([&](QWidget* w) {
        height = logonWindow(w)->Height();
        logonWindow(w)->cmdCancel->click();
    });
    EXPECT_THROW(window.ShowMe(false, false, true), RunEnded);
    EXPECT_EQ(height, 3850);  // a first-time user sees the database fields
    EXPECT_EQ(ui.exitStatus, platform::kExitNormal);

    frmStartUp second;
    ui.ended = false;
    ui.modalScripts.push_back([](QWidget* w) { w->close(); });
    EXPECT_THROW(second.ShowMe(false, false, true), RunEnded);
    EXPECT_TRUE(ui.ended);
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(StartUpTest, AFailedCredentialLeavesTheWindowOpenForASecondTry) {
    ui.modalScripts.push_back([](QWidget* w) {
        logonWindow(w)->txtPassword->setText("wrong");
        logonWindow(w)->cmdOK->click();
        EXPECT_TRUE(logonWindow(w)->isVisible());
        EXPECT_TRUE(logonWindow(w)->bCanceled);
        logonWindow(w)->txtPassword->setText("orvane");
        logonWindow(w)->cmdOK->click();
    });
    EXPECT_TRUE(window.ShowMe(false, false, true));
    EXPECT_EQ(ui.texts(), std::vector<QString>{"You have entered an invalid password."});
    EXPECT_FALSE(window.bCanceled);
    EXPECT_EQ(gUsers(0).Name, "Alice Admin");
}

TEST_F(StartUpTest, TheCommandLineLogsOnWithoutShowingTheWindow) {
    WriteIni("WP", ProgramSection(), "stored");
    SetCommandLine("-porvane -LADMIN");  // either case, in any order
    EXPECT_TRUE(window.ShowMe(false, false, true));
    EXPECT_TRUE(ui.modalWindows.empty());
    EXPECT_EQ(window.txtLogon->text(), "ADMIN");
    EXPECT_EQ(window.txtPassword->text(), "orvane");
    EXPECT_EQ(gUsers(0).Name, "Alice Admin");
    EXPECT_TRUE(ui.busy);  // no activation: the start of the run ends the hourglass
}

TEST_F(StartUpTest, TheCommandLineOverwritesAStoredPasswordEvenWithNothing) {
    WriteIni("WP", ProgramSection(), "orvane");
    SetCommandLine("-ladmin");
    EXPECT_THROW(window.ShowMe(false, false, true), RunEnded);
    EXPECT_EQ(window.txtPassword->text(), "");
    EXPECT_EQ(ui.texts(), std::vector<QString>{"You have entered an invalid password."});
    EXPECT_TRUE(ui.modalWindows.empty());
}

TEST_F(StartUpTest, BrowsingOffersTheTypedPathAndTakesTheChosenOne) {
    window.txtDatabase->setText("/data/old.mdb");
    ui.fileChoices.push_back(QString("/data/new.mdb"));
    window.cmdBrowse->click();
    EXPECT_EQ(window.txtDatabase->text(), "/data/new.mdb");
    EXPECT_EQ(ui.fileDialogs.back().fileName, "/data/old.mdb");
    EXPECT_EQ(ui.fileDialogs.back().filter, "Database|*.mdb");
    EXPECT_TRUE(ui.fileDialogs.back().mustExist);
}

}  // namespace
