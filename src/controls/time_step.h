#pragma once

#include <QtGlobal>

// Minutes between two times in a time field and in the time list of the date dialog. It starts
// at half an hour, a planner's usual grid; a program of the suite may set its own. A step below
// 1 minute makes the arrows of a time field do nothing and the time list hold its first time only.
extern qint16 gTimeStep;
