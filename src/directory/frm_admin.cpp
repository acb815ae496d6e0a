#include "directory/frm_admin.h"

#include "access/level_store.h"
#include "access/right_catalogue.h"
#include "data/dbase.h"
#include "data/session.h"
#include "directory/frm_delete_employee.h"
#include "directory/frm_employee.h"
#include "fields/user_fields_tab.h"
#include "logon/frm_startup.h"
#include "logon/logon_state.h"
#include "logon/version_gate.h"
#include "platform/convert.h"
#include "platform/os.h"
#include "platform/ui.h"
#include "settings/terminology.h"
#include "util/accessibility.h"
#include "util/artwork.h"
#include "util/frm_about.h"
#include "util/report_list.h"
#include "util/twips.h"
#include "util/widgets.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QFocusEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSet>
#include <QTabWidget>

namespace {

QRect twipsRect(int left, int top, int width, int height) {
    return QRect(twipsToPixels(left), twipsToPixels(top), twipsToPixels(width),
                 twipsToPixels(height));
}

// Where the columns that a list row shows stand in a cursor on users, found once for a whole
// fill rather than by name for every cell; -1 for those the kind of entry doesn't show.
struct EntryColumns {
    EntryColumns(const RecSet& rs, qint16 type)
        : name(rs.ColumnIndex(QStringLiteral("Name"))), id(rs.ColumnIndex(QStringLiteral("id"))) {
        if (type == 0) {
            logon = rs.ColumnIndex(QStringLiteral("Logon"));
            accLevel = rs.ColumnIndex(QStringLiteral("accLevel"));
            fslevel = rs.ColumnIndex(QStringLiteral("fslevel"));
        } else if (type != 2) {
            num = rs.ColumnIndex(QStringLiteral("num"));
        }
    }
    int name;
    int id;
    int logon = -1;
    int accLevel = -1;
    int fslevel = -1;
    int num = -1;
};

// The list row of the record the cursor stands on, made whole before it goes into the list.
ReportList::Row entryRow(qint16 type, const RecSet& rs, const EntryColumns& columns,
                         const QString& loggedIn) {
    static const QString editions[] = {QStringLiteral("ASD"), QStringLiteral("AGD"),
                                       QStringLiteral("AGP"), QStringLiteral("CSD")};
    const rt::Variant id = rs.ColsAt(columns.id);
    QStringList cells;
    cells.reserve(6);
    cells << rt::CStr(rs.ColsAt(columns.name));
    if (type == 0) {
        cells << rt::CStr(rs.ColsAt(columns.logon))
              << gLevelNames(rt::CInt(rs.ColsAt(columns.accLevel)) - 1) << rt::CStr(id) << loggedIn;
        const qint16 edition = rt::CInt(rs.ColsAt(columns.fslevel));
        if (edition >= 0 && edition <= 3) {
            cells << editions[edition];
        }
    } else if (type == 2) {
        cells << rt::CStr(id);
    } else {
        cells << rt::CStr(rs.ColsAt(columns.num)) << rt::CStr(id);
    }
    return {cells, rt::CLng(id)};
}

// The employees with at least one rts row, all found by one query. The table alone tells: a
// row left behind by a run that ended reads as logged in, and the comparison is the database's
// own, as if each employee's id were looked up in rts.
QSet<qint32> employeesWithSessions() {
    return gDBase.IdsOf(
        QStringLiteral("SELECT id FROM users WHERE type = 0 AND id IN (SELECT uid FROM rts)"));
}

}  // namespace

frmAdmin::frmAdmin() {
    setObjectName(QStringLiteral("frmAdmin"));
    setWindowTitle(QStringLiteral("Administration"));
    setWindowIcon(artwork::consoleIcon());
    KeepHiddenTabsOutOfReach();  // the Branches tab is hidden, and must stay so for a screen reader
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

frmAdmin::~frmAdmin() {
    // Windows made later must not take a console that is gone for their owner.
    if (gConsoleForm == this) {
        gConsoleForm = nullptr;
    }
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
    OnEvent(mnNew, &QAction::triggered, this, [this] { cmdNew_Click(); });
    OnEvent(mnEdit, &QAction::triggered, this, [this] { cmdEdit_Click(); });
    OnEvent(mnDelete, &QAction::triggered, this, [this] { cmdDelete_Click(); });
    OnEvent(mnLogOff, &QAction::triggered, this, [this] { mnLogOff_Click(); });
    OnEvent(mnClearRTS, &QAction::triggered, this, [this] { mnClearRTS_Click(); });
    connect(mnHelpTopics, &QAction::triggered, this, [this] { mnHelpTopics_Click(); });
    OnEvent(mnAbout, &QAction::triggered, this, [this] { ShowAbout(this, gCompanyName); });
}

void frmAdmin::buildTabs(QWidget* area) {
    tabAdmin = new QTabWidget(area);
    tabAdmin->setObjectName(QStringLiteral("tabAdmin"));
    tabAdmin->setGeometry(twipsRect(120, 120, 8685, 4695));
    for (const char* caption : {"Employees", "Scheduling Workgroups", "Equipment", "Access Levels",
                                "User Fields", "Branches"}) {
        tabAdmin->addTab(new QWidget, QString::fromLatin1(caption));
    }
    buildDirectoryList(lstEmployees, "lstEmployees", Employees, twipsRect(195, 765, 8235, 3705),
                       {{"Employee", 3881},
                        {"Logon", 2672},
                        {"Access Level", 3122},
                        {"Internal ID", 1746},
                        {"Logged In", 1640},
                        {"Level", 1323}});
    buildDirectoryList(
        lstWorkGroups, "lstWorkGroups", Workgroups, twipsRect(200, 400, 8235, 4065),
        {{"Workgroup Name", 5292}, {"Number of Members", 5292}, {"Internal ID", 3528}});
    buildDirectoryList(lstEquipment, "lstEquipment", Equipment, twipsRect(200, 400, 8235, 4065),
                       {{"Equipment Description", 7937}, {"Internal ID", 2646}});
    buildDirectoryList(lstBranches, "lstBranches", Branches, twipsRect(200, 400, 8235, 4065),
                       {{"Branch Name", 5292}, {"Number of Members", 5292}, {"Internal ID", 3528}});
    buildAccessLevelsPage(tabAdmin->widget(AccessLevels));
    buildUserFieldsPage(tabAdmin->widget(UserFields));
    OnEvent(tabAdmin, &QTabWidget::currentChanged, this, [this] { tabAdmin_Click(0); });
}

void frmAdmin::buildDirectoryList(ReportList*& list, const QString& name, int tab, QRect geometry,
                                  const std::vector<std::pair<QString, int>>& columns) {
    list = new ReportList(name, tabAdmin->widget(tab));
    list->setAccessibleName(tabAdmin->tabText(tab));  // the tab is the list's only label
    // The page of this toolkit's tab strip is a little shorter than the original's.
    geometry.setHeight(
        std::min(geometry.height(), tabAdmin->widget(tab)->height() - geometry.top() - 6));
    list->setGeometry(geometry);
    list->setColumns(columns);
    ReportList* self = list;
    list->onColumnClick = [this, self](int column) { lstColumnClick(self, column); };
    list->onDoubleClick = [this, self] {
        platform::runHandler([this, self] { lstDblClick(self); });
    };
}

void frmAdmin::buildAccessLevelsPage(QWidget* page) {
    Label1[0] = place<QLabel>(page, "Label1(0)", QRect(10, 12, 40, 22), "Level");
    cmbLevel = place<QComboBox>(page, "cmbLevel", QRect(52, 10, 200, 24));
    Label1[1] = place<QLabel>(page, "Label1(1)", QRect(270, 12, 40, 22), "Name");
    txtAccessLevel = place<QLineEdit>(page, "txtAccessLevel", QRect(312, 10, 200, 24));
    txtAccessLevel->setMaxLength(kLevelNameLength);
    Frame1 = place<QGroupBox>(page, "Frame1", QRect(8, 42, 556, 236));
    Label1[2] = place<QLabel>(Frame1, "Label1(2)", QRect(10, 6, 200, 20), "Allow Access to...");
    lstAccessGroups = place<QListWidget>(Frame1, "lstAccessGroups", QRect(10, 28, 190, 198));
    Label1[3] =
        place<QLabel>(Frame1, "Label1(3)", QRect(210, 6, 300, 20), "Can Modify the Following...");
    lstAccess = place<QListWidget>(Frame1, "lstAccess", QRect(210, 28, 336, 198));
    // A label names the control it stands beside, for a screen reader.
    Label1[0]->setBuddy(cmbLevel);
    Label1[1]->setBuddy(txtAccessLevel);
    Label1[2]->setBuddy(lstAccessGroups);
    Label1[3]->setBuddy(lstAccess);
    NameAfterLabel(lstAccessGroups, Label1[2]);
    NameAfterLabel(lstAccess, Label1[3]);

    // A choice by mouse or keyboard, of another level or of the one in hand.
    OnEvent(cmbLevel, &QComboBox::activated, this, [this] { cmbLevel_Click(); });
    connect(lstAccessGroups, &QListWidget::currentRowChanged, this, [this](int row) {
        // Emptying the list leaves no row selected; there is no group to show then.
        if (row >= 0) {
            platform::runHandler([this] { lstAccessGroups_Click(); });
        }
    });
    for (QListWidget* list : {lstAccessGroups, lstAccess}) {
        connect(list, &QListWidget::itemChanged, this,
                [this](QListWidgetItem* row) { lstRights_ItemCheck(row); });
    }
    OnEvent(txtAccessLevel, &QLineEdit::textChanged, this, [this] { txtAccessLevel_Change(); });
    txtAccessLevel->installEventFilter(this);
}

void frmAdmin::buildUserFieldsPage(QWidget* page) {
    cmbUDF = place<QComboBox>(page, "cmbUDF", QRect(10, 10, 260, 24));
    lstUDF = new ReportList(QStringLiteral("lstUDF"), page);
    lstUDF->setGeometry(10, 42, 400, 236);
    lstUDF->setColumns({{"User Field", 2400}, {"Description", 5000}, {"Class", 1500}});
    // The tab is the only label of the list and of the choice of what it shows.
    for (QWidget* control : std::initializer_list<QWidget*>{cmbUDF, lstUDF}) {
        control->setAccessibleName(tabAdmin->tabText(UserFields));
    }
    Frame2 = place<QGroupBox>(page, "Frame2", QRect(420, 42, 144, 108), "Class");
    const char* const captions[] = {"Class A", "Class B", "Class C (Personal)"};
    for (int i = 0; i < 3; ++i) {
        optClass[i] =
            place<QRadioButton>(Frame2, QStringLiteral("optClass(%1)").arg(i),
                                QRect(10, 22 + 26 * i, 128, 22), QString::fromLatin1(captions[i]));
    }
    lstUDF->onColumnClick = [this](int column) { lstColumnClick(lstUDF, column); };
    userFields = new UserFieldsTab(cmbUDF, lstUDF, {optClass[0], optClass[1], optClass[2]}, this);
}

void frmAdmin::buildButtons(QWidget* area) {
    cmdNew = place<QPushButton>(area, "cmdNew", twipsRect(150, 4890, 1245, 345),
                                artwork::newEntryIcon(), "New...");
    cmdEdit = place<QPushButton>(area, "cmdEdit", twipsRect(1500, 4890, 1245, 345),
                                 artwork::editEntryIcon(), "Edit...");
    cmdDelete = place<QPushButton>(area, "cmdDelete", twipsRect(2820, 4890, 1245, 345),
                                   artwork::deleteEntryIcon(), "Delete");
    cmdSave =
        place<QPushButton>(area, "cmdSave", twipsRect(6180, 4890, 2205, 375), "&Save Changes");
    OnEvent(cmdNew, &QPushButton::clicked, this, [this] { cmdNew_Click(); });
    OnEvent(cmdEdit, &QPushButton::clicked, this, [this] { cmdEdit_Click(); });
    OnEvent(cmdDelete, &QPushButton::clicked, this, [this] { cmdDelete_Click(); });
    OnEvent(cmdSave, &QPushButton::clicked, this, [this] { SaveAccesslevel(); });
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
    bStarted = true;  // the logon's own window must not start a second one
    StartSession();
}

void frmAdmin::StartSession() {
    LogOn();
    OpenSession();
}

void frmAdmin::LogOn() {
    try {
        frmStartUp logon;
        if (!logon.ShowMe(false, false, true)) {
            End();
        }
        // Tested after validation, so a good logon's settings are written by now.
        if (gAccessLevel != kAdministratorLevel) {
            ShowMsg(QStringLiteral("You must be an administrator to access this program."));
            End(platform::kExitFailure);
        }
    } catch (const rt::Error& failure) {
        platform::failRun(failure);
    }
}

void frmAdmin::OpenSession() {
    bStarted = true;
    helpFile_ = platform::joinPath(platform::programFolder(), QStringLiteral("lattsers.hlp"));
    try {
        ShowBusy();
        InitTerminology();
        tabAdmin->setCurrentIndex(Employees);
        tabAdmin_Click(0);
        show();
        ShowIdle();
    } catch (const rt::Error& failure) {
        // A console without its cursors would fail at the first command: the run ends here.
        platform::failRun(failure);
    }
}

void frmAdmin::tabAdmin_Click(int) {
    const int tab = tabAdmin->currentIndex();
    const std::optional<Directory> directory = directoryOfTab(tab);

    cmdSave->setVisible(tab == AccessLevels);
    for (QPushButton* button : {cmdNew, cmdEdit, cmdDelete}) {
        button->setVisible(directory.has_value());
    }
    mnActions->menuAction()->setVisible(directory.has_value());

    if (!bTabLoaded[tab]) {
        if (directory) {
            LoadUserlist(directory->type, *directory->cursor);
        } else if (tab == AccessLevels) {
            for (int i = 0; i <= 9; ++i) {
                cmbLevel->addItem(gLevelNames(i));
            }
            // The first level is selected and loaded as if the administrator had chosen it.
            cmbLevel->setCurrentIndex(0);
            cmbLevel_Click();
        } else {
            userFields->FillKinds();
        }
        bTabLoaded[tab] = true;
    }

    setEntryCommandsEnabled(directory && directory->list->rowCount() > 0);
}

std::optional<frmAdmin::Directory> frmAdmin::directoryOfTab(int tab) {
    switch (tab) {
        case Employees:
            return Directory{0, lstEmployees, &rsEmployees};
        case Workgroups:
            return Directory{1, lstWorkGroups, &rsWorkgroups};
        case Equipment:
            return Directory{2, lstEquipment, &rsEquipment};
        case Branches:  // the tab's index and the kind of entry differ on purpose
            return Directory{3, lstBranches, &rsBranches};
        default:
            return std::nullopt;
    }
}

frmAdmin::Directory frmAdmin::directoryOfType(qint16 type) {
    static const int tabs[] = {Employees, Workgroups, Equipment, Branches};
    return *directoryOfTab(tabs[type & 3]);
}

void frmAdmin::setEntryCommandsEnabled(bool enabled) {
    cmdEdit->setEnabled(enabled);
    cmdDelete->setEnabled(enabled);
    mnEdit->setEnabled(enabled);
    mnDelete->setEnabled(enabled);
}

void frmAdmin::LoadUserlist(qint16 nType, std::unique_ptr<RecSet>& rs) {
    ShowBusy();
    ReportList* list = directoryOfType(nType).list;
    QList<ReportList::Row> rows;
    // One read of the file for the cursor, the sessions and every row, so that the rows are read
    // once, at the open, rather than again at each visit.
    gDBase.ReadTogether([&] {
        rs = gDBase.OpenRecordset("SELECT * FROM users WHERE type = " + QString::number(nType) +
                                  " ORDER BY NAME");
        list->removeAllRows();
        if (rs->RecordCount() == 0) {
            return;
        }
        rs->MoveLast();
        rs->MoveFirst();
        const EntryColumns columns(*rs, nType);
        const QSet<qint32> sessions = nType == 0 ? employeesWithSessions() : QSet<qint32>();
        rows.reserve(rs->RecordCount());
        while (!rs->Eof()) {
            QString loggedIn;
            if (nType == 0) {
                loggedIn = sessions.contains(rt::CLng(rs->ColsAt(columns.id)))
                               ? QStringLiteral("Yes")
                               : QStringLiteral("No");
            }
            rows << entryRow(nType, *rs, columns, loggedIn);
            rs->MoveNext();
        }
    });
    list->addRows(std::move(rows));
    // The commands need a selected row whenever the list has rows.
    list->finishFill();
    ShowIdle();
}

qint32 frmAdmin::selectedId(ReportList* list) const {
    const std::optional<int> row = list->selectedRow();
    if (!row) {
        throw rt::Error::standard(rt::ObjectNotSet);
    }
    return rt::CLng(list->tag(*row).toInt());
}

void frmAdmin::lstColumnClick(ReportList* list, int column) {
    nSortOrder = nSortOrder == 1 ? 0 : 1;
    list->sortByColumn(column, nSortOrder);
}

void frmAdmin::lstDblClick(ReportList* list) {
    // The row count alone decides: a double-click below the rows edits the selected one.
    if (list->rowCount() > 0) {
        cmdEdit_Click();
    }
}

void frmAdmin::cmdNew_Click() {
    ShowBusy();
    const Directory directory = *directoryOfTab(tabAdmin->currentIndex());
    RecSet& rs = **directory.cursor;
    rs.AddNew();
    rs.Cols("Type") = directory.type;
    rs.Cols("accLevel") = qint16(1);
    if (!runEditor(directory, true)) {
        rs.CancelUpdate();
        return;
    }
    // The new row goes at the end, not into name order, until the list is filled again.
    directory.list->addRows(
        {entryRow(directory.type, rs, EntryColumns(rs, directory.type), QStringLiteral("No"))});
    directory.list->selectRow(directory.list->rowCount() - 1);
    setEntryCommandsEnabled(true);
}

qint32 frmAdmin::findSelected(const Directory& directory) {
    const qint32 id = selectedId(directory.list);
    QString search = "id = " + QString::number(id);
    // What the search found is not looked at: a record another program removed leaves the
    // cursor where it stands.
    (*directory.cursor)->FindRecord(search, QString(), rt::Variant(), QString(), rt::Variant());
    return id;
}

void frmAdmin::cmdEdit_Click() {
    ShowBusy();
    const Directory directory = *directoryOfTab(tabAdmin->currentIndex());
    RecSet& rs = **directory.cursor;
    rs.MoveFirst();
    findSelected(directory);
    if (runEditor(directory, false)) {
        LoadUserlist(directory.type, *directory.cursor);
    }
}

bool frmAdmin::runEditor(const Directory& directory, bool isNew) {
    frmEmployee editor;  // a fresh instance each time, unloaded on both outcomes
    qint16 type = directory.type;
    editor.ShowForm(type, **directory.cursor, isNew);
    return !editor.bCanceled;
}

void frmAdmin::cmdDelete_Click() {
    const std::optional<Directory> directory = directoryOfTab(tabAdmin->currentIndex());
    if (!directory) {
        return;
    }
    if (directory->type == 0) {
        deleteEmployee(*directory);
        return;
    }
    const QString id = QString::number(findSelected(*directory));
    // The kinds differ on purpose: equipment clears extaccess by extid, a branch clears no
    // planner items, and a branch's watch rows go before the question is even asked.
    QString question;
    QStringList statements;
    if (directory->type == 3) {
        gDBase.Execute("DELETE from watch_branch WHERE branchid = " + id);
        question = QStringLiteral("Are you sure you want to delete this branch?");
        statements << "DELETE FROM extaccess WHERE userid = " + id;
    } else {
        const bool workgroup = directory->type == 1;
        question = QStringLiteral(
                       "Are you sure you want to delete this %1 and any planner items "
                       "associated with it?")
                       .arg(workgroup ? "workgroup" : "equipment");
        statements << (workgroup ? "DELETE FROM extaccess WHERE userid = "
                                 : "DELETE FROM extaccess WHERE extid = ") +
                          id
                   << "DELETE FROM reminder WHERE userid = " + id;
    }
    if (ShowMsg(question, platform::Msg::YesNo | platform::Msg::DefaultButton2) !=
        platform::Msg::Yes) {
        return;
    }
    const bool deleted = gDBase.RunAsOneUnit([&] {
        for (const QString& statement : statements) {
            gDBase.Execute(statement);
        }
        (*directory->cursor)->Delete();
    });
    if (deleted) {
        removeSelectedRow(*directory);
    }
}

void frmAdmin::deleteEmployee(const Directory& directory) {
    const qint32 id = findSelected(directory);
    if (id == gUsers(0).id) {
        ShowMsg(
            QStringLiteral("You cannot delete yourself from the employees list.  Logon as a "
                           "different administrator to remove yourself."));
        return;
    }
    frmDeleteEmployee deletion(lstEmployees);
    deletion.id = id;
    deletion.ShowModal();
    // The row went by its own statement; the cursor isn't told of it.
    if (!deletion.bCanceled) {
        removeSelectedRow(directory);
    }
}

void frmAdmin::removeSelectedRow(const Directory& directory) {
    directory.list->removeRow(*directory.list->selectedRow());
    if (directory.list->rowCount() == 0) {
        setEntryCommandsEnabled(false);
    }
}

void frmAdmin::mnLogOff_Click() {
    rsEmployees->MoveFirst();
    const qint32 id = findSelected(*directoryOfTab(Employees));
    const QString name = rt::CStr(rsEmployees->Cols("Name"));
    if (ShowMsg("This will invalidate any current working sessions of the Lattimer Series for " +
                    name + ".  " + "\r\n" + "Are you SURE you want to continue?",
                platform::Msg::YesNo) == platform::Msg::No) {
        return;
    }
    gDBase.Execute("DELETE FROM rts WHERE uid = " + QString::number(id));
    // Only the cell changes; no query confirms it.
    lstEmployees->setCell(*lstEmployees->selectedRow(), 4, QStringLiteral("No"));
}

void frmAdmin::mnClearRTS_Click() {
    if (ShowMsg(QStringLiteral(
                    "This will invalidate any current working sessions of the Lattimer Series.  "
                    "Anyone currently using the system will be disconnected.") +
                    "\r\n" + "Are you SURE you want to continue?",
                platform::Msg::YesNo) == platform::Msg::No) {
        return;
    }
    gDBase.Execute(QStringLiteral("DELETE FROM rts"));
    LoadUserlist(0, rsEmployees);
}

void frmAdmin::mnHelpTopics_Click() {
    platform::ui().showHelp(helpFile_);
}

void frmAdmin::closeEvent(QCloseEvent* event) {
    event->accept();
    platform::runHandler([this] { Form_Unload(); });
}

void frmAdmin::Form_Unload() {
    if (bLevelDirty && ShowMsg(QStringLiteral("Save access level changes?"),
                               platform::Msg::YesNo) == platform::Msg::Yes) {
        SaveAccesslevel();
    }
    // There is no way to cancel closing; the database is left to the engine.
    End();
}

bool frmAdmin::eventFilter(QObject* watched, QEvent* event) {
    // Focus that goes to another window or to a popup comes back to the box: it isn't left.
    if (watched == txtAccessLevel && event->type() == QEvent::FocusOut) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
            platform::runHandler([this] { txtAccessLevel_LostFocus(); });
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void frmAdmin::cmbLevel_Click() {
    // A save here still goes under the level in hand; No drops its changes, but the level list
    // keeps a typed name for the rest of the run.
    if (bLevelDirty &&
        ShowMsg(QStringLiteral("Save changes?"), platform::Msg::YesNo) == platform::Msg::Yes) {
        SaveAccesslevel();
    }
    nLevelIndex = qint16(cmbLevel->currentIndex());
    ReadLevel(nLevelIndex);
    bLevelLoading = true;
    fillRights(lstAccessGroups, -1);
    txtAccessLevel->setText(cmbLevel->currentText());
    lstAccessGroups->setCurrentRow(0);
    lstAccessGroups_Click();
    bLevelLoading = false;
    bLevelDirty = false;  // setting the name counted as an edit
}

void frmAdmin::lstAccessGroups_Click() {
    bLevelLoading = true;
    fillRights(lstAccess, qint16(lstAccessGroups->currentItem()->data(Qt::UserRole).toInt()));
    lstAccess->setCurrentRow(0);
    bLevelLoading = false;
}

void frmAdmin::fillRights(QListWidget* list, qint16 group) {
    list->clear();
    for (qint16 position : RightsOfGroup(group)) {
        list->addItem(gRightCaptions(position));
        QListWidgetItem* row = list->item(list->count() - 1);
        row->setData(Qt::UserRole, position);
        row->setFlags(row->flags() | Qt::ItemIsUserCheckable);
        row->setCheckState(gRightValues(position) ? Qt::Checked : Qt::Unchecked);
    }
}

void frmAdmin::lstRights_ItemCheck(QListWidgetItem* row) {
    if (bLevelLoading) {
        return;
    }
    // A group's tick leaves its children's as they are; the next load denies them.
    bLevelDirty = true;
    gRightValues(row->data(Qt::UserRole).toInt()) = row->checkState() == Qt::Checked;
}

void frmAdmin::txtAccessLevel_Change() {
    bLevelDirty = true;
    cmbLevel->setItemText(cmbLevel->currentIndex(), txtAccessLevel->text());
}

void frmAdmin::txtAccessLevel_LostFocus() {
    if (txtAccessLevel->text().isEmpty()) {
        ShowMsg(QStringLiteral("You must enter a level name."));
        txtAccessLevel->setText(kUnnamedLevel);
    }
}

void frmAdmin::SaveAccesslevel() {
    ShowBusy();
    WriteLevel(nLevelIndex, txtAccessLevel->text());
    bLevelDirty = false;
    ShowIdle();
}

bool frmAdmin::VerifyDatabase(std::unique_ptr<RecSet>& rsOut) {
    // A database from before the version column existed counts as version 2.
    float version = 2.0f;
    try {
        rsOut = gDBase.OpenRecordset(QStringLiteral("SELECT * FROM sysinfo"));
    } catch (const rt::Error&) {
        rsOut.reset();
    }
    try {
        if (rsOut && rsOut->RecordCount() > 0) {
            rsOut->MoveFirst();
            const rt::Variant stored = rsOut->ColsWithNull("dbversion");
            version = stored.isNull() ? 2.0f : rt::CSng(stored);
        }
        const QString versionText = rt::singleText(version);
        if (version > kDatabaseVersion) {
            ShowMsg("The database you are trying to open is a " + versionText +
                    " version, which is more recent than the version of Wrenfold you are running.  "
                    "You must upgrade the program to this version before you can open this "
                    "database.");
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
