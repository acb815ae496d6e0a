#pragma once

#include "data/recset.h"
#include "platform/array.h"

#include <QString>

// The catalogue of rights: which position of a level's text means which right. The numbers are
// a contract with every program that reads the same columns of sysinfo.

constexpr int kRightSlots = 255;
constexpr qint16 kRightAccessAllClients = 76;

extern rt::Array<QString> gLevelNames;  // 0 to 9; index + 1 is the level number
extern QString gLevelText;              // the level in hand, padded to 255 characters
extern rt::Array<bool> gRightValues;
extern rt::Array<bool> gRightAvailable;
extern rt::Array<QString> gRightCaptions;
extern rt::Array<qint16> gRightGroups;  // the group's position, -1 for a group

// Reads the level names and the level of index `nLevel` (0 to 9) from `rs`, which stands on the
// sysinfo row, and rebuilds the catalogue state.
void LoadAccessLevel(qint16 nLevel, RecSet& rs);
void BuildRightCatalogue(qint16 nLevel);
void AddRight(qint16 nPosition, qint16 nGroup, bool bAvailable, const QString& sCaption);
// "0" denies; any other character, or a position past the text, grants.
bool RightFromLevelText(qint16 nPosition);
