#pragma once

#include "data/recset.h"

#include <QMainWindow>

#include <memory>

class QAction;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QMenu;
class QPushButton;
class QRadioButton;
class QTabWidget;
class ReportList;
class UserFieldsTab;

// The console: the tab strip with the directory lists and the access level and user field pages,
// the row of command buttons, and the menus. It holds an open cursor per kind of entry for the
// whole run, starts the run on its first activation and ends it when it closes.
class frmAdmin : public QMainWindow {
public:
    enum Tab {
        Employees = 0,
        Workgroups = 1,
        Equipment = 2,
        AccessLevels = 3,
        UserFields = 4,
        Branches = 5
    };

    frmAdmin();
    ~frmAdmin() override;

    // Logs on, admits only the administrator level, and fills and shows the console.
    void StartSession();
    // The logon with its window, which needs no console behind it: the run ends unless an
    // administrator logged on.
    static void LogOn();
    // After the logon: fills the console and shows it.
    void OpenSession();
    // An older, softer version test than the logon's; no step of the program calls it.
    bool VerifyDatabase(std::unique_ptr<RecSet>& rsOut);
    // Fills the list of that kind of entry and puts a fresh cursor on its rows into `rs`.
    void LoadUserlist(qint16 nType, std::unique_ptr<RecSet>& rs);

    void Form_Activate();
    // Asks about unsaved access level changes, saving them on Yes, then ends the run.
    void Form_Unload();
    void tabAdmin_Click(int previousTab);
    void cmdNew_Click();
    void cmdEdit_Click();
    void cmdDelete_Click();
    // Ends the sessions of the employee selected on the employee list, whichever tab is shown.
    void mnLogOff_Click();
    void mnClearRTS_Click();
    void mnHelpTopics_Click();
    // Writes the name and the rights of the level in hand.
    void SaveAccesslevel();
    // A choice on the level list, the level in hand included: offers to save, then loads it.
    void cmbLevel_Click();
    // Shows the rights of the selected group.
    void lstAccessGroups_Click();
    // A tick or untick on either list of rights.
    void lstRights_ItemCheck(QListWidgetItem* row);
    // The level list follows the name as it is typed.
    void txtAccessLevel_Change();
    void txtAccessLevel_LostFocus();
    // A click on a column head of a list; the order alternates across all lists.
    void lstColumnClick(ReportList* list, int column);
    void lstDblClick(ReportList* list);

    QString helpFile() const { return helpFile_; }

    std::unique_ptr<RecSet> rsEmployees;
    std::unique_ptr<RecSet> rsWorkgroups;
    std::unique_ptr<RecSet> rsEquipment;
    std::unique_ptr<RecSet> rsBranches;
    bool bTabLoaded[6] = {};
    bool bStarted = false;
    qint16 nSortOrder = 0;
    bool bLevelDirty = false;
    bool bLevelLoading = false;  // a list of rights is being filled; its ticks are not edits
    qint16 nLevelIndex = 0;      // the level in hand, 0 to 9

    QTabWidget* tabAdmin;
    ReportList* lstEmployees;
    ReportList* lstWorkGroups;
    ReportList* lstEquipment;
    ReportList* lstBranches;
    QLabel* Label1[4];
    QComboBox* cmbLevel;
    QLineEdit* txtAccessLevel;
    QGroupBox* Frame1;
    QListWidget* lstAccessGroups;
    QListWidget* lstAccess;
    QComboBox* cmbUDF;
    ReportList* lstUDF;
    QGroupBox* Frame2;
    QRadioButton* optClass[3];
    UserFieldsTab* userFields;
    QPushButton* cmdNew;
    QPushButton* cmdEdit;
    QPushButton* cmdDelete;
    QPushButton* cmdSave;
    QMenu* mnFile;
    QAction* mnClearRTS;
    QAction* mnSeparator;
    QAction* mnExit;
    QMenu* mnActions;
    QAction* mnNew;
    QAction* mnEdit;
    QAction* mnDelete;
    QAction* mnSeparator2;
    QAction* mnLogOff;
    QMenu* mnHelp;
    QAction* mnHelpTopics;
    QAction* mnAbout;

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // What goes with a tab that lists entries.
    struct Directory {
        qint16 type;
        ReportList* list;
        std::unique_ptr<RecSet>* cursor;
    };
    // The directory of that tab, or of that users.type; nothing for the other two tabs.
    std::optional<Directory> directoryOfTab(int tab);
    Directory directoryOfType(qint16 type);
    // The id in the tag of the list's selected row.
    qint32 selectedId(ReportList* list) const;
    // Finds the record of the list's selected row on its cursor; gives its id.
    qint32 findSelected(const Directory& directory);
    void deleteEmployee(const Directory& directory);
    // Opens the entry editor on the cursor's record; True when the entry was saved.
    bool runEditor(const Directory& directory, bool isNew);
    // Removes the selected row after its record went; an emptied list disables its commands.
    void removeSelectedRow(const Directory& directory);
    void setEntryCommandsEnabled(bool enabled);

    void buildMenus();
    void buildTabs(QWidget* area);
    void buildDirectoryList(ReportList*& list, const QString& name, int tab, QRect geometry,
                            const std::vector<std::pair<QString, int>>& columns);
    void buildAccessLevelsPage(QWidget* page);
    // Fills the list with the rights of that group (-1: the groups), ticked as granted.
    void fillRights(QListWidget* list, qint16 group);
    void buildUserFieldsPage(QWidget* page);
    void buildButtons(QWidget* area);

    QString helpFile_;
};
