#pragma once

#include <QString>

#include <functional>

namespace installer {

// Copies a whole database into a new one, between any two backends (a file and a database on
// a server, in practice): every table with its rows, every id and the position of every counter,
// values exactly. A target that exists and holds tables is refused, and nothing is changed; a
// target made here and not finished is removed. Progress goes to `progress` as it goes. At the
// end the row count of every table is checked on both sides.
void copyDatabase(const QString& source, const QString& target,
                  const std::function<void(const QString&)>& progress);

}  // namespace installer
