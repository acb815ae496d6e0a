#include "util/frm_about.h"

#include "data/session.h"
#include "platform/ui.h"
#include "util/frm_config.h"
#include "util/open_document.h"
#include "util/product.h"
#include "util/twips.h"
#include "util/widgets.h"

#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

frmAbout::frmAbout(const QString& companyName, QWidget* parent)
    : QDialog(parent), companyName_(companyName) {
    MakeFixedDialog(this, QStringLiteral("frmAbout"), QStringLiteral("About"));
    Command1 = place<QPushButton>(this, "Command1", QRect(326, 252, 86, 28), "OK");
    Command1->setIcon(style()->standardIcon(QStyle::SP_DialogOkButton));
    buildAboutFace();
    buildSupportFace();
    setFixedSize(420, 288);
    OnEvent(Command1, &QPushButton::clicked, this, [this] { Command1_Click(); });
    OnEvent(cmdWeb, &QPushButton::clicked, this, [this] { cmdWeb_Click(); });
    OnEvent(cmdEmail, &QPushButton::clicked, this, [this] { cmdEmail_Click(); });
}

void frmAbout::buildAboutFace() {
    Frame1 = place<QFrame>(this, "Frame1", QRect(8, 8, 404, 236));
    Frame1->setFrameShape(QFrame::StyledPanel);
    picSplash = place<QLabel>(Frame1, "picSplash", QRect(12, 12, 96, 96));
    lblMain[0] = place<QLabel>(Frame1, "lblMain(0)", QRect(120, 12, 272, 24));
    QFont bold = lblMain[0]->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.4);
    lblMain[0]->setFont(bold);
    lblVersion = place<QLabel>(Frame1, "lblVersion", QRect(120, 40, 272, 20), "Version");
    lblSlogan = place<QLabel>(Frame1, "lblSlogan", QRect(120, 64, 272, 40),
                              "Administration of the Lattimer Series");
    lblSlogan->setWordWrap(true);
    Line1 = place<QFrame>(Frame1, "Line1", QRect(12, 116, 380, 2));
    Line1->setFrameShape(QFrame::HLine);
    Label5 = place<QLabel>(Frame1, "Label5", QRect(12, 124, 380, 20), "Licensed to:");
    lblUser[1] = place<QLabel>(Frame1, "lblUser(1)", QRect(28, 146, 364, 20));
    lblUser[2] = place<QLabel>(Frame1, "lblUser(2)", QRect(28, 168, 364, 20));
    lblCompany = place<QLabel>(Frame1, "lblCompany", QRect(12, 194, 380, 18), "Orvane Software");
    Label1 = place<QLabel>(Frame1, "Label1", QRect(12, 212, 380, 18),
                           "This program is protected by copyright law. All rights reserved.");
}

void frmAbout::buildSupportFace() {
    frameSupport = place<QGroupBox>(this, "frameSupport", QRect(8, 8, 404, 196), "Getting Support");
    const char* const steps[] = {
        "1. Press F1 in any window for help on what it does.",
        "2. Visit the support website for answers and updates:",
        "3. Write to the support mailbox:",
        "4. Telephone support during office hours.",
    };
    const int tops[] = {24, 52, 112, 168};
    for (int i = 0; i < 4; ++i) {
        Label2[i] = place<QLabel>(frameSupport, QStringLiteral("Label2(%1)").arg(i),
                                  QRect(12, tops[i], 380, 20), steps[i]);
    }
    cmdWeb = place<QPushButton>(frameSupport, "cmdWeb", QRect(28, 76, 240, 26), kSupportWebsite);
    cmdEmail =
        place<QPushButton>(frameSupport, "cmdEmail", QRect(28, 136, 240, 26), kSupportMailbox);
}

void frmAbout::ShowModal(QWidget* owner) {
    Form_Load();
    platform::ui().showModal(this, owner);
}

void frmAbout::Form_Load() {
    ShowBusy();
    if (bIsAbout) {
        loadAboutFace();
    } else {
        loadSupportFace();
    }
    ShowIdle();
}

void frmAbout::loadAboutFace() {
    frameSupport->hide();
    lblMain[0]->setText(gProductName);
    DoEvents();
    lblVersion->setText(gVersionText);
    picSplash->setPixmap(frmConfig::instance().ilLogos->image(QStringLiteral("orvane")));
    lblUser[1]->setText(gUsers(0).Name);
    lblUser[2]->setText(companyName_);
}

// The support face is smaller than the about face: the window shrinks around it, with the
// close button under it.
void frmAbout::loadSupportFace() {
    Frame1->hide();
    setWindowTitle(QStringLiteral("Getting Support"));
    frameSupport->show();
    const QRect frame = frameSupport->geometry();
    setFixedSize(frame.left() * 3 + frame.width(),
                 frame.bottom() + 1 + twipsToPixels(650) + Command1->height());
    Command1->move(Command1->x(), frame.bottom() + 1 + twipsToPixels(120));
}

void frmAbout::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    Command1->setFocus();
}

void frmAbout::Command1_Click() {
    hide();
}

void frmAbout::cmdWeb_Click() {
    OpenDocument(kSupportWebsite);
}

void frmAbout::cmdEmail_Click() {
    OpenDocument("mailto:" + kSupportMailbox);
}

void ShowAbout(QWidget* owner, const QString& companyName) {
    frmAbout about(companyName, owner);
    about.bIsAbout = true;
    about.ShowModal(owner);
}
