// The baselines of the process benchmarks. ORVANE_BENCH_MODE=start: a Qt program that shows a
// dialog and exits as soon as it is shown. ORVANE_BENCH_MODE=memory: starts Qt, opens the
// database given as its argument and reads from it, then prints its peak resident memory.

#include "exit_when_shown.h"
#include "peak_memory.h"

#include <QApplication>
#include <QDialog>

#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (qgetenv("ORVANE_BENCH_MODE") == "memory") {
        if (argc < 2) {
            return 2;
        }
        sqlite3* db = nullptr;
        if (sqlite3_open_v2(argv[1], &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK ||
            sqlite3_exec(db, "SELECT count(*) FROM users", nullptr, nullptr, nullptr) !=
                SQLITE_OK) {
            return 2;
        }
        printPeakMemory();
        sqlite3_close(db);
        return 0;
    }
    ExitWhenShown watch(QStringLiteral("dialog"));
    app.installEventFilter(&watch);
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("dialog"));
    dialog.show();
    return app.exec();
}
