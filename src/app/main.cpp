// orvane-admin: the administration console.

#include "directory/frm_admin.h"
#include "logon/command_line.h"
#include "platform/qt_ui.h"
#include "platform/regional.h"

#include <QApplication>
#include <QStringList>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    platform::adoptRegionalSettings();
    QApplication::setApplicationName(QStringLiteral("Orvane Administration"));
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
