// The statements that delete an employee, word for word and in their order.

#include "directory/employee_deletion.h"
#include "fixtures.h"

#include <gtest/gtest.h>

namespace {

TEST(EmployeeDeletionStatements, StandAsWrittenInTheirOrder) {
    const QStringList personal = {
        "DELETE FROM udfs WHERE userid = 42",
        "DELETE FROM reminder WHERE userid = 42",
        "DELETE FROM billcode WHERE userid = 42",
        "DELETE FROM options WHERE userid = 42",
        "DELETE FROM autostep WHERE autoid IN(SELECT id FROM auto WHERE userid = 42)",
        "DELETE FROM auto WHERE userid = 42",
        "DELETE FROM budgets WHERE parentid = 42 AND type = 1",
        "DELETE FROM budgets WHERE type = 0 AND parentid IN (SELECT id FROM files WHERE ownerid IN "
        "(SELECT id FROM clients WHERE userid = 42))",
        "DELETE FROM busdev WHERE userid = 42",
        "DELETE FROM rptcntls WHERE rptid IN(SELECT id FROM reports WHERE userid = 42)",
        "DELETE FROM reports WHERE userid = 42",
        "DELETE FROM modeling WHERE userid = 42",
    };
    const QStringList allData = {
        "DELETE FROM acctudf WHERE id IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM "
        "clients WHERE userid = 42))",
        "DELETE FROM projudf WHERE id IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM "
        "clients WHERE userid = 42))",
        "DELETE FROM clntudf WHERE id IN (SELECT id FROM clients WHERE userid = 42)",
        "DELETE FROM clntudf2 WHERE id IN (SELECT id FROM clients WHERE userid = 42)",
        "DELETE FROM reflib WHERE userid = 42",
        "DELETE FROM RelDocs WHERE accid IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM "
        "clients WHERE userid = 42))",
        "DELETE FROM RelPple WHERE accid IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM "
        "clients WHERE userid = 42))",
        "DELETE FROM balance WHERE accid IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM "
        "clients WHERE userid = 42))",
        "DELETE FROM trans WHERE acc_id IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM "
        "clients WHERE userid = 42))",
        "DELETE FROM billsetup WHERE accid IN (SELECT id FROM files WHERE ownerid IN (SELECT id "
        "FROM "
        "clients WHERE userid = 42))",
        "DELETE FROM disburse WHERE invoiceid IN(SELECT id FROM invoice WHERE accid IN (SELECT id "
        "FROM files WHERE ownerid IN (SELECT id FROM clients WHERE userid = 42)))",
        "DELETE FROM charges WHERE accid IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM "
        "clients WHERE userid = 42))",
        "DELETE FROM invoice WHERE accid IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM "
        "clients WHERE userid = 42))",
        "DELETE FROM funds WHERE accid IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM "
        "clients WHERE userid = 42))",
        "DELETE FROM files WHERE ownerid IN (SELECT id FROM clients WHERE userid = 42)",
        "DELETE FROM listflds WHERE listid IN (SELECT listid FROM lists WHERE userid = 42)",
        "DELETE FROM listmmbr WHERE listid IN (SELECT listid FROM lists WHERE userid = 42)",
        "DELETE FROM listudf WHERE id IN (SELECT id FROM lists WHERE userid = 42)",
        "DELETE FROM lists WHERE userid = 42",
        "DELETE FROM history WHERE client_id IN (SELECT id FROM clients WHERE userid = 42)",
        "DELETE FROM clients WHERE userid = 42",
        "DELETE FROM charges WHERE userid = 42",
        "DELETE FROM invoice WHERE userid = 42",
        "DELETE FROM rptcntls WHERE rptid IN (SELECT id FROM reports WHERE userid = 42)",
        "DELETE FROM reports WHERE userid = 42",
    };
    const QStringList handOver = {
        "UPDATE invoice SET userid = 7 WHERE accid IN (SELECT id FROM files WHERE ownerid IN "
        "(SELECT "
        "id FROM clients WHERE userid = 42))",
        "UPDATE charges SET userid = 7 WHERE accid IN (SELECT id FROM files WHERE ownerid IN "
        "(SELECT "
        "id FROM clients WHERE userid = 42))",
        "UPDATE clients SET userid = 7 WHERE userid = 42",
        "UPDATE lists SET userid = 7 WHERE userid = 42",
        "UPDATE reflib SET userid = 7 WHERE userid = 42",
    };
    const QStringList closing = {
        "DELETE FROM extaccess WHERE userid = 42",
        "DELETE FROM extaccess WHERE extid = 42",
        "DELETE FROM users WHERE id = 42",
    };
    EXPECT_EQ(PersonalStatements("42"), personal);
    EXPECT_EQ(AllDataStatements("42"), allData);
    EXPECT_EQ(HandOverStatements("42", "7"), handOver);
    EXPECT_EQ(ClosingStatements("42"), closing);
    EXPECT_EQ(personal.size() + allData.size() + closing.size(), 40);
    EXPECT_EQ(personal.size() + handOver.size() + closing.size(), 20);
}

}  // namespace
