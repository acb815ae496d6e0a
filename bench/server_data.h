#pragma once

#include <QString>

// The benchmark databases on a PostgreSQL server, so that the cost of the server beside the
// embedded engine is known. libpq finds the server through the PG* environment, as scripts/bench
// sets it when it starts a throwaway one.
namespace bench {

bool serverIsThere();

// The databases of bench_data.h copied onto the server, with every id and value, once a run.
QString serverDirectoryDatabase(int employees);
QString serverDeletionDatabase(int ownedRows);

// A fresh database on the server made from `source` as a template: a deletion starts from the
// same rows each time without copying them row by row.
QString freshServerCopy(const QString& source, const QString& name);

}  // namespace bench
