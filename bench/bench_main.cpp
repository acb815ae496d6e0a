// The benchmarks of the console against baselines measured in the same run, then a summary of
// the ratios. `--quick` leaves out the biggest sizes and runs fewer reloads.

#include "bench_data.h"
#include "bench_session.h"
#include "benchmarks.h"

#include "platform/engine/engine.h"
#include "platform/os.h"
#include "settings/settings_file.h"

#include <QApplication>
#include <QLocale>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace bench {
std::map<std::string, std::string>& deletionOutcomes();
}

namespace {

struct Result {
    double milliseconds = 0;  // per iteration
    std::map<std::string, double> counters;
    std::string error;
    std::string label;
};

// The console's table as Google Benchmark prints it, with every run kept for the summary.
class SummaryReporter : public benchmark::ConsoleReporter {
public:
    explicit SummaryReporter(OutputOptions options) : ConsoleReporter(options) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration) {
                continue;
            }
            Result result;
            if (run.iterations > 0) {
                result.milliseconds = run.real_accumulated_time / double(run.iterations) * 1000;
            }
            for (const auto& [name, counter] : run.counters) {
                result.counters[name] = counter.value;
            }
            if (run.error_occurred) {
                result.error = run.error_message;
            }
            result.label = run.report_label;
            results[run.run_name.function_name + "/" + run.run_name.args] = result;
        }
    }

    std::map<std::string, Result> results;
};

std::string figure(double value, const char* unit) {
    const char* gap = std::strcmp(unit, "x") == 0 ? "" : " ";
    char text[64];
    if (value >= 100) {
        std::snprintf(text, sizeof text, "%.0f%s%s", value, gap, unit);
    } else if (value >= 10) {
        std::snprintf(text, sizeof text, "%.1f%s%s", value, gap, unit);
    } else {
        std::snprintf(text, sizeof text, "%.2f%s%s", value, gap, unit);
    }
    return text;
}

class Summary {
public:
    explicit Summary(const std::map<std::string, Result>& results) : results_(results) {}

    void header() {
        std::printf("\nSummary: the console against its baseline, measured in this run\n");
        row("case", "size", "Orvane", "baseline", "ratio", "goal", "");
        std::printf("%s\n", std::string(100, '-').c_str());
    }

    // A case timed on both sides; the goal, if any, is the highest ratio aimed at.
    void ratio(const std::string& title, const std::string& kase, const std::string& console,
               const std::string& baseline, int size, std::optional<double> goal) {
        const Result* ours = find(kase + "/" + console + "/" + std::to_string(size));
        const Result* theirs = find(kase + "/" + baseline + "/" + std::to_string(size));
        if (!ours || !theirs) {
            return;
        }
        std::string goalText = goal ? "at most " + figure(*goal, "x") : "";
        if (!ours->error.empty() || !theirs->error.empty()) {
            row(title, std::to_string(size), "error", "", "", goalText,
                ours->error.empty() ? theirs->error : ours->error);
            return;
        }
        const double r = ours->milliseconds / theirs->milliseconds;
        std::string note = goal ? (r <= *goal ? "met" : "not met") : "";
        if (!ours->label.empty()) {
            note += (note.empty() ? "" : "; ") + ours->label;
        }
        row(title, std::to_string(size), figure(ours->milliseconds, "ms"),
            figure(theirs->milliseconds, "ms"), figure(r, "x"), goalText, note);
    }

    void logon(int size, std::optional<double> goalMs) {
        const Result* ours = find("logon/console/" + std::to_string(size));
        if (!ours) {
            return;
        }
        const std::string goalText = goalMs ? "under " + figure(*goalMs, "ms") : "";
        if (!ours->error.empty()) {
            row("logon to a filled console", std::to_string(size), "error", "", "", goalText,
                ours->error);
            return;
        }
        row("logon to a filled console", std::to_string(size), figure(ours->milliseconds, "ms"), "",
            "", goalText, goalMs ? (ours->milliseconds < *goalMs ? "met" : "not met") : "");
    }

    void memory(int size, double goalMb) {
        const Result* ours = find("memory/console/" + std::to_string(size));
        const Result* theirs = find("memory/baseline/" + std::to_string(size));
        if (!ours || !theirs) {
            return;
        }
        const std::string goalText = "under " + figure(goalMb, "MB");
        if (!ours->error.empty() || !theirs->error.empty()) {
            row("peak resident memory after the fill", std::to_string(size), "error", "", "",
                goalText, ours->error.empty() ? theirs->error : ours->error);
            return;
        }
        const double peak = ours->counters.at("peak_MB");
        const double base = theirs->counters.at("peak_MB");
        row("peak resident memory after the fill", std::to_string(size), figure(peak, "MB"),
            figure(base, "MB"), figure(peak / base, "x"), goalText,
            peak < goalMb ? "met" : "not met");
    }

    void reloads(int size) {
        const Result* ours = find("reloads/console/" + std::to_string(size));
        if (!ours) {
            return;
        }
        if (!ours->error.empty()) {
            row("reloads of the employee list", std::to_string(size), "error", "", "", "no error",
                ours->error);
            return;
        }
        const double count = ours->counters.at("reloads");
        const double errors = ours->counters.at("errors");
        char text[64];
        std::snprintf(text, sizeof text, "%.0f errors", errors);
        row(std::to_string(int(count)) + " reloads of the employee list", std::to_string(size),
            text, "", "", "no error",
            (errors == 0 ? "met" : "not met") +
                (ours->label.empty() ? std::string() : " (" + ours->label + ")"));
        row("  time per reload", "", figure(ours->milliseconds / count, "ms"), "", "", "", "");
        row("  resident memory kept by the reloads", "",
            figure(ours->counters.at("rss_growth_MB"), "MB"), "", "", "", "");
    }

    // Whether `side` left the rows the raw statements left.
    void deletionCheck(const std::string& kase, int size, const std::string& side = "console") {
        const auto& outcomes = bench::deletionOutcomes();
        const auto ours = outcomes.find(kase + "/" + side + "/" + std::to_string(size));
        const auto theirs = outcomes.find(kase + "/raw/" + std::to_string(size));
        if (ours == outcomes.end() || theirs == outcomes.end()) {
            return;
        }
        if (ours->second == theirs->second) {
            row("  rows left by both sides", "", "the same", "", "", "", "");
            return;
        }
        row("  rows left by both sides", "", "DIFFERENT", "", "", "", "");
        std::printf("    %s: %s\n    raw: %s\n", side.c_str(), ours->second.c_str(),
                    theirs->second.c_str());
    }

private:
    const Result* find(const std::string& name) const {
        const auto found = results_.find(name);
        return found == results_.end() ? nullptr : &found->second;
    }

    static void row(const std::string& title, const std::string& size, const std::string& ours,
                    const std::string& baseline, const std::string& ratio, const std::string& goal,
                    const std::string& note) {
        std::printf("%-38s %8s %11s %11s %7s %15s  %s\n", title.c_str(), size.c_str(), ours.c_str(),
                    baseline.c_str(), ratio.c_str(), goal.c_str(), note.c_str());
    }

    const std::map<std::string, Result>& results_;
};

// The offscreen platform's note at every window shown says nothing about the benchmarks.
void quietOffscreenNotes(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (text.contains(QLatin1String("propagateSizeHints"))) {
        return;
    }
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
}

}  // namespace

int main(int argc, char** argv) {
    bool quick = false;
    std::vector<char*> arguments;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            quick = true;
        } else {
            arguments.push_back(argv[i]);
        }
    }
    int count = int(arguments.size());
    arguments.push_back(nullptr);

    // Settings of the benchmark's own, shared with the console children it starts.
    QTemporaryDir configHome;
    qputenv("XDG_CONFIG_HOME", configHome.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir runtimeDir;
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        qputenv("XDG_RUNTIME_DIR", runtimeDir.path().toUtf8());
    }
    qInstallMessageHandler(quietOffscreenNotes);
    QApplication app(count, arguments.data());
    QTemporaryDir programFolder;
    platform::setProgramFolder(programFolder.path());
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    gSystemDir = GetSystemDir();
    platform::setUi(&bench::ui());

    bench::Plan plan;
    plan.directorySizes =
        quick ? std::vector<int>{1000, 10000} : std::vector<int>{1000, 10000, 30000};
    plan.deletionSizes = quick ? std::vector<int>{100000} : std::vector<int>{100000, 1000000};
    plan.reloads = quick ? 100 : 1000;

    // Made before anything is timed, so the table isn't broken by the generation's notes.
    try {
        for (int size : plan.directorySizes) {
            bench::directoryDatabase(size);
        }
        for (int size : plan.deletionSizes) {
            bench::deletionDatabase(size);
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "cannot make the benchmark data: %s\n", e.what());
        return 1;
    }

    bench::registerDirectoryBenchmarks(plan);
    bench::registerDeletionBenchmarks(plan);
    bench::registerProcessBenchmarks(plan);

    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 1;
    }
    SummaryReporter reporter(isatty(STDOUT_FILENO) ? benchmark::ConsoleReporter::OO_Defaults
                                                   : benchmark::ConsoleReporter::OO_Tabular);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    Summary summary(reporter.results);
    summary.header();
    for (int size : plan.directorySizes) {
        summary.ratio("employee list fill", "fill", "console", "raw", size,
                      size == 10000 ? std::optional<double>(1.5) : std::nullopt);
    }
    for (int size : plan.directorySizes) {
        summary.ratio("  on PostgreSQL, against SQLite", "fill", "server", "console", size,
                      std::nullopt);
    }
    for (int size : plan.directorySizes) {
        summary.logon(size, size == 10000 ? std::optional<double>(100) : std::nullopt);
    }
    for (int size : plan.directorySizes) {
        summary.ratio("workgroup member lists (entry editor)", "member_lists", "console", "raw",
                      size, std::nullopt);
    }
    for (int size : plan.deletionSizes) {
        summary.ratio("employee deletion, hand-over", "deletion_handover", "console", "raw", size,
                      1.3);
        summary.deletionCheck("deletion_handover", size);
        summary.ratio("employee deletion, all data", "deletion_all", "console", "raw", size, 1.3);
        summary.deletionCheck("deletion_all", size);
        summary.ratio("  on PostgreSQL, against SQLite", "deletion_handover", "server", "console",
                      size, std::nullopt);
        summary.deletionCheck("deletion_handover", size, "server");
        summary.ratio("  on PostgreSQL, against SQLite", "deletion_all", "server", "console", size,
                      std::nullopt);
        summary.deletionCheck("deletion_all", size, "server");
    }
    summary.ratio("start to the logon window", "start", "console", "bare_qt", plan.memorySize, 1.3);
    summary.ratio("  against a dialog with text", "start", "console", "bare_qt_text",
                  plan.memorySize, std::nullopt);
    summary.memory(plan.memorySize, 80);
    summary.reloads(plan.reloadSize);
    return 0;
}
