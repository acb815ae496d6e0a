#pragma once

#include <cstdio>
#include <cstring>

// A figure in kB from /proc/self/status, such as "VmHWM" (the peak resident set) or "VmRSS";
// -1 when it can't be read.
inline long statusKilobytes(const char* key) {
    std::FILE* status = std::fopen("/proc/self/status", "r");
    if (!status) {
        return -1;
    }
    const size_t length = std::strlen(key);
    long kilobytes = -1;
    char line[256];
    while (std::fgets(line, sizeof line, status)) {
        if (std::strncmp(line, key, length) == 0 && line[length] == ':') {
            std::sscanf(line + length + 1, "%ld", &kilobytes);
        }
    }
    std::fclose(status);
    return kilobytes;
}

// Prints the process's peak resident set as "VmHWM <kB>".
inline void printPeakMemory() {
    std::printf("VmHWM %ld\n", statusKilobytes("VmHWM"));
}
