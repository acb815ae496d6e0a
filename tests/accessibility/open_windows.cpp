// Opens the logon window, the console, the entry editor on an employee and the deletion window
// of that employee, all at once, on a demo installation of its own, so that an accessibility
// client can read them as a screen reader would. Keeps them up until a line, or the end, arrives
// on its input.

#include "data/session.h"
#include "directory/frm_admin.h"
#include "installation.h"
#include "logon/command_line.h"
#include "logon/frm_startup.h"
#include "platform/os.h"
#include "platform/scripted_ui.h"
#include "settings/settings_file.h"
#include "util/report_list.h"

#include <QApplication>
#include <QEventLoop>
#include <QLocale>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTimer>

#include <unistd.h>

namespace {

void waitUntilTold() {
    QEventLoop loop;
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &loop, &QEventLoop::quit);
    // Long enough for any reading of the tree; a reader that died never leaves the windows up.
    QTimer::singleShot(5 * 60 * 1000, &loop, &QEventLoop::quit);
    loop.exec();
}

// Selects the first employee who isn't the administrator logged on, who can't be deleted.
void selectAnotherEmployee(ReportList* employees) {
    int row = 0;
    while (employees->tag(row).toInt() == gUsers(0).id) {
        ++row;
    }
    employees->selectRow(row);
}

}  // namespace

int main(int argc, char** argv) {
    QTemporaryDir configHome;
    qputenv("XDG_CONFIG_HOME", configHome.path().toUtf8());
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("orvane-accessibility-windows"));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    QTemporaryDir programFolder;
    platform::setProgramFolder(programFolder.path());
    platform::ScriptedUi ui;
    platform::setUi(&ui);
    gSystemDir = GetSystemDir();
    installer::createDemo(programFolder.filePath("demo"), programFolder.path());

    frmAdmin console;
    SetCommandLine(
        QStringLiteral("-l%1 -p%2").arg(installer::kDemoLogon, installer::kDemoPassword));
    console.Form_Activate();  // a run that ends here leaves with an uncaught platform::RunEnded
    SetCommandLine(QString());
    selectAnotherEmployee(console.lstEmployees);
    // Each window is "modal" only to the scripted seam: the editor opens the deletion window of
    // the same employee, and that one the logon window, so that all are up together.
    ui.modalScripts.push_back([&console](QWidget*) { console.cmdDelete_Click(); });
    ui.modalScripts.push_back([](QWidget*) {
        frmStartUp logon;
        logon.show();
        logon.cmdDatabases_Click();  // its database boxes too
        waitUntilTold();
    });
    console.cmdEdit_Click();
    platform::setUi(nullptr);
    return 0;
}
