// A process that deletes one employee as the console does, as one unit, so that a test can kill
// it at any moment. Arguments: the database, the employee's id, and the receiver's id for a
// hand-over (none: all data). Says "ready" just before the deletion starts.

#include "data/dbase.h"
#include "directory/employee_deletion.h"
#include "platform/scripted_ui.h"

#include <QString>

#include <cstdio>
#include <optional>

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: deletion_child DB ID [RECEIVER]\n");
        return 2;
    }
    platform::ScriptedUi ui;
    platform::setUi(&ui);
    gDBase.theDb = engine::openDatabase(QString::fromLocal8Bit(argv[1]));
    const qint32 id = QString::fromLatin1(argv[2]).toInt();
    std::optional<qint32> receiver;
    if (argc > 3) {
        receiver = QString::fromLatin1(argv[3]).toInt();
    }
    std::printf("ready\n");
    std::fflush(stdout);
    const bool deleted = gDBase.RunAsOneUnit([&] { DeleteEmployee(id, receiver); });
    return deleted ? 0 : 1;
}
