#pragma once

#include "data/recset.h"
#include "platform/engine/engine.h"

#include <QSet>
#include <QString>

#include <functional>
#include <memory>

// The one open database of a run. All SQL passes through OpenRecordset and Execute; every
// cursor opened is a RecSet, and every open runs the session check.
class DBase {
public:
    void Execute(const QString& sql);
    // Closes the database, ignoring any failure, so it may run on a handle that never opened.
    void CloseDB();
    std::unique_ptr<RecSet> OpenRecordset(const QString& sql);
    // Opens the file at that path and runs the first-run step; shows the failure and gives
    // False when either fails.
    bool DBInit(const QString& localDBS);
    // Provisions a new installation at its first open, from temp.tmp in the program folder;
    // does nothing where that file holds no logon.
    void Check1stRun();
    // Runs a command that writes more than one statement as one unit: a failure undoes all it
    // wrote, shows the engine's message and gives False, and the administrator may try again.
    bool RunAsOneUnit(const std::function<void()>& command);
    // Runs the reads of many rows under one read lock, so that they come from one moment and
    // the lock isn't taken and dropped for every row. Nothing may be written meanwhile.
    void ReadTogether(const std::function<void()>& reads);
    // The "id" column of every row of the query, read together: one query answers "is this
    // entry among them" for a whole list, where a search of a cursor per entry would take one
    // pass each.
    QSet<qint32> IdsOf(const QString& sql);

    std::unique_ptr<engine::Database> theDb;
    // Shows the first run's progress in the caption of the logon window, which stands above
    // this library: the window sets it while it exists and clears it when it goes.
    std::function<void(const QString& caption)> showCaption;

private:
    engine::Database& db() const;
};

extern DBase gDBase;
