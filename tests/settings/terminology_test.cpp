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
    EXPECT_EQ(gTermProjects, "Projects");
    EXPECT_EQ(gTermProject, "Project");
    EXPECT_EQ(gTermFinancial, "Financial");
    EXPECT_EQ(gTermClass, "Class");
    EXPECT_EQ(gActivityTypeCount, frmConfig::instance().imglstReminders->count());
    EXPECT_GE(gActivityTypeCount, 9);
    EXPECT_EQ(gActivityTypes.size(), gActivityTypeCount + 1);
    EXPECT_EQ(gActivityTypes(0), "Travel");
    EXPECT_EQ(gActivityTypes(3), "E-Mail");
    EXPECT_EQ(gActivityTypes(8), "Other");
    EXPECT_EQ(gProjectStatuses.size(), 6);
    EXPECT_EQ(gProjectStatuses(2), "In Planning");
    EXPECT_EQ(gProjectStatuses(5), "Cancelled");
    EXPECT_FALSE(frmConfig::instance().isVisible());
    EXPECT_EQ(frmConfig::instance().windowTitle(), "WF Configuration Form");
    EXPECT_FALSE(frmConfig::instance().ilLogos->image("orvane").isNull());
    gWatchdogOff = false;
}

}  // namespace
