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

    // The console is the start-up window: its first activation starts the session.
    frmAdmin console;
    console.show();
    return app.exec();
}
