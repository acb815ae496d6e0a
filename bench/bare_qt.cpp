// The baselines of the process benchmarks. ORVANE_BENCH_MODE=start: a Qt program that shows an
// empty dialog and exits as soon as it is shown; start-text: the same with a label and a box.
// ORVANE_BENCH_MODE=memory: starts Qt, opens the database given as its argument and reads from it,
// then prints its peak resident memory.

#include "exit_when_shown.h"
#include "peak_memory.h"

#include <QApplication>
#include <QDialog>
#include <QFormLayout>
#include <QLineEdit>

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
    if (qgetenv("ORVANE_BENCH_MODE") == "start-text") {
        auto* layout = new QFormLayout(&dialog);
        layout->addRow(QStringLiteral("Logon"), new QLineEdit);
    }
    dialog.show();
    return app.exec();
}
