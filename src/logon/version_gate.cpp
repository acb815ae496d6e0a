#include "logon/version_gate.h"

#include "data/dbase.h"

bool VerifyOnLogon(std::unique_ptr<RecSet>& rsOut) {
    // The test of the database's version and the company's details join here with the version
    // gate; until then every database that opens is taken.
    rsOut = gDBase.OpenRecordset(QStringLiteral("SELECT * FROM sysinfo"));
    rsOut->MoveFirst();
    return true;
}
