#pragma once

#include "platform/array.h"
#include "platform/variant.h"

#include <QString>

// One directory entry that the session can reach; entry 0 of gUsers is the current user.
struct UserEntry {
    QString Name;
    qint32 id = 0;
    qint16 Type = 0;  // users.type
    bool bMember = false;
};

// The process-wide state that the record cursor and the session check read; written during
// logon and read-only afterwards.
extern rt::Array<UserEntry> gUsers;
extern qint16 gUserCount;
extern QString gDatabasePath;
extern rt::Variant gLogonTime;  // the lt of this session's rts row; Empty while none was written
extern bool gWatchdogOff;

// Runs after every open of a cursor, so that a running program notices when its session row
// was taken away or replaced: one look at rts every 51 opens, and from then on a message at every
// open. It counts every open of the run in 16 bits, also while the check is off, so the run's
// 32768th open fails with an overflow.
void SessionCheck();
// The check's counter and finding as at the start of a run.
void ResetSessionCheck();
