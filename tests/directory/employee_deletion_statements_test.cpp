// What the deletion's effects can't show: statements kept although they find nothing, and the
// counts of each choice.

#include "directory/employee_deletion.h"
#include "fixtures.h"

#include <gtest/gtest.h>

namespace {

TEST(EmployeeDeletionStatements, KeepTheRepeatsAndTheirCounts) {
    const QStringList personal = PersonalStatements("42");
    const QStringList allData = AllDataStatements("42");
    const QStringList handOver = HandOverStatements("42", "7");
    const QStringList closing = ClosingStatements("42");
    EXPECT_EQ(personal.size() + allData.size() + closing.size(), 40);
    EXPECT_EQ(personal.size() + handOver.size() + closing.size(), 20);
    // The last two of all data repeat statements 10 and 11, which emptied them already.
    EXPECT_EQ(allData[23],
              "DELETE FROM rptcntls WHERE rptid IN (SELECT id FROM reports WHERE userid = 42)");
    EXPECT_EQ(personal[9],
              "DELETE FROM rptcntls WHERE rptid IN(SELECT id FROM reports WHERE userid = 42)");
    EXPECT_EQ(allData[24], personal[10]);
    EXPECT_EQ(personal[6], "DELETE FROM budgets WHERE parentid = 42 AND type = 1");
    EXPECT_EQ(handOver[2], "UPDATE clients SET userid = 7 WHERE userid = 42");
    EXPECT_EQ(closing.last(), "DELETE FROM users WHERE id = 42");
}

}  // namespace
