#pragma once

// The database backends the engine's conformance runs on. SQLite needs nothing but a folder;
// PostgreSQL needs a server, which scripts/test starts for the length of the run and which
// libpq finds through the PG* environment variables.

#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace testing_support {

enum class Backend { Sqlite, Postgresql };

// Names the instances of a suite by backend, so that a case reads as Prefix/Suite.Case/Postgresql.
std::string backendName(const testing::TestParamInfo<Backend>& info);

// Whether this run has a PostgreSQL server to test against.
bool postgresqlServerIsThere();

// Both, always: a run without a server lists the PostgreSQL cases too, and their fixtures skip
// them (GTEST_SKIP in SetUp when !postgresqlServerIsThere()), so that what a run covers never
// depends on whether a server was there when its tests were listed.
std::vector<Backend> conformanceBackends();

// Whether a case on that backend can't run here: PostgreSQL in a run without a server. Its
// fixture's SetUp skips it with kNoServer.
bool lacksServer(Backend backend);
inline constexpr const char* kNoServer = "no PostgreSQL server for this run";

// A fixture's cases on each backend of the conformance; the fixture has a `backend` member that
// says where its databases are made.
template <class Fixture>
class OnEveryBackend : public Fixture, public ::testing::WithParamInterface<Backend> {
public:
    OnEveryBackend() { this->backend = this->GetParam(); }
};

// Where engine::createDatabase should make a fresh database: a file in `dir` for SQLite, a
// database not yet on the test server for PostgreSQL. `stem` only makes the name recognisable.
QString newDatabaseLocation(Backend backend, const QTemporaryDir& dir, const QString& stem);

}  // namespace testing_support

// Runs the cases of a suite made with OnEveryBackend on each backend.
#define ORVANE_ON_EVERY_BACKEND(Suite)                                                    \
    INSTANTIATE_TEST_SUITE_P(EveryBackend, Suite,                                         \
                             ::testing::ValuesIn(testing_support::conformanceBackends()), \
                             testing_support::backendName)
