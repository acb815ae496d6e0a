#include "access/right_catalogue.h"

#include "platform/convert.h"
#include "settings/terminology.h"

namespace {

template <typename T>
rt::Array<T> sized(int count) {
    rt::Array<T> array;
    array.redim(count - 1);
    return array;
}

}  // namespace

rt::Array<QString> gLevelNames = sized<QString>(10);
QString gLevelText(kRightSlots, ' ');
rt::Array<bool> gRightValues = sized<bool>(kRightSlots);
rt::Array<bool> gRightAvailable = sized<bool>(kRightSlots);
rt::Array<QString> gRightCaptions = sized<QString>(kRightSlots);
rt::Array<qint16> gRightGroups = sized<qint16>(kRightSlots);

void LoadAccessLevel(qint16 nLevel, RecSet& rs) {
    for (int i = 0; i <= 9; ++i) {
        const QString name = rt::CStr(rs.Cols("level" + QString::number(i + 1) + "name"));
        gLevelNames(i) = name.isEmpty() ? "Level " + QString::number(i + 1) : name;
    }
    const QString text = rt::CStr(rs.Cols("level" + QString::number(nLevel + 1)));
    gLevelText = text.left(kRightSlots).leftJustified(kRightSlots, ' ');
    BuildRightCatalogue(nLevel);
}

bool RightFromLevelText(qint16 nPosition) {
    if (nPosition >= gLevelText.size()) {
        return true;
    }
    return gLevelText[nPosition] != '0';
}

void AddRight(qint16 nPosition, qint16 nGroup, bool bAvailable, const QString& sCaption) {
    gRightValues(nPosition) = false;
    gRightCaptions(nPosition) = sCaption;
    gRightGroups(nPosition) = nGroup;
    if (!bAvailable) {
        gRightAvailable(nPosition) = false;
        return;
    }
    gRightAvailable(nPosition) = true;
    // A child of a denied group stays denied, whatever its own character says.
    if (nGroup == -1 || gRightValues(nGroup)) {
        gRightValues(nPosition) = RightFromLevelText(nPosition);
    }
}

void BuildRightCatalogue(qint16) {
    // The rows of these two groups take their flag from a switch of their own, which is on.
    const bool accountsAndProducts = true;

    AddRight(0, -1, true, "Contacts");
    AddRight(1, -1, accountsAndProducts, "Accounts");
    AddRight(2, -1, true, "Billing Accounts");
    AddRight(3, -1, true, gTermProjects);
    AddRight(4, -1, true, "Planner and Scheduling");
    AddRight(5, -1, true, "Lists and Marketing");
    AddRight(6, -1, accountsAndProducts, "Products");
    AddRight(7, -1, true, "Reports");
    AddRight(84, -1, true, "Library");
    AddRight(8, -1, true, "Administration");

    // No accounts, billing accounts or projects without contacts; set before the children are
    // added, so that theirs stay denied too.
    if (!gRightValues(0)) {
        gRightValues(1) = false;
        gRightValues(2) = false;
        gRightValues(3) = false;
    }

    AddRight(10, 0, true, "Create/Delete Clients");
    AddRight(11, 0, true, "Modify Name of Clients");
    AddRight(12, 0, true, "Modify Owner of Clients");
    AddRight(13, 0, true, "Modify Address/Phone numbers of Clients");
    AddRight(14, 0, true, "Modify History records of Clients");
    AddRight(15, 0, true, "Modify User Defined Fields data of Clients");
    AddRight(16, 0, true, "Create/Delete Non-Clients");
    AddRight(17, 0, true, "Modify Name of Non-Clients");
    AddRight(18, 0, true, "Modify Owner of Non-Clients");
    AddRight(19, 0, true, "Modify Address/Phone numbers of Non-Clients");
    AddRight(20, 0, true, "Modify History records of Non-Clients");
    AddRight(21, 0, true, "Modify User Defined Fields data of Non-Clients");
    AddRight(81, 1, accountsAndProducts, "Access to Posting of Transactions");
    AddRight(22, 1, accountsAndProducts, "Create/Delete Client Accounts");
    AddRight(23, 1, accountsAndProducts, "Modify Client Accounts Number");
    AddRight(24, 1, accountsAndProducts, "Modify Client Accounts Owner");
    AddRight(25, 1, accountsAndProducts, "Modify Client Accounts Relations");
    AddRight(26, 1, accountsAndProducts, "Modify Client Accounts General Info");
    AddRight(27, 1, accountsAndProducts, "Modify Client Accounts Transactions (Posting)");
    AddRight(28, 1, accountsAndProducts, "Modify User Defined Fields data of Client Accounts");
    AddRight(44, 1, accountsAndProducts, "Modify Client's Related Documents");
    AddRight(29, 1, accountsAndProducts, "Create/Delete Non-Client Accounts");
    AddRight(30, 1, accountsAndProducts, "Modify Non-Client Accounts Number");
    AddRight(31, 1, accountsAndProducts, "Modify Non-Client Accounts Owner");
    AddRight(32, 1, accountsAndProducts, "Modify Non-Client Accounts Relations");
    AddRight(33, 1, accountsAndProducts, "Modify Non-Client Accounts General Info");
    AddRight(34, 1, accountsAndProducts, "Modify Non-Client Accounts Transactions (Posting)");
    AddRight(35, 1, accountsAndProducts, "Modify User Defined Fields data of Non-Client Accounts");
    AddRight(45, 1, accountsAndProducts, "Modify Non-Client's Related Documents");
    AddRight(36, 2, true, "Create/Delete Billing Accounts");
    AddRight(37, 2, true, "Modify Billing Account Name/Number");
    AddRight(38, 2, true, "Modify General Billing Account Information");
    AddRight(39, 2, true, "Modify Charges/WIP");
    AddRight(40, 2, true, "Modify Invoices and Transactions");
    AddRight(41, 2, true, "Modify Retainer Transactions");
    AddRight(42, 2, true, "Modify Budgets");
    AddRight(43, 2, true, "Modify Billing Codes");
    AddRight(49, 3, true, "Create/Delete " + gTermProjects);
    AddRight(50, 3, true, "Modify " + gTermProject + " Name/Number");
    AddRight(51, 3, true, "Modify " + gTermProject + " Owner");
    AddRight(52, 3, true, "Modify " + gTermProject + " Related Contacts");
    AddRight(53, 3, true, "Modify " + gTermProject + " Related Documents");
    AddRight(54, 3, true, "Modify General " + gTermProject + " Information");
    AddRight(55, 3, true, "Modify " + gTermProject + " User Defined Fields Data");
    AddRight(56, 3, true, "Modify " + gTermProject + " Planner Items");
    AddRight(60, 4, true, "Modify Global Commitments");
    AddRight(61, 4, true, "Modify Workgroup Commitments");
    AddRight(62, 4, true, "Modify Equipment Commitments");
    AddRight(63, 5, true, "Create/Delete Lists");
    AddRight(64, 5, true, "Modify List User Defined Fields data");
    AddRight(65, 5, true, "Modify List Planner Items");
    AddRight(66, 6, accountsAndProducts, "Create/Delete Products");
    AddRight(67, 6, accountsAndProducts, "Modify Product Symbol");
    AddRight(68, 6, accountsAndProducts, "Modify General Product Information");
    AddRight(69, 6, accountsAndProducts, "Modify Price History");
    AddRight(70, 6, accountsAndProducts, "Modify Split History");
    AddRight(71, 6, accountsAndProducts, "Modify Product User Defined Fields data");
    AddRight(74, 7, true, "Create/Delete Personal Reports");
    AddRight(75, 7, true, "Create/Delete Global Reports");
    AddRight(76, 8, true, "Access all Clients and Non-Clients");
    AddRight(77, 8, true, "Configure A Class User Defined Fields");
    AddRight(78, 8, true, "Configure B Class User Defined Fields");
    AddRight(79, 8, true, "Configure C Class User Defined Fields");
    AddRight(80, 8, true, "Modify Setup Configuration");
    AddRight(82, 84, true, "Access all Library Documents");
    AddRight(83, 84, true, "Release any Checked Out Library Document");
}
