#pragma once

#include <QString>

#include <vector>

// The access level editor's reading and writing of the levels in the sysinfo row, and the rights
// its two lists show. The level in hand is the catalogue state of right_catalogue.h.

constexpr int kLevelNameLength = 25;
// The editor writes positions 0 to 244 only; the stored text ends there.
constexpr int kStoredRights = 245;
// What an emptied name box falls back to; from then on it is a name like any other.
inline const QString kUnnamedLevel = QStringLiteral("Enter Name Here");

// Reloads the level names and the level of index `nLevel` (0 to 9) from the sysinfo row.
void ReadLevel(qint16 nLevel);
// The catalogued rights of group `nGroup` by ascending position; -1 gives the groups themselves.
std::vector<qint16> RightsOfGroup(qint16 nGroup);
// The rights in hand as the editor stores them: "1" or "0" for each of the first 245 positions.
QString LevelTextOfRights();
// Stores the rights in hand and `sName` as the level of index `nLevel`, and takes both as the
// level in hand's text and name.
void WriteLevel(qint16 nLevel, const QString& sName);
