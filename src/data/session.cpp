#include "data/session.h"

rt::Array<UserEntry> gUsers;
qint16 gUserCount = 0;
QString gDatabasePath;
rt::Variant gLogonTime;
bool gWatchdogOff = false;

void SessionCheck() {
    // The watchdog over rts joins here with the session record; until then an open looks at
    // nothing further.
}
