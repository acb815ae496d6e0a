// The console's reads of the directory beside SQLite running the same statements.

#include "bench_data.h"
#include "bench_session.h"
#include "benchmarks.h"
#include "peak_memory.h"
#include "raw_sqlite.h"
#include "server_data.h"

#include "data/dbase.h"
#include "data/session.h"
#include "directory/frm_admin.h"
#include "directory/frm_employee.h"
#include "platform/rt_error.h"
#include "util/report_list.h"

#include <QListWidget>
#include <unordered_set>

#include <benchmark/benchmark.h>

#include <chrono>

namespace bench {

namespace {

void noteLogon(benchmark::State& state, const ConsoleRun& run) {
    if (!run.logonFailure().isEmpty()) {
        state.SetLabel("session made without the logon, which failed: " +
                       run.logonFailure().toStdString());
    }
}

// The console's fill on the embedded engine, or on the same rows copied onto a server.
void fillConsole(benchmark::State& state, bool onServer) {
    const int employees = int(state.range(0));
    ConsoleRun run(onServer ? serverDirectoryDatabase(employees) : directoryDatabase(employees));
    frmAdmin& console = run.console();
    int failures = 0;
    QString failure;
    for (auto _ : state) {
        // Each fill stands for the first of a run; the run-long count of opens is the reload
        // benchmark's to measure.
        ResetSessionCheck();
        try {
            console.LoadUserlist(0, console.rsEmployees);
        } catch (const rt::Error& e) {
            ++failures;
            failure = e.description();
        }
    }
    if (failures > 0) {
        state.SkipWithError(("the fill failed: " + failure).toUtf8().constData());
        return;
    }
    if (console.lstEmployees->rowCount() != employees) {
        state.SkipWithError("the list doesn't hold every employee");
    }
    state.counters["rows"] = console.lstEmployees->rowCount();
    noteLogon(state, run);
}

void fillRaw(benchmark::State& state) {
    const int employees = int(state.range(0));
    raw::Database db(directoryDatabase(employees).toStdString());
    size_t listed = 0;
    for (auto _ : state) {
        struct Row {
            std::vector<raw::Value> columns;
            std::string loggedIn;
        };
        std::vector<Row> list;
        // The statements the console runs: the entries, and who of them is logged in.
        for (auto& columns : db.rows("SELECT * FROM users WHERE type = 0 ORDER BY NAME")) {
            list.push_back({std::move(columns), {}});
        }
        std::unordered_set<long long> sessions;
        for (auto& columns :
             db.rows("SELECT id FROM users WHERE type = 0 AND id IN (SELECT uid FROM rts)")) {
            sessions.insert(raw::integerOf(columns[0]));
        }
        for (Row& row : list) {
            row.loggedIn = sessions.count(raw::integerOf(row.columns[0])) ? "Yes" : "No";
        }
        listed = list.size();
        benchmark::DoNotOptimize(list.data());
    }
    state.counters["rows"] = double(listed);
}

void logOn(benchmark::State& state) {
    const int employees = int(state.range(0));
    const QString database = directoryDatabase(employees);
    int rows = 0;
    for (auto _ : state) {
        auto console = std::make_unique<frmAdmin>();
        const Logon logon = logOnConsole(*console, database);
        rows = console->lstEmployees->rowCount();
        console->hide();
        console.reset();
        endSession();
        if (!logon.ok) {
            state.SkipWithError(("the logon failed: " + logon.failure).toUtf8().constData());
            return;
        }
        state.SetIterationTime(logon.milliseconds / 1000);
    }
    if (rows != employees) {
        state.SkipWithError("the list doesn't hold every employee");
    }
    state.counters["rows"] = rows;
}

void memberListsConsole(benchmark::State& state) {
    const int employees = int(state.range(0));
    ConsoleRun run(directoryDatabase(employees));
    auto cursor = gDBase.OpenRecordset("SELECT * FROM users WHERE id = " +
                                       QString::number(sampleWorkgroup(employees)));
    frmEmployee editor;
    qint16 type = 1;
    bool isNew = false;
    editor.ShowForm(type, *cursor, isNew);  // the window closes at once under the scripted seam
    for (auto _ : state) {
        editor.FillLists();
    }
    if (editor.lstExtended->count() != employees) {
        state.SkipWithError("the lists don't hold every employee");
    }
    state.counters["rows"] = editor.lstExtended->count();
    noteLogon(state, run);
}

void memberListsRaw(benchmark::State& state) {
    const int employees = int(state.range(0));
    raw::Database db(directoryDatabase(employees).toStdString());
    const std::string id = std::to_string(sampleWorkgroup(employees));
    const std::string queries[] = {
        "SELECT Name,id FROM users WHERE type = 0 AND id IN ( SELECT extid FROM extaccess WHERE "
        "userid = " +
            id + ") ORDER BY name",
        "SELECT Name,id FROM users WHERE type = 0 AND id <> " + id +
            " AND id NOT IN ( SELECT extid FROM extaccess WHERE userid = " + id + ") ORDER BY name",
    };
    size_t listed = 0;
    for (auto _ : state) {
        struct Item {
            std::string name;
            std::int64_t id;
            bool ticked;
        };
        std::vector<Item> items;
        for (int part = 0; part < 2; ++part) {
            for (auto& row : db.rows(queries[part])) {
                items.push_back({std::get<std::string>(row[0]), raw::integerOf(row[1]), part == 0});
            }
        }
        listed = items.size();
        benchmark::DoNotOptimize(items.data());
    }
    state.counters["rows"] = double(listed);
}

// The whole run's count of everything it does: reloads one after another in one session, as an
// administrator who keeps refreshing the list would.
void reloads(benchmark::State& state, int count) {
    const int employees = int(state.range(0));
    ConsoleRun run(directoryDatabase(employees));
    frmAdmin& console = run.console();
    int failures = 0;
    int wrongCounts = 0;
    QString firstFailure;
    const long residentBefore = statusKilobytes("VmRSS");
    for (auto _ : state) {
        for (int i = 0; i < count; ++i) {
            try {
                console.LoadUserlist(0, console.rsEmployees);
                if (console.lstEmployees->rowCount() != employees) {
                    ++wrongCounts;
                }
            } catch (const rt::Error& e) {
                if (failures++ == 0) {
                    firstFailure = QStringLiteral("reload %1: %2").arg(i + 1).arg(e.description());
                }
            } catch (const platform::RunEnded&) {
                if (failures++ == 0) {
                    firstFailure = QStringLiteral("reload %1 ended the run").arg(i + 1);
                }
            }
        }
    }
    // What the reloads kept of memory: a growing figure over more reloads is a leak.
    state.counters["rss_growth_MB"] = double(statusKilobytes("VmRSS") - residentBefore) / 1024;
    state.counters["reloads"] = count;
    state.counters["errors"] = failures + wrongCounts;
    if (!firstFailure.isEmpty()) {
        state.SetLabel(firstFailure.toStdString());
    } else {
        noteLogon(state, run);
    }
}

}  // namespace

void registerDirectoryBenchmarks(const Plan& plan) {
    for (int size : plan.directorySizes) {
        benchmark::RegisterBenchmark("fill/console",
                                     [](benchmark::State& state) { fillConsole(state, false); })
            ->Arg(size)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        if (serverIsThere()) {
            benchmark::RegisterBenchmark("fill/server",
                                         [](benchmark::State& state) { fillConsole(state, true); })
                ->Arg(size)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
        benchmark::RegisterBenchmark("fill/raw", fillRaw)
            ->Arg(size)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
    for (int size : plan.directorySizes) {
        benchmark::RegisterBenchmark("logon/console", logOn)
            ->Arg(size)
            ->Unit(benchmark::kMillisecond)
            ->UseManualTime()
            ->Iterations(5);
    }
    for (int size : plan.directorySizes) {
        benchmark::RegisterBenchmark("member_lists/console", memberListsConsole)
            ->Arg(size)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        benchmark::RegisterBenchmark("member_lists/raw", memberListsRaw)
            ->Arg(size)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
    const int count = plan.reloads;
    benchmark::RegisterBenchmark("reloads/console",
                                 [count](benchmark::State& state) { reloads(state, count); })
        ->Arg(plan.reloadSize)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->Iterations(1);
}

}  // namespace bench
