#include "data/session.h"

#include "data/dbase.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/ui.h"

rt::Array<UserEntry> gUsers;
qint16 gUserCount = 0;
QString gDatabasePath;
rt::Variant gLogonTime;
bool gWatchdogOff = false;

namespace {

constexpr qint16 kOpensBetweenLooks = 50;

qint16 nCheckCount = 0;
bool bTerminated = false;

}  // namespace

void SessionCheck() {
    nCheckCount = rt::CInt(nCheckCount + 1);
    if (gWatchdogOff) {
        return;
    }
    if (bTerminated) {
        ShowIdle();
        // The words stand as the suite has always shown them.
        ShowMsg(QStringLiteral(
            "You're logon has been terminated by another user.  Please press OK until you no "
            "longer receive this message and then exit the application."));
        return;
    }
    if (!gLogonTime.isDate() || nCheckCount <= kOpensBetweenLooks) {
        return;
    }
    nCheckCount = 0;
    auto rs =
        gDBase.OpenRecordset("SELECT lt FROM rts WHERE uid = " + QString::number(gUsers(0).id));
    if (rs->RecordCount() == 0) {
        bTerminated = true;
        return;
    }
    rs->MoveFirst();
    const rt::Variant lt = rs->Cols("lt");
    if (lt.isDate() && rt::CDate(lt) == rt::CDate(gLogonTime)) {
        rs->CloseRS();
    } else {
        bTerminated = true;  // another logon of the same employee replaced the row
    }
}

void ResetSessionCheck() {
    nCheckCount = 0;
    bTerminated = false;
}
