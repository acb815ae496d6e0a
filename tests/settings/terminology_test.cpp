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
    gWatchdogOff = false;
    // An activity type for each reminder picture, and no fewer than the words for them.
    EXPECT_EQ(gActivityTypeCount, frmConfig::instance().imglstReminders->count());
    EXPECT_GE(gActivityTypeCount, 9);
    EXPECT_EQ(QStringList({gTermProjects, gActivityTypes(8), gProjectStatuses(5)}),
              QStringList({"Projects", "Other", "Cancelled"}));
}

}  // namespace
