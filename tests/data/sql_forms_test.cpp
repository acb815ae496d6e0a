// Forms of SQL that only code run on the embedded engine issues elsewhere in the tests, run here
// through the handle on the installer's demo database on every backend: the dialect must read
// each one and give the rows it means. The forms the directory, the logon, the watchdog, the
// first run and the field manager issue are run on every backend by their own tests.

#include "data/dbase.h"
#include "fixtures.h"

namespace {

class SqlFormsTest : public testing_support::OnEveryBackend<testing_support::DemoTest> {};

ORVANE_ON_EVERY_BACKEND(SqlFormsTest);

// The User Fields page's list and its clearing of the users' own rows.
TEST_P(SqlFormsTest, TheUserFieldsPageReadsAndClears) {
    ASSERT_TRUE(gDBase.DBInit(demoDatabase()));
    auto rs = gDBase.OpenRecordset(
        "SELECT parent,userid,class,descrpn,col FROM udfs WHERE userid = 0 AND parent = "
        "'clntudf2'");
    rs->MoveLast();
    EXPECT_EQ(rs->RecordCount(), 10);
    gDBase.Execute(
        "INSERT INTO udfs (Parent, Col, Descrpn, Class, userid) VALUES ('clntudf', 'udf1', 'x', 2, "
        "4)");
    gDBase.Execute("DELETE FROM udfs WHERE userid <> 0 AND parent = 'clntudf' AND col = 'udf1'");
    EXPECT_EQ(
        testing_support::rowsOf(
            *gDBase.theDb, "SELECT userid, count(*) FROM udfs WHERE col = 'udf1' GROUP BY userid"),
        QStringList({"0|6"}));
}

}  // namespace
