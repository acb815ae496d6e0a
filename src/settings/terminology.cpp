#include "settings/terminology.h"

#include "data/session.h"
#include "util/frm_config.h"

QString gTermProjects;
QString gTermProject;
QString gTermFinancial;
QString gTermClass;
qint16 gActivityTypeCount = 0;
rt::Array<QString> gActivityTypes;
rt::Array<QString> gProjectStatuses;

void InitTerminology() {
    gWatchdogOff = true;
    gActivityTypeCount = qint16(frmConfig::instance().imglstReminders->count());
    gActivityTypes.redim(gActivityTypeCount);
    gTermProjects = QStringLiteral("Projects");
    gTermProject = QStringLiteral("Project");
    gTermFinancial = QStringLiteral("Financial");
    gTermClass = QStringLiteral("Class");
    FillActivityTypes();
    FillProjectStatuses();
}

void FillActivityTypes() {
    const char* const types[] = {"Travel",      "Phone",   "Mail", "E-Mail", "Fax",
                                 "Appointment", "Meeting", "Task", "Other"};
    for (int i = 0; i < 9; ++i) {
        gActivityTypes(i) = QString::fromLatin1(types[i]);
    }
}

void FillProjectStatuses() {
    gProjectStatuses.redim(5);
    const char* const statuses[] = {"Active",      "Closed",    "In Planning",
                                    "In Progress", "Completed", "Cancelled"};
    for (int i = 0; i <= 5; ++i) {
        gProjectStatuses(i) = QString::fromLatin1(statuses[i]);
    }
}
