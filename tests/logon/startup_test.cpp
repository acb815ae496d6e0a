// The logon window through the UI seam: its fold, what it loads from the settings, the modal
// and the command-line routes, and the ways the run ends inside it.

#include "data/session.h"
#include "fixtures.h"
#include "logon/command_line.h"
#include "logon/frm_startup.h"
#include "logon/logon_state.h"
#include "settings/settings_file.h"
#include "util/product.h"
#include "util/twips.h"

#include <QCheckBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

using platform::RunEnded;

class StartUpTest : public testing_support::DemoTest {
protected:
    // What the user does in the logon window once it shows.
    void whenShown(const std::function<void(frmStartUp&)>& script) {
        ui.modalScripts.push_back([script](QWidget* w) { script(*static_cast<frmStartUp*>(w)); });
    }

    frmStartUp window;
};

TEST_F(StartUpTest, TheWindowAndItsDatabaseFrameFoldedByTheHeight) {
    EXPECT_EQ(window.txtLogon->maxLength(), 8);
    EXPECT_EQ(window.txtPassword->maxLength(), 8);
    EXPECT_EQ(window.txtPassword->echoMode(), QLineEdit::Password);
    EXPECT_GE(window.frameDT->geometry().top(), twipsToPixels(2850) - 2);  // below the fold
    const std::pair<int, QString> folds[] = {
        {2850, "&Database >>"}, {3850, "<< &Hide"}, {2850, "&Database >>"}};
    for (const auto& [height, caption] : folds) {
        EXPECT_EQ(window.Height(), height);
        EXPECT_EQ(window.height(), twipsToPixels(height));
        EXPECT_EQ(window.cmdDatabases->text(), caption);
        window.cmdDatabases->click();
    }
    window.setHeight(3850);  // set anywhere else, the height alone decides
    window.cmdDatabases_Click();
    EXPECT_EQ(window.Height(), 2850);
}

// A stored password fills the box and ticks Save Password, which keeps it; without one the box
// stays clear and the logon stores none.
TEST_F(StartUpTest, AReturningUserSeesTheStoredLogonAndPassword) {
    for (const QString stored : {"orvane", ""}) {
        SCOPED_TRACE(stored.toStdString());
        WriteIni("WP", ProgramSection(), stored);
        whenShown([&](frmStartUp& w) {
            EXPECT_EQ(w.txtLogon->text(), "admin");
            EXPECT_EQ(w.txtPassword->text(), stored);
            EXPECT_EQ(w.chkPassword->isChecked(), !stored.isEmpty());
            EXPECT_EQ(w.Height(), 2850);  // a stored database keeps it folded
            w.txtPassword->setText("orvane");
            w.cmdOK->click();
        });
        frmStartUp fresh;
        EXPECT_TRUE(fresh.ShowMe(false, false, true));
        EXPECT_EQ(ReadIni("WP", ProgramSection(), "-"), stored.isEmpty() ? "-" : stored);
        EXPECT_EQ(fresh.txtDatabase->text(), ReadIni("Database"));
        EXPECT_EQ(fresh.Label2[1]->text(), gVersionText);
        EXPECT_TRUE(gVersionText.startsWith("Version "));
        EXPECT_FALSE(fresh.isVisible());
    }
    EXPECT_EQ(ui.modalWindows, std::vector<QString>(2, "frmStartUp"));
}

TEST_F(StartUpTest, CancelAndClosingTheWindowEndTheRun) {
    QFile::remove(QDir(gSystemDir).filePath("tarnell.ini"));
    for (const bool cancel : {true, false}) {
        whenShown([&](frmStartUp& w) {
            EXPECT_EQ(w.Height(), 3850);  // a first-time user sees the database fields
            cancel ? w.cmdCancel->click() : (void)w.close();
        });
        ui.exitStatus = -1;
        EXPECT_THROW(frmStartUp().ShowMe(false, false, true), RunEnded);
        EXPECT_EQ(ui.exitStatus, platform::kExitNormal) << cancel;
    }
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(StartUpTest, AFailedCredentialLeavesTheWindowOpenForASecondTry) {
    whenShown([](frmStartUp& w) {
        w.txtPassword->setText("wrong");
        w.cmdOK->click();
        EXPECT_TRUE(w.isVisible());
        EXPECT_TRUE(w.bCanceled);
        w.txtPassword->setText("orvane");
        w.cmdOK->click();
    });
    EXPECT_TRUE(window.ShowMe(false, false, true));
    EXPECT_TRUE(testing_support::saidOnly(ui, "You have entered an invalid password.",
                                          platform::Msg::OKOnly, "Logon"));
    EXPECT_FALSE(window.bCanceled);
    EXPECT_EQ(gUsers(0).Name, "Alice Admin");
}

// The command line logs on without showing the window, and its password replaces a stored one
// even when it gives none.
TEST_F(StartUpTest, TheCommandLineLogsOnWithoutShowingTheWindow) {
    WriteIni("WP", ProgramSection(), "orvane");
    SetCommandLine("-pstored -LADMIN");
    EXPECT_THROW(window.ShowMe(false, false, true), RunEnded);
    EXPECT_EQ(window.txtLogon->text() + "|" + window.txtPassword->text(), "ADMIN|stored");
    EXPECT_EQ(ui.texts(), std::vector<QString>{"You have entered an invalid password."});
    EXPECT_EQ(ui.exitStatus, platform::kExitFailure);

    frmStartUp second;
    SetCommandLine("-ladmin -porvane");
    EXPECT_TRUE(second.ShowMe(false, false, true));
    EXPECT_EQ(gUsers(0).Name, "Alice Admin");
    EXPECT_TRUE(ui.busy);  // no activation: the start of the run ends the hourglass

    frmStartUp third;
    SetCommandLine("-ladmin");
    EXPECT_THROW(third.ShowMe(false, false, true), RunEnded);
    EXPECT_EQ(third.txtPassword->text(), "");
    EXPECT_TRUE(ui.modalWindows.empty());
}

TEST_F(StartUpTest, BrowsingOffersTheTypedPathAndTakesTheChosenOne) {
    window.txtDatabase->setText("/data/old.mdb");
    ui.fileChoices.push_back(QString("/data/new.mdb"));
    window.cmdBrowse->click();
    EXPECT_EQ(window.txtDatabase->text(), "/data/new.mdb");
    const auto& dialog = ui.fileDialogs.back();
    EXPECT_EQ(dialog.fileName + "|" + dialog.filter, "/data/old.mdb|Database|*.mdb");
    EXPECT_TRUE(dialog.mustExist);
}

}  // namespace
