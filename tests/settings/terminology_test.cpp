// The suite's words, filled at the start of the run.

#include "settings/terminology.h"
#include "data/session.h"
#include "util/frm_config.h"

#include <gtest/gtest.h>

namespace {

TEST(Terminology, FilledOnceAtTheStartWithTheWatchdogOff) {
    gWatchdogOff = false;
    InitTerminology();
    EXPECT_TRUE(gWatchdogOff);
    EXPECT_EQ(QStringList({gTermProjects, gTermProject, gTermFinancial, gTermClass}),
              QStringList({"Projects", "Project", "Financial", "Class"}));
    EXPECT_EQ(gActivityTypeCount, frmConfig::instance().imglstReminders->count());
    EXPECT_GE(gActivityTypeCount, 9);
    EXPECT_EQ(gActivityTypes.size(), gActivityTypeCount + 1);
    EXPECT_EQ(QStringList({gActivityTypes(0), gActivityTypes(3), gActivityTypes(8)}),
              QStringList({"Travel", "E-Mail", "Other"}));
    EXPECT_EQ(gProjectStatuses.size(), 6);
    EXPECT_EQ(QStringList({gProjectStatuses(2), gProjectStatuses(5)}),
              QStringList({"In Planning", "Cancelled"}));
    EXPECT_FALSE(frmConfig::instance().isVisible());
    EXPECT_EQ(frmConfig::instance().windowTitle(), "WF Configuration Form");
    EXPECT_FALSE(frmConfig::instance().ilLogos->image("orvane").isNull());
    gWatchdogOff = false;
}

}  // namespace
