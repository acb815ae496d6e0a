#include "directory/frm_admin.h"

#include "data/dbase.h"
#include "data/session.h"
#include "logon/frm_startup.h"
#include "logon/logon_state.h"
#include "logon/version_gate.h"
#include "platform/convert.h"
#include "platform/os.h"
#include "platform/ui.h"
#include "settings/terminology.h"
#include "util/artwork.h"
#include "util/twips.h"

#include <QCloseEvent>
#include <QLayout>
#include <QMenuBar>
#include <QPushButton>
#include <QTabWidget>

namespace {

QRect twipsRect(int left, int top, int width, int height) {
    return QRect(twipsToPixels(left), twipsToPixels(top), twipsToPixels(width),
                 twipsToPixels(height));
}

QPushButton* commandButton(QWidget* parent, const QString& name, const QString& text,
                           QRect geometry, const QIcon& icon = QIcon()) {
    auto* button = new QPushButton(icon, text, parent);
    button->setObjectName(name);
    button->setGeometry(geometry);
    return button;
}

}  // namespace

frmAdmin::frmAdmin() {
    setObjectName(QStringLiteral("frmAdmin"));
    setWindowTitle(QStringLiteral("Administration"));
    setWindowIcon(artwork::consoleIcon());
    auto* area = new QWidget(this);
    area->setFixedSize(twipsToPixels(8940), twipsToPixels(5340));
    setCentralWidget(area);
    buildMenus();
    buildTabs(area);
    buildButtons(area);
    layout()->setSizeConstraint(QLayout::SetFixedSize);

    // Load: nothing touches the database yet.
    bStarted = false;
    gConsoleForm = this;
    tabAdmin->setTabVisible(Branches, false);  // kept with all its logic, out of reach
}

void frmAdmin::buildMenus() {
    auto action = [this](QMenu* menu, const QString& name, const QString& caption) {
        QAction* a = menu->addAction(caption);
        a->setObjectName(name);
        return a;
    };
    auto separator = [](QMenu* menu, const QString& name) {
        QAction* a = menu->addSeparator();
        a->setObjectName(name);
        return a;
    };
    mnFile = menuBar()->addMenu(QStringLiteral("&File"));
    mnFile->setObjectName(QStringLiteral("mnFile"));
    mnClearRTS = action(mnFile, "mnClearRTS", "&Clear RTS");
    mnSeparator = separator(mnFile, "mnSeparator");
    mnExit = action(mnFile, "mnExit", "E&xit");
    mnActions = menuBar()->addMenu(QStringLiteral("&Actions"));
    mnActions->setObjectName(QStringLiteral("mnActions"));
    mnNew = action(mnActions, "mnNew", "&New...");
    mnEdit = action(mnActions, "mnEdit", "&Edit...");
    mnDelete = action(mnActions, "mnDelete", "&Delete");
    mnSeparator2 = separator(mnActions, "mnSeparator2");
    mnLogOff = action(mnActions, "mnLogOff", "&Log User Off");
    mnHelp = menuBar()->addMenu(QStringLiteral("&Help"));
    mnHelp->setObjectName(QStringLiteral("mnHelp"));
    mnHelpTopics = action(mnHelp, "mnHelpTopics", "&Help Topics");
    mnAbout = action(mnHelp, "mnAbout", "&About...");

    connect(mnExit, &QAction::triggered, this, [this] { close(); });
}

void frmAdmin::buildTabs(QWidget* area) {
    tabAdmin = new QTabWidget(area);
    tabAdmin->setObjectName(QStringLiteral("tabAdmin"));
    tabAdmin->setGeometry(twipsRect(120, 120, 8685, 4695));
    for (const char* caption : {"Employees", "Scheduling Workgroups", "Equipment", "Access Levels",
                                "User Fields", "Branches"}) {
        tabAdmin->addTab(new QWidget, QString::fromLatin1(caption));
    }
    connect(tabAdmin, &QTabWidget::currentChanged, this,
            [this](int) { platform::runHandler([this] { tabAdmin_Click(0); }); });
}

void frmAdmin::buildButtons(QWidget* area) {
    cmdNew = commandButton(area, "cmdNew", "New...", twipsRect(150, 4890, 1245, 345),
                           artwork::newEntryIcon());
    cmdEdit = commandButton(area, "cmdEdit", "Edit...", twipsRect(1500, 4890, 1245, 345),
                            artwork::editEntryIcon());
    cmdDelete = commandButton(area, "cmdDelete", "Delete", twipsRect(2820, 4890, 1245, 345),
                              artwork::deleteEntryIcon());
    cmdSave = commandButton(area, "cmdSave", "&Save Changes", twipsRect(6180, 4890, 2205, 375));
    setTabOrder(cmdNew, cmdEdit);
    setTabOrder(cmdEdit, cmdDelete);
    setTabOrder(cmdDelete, cmdSave);
}

void frmAdmin::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!bStarted) {
        // Activation comes once the window is up; let the show finish first.
        QMetaObject::invokeMethod(
            this, [this] { Form_Activate(); }, Qt::QueuedConnection);
    }
}

void frmAdmin::Form_Activate() {
    if (bStarted) {
        return;
    }
    bStarted = true;
    helpFile_ = platform::joinPath(platform::programFolder(), QStringLiteral("lattsers.hlp"));
    StartSession();
}

void frmAdmin::StartSession() {
    try {
        frmStartUp logon;
        if (!logon.ShowMe(false, false, true)) {
            End();
        }
        // Tested after validation, so a good logon's settings are written by now.
        if (gAccessLevel != kAdministratorLevel) {
            ShowMsg(QStringLiteral("You must be an administrator to access this program."));
            End();
        }
        ShowBusy();
        InitTerminology();
        tabAdmin->setCurrentIndex(Employees);
        tabAdmin_Click(0);
        show();
        ShowIdle();
    } catch (const rt::Error& failure) {
        ShowMsg(failure.description());
    }
}

void frmAdmin::tabAdmin_Click(int) {
    const int tab = tabAdmin->currentIndex();
    const bool directoryTab = tab != AccessLevels && tab != UserFields;
    cmdSave->setVisible(tab == AccessLevels);
    for (QPushButton* button : {cmdNew, cmdEdit, cmdDelete}) {
        button->setVisible(directoryTab);
    }
    mnActions->menuAction()->setVisible(directoryTab);
}

void frmAdmin::closeEvent(QCloseEvent* event) {
    event->accept();
    platform::runHandler([this] { Form_Unload(); });
}

void frmAdmin::Form_Unload() {
    if (bLevelDirty) {
        // Saving joins here with the access level editor.
        ShowMsg(QStringLiteral("Save access level changes?"), platform::Msg::YesNo);
    }
    // There is no way to cancel closing; the database is left to the engine.
    End();
}

bool frmAdmin::VerifyDatabase(std::unique_ptr<RecSet>& rsOut) {
    // A database from before the version column existed counts as version 2.
    float version = 2.0f;
    bool opened = true;
    try {
        rsOut = gDBase.OpenRecordset(QStringLiteral("SELECT * FROM sysinfo"));
    } catch (const rt::Error&) {
        opened = false;
    }
    try {
        if (opened && rsOut->RecordCount() > 0) {
            rsOut->MoveFirst();
            const rt::Variant stored = rsOut->ColsWithNull("dbversion");
            version = stored.isNull() ? 2.0f : rt::CSng(stored);
        }
        const QString versionText = rt::singleText(version);
        if (version > kDatabaseVersion) {
            ShowMsg("The database you are trying to open is a " + versionText +
                    " version, which is more recent than the version of Wrenfold you are running.  "
                    "You must "
                    "upgrade the program to this version before you can open this database.");
            return false;
        }
        if (version < kDatabaseVersion) {
            const int answer = ShowMsg(gDatabasePath + " is a " + versionText +
                                           " version of the database.  It will be updated now.",
                                       platform::Msg::OKCancel, QStringLiteral("Wrenfold Upgrade"));
            if (answer == platform::Msg::Cancel) {
                return false;
            }
            gDBase.CloseDB();
            ShowMsg(QStringLiteral(
                "The Lattimer Series will make a backup of your database named "
                "'databasename.bck'.  This may take a few moments depending on the size of "
                "the database."));
            ShowBusy();
            DoEvents();
            ShowIdle();
            // The upgrade itself lives in another program; the reads below meet the closed
            // database.
        }
        if (!rsOut) {
            throw rt::Error::standard(rt::ObjectNotSet);
        }
        ReadCompanyDetails(*rsOut);
        return true;
    } catch (const rt::Error& failure) {
        ShowMsg(failure.description());
        return false;
    }
}
