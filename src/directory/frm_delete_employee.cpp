#include "directory/frm_delete_employee.h"

#include "directory/employee_deletion.h"

#include "data/dbase.h"
#include "logon/frm_startup.h"
#include "platform/ui.h"
#include "util/accessibility.h"
#include "util/report_list.h"
#include "util/widgets.h"

#include <QComboBox>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

frmDeleteEmployee::frmDeleteEmployee(ReportList* employees, QWidget* parent)
    : QDialog(parent), employees_(employees) {
    MakeFixedDialog(this, QStringLiteral("frmDeleteEmployee"), QStringLiteral("Delete Employee"));
    optGive = place<QRadioButton>(this, "optGive", QRect(12, 14, 20, 20));
    Label1[1] =
        place<QLabel>(this, "Label1(1)", QRect(36, 12, 360, 36),
                      "Delete Employee and his/her schedule but give ALL data, including contacts, "
                      "billing, and files, to:");
    cmbEmployee = place<QComboBox>(this, "cmbEmployee", QRect(36, 52, 240, 24));
    cmbEmployee->setEditable(true);
    cmbEmployee->setInsertPolicy(QComboBox::NoInsert);
    cmbEmployee->setEditText(QStringLiteral("Combo1"));
    optAll = place<QRadioButton>(this, "optAll", QRect(12, 92, 20, 20));
    Label1[0] = place<QLabel>(
        this, "Label1(0)", QRect(36, 90, 360, 36),
        "Delete Employee and ALL of his/her contacts, schedule, billing, and files data.");
    for (QLabel* label : Label1) {
        label->setWordWrap(true);
        label->installEventFilter(this);
    }
    // The option buttons have no caption of their own: the label beside each says what it does.
    NameAfterLabel(optGive, Label1[1]);
    NameAfterLabel(optAll, Label1[0]);
    Label1[1]->setBuddy(cmbEmployee);  // "... give ALL data ... to:" the employee chosen below
    cmdOK = place<QPushButton>(this, "cmdOK", QRect(214, 138, 86, 28), "OK");
    cmdCancel = place<QPushButton>(this, "cmdCancel", QRect(308, 138, 86, 28), "Cancel");
    // Crosswise on purpose: Enter never deletes, and Escape leads to the question of OK.
    cmdCancel->setDefault(true);
    optGive->setChecked(true);
    setFixedSize(406, 176);
    QWidget* order[] = {optGive, optAll, cmdOK, cmdCancel, cmbEmployee};
    for (size_t i = 0; i + 1 < std::size(order); ++i) {
        setTabOrder(order[i], order[i + 1]);
    }
    OnEvent(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
}

void frmDeleteEmployee::ShowModal() {
    Form_Load();
    platform::ui().showModal(this, gConsoleForm);
}

void frmDeleteEmployee::Form_Load() {
    bCanceled = true;
    for (int row = 0; row < employees_->rowCount(); ++row) {
        // The tag is compared as a single-precision number, as it always was.
        if (float(employees_->tag(row).toInt()) == float(id)) {
            continue;
        }
        cmbEmployee->addItem(employees_->cell(row, 0), employees_->tag(row).toInt());
    }
    if (cmbEmployee->count() > 0) {
        cmbEmployee->setCurrentIndex(0);
    } else {
        optAll->setChecked(true);
        optGive->setEnabled(false);
        cmbEmployee->setEnabled(false);
    }
}

bool frmDeleteEmployee::eventFilter(QObject* watched, QEvent* event) {
    // The labels stand as the captions of their option buttons.
    if (event->type() == QEvent::MouseButtonRelease) {
        (watched == Label1[1] ? optGive : optAll)->setChecked(true);
    }
    return QDialog::eventFilter(watched, event);
}

void frmDeleteEmployee::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        cmdOK->click();
        return;
    }
    QDialog::keyPressEvent(event);
}

void frmDeleteEmployee::cmdCancel_Click() {
    bCanceled = true;
    hide();
}

std::optional<qint32> frmDeleteEmployee::chosenReceiver() const {
    const QString typed = cmbEmployee->currentText();
    const int current = cmbEmployee->currentIndex();
    if (current >= 0 && cmbEmployee->itemText(current) == typed) {
        return cmbEmployee->itemData(current).toInt();
    }
    // A name typed in full counts when it is the name of exactly one item.
    std::optional<qint32> receiver;
    for (int i = 0; i < cmbEmployee->count(); ++i) {
        if (cmbEmployee->itemText(i) == typed) {
            if (receiver) {
                return std::nullopt;
            }
            receiver = cmbEmployee->itemData(i).toInt();
        }
    }
    return receiver;
}

void frmDeleteEmployee::cmdOK_Click() {
    // The data goes to the employee whose name was chosen, and to no one else: a name that isn't
    // offered stops before anything is asked or deleted.
    std::optional<qint32> receiver;
    if (!optAll->isChecked()) {
        receiver = chosenReceiver();
        if (!receiver) {
            ShowMsg(QStringLiteral("Choose from the list the employee who is to receive the "
                                   "data, or choose to delete all of the employee's data."),
                    platform::Msg::OKOnly | platform::Msg::Exclamation,
                    QStringLiteral("Delete Employee"));
            cmbEmployee->setFocus();
            return;
        }
    }
    if (ShowMsg(QStringLiteral("Are you sure you want to delete this user?"),
                platform::Msg::YesNo | platform::Msg::DefaultButton2) != platform::Msg::Yes) {
        return;
    }
    bCanceled = false;
    ShowBusy();
    // All of it or nothing: a failure leaves the employee and every row as they were, and the
    // window open for another try or Cancel.
    if (!gDBase.RunAsOneUnit([this, receiver] { DeleteEmployee(id, receiver); })) {
        bCanceled = true;
        return;
    }
    hide();
    DoEvents();
    ShowIdle();
}
