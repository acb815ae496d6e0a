#include "logon/frm_startup.h"

#include "data/dbase.h"
#include "logon/command_line.h"
#include "platform/ui.h"
#include "settings/settings_file.h"
#include "util/artwork.h"
#include "util/product.h"
#include "util/twips.h"
#include "util/value_helpers.h"
#include "util/widgets.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProxyStyle>
#include <QPushButton>

QWidget* gConsoleForm = nullptr;

namespace {

constexpr int kWidth = 384;
const QColor kBandColour(120, 35, 15);

// Shows each character of a password as "*".
class AsteriskStyle : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        if (hint == SH_LineEdit_PasswordCharacter) {
            return '*';
        }
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
};

QLineEdit* textBox(QWidget* parent, const QString& name, QRect geometry, int maxLength) {
    auto* box = place<QLineEdit>(parent, name, geometry);
    box->setMaxLength(maxLength);
    return box;
}

}  // namespace

frmStartUp::frmStartUp(QWidget* parent) : QDialog(parent) {
    MakeFixedDialog(this, QStringLiteral("frmStartUp"), QStringLiteral("Logon"));
    buildControls();
    setHeight(kFoldedHeight);
    gDBase.showCaption = [this](const QString& caption) { setWindowTitle(caption); };
}

frmStartUp::~frmStartUp() {
    gDBase.showCaption = nullptr;
}

void frmStartUp::buildControls() {
    Picture1 = place<QWidget>(this, "Picture1", QRect(0, 0, kWidth, 44));
    Picture1->setAutoFillBackground(true);
    QPalette band = Picture1->palette();
    band.setColor(QPalette::Window, kBandColour);
    band.setColor(QPalette::WindowText, Qt::white);
    Picture1->setPalette(band);
    picMain = place<QLabel>(Picture1, "picMain", QRect(8, 6, 32, 32));
    Label2[0] = place<QLabel>(Picture1, "Label2(0)", QRect(50, 5, 320, 18), "Logon to Wrenfold");
    Label2[1] = place<QLabel>(Picture1, "Label2(1)", QRect(50, 23, 320, 16), "Version 2.16");
    QFont title = Label2[0]->font();
    title.setBold(true);
    Label2[0]->setFont(title);

    Frame1 = place<QGroupBox>(this, "Frame1", QRect(8, 50, 272, 130));
    Label1[0] = place<QLabel>(Frame1, "Label1(0)", QRect(12, 22, 72, 22), "Logon");
    Label1[1] = place<QLabel>(Frame1, "Label1(1)", QRect(12, 54, 72, 22), "Password");
    txtLogon = textBox(Frame1, "txtLogon", QRect(90, 20, 166, 24), 8);
    txtPassword = textBox(Frame1, "txtPassword", QRect(90, 52, 166, 24), 8);
    txtPassword->setEchoMode(QLineEdit::Password);
    // A widget doesn't own the style it is given.
    auto* asterisks = new AsteriskStyle;
    asterisks->setParent(txtPassword);
    txtPassword->setStyle(asterisks);
    chkPassword = place<QCheckBox>(Frame1, "chkPassword", QRect(90, 86, 166, 22), "&Save Password");

    cmdOK = place<QPushButton>(this, "cmdOK", QRect(290, 56, 86, 28), "&Logon");
    cmdCancel = place<QPushButton>(this, "cmdCancel", QRect(290, 90, 86, 28), "&Cancel");
    cmdDatabases =
        place<QPushButton>(this, "cmdDatabases", QRect(290, 152, 86, 28), "&Database >>");
    cmdOK->setDefault(true);

    frameDT = place<QGroupBox>(this, "frameDT", QRect(8, 192, kWidth - 16, 62), "Database");
    lblDatabase[0] = place<QLabel>(frameDT, "lblDatabase(0)", QRect(10, 17, 60, 20), "Database");
    lblDatabase[1] = place<QLabel>(frameDT, "lblDatabase(1)", QRect(10, 39, 60, 20), "Server");
    lblDatabase[2] = place<QLabel>(frameDT, "lblDatabase(2)", QRect(196, 39, 56, 20), "Database");
    txtDatabase = textBox(frameDT, "txtDatabase", QRect(72, 17, 252, 20), 255);
    cmdBrowse = place<QPushButton>(frameDT, "cmdBrowse", QRect(330, 16, 28, 22), "..");
    txtServer = textBox(frameDT, "txtServer", QRect(72, 39, 118, 20), 255);
    txtSQLDB = textBox(frameDT, "txtSQLDB", QRect(254, 39, 104, 20), 255);

    // A label names the box it stands beside, for a screen reader.
    Label1[0]->setBuddy(txtLogon);
    Label1[1]->setBuddy(txtPassword);
    lblDatabase[0]->setBuddy(txtDatabase);
    lblDatabase[1]->setBuddy(txtServer);
    lblDatabase[2]->setBuddy(txtSQLDB);

    for (QLineEdit* box : {txtLogon, txtPassword}) {
        SelectAllOnFocus(box);
    }
    OnEvent(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
    connect(cmdDatabases, &QPushButton::clicked, this, [this] { cmdDatabases_Click(); });
    connect(cmdBrowse, &QPushButton::clicked, this, [this] { cmdBrowse_Click(); });
}

void frmStartUp::setHeight(int twips) {
    height_ = twips;
    setFixedSize(kWidth, twipsToPixels(twips));
}

bool frmStartUp::ShowMe(bool bIsDocsIN, bool, bool bIsAdminIn) {
    bIsDocs = bIsDocsIN;
    bIsAdmin = bIsAdminIn;
    // Every settings key lies under the system directory, so it comes first.
    gSystemDir = GetSystemDir();
    Form_Load();
    frameDT->setVisible(true);
    txtDatabase->setText(ReadIni(QStringLiteral("Database")));
    if (txtDatabase->text().isEmpty()) {
        cmdDatabases_Click();  // a first-time user sees the database fields
    }
    if (CommandLine().isEmpty()) {
        platform::ui().showModal(this, gConsoleForm);
    } else {
        txtLogon->setText(GetCommandSwitch(QStringLiteral("-l")));
        txtPassword->setText(GetCommandSwitch(QStringLiteral("-p")));
        cmdOK_Click();
    }
    DoEvents();
    if (bCanceled) {
        // From the command line nobody is waiting to try again: the logon failed.
        End(CommandLine().isEmpty() ? platform::kExitNormal : platform::kExitFailure);
    }
    DoEvents();
    hide();
    return true;
}

void frmStartUp::Form_Load() {
    setHeight(kFoldedHeight);
    ShowBusy();
    DoEvents();
    bCanceled = true;
    gVersionText = programVersionText();
    const QIcon icon = gConsoleForm ? gConsoleForm->windowIcon() : artwork::consoleIcon();
    picMain->setPixmap(icon.pixmap(32, 32));
    txtLogon->setText(ReadIni(QStringLiteral("LG")));
    const QString savedPassword = ReadIni(QStringLiteral("WP"));
    if (!savedPassword.isEmpty()) {
        chkPassword->setChecked(true);
        txtPassword->setText(savedPassword);
    }
    DoEvents();
    Label2[0]->setText(bIsDocs ? QStringLiteral("Quillmere") : gProductName);
    Label2[1]->setText(gVersionText);
    DoEvents();
}

void frmStartUp::Form_Activate() {
    DoEvents();
    if (!txtPassword->text().isEmpty()) {
        txtPassword->setFocus();
        SelectAllText(txtPassword);
    }
    ShowIdle();
}

void frmStartUp::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    Form_Activate();
}

void frmStartUp::cmdDatabases_Click() {
    // The test is on the height itself, not on a flag of its own.
    if (Height() != kOpenHeight) {
        ShowDb();
    } else {
        HideDb();
    }
}

void frmStartUp::ShowDb() {
    cmdDatabases->setText(QStringLiteral("<< &Hide"));
    setHeight(kOpenHeight);
}

void frmStartUp::HideDb() {
    cmdDatabases->setText(QStringLiteral("&Database >>"));
    setHeight(kFoldedHeight);
}

void frmStartUp::cmdBrowse_Click() {
    try {
        txtDatabase->setText(
            BrowseForFile(txtDatabase->text(), QStringLiteral("Database|*.mdb"), true));
    } catch (const rt::Error&) {
        // The box keeps its text.
    }
}

void frmStartUp::cmdCancel_Click() {
    bCanceled = true;
    hide();
}

void frmStartUp::cmdOK_Click() {
    const QString server = txtServer->text();
    if (!ValidateLogon(*this, server, bIsDocs, bIsAdmin)) {
        bCanceled = true;  // the window stays open for another try
        return;
    }
    bCanceled = false;
    hide();
}

QString frmStartUp::logonText() const {
    return txtLogon->text();
}
QString frmStartUp::passwordText() const {
    return txtPassword->text();
}
QString frmStartUp::databaseText() const {
    return txtDatabase->text();
}
int frmStartUp::savePasswordValue() const {
    return chkPassword->isChecked() ? 1 : 0;
}
void frmStartUp::focusLogon() {
    txtLogon->setFocus();
}
void frmStartUp::focusPassword() {
    txtPassword->setFocus();
}
void frmStartUp::focusDatabase() {
    txtDatabase->setFocus();
}
