#include "logon/logon_state.h"

QString gServer;
QString gLogon;
QString gPassword;
qint16 gAccessLevel = 0;
qint16 gFSLevel = 0;
