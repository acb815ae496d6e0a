// The employee deletion through the engine beside SQLite running the same statements, each time
// on a fresh copy of the database.

#include "bench_data.h"
#include "bench_session.h"
#include "benchmarks.h"
#include "raw_sqlite.h"
#include "server_data.h"

#include "data/dbase.h"
#include "directory/employee_deletion.h"
#include "platform/convert.h"
#include "platform/engine/engine.h"

#include <QDir>
#include <QFile>

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <map>
#include <optional>

namespace bench {

std::map<std::string, std::string>& deletionOutcomes();

namespace {

using Clock = std::chrono::steady_clock;

std::optional<qint32> receiverFor(bool handOver) {
    return handOver ? std::optional<qint32>(kReceivingEmployee) : std::nullopt;
}

// The statements DeleteEmployee runs, in its order, from the functions it builds them with.
std::vector<std::string> deletionStatements(bool handOver) {
    const QString id = QString::number(kDeletedEmployee);
    QStringList statements = PersonalStatements(id);
    statements += handOver ? HandOverStatements(id, QString::number(kReceivingEmployee))
                           : AllDataStatements(id);
    statements += ClosingStatements(id);
    std::vector<std::string> result;
    for (const QString& statement : statements) {
        result.push_back(statement.toStdString());
    }
    return result;
}

// The deletion database as it was made, on the embedded engine or on the server.
QString freshCopy(int ownedRows, bool onServer) {
    if (onServer) {
        return freshServerCopy(serverDeletionDatabase(ownedRows),
                               QStringLiteral("orvane_bench_deletion_work"));
    }
    const QString copy = QDir(dataFolder()).filePath(QStringLiteral("deletion-work.mdb"));
    QFile::remove(copy);
    QFile::remove(copy + "-journal");
    if (!QFile::copy(deletionDatabase(ownedRows), copy)) {
        throw std::runtime_error("cannot copy the deletion database");
    }
    return copy;
}

qint64 countOf(engine::Database& db, const QString& sql) {
    return qint64(rt::CDbl(db.openRecordset(sql)->field(0).value()));
}

// What the deletion left, to check that every side did the same.
std::string outcome(const QString& location) {
    const auto db = engine::openDatabase(location);
    std::string result;
    for (const char* table :
         {"users",    "extaccess", "udfs",     "reminder", "billcode", "options",  "auto",
          "autostep", "budgets",   "busdev",   "reports",  "rptcntls", "modeling", "reflib",
          "lists",    "listflds",  "listmmbr", "listudf",  "clients",  "clntudf",  "clntudf2",
          "history",  "files",     "acctudf",  "projudf",  "RelDocs",  "RelPple",  "balance",
          "trans",    "billsetup", "funds",    "charges",  "invoice",  "disburse"}) {
        result += std::string(table) + "=" +
                  std::to_string(countOf(*db, QStringLiteral("SELECT count(*) FROM ") + table)) +
                  " ";
    }
    for (const char* table : {"clients", "invoice", "charges", "lists", "reflib"}) {
        result += std::string(table) + ".received=" +
                  std::to_string(countOf(*db, QStringLiteral("SELECT count(*) FROM %1 WHERE "
                                                             "userid = %2")
                                                  .arg(QLatin1String(table))
                                                  .arg(kReceivingEmployee))) +
                  " ";
    }
    return result;
}

std::string caseName(benchmark::State& state, bool handOver, const char* side) {
    return std::string(handOver ? "deletion_handover" : "deletion_all") + "/" + side + "/" +
           std::to_string(state.range(0));
}

void deleteThroughEngine(benchmark::State& state, bool handOver, bool onServer) {
    const int ownedRows = int(state.range(0));
    QString copy;
    for (auto _ : state) {
        copy = freshCopy(ownedRows, onServer);
        gDBase.theDb = engine::openDatabase(copy);
        ui().messages.clear();
        const auto start = Clock::now();
        const bool done = gDBase.RunAsOneUnit(
            [handOver] { DeleteEmployee(kDeletedEmployee, receiverFor(handOver)); });
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        endSession();
        if (!done) {
            state.SkipWithError("the deletion failed");
            return;
        }
    }
    state.counters["owned_rows"] = double(ownedRowsOf(ownedRows));
    deletionOutcomes()[caseName(state, handOver, onServer ? "server" : "console")] = outcome(copy);
    if (!onServer) {
        QFile::remove(copy);
    }
}

void deleteRaw(benchmark::State& state, bool handOver) {
    const int ownedRows = int(state.range(0));
    const std::vector<std::string> statements = deletionStatements(handOver);
    QString copy;
    for (auto _ : state) {
        copy = freshCopy(ownedRows, false);
        raw::Database db(copy.toStdString());
        const auto start = Clock::now();
        try {
            db.exec("BEGIN");
            for (const std::string& statement : statements) {
                db.exec(statement);
            }
            db.exec("COMMIT");
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
            return;
        }
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
    state.counters["owned_rows"] = double(ownedRowsOf(ownedRows));
    state.counters["statements"] = double(statements.size());
    deletionOutcomes()[caseName(state, handOver, "raw")] = outcome(copy);
    QFile::remove(copy);
}

}  // namespace

std::map<std::string, std::string>& deletionOutcomes() {
    static std::map<std::string, std::string> outcomes;
    return outcomes;
}

void registerDeletionBenchmarks(const Plan& plan) {
    for (int size : plan.deletionSizes) {
        const int iterations = size >= 1000000 ? 3 : 5;
        const auto timed = [&](const std::string& name,
                               std::function<void(benchmark::State&)> run) {
            benchmark::RegisterBenchmark(name.c_str(), std::move(run))
                ->Arg(size)
                ->Unit(benchmark::kMillisecond)
                ->UseManualTime()
                ->Iterations(iterations);
        };
        for (bool handOver : {true, false}) {
            const std::string name = handOver ? "deletion_handover" : "deletion_all";
            timed(name + "/console", [handOver](benchmark::State& state) {
                deleteThroughEngine(state, handOver, false);
            });
            // A million rows copied onto the server would cost more than the run measures.
            if (serverIsThere() && size < 1000000) {
                timed(name + "/server", [handOver](benchmark::State& state) {
                    deleteThroughEngine(state, handOver, true);
                });
            }
            timed(name + "/raw",
                  [handOver](benchmark::State& state) { deleteRaw(state, handOver); });
        }
    }
}

}  // namespace bench
