// orvane-admin: the administration console.

#include "directory/frm_admin.h"
#include "logon/command_line.h"
#include "platform/qt_ui.h"
#include "platform/regional.h"

#include <QApplication>
#include <QStringList>

#include <cstdio>
#include <string_view>

namespace {

const char* const kUsage =
    "Usage: orvane-admin [-l<logon> -p<password>]\n"
    "The administration console of the Lattimer Series, on the database the workstation\n"
    "remembers.\n"
    "\n"
    "  -l<logon>     log on as this user without showing the logon window, with\n"
    "  -p<password>  this password; each value stands right behind its switch\n"
    "  --help        show this text and exit\n"
    "  --version     show the version and exit\n";

// Answers --help or --version, wherever it stands, and tells whether it did. This runs before
// any application object exists, so that it needs no display and touches no settings.
bool answeredInformationSwitch(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help") {
            std::fputs(kUsage, stdout);
            return true;
        }
        if (argument == "--version") {
            std::printf("orvane-admin (Orvane Administration) %s\n", ORVANE_VERSION);
            return true;
        }
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (answeredInformationSwitch(argc, argv)) {
        return 0;
    }
    QApplication app(argc, argv);
    platform::adoptRegionalSettings();
    QApplication::setApplicationName(QStringLiteral("Orvane Administration"));
    QApplication::setApplicationVersion(QStringLiteral(ORVANE_VERSION));
    QApplication::setOrganizationName(QStringLiteral("Orvane Software"));
    // Ties the windows to the installed desktop entry, whose icon the desktop then shows.
    QGuiApplication::setDesktopFileName(QStringLiteral("orvane-admin"));
    // The program's switches may stand anywhere in its command line, as one text.
    SetCommandLine(app.arguments().mid(1).join(' '));
    platform::QtUi ui;
    platform::setUi(&ui);

    // The logon window comes first, alone; the console is built once an administrator is in.
    frmAdmin::LogOn();
    frmAdmin console;
    console.OpenSession();
    return app.exec();
}
