#include "directory/frm_delete_employee.h"

#include "data/dbase.h"
#include "data/session.h"
#include "logon/frm_startup.h"
#include "platform/convert.h"
#include "platform/ui.h"
#include "util/report_list.h"

#include <QComboBox>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

namespace {

// The employee's own data, removed whatever the choice: settings, planner, billing codes,
// automation, budgets, business development, reports and models.
QStringList personalStatements(const QString& id) {
    return {
        "DELETE FROM udfs WHERE userid = " + id,
        "DELETE FROM reminder WHERE userid = " + id,
        "DELETE FROM billcode WHERE userid = " + id,
        "DELETE FROM options WHERE userid = " + id,
        "DELETE FROM autostep WHERE autoid IN(SELECT id FROM auto WHERE userid = " + id + ")",
        "DELETE FROM auto WHERE userid = " + id,
        "DELETE FROM budgets WHERE parentid = " + id + " AND type = " + "1",
        "DELETE FROM budgets WHERE type = " + QStringLiteral("0") +
            " AND parentid IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM clients WHERE "
            "userid = " +
            id + "))",
        "DELETE FROM busdev WHERE userid = " + id,
        "DELETE FROM rptcntls WHERE rptid IN(SELECT id FROM reports WHERE userid = " + id + ")",
        "DELETE FROM reports WHERE userid = " + id,
        "DELETE FROM modeling WHERE userid = " + id,
    };
}

// Everything else the employee owns. clients and files are read as long as anything is found
// through them, so they go late.
QStringList allDataStatements(const QString& id) {
    const QString ownFiles =
        "(SELECT id FROM files WHERE ownerid IN (SELECT id FROM clients WHERE userid = " + id +
        "))";
    const QString ownClients = "(SELECT id FROM clients WHERE userid = " + id + ")";
    const QString ownLists = "(SELECT listid FROM lists WHERE userid = " + id + ")";
    return {
        "DELETE FROM acctudf WHERE id IN " + ownFiles,
        "DELETE FROM projudf WHERE id IN " + ownFiles,
        "DELETE FROM clntudf WHERE id IN " + ownClients,
        "DELETE FROM clntudf2 WHERE id IN " + ownClients,
        "DELETE FROM reflib WHERE userid = " + id,
        "DELETE FROM RelDocs WHERE accid IN " + ownFiles,
        "DELETE FROM RelPple WHERE accid IN " + ownFiles,
        "DELETE FROM balance WHERE accid IN " + ownFiles,
        "DELETE FROM trans WHERE acc_id IN " + ownFiles,
        "DELETE FROM billsetup WHERE accid IN " + ownFiles,
        "DELETE FROM disburse WHERE invoiceid IN(SELECT id FROM invoice WHERE accid IN " +
            ownFiles + ")",
        "DELETE FROM charges WHERE accid IN " + ownFiles,
        "DELETE FROM invoice WHERE accid IN " + ownFiles,
        "DELETE FROM funds WHERE accid IN " + ownFiles,
        "DELETE FROM files WHERE ownerid IN " + ownClients,
        "DELETE FROM listflds WHERE listid IN " + ownLists,
        "DELETE FROM listmmbr WHERE listid IN " + ownLists,
        "DELETE FROM listudf WHERE id IN (SELECT id FROM lists WHERE userid = " + id + ")",
        "DELETE FROM lists WHERE userid = " + id,
        "DELETE FROM history WHERE client_id IN " + ownClients,
        "DELETE FROM clients WHERE userid = " + id,
        "DELETE FROM charges WHERE userid = " + id,
        "DELETE FROM invoice WHERE userid = " + id,
        // These two repeat statements 10 and 11 and find nothing by now; they stay all the same.
        "DELETE FROM rptcntls WHERE rptid IN (SELECT id FROM reports WHERE userid = " + id + ")",
        "DELETE FROM reports WHERE userid = " + id,
    };
}

// The business data handed over. Invoices and charges are found through the clients the
// employee still owns, so they go before the clients.
QStringList handOverStatements(const QString& id, const QString& receiver) {
    const QString ownFiles =
        "(SELECT id FROM files WHERE ownerid IN (SELECT id FROM clients WHERE userid = " + id +
        "))";
    return {
        "UPDATE invoice SET userid = " + receiver + " WHERE accid IN " + ownFiles,
        "UPDATE charges SET userid = " + receiver + " WHERE accid IN " + ownFiles,
        "UPDATE clients SET userid = " + receiver + " WHERE userid = " + id,
        "UPDATE lists SET userid = " + receiver + " WHERE userid = " + id,
        "UPDATE reflib SET userid = " + receiver + " WHERE userid = " + id,
    };
}

QStringList closingStatements(const QString& id) {
    return {
        "DELETE FROM extaccess WHERE userid = " + id,
        "DELETE FROM extaccess WHERE extid = " + id,
        "DELETE FROM users WHERE id = " + id,
    };
}

template <typename Widget, typename... Args>
Widget* place(QWidget* parent, const QString& name, QRect geometry, Args&&... args) {
    auto* widget = new Widget(std::forward<Args>(args)..., parent);
    widget->setObjectName(name);
    widget->setGeometry(geometry);
    return widget;
}

}  // namespace

frmDeleteEmployee::frmDeleteEmployee(ReportList* employees, QWidget* parent)
    : QDialog(parent), employees_(employees) {
    setObjectName(QStringLiteral("frmDeleteEmployee"));
    setWindowTitle(QStringLiteral("Delete Employee"));
    setWindowFlags(Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint | Qt::WindowTitleHint |
                   Qt::WindowCloseButtonHint);
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
    connect(cmdOK, &QPushButton::clicked, this,
            [this] { platform::runHandler([this] { cmdOK_Click(); }); });
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

int frmDeleteEmployee::receiverIndex() const {
    const int index = cmbEmployee->currentIndex();
    return index >= 0 && cmbEmployee->currentText() == cmbEmployee->itemText(index) ? index : -1;
}

void frmDeleteEmployee::execute(const QStringList& statements) const {
    for (const QString& statement : statements) {
        gDBase.Execute(statement);
    }
}

void frmDeleteEmployee::cmdOK_Click() {
    if (ShowMsg(QStringLiteral("Are you sure you want to delete this user?"),
                platform::Msg::YesNo) != platform::Msg::Yes) {
        return;
    }
    bCanceled = false;
    ShowBusy();
    const QString employee = QString::number(id);
    execute(personalStatements(employee));
    if (optAll->isChecked()) {
        execute(allDataStatements(employee));
    } else {
        // The receiver is the session's entry at the chosen position, as it always was: entry 0
        // is the current user, so it need not be the name the list shows.
        const QString receiver = QString::number(gUsers(receiverIndex()).id);
        execute(handOverStatements(employee, receiver));
    }
    execute(closingStatements(employee));
    hide();
    DoEvents();
    ShowIdle();
}
