#pragma once

#include "logon/validate_logon.h"

#include <QDialog>

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

// The window that owns the logon window; the console sets it when it loads.
extern QWidget* gConsoleForm;

// The logon window: a logon name, a password, a database path and a server name, handed to
// logon validation. Its height folds the database fields in and out.
class frmStartUp : public QDialog, public LogonWindow {
public:
    static constexpr int kFoldedHeight = 2850;  // twips: the database frame cut off
    static constexpr int kOpenHeight = 3850;    // twips: the database frame visible

    // While the window exists, the first run of a new installation shows its progress in the
    // window's caption.
    explicit frmStartUp(QWidget* parent = nullptr);
    ~frmStartUp() override;

    // True for a good logon; for a cancelled or failed one the run ends inside. With a command
    // line the window is never shown: -l and -p fill the boxes and the logon runs at once.
    bool ShowMe(bool bIsDocsIN, bool BrowserLogon, bool bIsAdminIn);
    void ShowDb() override;
    void HideDb();
    void cmdCancel_Click() override;
    void cmdOK_Click();
    void cmdDatabases_Click();
    void cmdBrowse_Click();

    // The form's height in twips, from which its size on screen follows.
    int Height() const { return height_; }
    void setHeight(int twips);

    bool bCanceled = true;
    bool bIsDocs = false;
    bool bIsAdmin = false;

    QGroupBox* Frame1;
    QLabel* Label1[2];
    QLineEdit* txtLogon;
    QLineEdit* txtPassword;
    QCheckBox* chkPassword;
    QPushButton* cmdOK;
    QPushButton* cmdCancel;
    QPushButton* cmdDatabases;
    QGroupBox* frameDT;
    QLabel* lblDatabase[3];
    QLineEdit* txtDatabase;
    QLineEdit* txtServer;
    QLineEdit* txtSQLDB;
    QPushButton* cmdBrowse;
    QLabel* Label2[2];
    QWidget* Picture1;
    QLabel* picMain;

    // What logon validation reads and calls.
    QString logonText() const override;
    QString passwordText() const override;
    QString databaseText() const override;
    int savePasswordValue() const override;
    void focusLogon() override;
    void focusPassword() override;
    void focusDatabase() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildControls();
    void Form_Load();
    void Form_Activate();

    int height_ = kFoldedHeight;
};
