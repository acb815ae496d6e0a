#include "settings/terminology.h"

QString gTermProjects;
QString gTermProject;
QString gTermFinancial;
QString gTermClass;
