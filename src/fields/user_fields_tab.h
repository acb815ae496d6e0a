#pragma once

#include "data/recset.h"

#include <QObject>
#include <QString>

#include <array>
#include <memory>

class QComboBox;
class QRadioButton;
class ReportList;

// The console's User Fields page: for one kind of record at a time it lists the definitions of
// the user fields from udfs, and moves a field between the classes A, B and C (0, 1, 2). It
// writes udfs itself; fields are neither created, renamed nor removed here. The page's widgets
// belong to the console; a click on a column head is the console's, which sorts all its lists
// in one shared order.
class UserFieldsTab : public QObject {
public:
    UserFieldsTab(QComboBox* cmbUDF, ReportList* lstUDF, std::array<QRadioButton*, 3> optClass,
                  QObject* parent = nullptr);

    // The first visit to the tab: the kinds of record, named in the terminology of the run, and
    // the fields of the first kind listed.
    void FillKinds();
    // Lists the fields of the kind chosen in cmbUDF and keeps the cursor on them in rsUDF.
    void cmbUDF_Click();
    // Shows the class of that row on the option buttons.
    void lstUDF_ItemClick(int row);
    // Moves the field of the selected row to class `nIndex`. Leaving class C clears the users'
    // own definitions of the field, after the administrator agrees.
    void optClass_Click(int nIndex);

    // The class shown on that row: 0, 1 or 2.
    int shownClass(int row) const;

private:
    // Stores the class on the cursor's row and shows it on the list's row.
    void storeClass(int row, int nIndex);
    // Selects the option button of that class without it counting as a click.
    void showClassOption(int nClass);

    QComboBox* cmbUDF;
    ReportList* lstUDF;
    std::array<QRadioButton*, 3> optClass;
    std::unique_ptr<RecSet> rsUDF;
    bool bClassLoading = false;
};
