#pragma once

#include "data/recset.h"

#include <QDialog>

#include <vector>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

// The one window that edits a row of users, whatever kind of entry it is: its fields, and the
// employees who share it or are its members. A fresh instance for each use.
class frmEmployee : public QDialog {
public:
    explicit frmEmployee(QWidget* parent = nullptr);

    // Fills the window from the cursor, which stands on the row (in the add state for a new one),
    // and shows it modally until it is hidden.
    void ShowForm(qint16& nTypeIn, RecSet& rsIn, bool& bIsNew);
    // Validates and writes; True when the save was refused, after its message.
    bool SaveIt();
    void FillLists();
    // The branches the entry manages; dormant: nothing calls it.
    void FillBranches();
    void chkBranchManager_Click();
    void cmdOK_Click();
    void cmdCancel_Click();

    int HelpContextID = 0;
    bool bCanceled = true;

    QGroupBox* Frame1;
    QLabel* Label2;
    QLineEdit* txtName;
    QLabel* lbl1;
    QComboBox* cmbAccess;
    QLabel* lbl2;
    QLineEdit* txtLogon;
    QLabel* lbl3;
    QLineEdit* txtPassword;
    QLabel* lblLevel;
    QComboBox* cmbLevel;
    QCheckBox* chkBranchManager;
    QCheckBox* chkSupervision;
    QGroupBox* Frame3;
    QListWidget* lstExtended;
    QGroupBox* frameBranches;
    QListWidget* lstBranches;
    QPushButton* cmdOK;
    QPushButton* cmdCancel;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildControls();
    void fillChecklist(QListWidget* list, qint16 type);
    qint32 entryId();
    // The ids of the ticked rows of lstExtended, top to bottom.
    std::vector<qint32> tickedEntries() const;
    // The row through the cursor, then its extaccess rows.
    void writeEntry();
    bool refuse(const QString& text, const QString& title, QWidget* focus);

    qint16 nType = 0;
    bool bNew = false;
    RecSet* rs = nullptr;
};
