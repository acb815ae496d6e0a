#pragma once

#include "data/recset.h"

#include <QMainWindow>

#include <memory>

class QAction;
class QMenu;
class QPushButton;
class QTabWidget;

// The console: the tab strip with the directory lists and the access level and user field pages,
// the row of command buttons, and the menus. It starts the run on its first activation and ends
// it when it closes.
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

    // Logs on, admits only the administrator level, and fills and shows the console.
    void StartSession();
    // An older, softer version test than the logon's; no step of the program calls it.
    bool VerifyDatabase(std::unique_ptr<RecSet>& rsOut);

    void Form_Activate();
    // Asks about unsaved access level changes, then ends the run.
    void Form_Unload();
    void tabAdmin_Click(int previousTab);

    QString helpFile() const { return helpFile_; }

    bool bStarted = false;
    bool bLevelDirty = false;

    QTabWidget* tabAdmin;
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

private:
    void buildMenus();
    void buildTabs(QWidget* area);
    void buildButtons(QWidget* area);

    QString helpFile_;
};
