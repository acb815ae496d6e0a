// The about window: what its about face shows after a logon, and where its support face leads.

#include "data/session.h"
#include "fixtures.h"
#include "logon/command_line.h"
#include "logon/frm_startup.h"
#include "logon/version_gate.h"
#include "settings/options.h"
#include "util/frm_about.h"
#include "util/frm_config.h"
#include "util/product.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

namespace {

class AboutTest : public testing_support::DemoTest {
protected:
    // Logs on from the command line, through the logon window.
    void logOn() {
        SetCommandLine("-ladmin -porvane");
        ASSERT_TRUE(logonWindow.ShowMe(false, false, true));
        ui.messages.clear();
    }
    // Shows the window and runs `script` on it while it is up.
    void showAbout(std::function<void(frmAbout*)> script) {
        ui.modalScripts.push_back([script](QWidget* w) { script(static_cast<frmAbout*>(w)); });
        ShowAbout(nullptr, gCompanyName);
    }

    frmStartUp logonWindow;
};

TEST_F(AboutTest, TheAboutFaceShowsTheProductVersionUserAndCompanyOfTheLogon) {
    logOn();
    QStringList texts;
    QString caption;
    bool supportShown = true;
    bool logoShown = false;
    bool logoIsTheMakers = false;
    showAbout([&](frmAbout* about) {
        caption = about->windowTitle();
        supportShown = about->frameSupport->isVisible();
        logoShown = about->Frame1->isVisible() && !about->picSplash->pixmap().isNull();
        logoIsTheMakers = about->picSplash->pixmap().toImage() ==
                          frmConfig::instance().ilLogos->image("orvane").toImage();
        texts << about->lblMain[0]->text() << about->lblVersion->text() << about->lblUser[1]->text()
              << about->lblUser[2]->text();
        about->Command1->click();
        EXPECT_FALSE(about->isVisible());
    });
    EXPECT_EQ(ui.modalWindows, std::vector<QString>{"frmAbout"});
    EXPECT_EQ(caption, "About");
    EXPECT_FALSE(supportShown);
    EXPECT_TRUE(logoShown);
    EXPECT_TRUE(logoIsTheMakers);
    EXPECT_EQ(texts, QStringList({"", logonWindow.Label2[1]->text(), "Alice Admin",
                                  "Lattimer Demo Company"}));
    EXPECT_EQ(texts[1], programVersionText());
    EXPECT_FALSE(ui.busy);
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(AboutTest, TheSupportFaceLeadsToTheSupportSiteAndMailbox) {
    logOn();
    frmAbout about("Lattimer Demo Company");
    ui.modalScripts.push_back([](QWidget* w) {
        auto* about = static_cast<frmAbout*>(w);
        EXPECT_EQ(about->windowTitle(), "Getting Support");
        EXPECT_FALSE(about->Frame1->isVisible());
        EXPECT_TRUE(about->frameSupport->isVisible());
        // The window closes around the support frame, with the close button under it.
        const QRect frame = about->frameSupport->geometry();
        EXPECT_GT(about->Command1->y(), frame.bottom());
        EXPECT_LE(about->Command1->geometry().bottom(), about->height());
        EXPECT_EQ(about->width(), frame.left() * 3 + frame.width());
        about->cmdWeb->click();
        about->cmdEmail->click();
    });
    about.ShowModal(nullptr);
    EXPECT_EQ(ui.launched,
              std::vector<QString>({"https://support.example.com", "mailto:support@example.com"}));
    EXPECT_TRUE(ui.messages.empty());
}

}  // namespace
