// The PostgreSQL cases run only where there is a server, so a run that needs them and has none
// must say so rather than pass on SQLite alone.

#include "backends.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <libpq-fe.h>

#include <memory>
#include <string>

namespace {

using Connection = std::unique_ptr<PGconn, decltype(&PQfinish)>;

// The server's error for the statement, empty when it ran.
std::string errorOf(PGconn* connection, const std::string& sql) {
    PGresult* result = PQexec(connection, sql.c_str());
    const ExecStatusType status = PQresultStatus(result);
    PQclear(result);
    return status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK ? ""
                                                                   : PQerrorMessage(connection);
}

TEST(PostgresqlServer, IsThereWhenTheRunNeedsIt) {
    if (!testing_support::postgresqlServerIsThere()) {
        if (!qEnvironmentVariableIsEmpty("CI")) {
            FAIL() << "no PostgreSQL server for this CI run (PGHOST is not set): its cases would "
                      "not run; scripts/test starts one";
        }
        GTEST_SKIP() << "no PostgreSQL server for this run: its cases are skipped; scripts/test "
                        "starts one";
    }

    // The maintenance database, so that the fresh one is nobody's current database when dropped.
    Connection maintenance(PQconnectdb("dbname=postgres"), &PQfinish);
    ASSERT_EQ(PQstatus(maintenance.get()), CONNECTION_OK) << PQerrorMessage(maintenance.get());

    // The location the conformance cases hand the engine, awkward stem and all, must be one
    // libpq opens with nothing but the environment.
    QTemporaryDir dir;
    const QString location = testing_support::newDatabaseLocation(
        testing_support::Backend::Postgresql, dir, QStringLiteral("Server Check-1"));
    const std::string name = location.section(u'/', -1).toStdString();
    ASSERT_EQ(errorOf(maintenance.get(), "CREATE DATABASE " + name), "");
    {
        Connection fresh(PQconnectdb(location.toUtf8().constData()), &PQfinish);
        EXPECT_EQ(PQstatus(fresh.get()), CONNECTION_OK) << PQerrorMessage(fresh.get());
        // The engine relies on citext, which not every server has installed.
        if (PQstatus(fresh.get()) == CONNECTION_OK) {
            EXPECT_EQ(errorOf(fresh.get(), "CREATE EXTENSION IF NOT EXISTS citext"), "");
        }
    }
    EXPECT_EQ(errorOf(maintenance.get(), "DROP DATABASE " + name), "");
}

}  // namespace
