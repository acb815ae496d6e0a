#pragma once

#include <QString>

#include <cstdint>

// The databases the benchmarks run on: made by the installer, then filled in bulk with raw SQLite
// in one transaction. Each is kept by size in the data folder, so a rerun only copies or opens.
namespace bench {

// The administrator the benchmarks log on as; the installer's first user, renamed.
inline constexpr std::int32_t kAdministratorId = 1;
inline const QString kAdministratorLogon = QStringLiteral("admin");
inline const QString kAdministratorPassword = QStringLiteral("orvane");

// The folder the generated databases are kept in: $ORVANE_BENCH_DATA, else the build's.
QString dataFolder();

// A directory of `employees` employees (the administrator among them), a tenth as many
// workgroups and a tenth as many equipment, their extaccess links and a mix of rts rows.
QString directoryDatabase(int employees);
// Counts of what directoryDatabase made, for checks.
int workgroupCount(int employees);
// The id of the workgroup whose member lists the editor benchmarks show: one in the middle.
std::int32_t sampleWorkgroup(int employees);

// A directory of 1,000 employees in which one employee owns about `ownedRows` rows over every
// table an employee owns rows in, beside a tenth as many rows owned by others.
QString deletionDatabase(int ownedRows);
inline constexpr std::int32_t kDeletedEmployee = 2;
inline constexpr std::int32_t kReceivingEmployee = 3;
// The rows the deleted employee owns in that database, as counted when it was made.
std::int64_t ownedRowsOf(int ownedRows);

}  // namespace bench
