#pragma once

#include "platform/array.h"

#include <QString>

// The suite's words for its own concepts, so that a variant of the suite can rename them; filled
// once a run, before the console is shown.
extern QString gTermProjects;
extern QString gTermProject;
extern QString gTermFinancial;
extern QString gTermClass;
extern qint16 gActivityTypeCount;
extern rt::Array<QString> gActivityTypes;    // 0 to gActivityTypeCount
extern rt::Array<QString> gProjectStatuses;  // 0 to 5

// Also switches the session check off, which the console has no use for.
void InitTerminology();
void FillActivityTypes();
void FillProjectStatuses();
