#include "logon/validate_logon.h"

#include "access/right_catalogue.h"
#include "data/dbase.h"
#include "data/session.h"
#include "logon/logon_state.h"
#include "logon/version_gate.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/ui.h"
#include "settings/options.h"
#include "settings/settings_file.h"

namespace {

using platform::Msg::OKOnly;

const QString kLogonTitle = QStringLiteral("Logon");

// Registers this run as the employee's live session, replacing earlier ones if the user agrees.
bool registerSession(LogonWindow& frm, qint32 id) {
    const QString n = QString::number(id);
    auto rs = gDBase.OpenRecordset("SELECT * FROM rts WHERE uid = " + n);
    if (rs->RecordCount() > 0) {
        const int answer = ShowMsg(
            "The network shows you already logged on.  Do you wish to continue, terminating the "
            "previous logon?",
            platform::Msg::YesNo, QStringLiteral("Already Logged On"));
        if (answer == platform::Msg::No) {
            frm.cmdCancel_Click();
            return false;
        }
        rs->MoveFirst();
        while (!rs->Eof()) {
            rs->Delete();
            rs->MoveNext();
        }
    }
    rs->CloseRS();
    gLogonTime = rt::Variant::date(rt::Now());
    gDBase.Execute("INSERT INTO rts (lt, uid, fslevel) VALUES (CDATE('" + rt::CStr(gLogonTime) +
                   "')," + n + "," + QString::number(gFSLevel) + ")");
    return true;
}

// Everything the user has extended access to; the workgroups and equipment that hold extended
// access to the user; and everything a branch that the user reaches gives access to.
QString reachableEntriesQuery(const QString& n) {
    return "SELECT DISTINCT id,logon,password,name,acclevel,Num,type FROM users WHERE id <> " + n +
           " AND (id IN (SELECT extid FROM extaccess WHERE userid = " + n + ")" +
           " OR (id IN (SELECT userid FROM extaccess WHERE extid = " + n +
           ") AND type > 0 AND type < 3))" +
           " UNION SELECT DISTINCT id,logon,password,name,acclevel,Num,type FROM users WHERE id "
           "<> " +
           n + " AND id IN (SELECT extid FROM extaccess WHERE userid IN (" +
           " SELECT DISTINCT id FROM users WHERE (id IN " +
           "(SELECT extid FROM extaccess WHERE userid = " + n + ") AND type = 3)))" +
           " ORDER BY type,name";
}

void fillReachableEntries(qint32 userId) {
    const QString n = QString::number(userId);
    const bool accessAll = gRightValues(kRightAccessAllClients);
    // One read of the file: the rows are read at the open and not again at each visit.
    gDBase.ReadTogether([&] {
        std::unique_ptr<RecSet> list;
        QSet<qint32> memberships;
        if (accessAll) {
            list = gDBase.OpenRecordset("SELECT * FROM users WHERE id <> " + n + " ORDER BY name");
            // Whether an entry's id is among these says what a search of them for it would.
            memberships = gDBase.IdsOf(
                "SELECT * FROM users WHERE id IN (SELECT userid FROM extaccess WHERE extid = " + n +
                ") AND type > 0 AND type < 3");
        } else {
            list = gDBase.OpenRecordset(reachableEntriesQuery(n));
        }
        if (list->RecordCount() > 0) {
            list->MoveLast();
            list->MoveFirst();
            const int name = list->ColumnIndex(QStringLiteral("Name"));
            const int id = list->ColumnIndex(QStringLiteral("id"));
            const int type = list->ColumnIndex(QStringLiteral("Type"));
            while (!list->Eof()) {
                gUserCount = rt::CInt(gUserCount + 1);
                gUsers.redimPreserve(gUserCount);
                UserEntry& entry = gUsers(gUserCount - 1);
                entry.Name = rt::CStr(list->ColsAt(name));
                entry.id = rt::CLng(list->ColsAt(id));
                entry.Type = rt::CInt(list->ColsAt(type));
                if (entry.Type == 1) {
                    entry.bMember = accessAll ? memberships.contains(entry.id) : true;
                }
                list->MoveNext();
            }
        }
        list->CloseRS();
    });
}

}  // namespace

bool ValidateLogon(LogonWindow& frm, const QString& sServer, bool bIsDocsIN, bool bIsAdminIn) {
    if (frm.logonText().isEmpty()) {
        ShowMsg(QStringLiteral("You must enter a logon."), OKOnly, kLogonTitle);
        frm.focusLogon();
        return false;
    }
    // What keeps the logon safe between the quotes of the query below; the password never goes
    // into SQL.
    if (frm.logonText().contains('\'') || frm.logonText().contains('"')) {
        ShowMsg(QStringLiteral("Invalid logon character."), OKOnly, kLogonTitle);
        frm.focusLogon();
        return false;
    }
    if (frm.databaseText().isEmpty()) {
        ShowMsg(QStringLiteral("Invalid database."), OKOnly, QStringLiteral("Error"));
        frm.ShowDb();
        frm.focusDatabase();
        return false;
    }

    ShowBusy();
    gServer = sServer;
    if (!gDBase.DBInit(frm.databaseText())) {
        ShowIdle();
        frm.ShowDb();
        return false;
    }
    // A database that opened is remembered even when the logon that follows fails.
    WriteIni(QStringLiteral("Database"), ProgramSection(), frm.databaseText());
    WriteIni(QStringLiteral("Server"), ProgramSection(), sServer);
    std::unique_ptr<RecSet> rsSysinfo;
    if (!VerifyOnLogon(rsSysinfo)) {
        ShowIdle();
        End(platform::kExitFailure);
    }

    ShowBusy();
    auto rsUser = gDBase.OpenRecordset("SELECT * FROM users WHERE logon = '" + frm.logonText() +
                                       "' AND type = 0");
    if (!(rsUser->RecordCount() > 0)) {
        ShowMsg(QStringLiteral("You have entered an invalid logon name."), OKOnly, kLogonTitle);
        ShowIdle();
        frm.focusLogon();
        return false;
    }
    rsUser->MoveFirst();
    if (frm.passwordText() != rt::CStr(rsUser->Cols("Password"))) {
        ShowMsg(QStringLiteral("You have entered an invalid password."), OKOnly, kLogonTitle);
        ShowIdle();
        frm.focusPassword();
        return false;
    }
    gAccessLevel = rt::CInt(rsUser->Cols("accLevel"));
    gFSLevel = 0;
    const qint32 userId = rt::CLng(rsUser->Cols("id"));
    if (!bIsDocsIN && !bIsAdminIn && !registerSession(frm, userId)) {
        return false;
    }
    LoadAccessLevel(rt::CInt(rt::CInt(rsUser->Cols("accLevel")) - 1), *rsSysinfo);

    gUserCount = 1;
    gUsers.redim(gUserCount);
    gUsers(0).Name = rt::CStr(rsUser->Cols("Name"));
    gUsers(0).id = userId;
    gLogon = rt::CStr(rsUser->Cols("Logon"));
    gPassword = rt::CStr(rsUser->Cols("Password"));
    fillReachableEntries(userId);
    rsUser->CloseRS();
    rsSysinfo->CloseRS();
    // The options are the user's own, so their shared cursor opens here, once the user is known
    // and for the rest of the run; the option routines expect it open and don't open it.
    gOptionsRS = gDBase.OpenRecordset(QStringLiteral("SELECT * FROM options"));

    WriteIni(QStringLiteral("LG"), ProgramSection(), frm.logonText());
    WriteIni(QStringLiteral("WP"), ProgramSection(),
             frm.savePasswordValue() == 1 ? frm.passwordText() : QString());
    return true;
}
