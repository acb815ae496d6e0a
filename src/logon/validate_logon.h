#pragma once

#include <QString>

// What logon validation needs of the logon window: its three boxes, read afresh at each use and
// given the focus after a failure, the password box's tick, and two of its commands.
class LogonWindow {
public:
    virtual ~LogonWindow() = default;
    virtual QString logonText() const = 0;
    virtual QString passwordText() const = 0;
    virtual QString databaseText() const = 0;
    virtual int savePasswordValue() const = 0;  // 1 keeps the password
    virtual void focusLogon() = 0;
    virtual void focusPassword() = 0;
    virtual void focusDatabase() = 0;
    virtual void ShowDb() = 0;
    virtual void cmdCancel_Click() = 0;
};

// Turns the logon window's contents into a session: checks the typed values, opens the
// database, passes the version gate, proves the credentials, fills the session state and
// remembers the settings. False, with the message shown, when a check fails. A logon with
// both flags False also registers a live session in rts.
bool ValidateLogon(LogonWindow& frm, const QString& sServer, bool bIsDocsIN, bool bIsAdminIn);
