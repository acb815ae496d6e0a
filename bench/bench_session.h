#pragma once

#include "platform/scripted_ui.h"

#include <QString>

#include <memory>

class frmAdmin;

// A console run in the benchmark's own process, through the scripted seam: a message box answers
// its default and a modal window runs what the benchmark queued for it.
namespace bench {

platform::ScriptedUi& ui();

// What a logon through the logon window made of the run.
struct Logon {
    bool ok = false;
    QString failure;          // the last message shown, when the logon failed
    double milliseconds = 0;  // from the logon window's OK to the filled console
};

// The administrator types the logon and the password into the logon window and presses OK; the
// console logs on, admits the administrator and fills its employee list.
Logon logOnConsole(frmAdmin& console, const QString& database);

// A session as a logon leaves it, made without the logon: for sizes at which the logon itself
// fails, so that what follows it can still be measured.
void openSessionWithoutLogon(const QString& database);

// Clears what a run leaves in the process: the open database, the session, the check counter.
void endSession();

// A console on the database, logged on (or, failing that, on a session made without the logon),
// its employee list filled; the run ends with it.
class ConsoleRun {
public:
    explicit ConsoleRun(const QString& database);
    ~ConsoleRun();
    ConsoleRun(const ConsoleRun&) = delete;
    ConsoleRun& operator=(const ConsoleRun&) = delete;

    frmAdmin& console() { return *console_; }
    // Empty after a good logon; else why the session was made without it.
    QString logonFailure() const { return logonFailure_; }

private:
    std::unique_ptr<frmAdmin> console_;
    QString logonFailure_;
};

}  // namespace bench
