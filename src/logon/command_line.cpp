#include "logon/command_line.h"

namespace {
QString commandLine;
}

QString CommandLine() {
    return commandLine;
}

void SetCommandLine(const QString& line) {
    commandLine = line;
}

QString GetCommandSwitch(const QString& sSwitch) {
    const QString line = CommandLine();
    const qsizetype p = line.indexOf(sSwitch, 0, Qt::CaseInsensitive);
    if (p < 0) {
        return {};
    }
    const bool toEnd = sSwitch.compare(QLatin1String("-c"), Qt::CaseInsensitive) == 0 ||
                       sSwitch.compare(QLatin1String("-d"), Qt::CaseInsensitive) == 0;
    // The blank is looked for from the switch's first character on, so a blank right behind
    // the switch gives "".
    const qsizetype blank = toEnd ? -1 : line.indexOf(' ', p);
    const qsizetype start = p + 2;
    if (blank >= 0) {
        return line.mid(start, std::max<qsizetype>(blank - start, 0));
    }
    return line.mid(start);
}
