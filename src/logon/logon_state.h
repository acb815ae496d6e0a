#pragma once

#include <QString>

// What a good logon leaves behind for the rest of the run.
extern QString gServer;  // stored, never used to connect
extern QString gLogon;
extern QString gPassword;
extern qint16 gAccessLevel;  // 10 is the administrator level
extern qint16 gFSLevel;      // edition level of this session; 0 at logon

constexpr qint16 kAdministratorLevel = 10;
