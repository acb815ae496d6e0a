#pragma once

#include <QString>
#include <QStringList>

// The dialect's functions as a PostgreSQL server runs them, for databases on a server. Each gives
// what the embedded engine's callback of the same name gives for the values a server keeps: dates
// as day serials (double precision), booleans as -1 and 0, texts as text or citext.
namespace engine::pg {

// The CREATE OR REPLACE FUNCTION statements that define them in a database, in an order that
// runs: helpers come before the functions that call them. The texts need the ICU collation
// "und-x-icu" for their case mappings, so that a database's own locale doesn't change them.
QStringList functionDefinitions();

// A failure raised by these functions carries its number in its SQLSTATE: "OV" and three digits
// for a runtime failure ("OV005"), "O" and four for the engine's own ("O3075"); the message is
// the failure's text. The number of such a state, or 0 for a state of the server's own.
int errorNumber(const QString& sqlState);

}  // namespace engine::pg
