#pragma once

#include "legacy_source.h"

#include <QString>

#include <functional>
#include <vector>

namespace installer {

struct ImportedTable {
    QString name;
    qint64 rows = 0;
};

// Makes a database at `target` (a new one, or an empty one) holding every table of the legacy
// source with every row, values exactly. A table the suite knows is made as the installer makes
// it, with the columns the legacy table has beyond ours added; another as the legacy file
// declares it. Counters go on after the highest number imported. Progress goes to `progress`;
// on any failure nothing is left at `target`. Gives each table with its row count.
std::vector<ImportedTable> importDatabase(LegacySource& source, const QString& target,
                                          const std::function<void(const QString&)>& progress);

}  // namespace installer
