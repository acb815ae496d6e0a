// The console as the program starts it, for the benchmarks that time or weigh a whole process.
// ORVANE_BENCH_MODE=start: exits as soon as the logon window shows. ORVANE_BENCH_MODE=memory: logs
// on as the administrator from the command line, and once the employee list is filled prints its
// row count and the peak resident memory, then exits.

#include "directory/frm_admin.h"
#include "exit_when_shown.h"
#include "logon/command_line.h"
#include "peak_memory.h"
#include "platform/qt_ui.h"
#include "platform/regional.h"
#include "util/report_list.h"

#include <QApplication>
#include <QStringList>
#include <QTimer>

#include <unistd.h>

#include <cstdio>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    platform::adoptRegionalSettings();
    QApplication::setApplicationName(QStringLiteral("Orvane Administration"));
    const bool memory = qgetenv("ORVANE_BENCH_MODE") == "memory";
    SetCommandLine(memory ? QStringLiteral("-ladmin -porvane") : app.arguments().mid(1).join(' '));
    platform::QtUi ui;
    platform::setUi(&ui);

    ExitWhenShown watch(QStringLiteral("frmStartUp"));
    if (!memory) {
        app.installEventFilter(&watch);
    }
    // A child that never gets there must not hang the benchmark.
    QTimer::singleShot(120000, [] { _exit(3); });

    frmAdmin::LogOn();
    frmAdmin console;
    QTimer filled;
    if (memory) {
        QObject::connect(&filled, &QTimer::timeout, [&console] {
            if (console.bTabLoaded[frmAdmin::Employees]) {
                std::printf("rows %d\n", console.lstEmployees->rowCount());
                printPeakMemory();
                std::fflush(stdout);
                _exit(0);
            }
        });
        filled.start(1);
    }
    console.OpenSession();
    return app.exec();
}
