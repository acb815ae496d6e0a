// Whole processes: the console's start up to its logon window beside a bare Qt program showing a
// dialog, and the peak resident memory of a console that logged on and filled its list beside a
// process that only starts Qt and opens the database.

#include "bench_data.h"
#include "benchmarks.h"

#include "settings/settings_file.h"

#include <QFileInfo>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

extern char** environ;

#ifndef ORVANE_BENCH_CONSOLE
#define ORVANE_BENCH_CONSOLE "orvane-bench-console"
#endif
#ifndef ORVANE_BENCH_BARE_QT
#define ORVANE_BENCH_BARE_QT "orvane-bench-bare-qt"
#endif

namespace bench {

QString consoleProgram() {
    return QStringLiteral(ORVANE_BENCH_CONSOLE);
}

QString bareQtProgram() {
    return QStringLiteral(ORVANE_BENCH_BARE_QT);
}

namespace {

using Clock = std::chrono::steady_clock;

struct Finished {
    int status = -1;  // the exit status; -1 when the process didn't exit by itself
    std::string output;
    double seconds = 0;
};

// Starts the program with `mode` in ORVANE_BENCH_MODE and waits for it; its output is kept when
// asked for, else dropped with its errors.
Finished runProgram(const QString& program, const std::vector<std::string>& arguments,
                    const std::string& mode, bool keepOutput) {
    std::vector<std::string> environment;
    for (char** entry = environ; *entry; ++entry) {
        if (std::strncmp(*entry, "ORVANE_BENCH_MODE=", 18) != 0) {
            environment.emplace_back(*entry);
        }
    }
    environment.push_back("ORVANE_BENCH_MODE=" + mode);
    std::vector<char*> envp;
    for (std::string& entry : environment) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);
    const std::string path = program.toStdString();
    std::vector<std::string> args{path};
    args.insert(args.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& arg : args) {
        argv.push_back(arg.data());
    }
    argv.push_back(nullptr);

    int output[2] = {-1, -1};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    if (keepOutput && pipe(output) == 0) {
        posix_spawn_file_actions_adddup2(&actions, output[1], 1);
        posix_spawn_file_actions_addclose(&actions, output[0]);
    } else {
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    }

    Finished finished;
    const auto start = Clock::now();
    pid_t child = -1;
    const int spawned =
        posix_spawn(&child, path.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (output[1] >= 0) {
        close(output[1]);
    }
    if (spawned != 0) {
        if (output[0] >= 0) {
            close(output[0]);
        }
        return finished;
    }
    if (output[0] >= 0) {
        char buffer[4096];
        ssize_t n;
        while ((n = read(output[0], buffer, sizeof buffer)) > 0) {
            finished.output.append(buffer, size_t(n));
        }
        close(output[0]);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    finished.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    finished.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return finished;
}

// The console child finds its database and the logon in the settings, as a returning user's
// console does; its section is named after the folder the child finds itself in, links resolved.
void rememberForConsoleChild(const QString& database) {
    const QString section = FolderSection(QFileInfo(consoleProgram()).canonicalPath());
    WriteIni(QStringLiteral("Database"), section, database);
    WriteIni(QStringLiteral("LG"), section, kAdministratorLogon);
    WriteIni(QStringLiteral("WP"), section, QString());
}

void startProgram(benchmark::State& state, const QString& program,
                  const std::string& mode = "start") {
    rememberForConsoleChild(directoryDatabase(int(state.range(0))));
    for (auto _ : state) {
        const Finished finished = runProgram(program, {}, mode, false);
        if (finished.status != 0) {
            state.SkipWithError("the program didn't reach its window");
            return;
        }
        state.SetIterationTime(finished.seconds);
    }
}

// The value of "key value" in the child's report.
double reported(const std::string& output, const std::string& key) {
    const size_t at = output.find(key + " ");
    return at == std::string::npos ? -1 : std::stod(output.substr(at + key.size() + 1));
}

void peakMemory(benchmark::State& state, bool console) {
    const int employees = int(state.range(0));
    const QString database = directoryDatabase(employees);
    rememberForConsoleChild(database);
    double peak = 0;
    double rows = 0;
    for (auto _ : state) {
        const Finished finished =
            console ? runProgram(consoleProgram(), {}, "memory", true)
                    : runProgram(bareQtProgram(), {database.toStdString()}, "memory", true);
        const double kilobytes = reported(finished.output, "VmHWM");
        if (finished.status != 0 || kilobytes < 0) {
            state.SkipWithError("the child reported no peak");
            return;
        }
        peak = std::max(peak, kilobytes / 1024);
        rows = reported(finished.output, "rows");
        state.SetIterationTime(finished.seconds);
    }
    state.counters["peak_MB"] = peak;
    if (console) {
        state.counters["rows"] = rows;
        if (rows != employees) {
            state.SkipWithError("the console's list doesn't hold every employee");
        }
    }
}

}  // namespace

void registerProcessBenchmarks(const Plan& plan) {
    const int size = plan.memorySize;
    benchmark::RegisterBenchmark(
        "start/console", [](benchmark::State& state) { startProgram(state, consoleProgram()); })
        ->Arg(size)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(20);
    benchmark::RegisterBenchmark(
        "start/bare_qt", [](benchmark::State& state) { startProgram(state, bareQtProgram()); })
        ->Arg(size)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(20);
    // A window with any text starts the font database, which the empty dialog never does.
    benchmark::RegisterBenchmark(
        "start/bare_qt_text",
        [](benchmark::State& state) { startProgram(state, bareQtProgram(), "start-text"); })
        ->Arg(size)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(20);
    benchmark::RegisterBenchmark("memory/console",
                                 [](benchmark::State& state) { peakMemory(state, true); })
        ->Arg(size)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(3);
    benchmark::RegisterBenchmark("memory/baseline",
                                 [](benchmark::State& state) { peakMemory(state, false); })
        ->Arg(size)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(3);
}

}  // namespace bench
