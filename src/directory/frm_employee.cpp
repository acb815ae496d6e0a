#include "directory/frm_employee.h"

#include "access/right_catalogue.h"
#include "data/dbase.h"
#include "data/session.h"
#include "logon/frm_startup.h"
#include "platform/convert.h"
#include "platform/ui.h"
#include "util/accessibility.h"
#include "util/twips.h"
#include "util/value_helpers.h"
#include "util/widgets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

namespace {

constexpr int kFrame3Height = 2895;              // twips, the members' frame alone
constexpr int kFrame3HeightWithBranches = 1695;  // twips, sharing the space with the branches
constexpr int kExtendedHeight = 2310;
constexpr int kExtendedHeightWithBranches = 1185;

const char* const kEditions[] = {"Associate Desk", "Agent Desk", "Agent Desk Plus", "Counsel Desk"};

}  // namespace

frmEmployee::frmEmployee(QWidget* parent) : QDialog(parent) {
    MakeFixedDialog(this, QStringLiteral("frmEmployee"), QStringLiteral("Employees"));
    buildControls();
    // Load: the level list's index + 1 is the level number.
    bCanceled = true;
    for (int i = 0; i <= 9; ++i) {
        cmbAccess->addItem(gLevelNames(i));
    }
}

void frmEmployee::buildControls() {
    Frame1 = place<QGroupBox>(this, "Frame1", QRect(8, 8, 300, 250), "Information");
    Label2 = place<QLabel>(Frame1, "Label2", QRect(12, 24, 90, 22), "Name");
    txtName = place<QLineEdit>(Frame1, "txtName", QRect(104, 22, 184, 24));
    txtName->setMaxLength(50);
    lbl1 = place<QLabel>(Frame1, "lbl1", QRect(12, 56, 90, 22), "Access Level");
    cmbAccess = place<QComboBox>(Frame1, "cmbAccess", QRect(104, 54, 184, 24));
    lbl2 = place<QLabel>(Frame1, "lbl2", QRect(12, 88, 90, 22), "Logon");
    txtLogon = place<QLineEdit>(Frame1, "txtLogon", QRect(104, 86, 184, 24));
    txtLogon->setMaxLength(8);
    lbl3 = place<QLabel>(Frame1, "lbl3", QRect(12, 120, 90, 22), "Password");
    txtPassword = place<QLineEdit>(Frame1, "txtPassword", QRect(104, 118, 184, 24));
    txtPassword->setMaxLength(8);
    lblLevel = place<QLabel>(Frame1, "lblLevel", QRect(12, 150, 276, 20),
                             "Employee is using Lattimer Series level");
    cmbLevel = place<QComboBox>(Frame1, "cmbLevel", QRect(104, 172, 184, 24));
    for (const char* edition : kEditions) {
        cmbLevel->addItem(QString::fromLatin1(edition));
    }
    cmbLevel->setCurrentIndex(-1);
    chkBranchManager = place<QCheckBox>(Frame1, "chkBranchManager", QRect(12, 202, 276, 20),
                                        "Employee is a Branch Manager");
    chkSupervision = place<QCheckBox>(Frame1, "chkSupervision", QRect(12, 224, 276, 20),
                                      "Employee under supervision");
    chkSupervision->setVisible(false);

    Frame3 = place<QGroupBox>(this, "Frame3", QRect(316, 8, 260, twipsToPixels(kFrame3Height)),
                              "Extend Access to these Employees");
    lstExtended = place<QListWidget>(Frame3, "lstExtended",
                                     QRect(10, 22, 240, twipsToPixels(kExtendedHeight)));
    frameBranches =
        place<QGroupBox>(this, "frameBranches", QRect(316, 132, 260, 72), "Manage these Branches");
    lstBranches = place<QListWidget>(frameBranches, "lstBranches", QRect(10, 20, 240, 46));
    frameBranches->setVisible(false);

    // A label names the control it stands beside, for a screen reader, which would otherwise
    // name every box after the frame.
    Label2->setBuddy(txtName);
    lbl1->setBuddy(cmbAccess);
    lbl2->setBuddy(txtLogon);
    lbl3->setBuddy(txtPassword);
    lblLevel->setBuddy(cmbLevel);
    lstBranches->setAccessibleName(frameBranches->title());  // the frame is the list's label

    cmdOK = place<QPushButton>(this, "cmdOK", QRect(396, 226, 86, 28), "&OK");
    cmdCancel = place<QPushButton>(this, "cmdCancel", QRect(490, 226, 86, 28), "&Cancel");
    cmdOK->setDefault(true);
    setFixedSize(584, 266);

    // The tab order as designed: the fields, the list, the two buttons, then the rest.
    QWidget* order[] = {txtName,   cmbAccess, txtLogon,         txtPassword, lstExtended,   cmdOK,
                        cmdCancel, cmbLevel,  chkBranchManager, lstBranches, chkSupervision};
    for (size_t i = 0; i + 1 < std::size(order); ++i) {
        setTabOrder(order[i], order[i + 1]);
    }
    for (QLineEdit* box : {txtName, txtLogon, txtPassword}) {
        SelectAllOnFocus(box);
    }
    OnEvent(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
    connect(chkBranchManager, &QCheckBox::clicked, this, [this] { chkBranchManager_Click(); });
}

void frmEmployee::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    ShowIdle();
}

void frmEmployee::ShowForm(qint16& nTypeIn, RecSet& rsIn, bool& bIsNew) {
    nType = nTypeIn;
    rs = &rsIn;
    bNew = bIsNew;
    QString caption = bIsNew ? QStringLiteral("New") : QStringLiteral("Edit");
    if (nType != 0) {
        for (QWidget* w :
             std::initializer_list<QWidget*>{lbl1, lbl2, lbl3, cmbAccess, txtLogon, txtPassword,
                                             cmbLevel, lblLevel, chkBranchManager}) {
            w->setVisible(false);
        }
    } else {
        caption += QStringLiteral(" Employee");
        HelpContextID = 169;
        chkBranchManager->setVisible(false);  // the branch manager feature stays dormant
    }
    switch (nType) {
        case 1:
            caption += QStringLiteral(" Workgroup");
            HelpContextID = 171;
            Frame3->setTitle(QStringLiteral("Workgroup Members"));
            break;
        case 2:
            caption += QStringLiteral(" Equipment");
            HelpContextID = 172;
            Frame3->setTitle(QStringLiteral("Users Who Can Access this Equipment"));
            break;
        case 3:
            caption += QStringLiteral(" Branch");
            Frame3->setTitle(QStringLiteral("Branch Members"));
            break;
        default:
            break;
    }
    setWindowTitle(caption);
    lstExtended->setAccessibleName(Frame3->title());  // the frame is the list's label
    txtName->setText(rt::CStr(rs->Cols("Name")));
    txtLogon->setText(rt::CStr(rs->Cols("Logon")));
    txtPassword->setText(rt::CStr(rs->Cols("Password")));
    const qint16 level = rt::CInt(rs->Cols("accLevel"));
    if (level < 1 || level > 10) {
        throw rt::Error::standard(rt::InvalidPropertyValue);  // what setting the list index does
    }
    cmbAccess->setCurrentIndex(level - 1);
    const rt::Variant edition = rs->Cols("fslevel");
    if (rt::IsNumeric(edition) && rt::CDbl(edition) >= 0 && rt::CDbl(edition) <= 3) {
        cmbLevel->setCurrentIndex(rt::CInt(edition));
    }
    FillLists();
    platform::ui().showModal(this, gConsoleForm);
}

qint32 frmEmployee::entryId() {
    return rt::CLng(rs->Cols("id"));
}

void frmEmployee::FillLists() {
    fillChecklist(lstExtended, 0);
}

void frmEmployee::FillBranches() {
    fillChecklist(lstBranches, 3);
}

// The entries of that type that this one extends to, ticked and first, then the others.
void frmEmployee::fillChecklist(QListWidget* list, qint16 type) {
    list->clear();
    const QString id = QString::number(entryId());
    const QString kind = QString::number(type);
    const QString queries[] = {
        "SELECT Name,id FROM users WHERE type = " + kind +
            " AND id IN ( SELECT extid FROM extaccess WHERE userid = " + id + ") ORDER BY name",
        "SELECT Name,id FROM users WHERE type = " + kind + " AND id <> " + id +
            " AND id NOT IN ( SELECT extid FROM extaccess WHERE userid = " + id + ") ORDER BY name",
    };
    // One read of the file: the rows are read at the open and not again at each visit.
    gDBase.ReadTogether([&] {
        for (int part = 0; part < 2; ++part) {
            auto result = gDBase.OpenRecordset(queries[part]);
            if (result->RecordCount() > 0) {
                result->MoveLast();
                result->MoveFirst();
                const qint32 count = result->RecordCount();  // complete now the last row was seen
                const int name = result->ColumnIndex(QStringLiteral("Name"));
                const int entry = result->ColumnIndex(QStringLiteral("id"));
                for (qint32 i = 0; i < count; ++i) {
                    // Made whole before it joins the list, which then hears of it once.
                    auto* item = new QListWidgetItem(rt::CStr(result->ColsAt(name)));
                    item->setData(Qt::UserRole, rt::CLng(result->ColsAt(entry)));
                    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
                    item->setCheckState(part == 0 ? Qt::Checked : Qt::Unchecked);
                    list->addItem(item);
                    if (i + 1 < count) {
                        result->MoveNext();
                    }
                }
            }
            result->CloseRS();
        }
    });
}

void frmEmployee::chkBranchManager_Click() {
    const bool managing = chkBranchManager->isChecked();
    Frame3->resize(Frame3->width(),
                   twipsToPixels(managing ? kFrame3HeightWithBranches : kFrame3Height));
    lstExtended->resize(lstExtended->width(),
                        twipsToPixels(managing ? kExtendedHeightWithBranches : kExtendedHeight));
    frameBranches->setVisible(managing);
    lstBranches->setVisible(managing);
}

void frmEmployee::cmdOK_Click() {
    if (!SaveIt()) {
        bCanceled = false;
        hide();
    }
}

void frmEmployee::cmdCancel_Click() {
    hide();
}

std::vector<qint32> frmEmployee::tickedEntries() const {
    std::vector<qint32> ids;
    for (int i = 0; i < lstExtended->count(); ++i) {
        if (lstExtended->item(i)->checkState() == Qt::Checked) {
            ids.push_back(lstExtended->item(i)->data(Qt::UserRole).toInt());
        }
    }
    return ids;
}

bool frmEmployee::refuse(const QString& text, const QString& title, QWidget* focus) {
    ShowMsg(text, platform::Msg::OKOnly, title);
    if (focus) {
        focus->setFocus();
    }
    return true;
}

bool frmEmployee::SaveIt() {
    if (txtName->text().isEmpty()) {
        return refuse(QStringLiteral("You must enter a name."), QString(), txtName);
    }
    if (nType == 0) {
        if (txtLogon->text().isEmpty()) {
            return refuse(QStringLiteral("You must enter a logon."), QString(), txtLogon);
        }
        // The edition is asked for before the logon's characters are looked at.
        if (cmbLevel->currentIndex() < 0) {
            return refuse(
                QStringLiteral("You must select a Lattimer Series level for this employee."),
                QStringLiteral("Level"), cmbLevel);
        }
        if (txtLogon->text().contains('"') || txtLogon->text().contains('\'')) {
            return refuse(QStringLiteral("Invalid logon character."), QStringLiteral("Logon"),
                          txtLogon);
        }
        if (entryId() == gUsers(0).id && cmbAccess->currentIndex() != 9) {
            return refuse(
                QStringLiteral(
                    "You cannot change yourself to a level other than administrator.  Logon "
                    "as a different administrator to change your access level."),
                QString(), nullptr);
        }
        auto taken = gDBase.OpenRecordset("SELECT * FROM users WHERE logon = '" +
                                          txtLogon->text().trimmed() + "' AND id <> " +
                                          QString::number(entryId()));
        if (taken->RecordCount() > 0) {
            return refuse(QStringLiteral("Logon name already exists.  Logon must be unique."),
                          QString(), nullptr);
        }
        taken->CloseRS();
    }

    // The entry and its extaccess rows are saved whole or not at all; after a failure the form
    // stays for another try.
    return !gDBase.RunAsOneUnit([this] { writeEntry(); });
}

void frmEmployee::writeEntry() {
    if (!bNew) {
        rs->Edit();
    }
    if (nType != 0) {
        rs->Cols("fslevel") = qint16(0);
        rs->Cols("Logon") = "zq";
        rs->Cols("Password") = "zq";
    } else {
        rs->Cols("Logon") = txtLogon->text().trimmed();
        rs->Cols("Password") = txtPassword->text().trimmed();
        rs->Cols("fslevel") = qint16(cmbLevel->currentIndex());
    }
    // Also on the other kinds: their hidden level list keeps what the form was shown with.
    rs->Cols("Name") = txtName->text().trimmed();
    rs->Cols("accLevel") = qint16(cmbAccess->currentIndex() + 1);
    const std::vector<qint32> ticked = tickedEntries();
    rs->Cols("num") = rt::CInt(qint64(ticked.size()));
    rs->Update();
    if (bNew) {
        rs->MoveLast();  // the new row; the one current before AddNew is current after Update
    }
    const QString id = QString::number(entryId());
    if (!bNew) {
        gDBase.Execute("DELETE FROM extaccess WHERE userid = " + id);
    }
    for (qint32 extid : ticked) {
        gDBase.Execute("INSERT INTO extaccess (userid,extid) VALUES(" + id + "," +
                       QString::number(extid) + ")");
    }
}
