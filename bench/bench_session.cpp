#include "bench_session.h"

#include "access/right_catalogue.h"
#include "bench_data.h"
#include "data/dbase.h"
#include "data/session.h"
#include "directory/frm_admin.h"
#include "logon/command_line.h"
#include "logon/frm_startup.h"
#include "logon/logon_state.h"
#include "settings/options.h"

#include <QLineEdit>

#include <chrono>

namespace bench {

platform::ScriptedUi& ui() {
    static platform::ScriptedUi seam;
    return seam;
}

Logon logOnConsole(frmAdmin& console, const QString& database) {
    Logon logon;
    ui().messages.clear();
    ui().modalWindows.clear();
    SetCommandLine(QString());
    std::chrono::steady_clock::time_point pressed;
    bool typed = false;
    ui().modalScripts.push_back([&](QWidget* window) {
        auto* logonWindow = static_cast<frmStartUp*>(window);
        logonWindow->txtDatabase->setText(database);
        logonWindow->txtLogon->setText(kAdministratorLogon);
        logonWindow->txtPassword->setText(kAdministratorPassword);
        typed = true;
        pressed = std::chrono::steady_clock::now();
        logonWindow->cmdOK_Click();
    });
    try {
        console.Form_Activate();
        logon.ok = typed && gAccessLevel == kAdministratorLevel;
    } catch (const platform::RunEnded&) {
        logon.ok = false;
    }
    const auto filled = std::chrono::steady_clock::now();
    ui().modalScripts.clear();
    if (typed) {
        logon.milliseconds = std::chrono::duration<double, std::milli>(filled - pressed).count();
    }
    if (!logon.ok) {
        logon.failure = ui().messages.empty() ? QStringLiteral("the logon window never came up")
                                              : ui().messages.back().text;
    }
    return logon;
}

void openSessionWithoutLogon(const QString& database) {
    gDatabasePath = database;
    gDBase.theDb = engine::openDatabase(database);
    auto sysinfo = gDBase.OpenRecordset(QStringLiteral("SELECT * FROM sysinfo"));
    sysinfo->MoveFirst();
    gAccessLevel = kAdministratorLevel;
    LoadAccessLevel(kAdministratorLevel - 1, *sysinfo);
    sysinfo->CloseRS();
    gUsers.redim(1);
    gUsers(0).id = kAdministratorId;
    gUsers(0).Name = QStringLiteral("Alice Admin");
    gUserCount = 1;
    gOptionsRS = gDBase.OpenRecordset(QStringLiteral("SELECT * FROM options"));
}

void endSession() {
    gOptionsRS.reset();
    gDBase.CloseDB();
    gDBase.theDb.reset();
    gUsers.erase();
    gUserCount = 0;
    gLogonTime = rt::Variant();
    gWatchdogOff = false;
    gConsoleForm = nullptr;
    ResetSessionCheck();
    SetCommandLine(QString());
    ui().messages.clear();
    ui().modalWindows.clear();
    ui().modalScripts.clear();
}

ConsoleRun::ConsoleRun(const QString& database) : console_(std::make_unique<frmAdmin>()) {
    const Logon logon = logOnConsole(*console_, database);
    if (logon.ok) {
        return;
    }
    logonFailure_ = logon.failure;
    console_.reset();
    endSession();
    console_ = std::make_unique<frmAdmin>();
    console_->bStarted = true;  // no activation is to start another logon
    openSessionWithoutLogon(database);
}

ConsoleRun::~ConsoleRun() {
    console_->hide();
    console_.reset();
    endSession();
}

}  // namespace bench
