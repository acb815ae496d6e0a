#pragma once

#include <QString>

#include <vector>

namespace bench {

struct Plan {
    std::vector<int> directorySizes;  // employees
    std::vector<int> deletionSizes;   // rows the deleted employee owns
    int memorySize = 10000;
    int reloadSize = 10000;
    int reloads = 1000;
};

// Each case registers its console side and its baseline, named "<case>/<side>" with the size as
// the argument, so the summary can pair them.
void registerDirectoryBenchmarks(const Plan& plan);
void registerDeletionBenchmarks(const Plan& plan);
void registerProcessBenchmarks(const Plan& plan);

// Where the helper programs and the settings of the console child live.
QString consoleProgram();
QString bareQtProgram();

}  // namespace bench
