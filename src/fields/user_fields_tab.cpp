#include "fields/user_fields_tab.h"

#include "data/dbase.h"
#include "platform/convert.h"
#include "platform/ui.h"
#include "settings/terminology.h"
#include "util/report_list.h"
#include "util/widgets.h"

#include <QComboBox>
#include <QRadioButton>

#include <utility>
#include <vector>

namespace {

constexpr int kClassColumn = 2;
constexpr int kPersonal = 2;

// The kinds of record that carry user fields, as cmbUDF names them, with the table that holds
// their values. Two names follow the terminology, so they are made when asked for.
std::vector<std::pair<QString, QString>> kindsOfRecord() {
    return {{QStringLiteral("Personal Contact User Fields"), QStringLiteral("clntudf")},
            {gTermFinancial + " Contact User Fields", QStringLiteral("clntudf2")},
            {QStringLiteral("List User Fields"), QStringLiteral("listudf")},
            {gTermProject + " User Fields", QStringLiteral("projudf")},
            {QStringLiteral("Account User Fields"), QStringLiteral("acctudf")}};
}

QString parentTableOf(const QString& kind) {
    for (const auto& [name, parent] : kindsOfRecord()) {
        if (name == kind) {
            return parent;
        }
    }
    return QString();
}

// Only classes 0 and 2 are told apart; every other number acts as class B.
int classShown(qint16 storedClass) {
    return storedClass == 0 || storedClass == kPersonal ? storedClass : 1;
}

QString letterOf(int nClass) {
    switch (nClass) {
        case 0:
            return QStringLiteral("A");
        case 1:
            return QStringLiteral("B");
        default:
            return QStringLiteral("C");
    }
}

}  // namespace

UserFieldsTab::UserFieldsTab(QComboBox* cmbUDF, ReportList* lstUDF,
                             std::array<QRadioButton*, 3> optClass, QObject* parent)
    : QObject(parent), cmbUDF(cmbUDF), lstUDF(lstUDF), optClass(optClass) {
    OnEvent(cmbUDF, &QComboBox::currentIndexChanged, this, [this] { cmbUDF_Click(); });
    // A click on the selected row shows its class again too: after a refused move the option
    // buttons may disagree with the list.
    auto showSelectedClass = [this] {
        if (const std::optional<int> row = this->lstUDF->selectedRow()) {
            lstUDF_ItemClick(*row);
        }
    };
    OnEvent(lstUDF->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            showSelectedClass);
    OnEvent(lstUDF, &QAbstractItemView::clicked, this, showSelectedClass);
    for (int i = 0; i < int(optClass.size()); ++i) {
        connect(optClass[size_t(i)], &QRadioButton::toggled, this, [this, i](bool checked) {
            if (checked && !bClassLoading) {
                platform::runHandler([this, i] { optClass_Click(i); });
            }
        });
    }
}

void UserFieldsTab::FillKinds() {
    for (const auto& kind : kindsOfRecord()) {
        cmbUDF->addItem(kind.first);
    }
    cmbUDF->setCurrentIndex(0);
}

void UserFieldsTab::cmbUDF_Click() {
    ShowBusy();
    lstUDF->removeAllRows();
    rsUDF = gDBase.OpenRecordset(
        "SELECT parent,userid,class,descrpn,col FROM udfs WHERE userid = 0 AND parent = '" +
        parentTableOf(cmbUDF->currentText()) + "'");
    const bool defined = !rsUDF->Eof();
    if (defined) {
        rsUDF->MoveLast();
        rsUDF->MoveFirst();
        for (; !rsUDF->Eof(); rsUDF->MoveNext()) {
            const QString col = rt::CStr(rsUDF->Cols("col"));
            const int nClass = classShown(rt::CInt(rsUDF->Cols("class")));
            const int row = lstUDF->addRow(col, col);
            // A personal field means something else to each user: its own label says nothing.
            lstUDF->addCell(row,
                            nClass == kPersonal ? QString() : rt::CStr(rsUDF->Cols("descrpn")));
            lstUDF->addCell(row, letterOf(nClass));
        }
        lstUDF->finishFill();
    }
    ShowIdle();
    if (!defined) {
        // Every kind is installed with its definitions; without them there is nothing to move,
        // but the other kinds still are.
        ShowMsg(QStringLiteral("There are no user field definitions for \"%1\" in the database. "
                               "Choose another kind of record.")
                    .arg(cmbUDF->currentText()),
                platform::Msg::Exclamation);
    }
}

void UserFieldsTab::lstUDF_ItemClick(int row) {
    showClassOption(shownClass(row));
}

void UserFieldsTab::optClass_Click(int nIndex) {
    const std::optional<int> row = lstUDF->selectedRow();
    if (!row) {
        return;  // a kind without fields: nothing to move
    }
    QString criteria = "col = '" + lstUDF->tag(*row).toString() + "'";
    rsUDF->FindRecord(criteria, QString(), rt::Variant(), QString(), rt::Variant());
    if (rt::CInt(rsUDF->Cols("class")) != kPersonal) {
        storeClass(*row, nIndex);
        return;
    }
    // Refusing leaves the option button on the class clicked until another row is selected. The
    // question destroys the users' own data, so Enter answers No.
    if (ShowMsg(QStringLiteral("If you change a user field from C to A or B all information for "
                               "that user field will be cleared.  Do you wish to continue?"),
                platform::Msg::YesNo | platform::Msg::DefaultButton2) == platform::Msg::No) {
        return;
    }
    gDBase.Execute("DELETE FROM udfs WHERE userid <> 0 AND parent = '" +
                   rt::CStr(rsUDF->Cols("Parent")) + "' AND col = '" +
                   rt::CStr(rsUDF->Cols("col")) + "'");
    storeClass(*row, nIndex);
    showClassOption(nIndex);
}

int UserFieldsTab::shownClass(int row) const {
    // The letter in the row says the class it shows.
    return int(QStringList{letterOf(0), letterOf(1), letterOf(kPersonal)}.indexOf(
        lstUDF->cell(row, kClassColumn)));
}

void UserFieldsTab::storeClass(int row, int nIndex) {
    rsUDF->Edit();
    rsUDF->Cols("Class") = qint16(nIndex);
    rsUDF->Update();
    lstUDF->setCell(row, kClassColumn, letterOf(nIndex));
}

void UserFieldsTab::showClassOption(int nClass) {
    bClassLoading = true;
    optClass[size_t(nClass)]->setChecked(true);
    bClassLoading = false;
}
