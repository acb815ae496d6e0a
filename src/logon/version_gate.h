#pragma once

#include "data/recset.h"
#include "platform/engine/engine.h"

#include <QString>

#include <memory>

// The one database version this program opens.
constexpr float kDatabaseVersion = 6.5f;

// The company's details, copied from sysinfo at logon.
extern QString gCompanyName;
extern QString gCompanyPhone;
extern QString gCompanyFax;
extern QString gDisclaimer;
extern QString gCompanyEmail;
extern QString gCompanyWebsite;
extern QString gCompanyAddress;
extern bool gIsReplica;  // read at logon, used nowhere

// Refuses a database of any other version, with the message that tells the user what to do, and
// copies the company's details. Hands back an open cursor on sysinfo on its first row, which the
// caller reads further and closes. A failure shows the runtime's text and gives False.
bool VerifyOnLogon(std::unique_ptr<RecSet>& rsOut);

// Whether the database's property LSIsReplica exists and equals True.
bool IsReplica(engine::Database& db);

// Reads the company's details from the sysinfo row into their globals.
void ReadCompanyDetails(RecSet& rs);
