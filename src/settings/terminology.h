#pragma once

#include <QString>

// The suite's words for its own concepts, so that a variant of the suite can rename them.
extern QString gTermProjects;
extern QString gTermProject;
extern QString gTermFinancial;
extern QString gTermClass;
