// The about window: what its about face shows after a logon, and where its support face leads.

#include "data/session.h"
#include "fixtures.h"
#include "logon/command_line.h"
#include "logon/frm_startup.h"
#include "logon/version_gate.h"
#include "util/frm_about.h"
#include "util/product.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

namespace {

class AboutTest : public testing_support::DemoTest {
protected:
    void SetUp() override {
        DemoTest::SetUp();
        SetCommandLine("-ladmin -porvane");
        ASSERT_TRUE(logonWindow.ShowMe(false, false, true));
        ui.messages.clear();
    }
    // Runs `script` on the window while it is up.
    void whileShown(std::function<void(frmAbout*)> script) {
        ui.modalScripts.push_back([script](QWidget* w) { script(static_cast<frmAbout*>(w)); });
    }

    frmStartUp logonWindow;
};

TEST_F(AboutTest, TheAboutFaceShowsTheProductVersionUserAndCompanyOfTheLogon) {
    QStringList texts;
    whileShown([&](frmAbout* about) {
        EXPECT_FALSE(about->frameSupport->isVisible());
        texts << about->lblVersion->text() << about->lblUser[1]->text()
              << about->lblUser[2]->text();
        about->Command1->click();
        EXPECT_FALSE(about->isVisible());
    });
    ShowAbout(nullptr, gCompanyName);
    EXPECT_EQ(texts, QStringList({programVersionText(), "Alice Admin", "Lattimer Demo Company"}));
    EXPECT_FALSE(ui.busy);
}

TEST_F(AboutTest, TheSupportFaceLeadsToTheSupportSiteAndMailbox) {
    frmAbout about("Lattimer Demo Company");
    whileShown([](frmAbout* about) {
        EXPECT_FALSE(about->Frame1->isVisible());
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
