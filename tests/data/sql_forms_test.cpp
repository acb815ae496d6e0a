// Forms of SQL that only code run on the embedded engine issues elsewhere in the tests, run here
// through the handle on the installer's demo database on every backend: the dialect must read
// each one and give the rows it means. The forms the directory, the logon, the watchdog and the
// field manager issue are run on every backend by their own tests.

#include "data/dbase.h"
#include "data/session.h"
#include "fixtures.h"
#include "installation.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/os.h"

namespace {

// The demo as its first open sets it up.
class SqlFormsTestFixture : public testing_support::DemoTest {
protected:
    void SetUp() override {
        DemoTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        ASSERT_TRUE(gDBase.DBInit(demoDatabase()));
        ASSERT_TRUE(ui.messages.empty());
        gUsers.redim(1);
        gUsers(0).id = 1;
    }
    qint32 count(const QString& table, const QString& where) {
        return rt::CLng(gDBase.OpenRecordset("SELECT count(*) FROM " + table + " WHERE " + where)
                            ->ColsWithNull(0));
    }
};

class SqlFormsTest : public testing_support::OnEveryBackend<SqlFormsTestFixture> {};

ORVANE_ON_EVERY_BACKEND(SqlFormsTest);

// The User Fields page's list and its clearing of the users' own rows.
TEST_P(SqlFormsTest, TheUserFieldsPageReadsAndClears) {
    auto rs = gDBase.OpenRecordset(
        "SELECT parent,userid,class,descrpn,col FROM udfs WHERE userid = 0 AND parent = "
        "'clntudf2'");
    rs->MoveLast();
    EXPECT_EQ(rs->RecordCount(), 10);
    gDBase.Execute(
        "INSERT INTO udfs (Parent, Col, Descrpn, Class, userid) VALUES ('clntudf', 'udf1', 'x', 2, "
        "4)");
    gDBase.Execute("DELETE FROM udfs WHERE userid <> 0 AND parent = 'clntudf' AND col = 'udf1'");
    EXPECT_EQ(count("udfs", "col = 'udf1' AND userid <> 0"), 0);
    EXPECT_EQ(count("udfs", "col = 'udf1'"), 6);
}

// What the first logon of a new installation runs.
TEST_P(SqlFormsTest, FirstRunStatements) {
    const double first =
        rt::CDate(gDBase.OpenRecordset("SELECT min(startd) FROM reminder")->ColsWithNull(0));
    gDBase.Execute("UPDATE reminder SET startd = DATEADD(\"d\",9581,startd)");
    EXPECT_EQ(rt::CDate(gDBase.OpenRecordset("SELECT min(startd) FROM reminder")->ColsWithNull(0)),
              first + 9581);

    const QString reportsFile =
        platform::joinPath(platform::programFolder(), installer::kReportsDatabaseFile);
    auto other = engine::openDatabase(reportsFile);
    other->deleteTable("reports");
    other->deleteTable("rptcntls");
    other->close();
    gDBase.Execute("SELECT * INTO [;database=" + reportsFile + "].reports from reports");
    gDBase.Execute("SELECT * INTO [;database=" + reportsFile + "].rptcntls from rptcntls");
    other = engine::openDatabase(reportsFile);
    EXPECT_EQ(rt::CLng(other->openRecordset("SELECT count(*) FROM rptcntls")->field(0).value()), 6);

    gDBase.theDb->deleteTable("reportsdef");
    gDBase.theDb->deleteTable("rptcntlsdef");
    gDBase.Execute("SELECT * INTO reportsdef from reports");
    gDBase.Execute("SELECT * INTO rptcntlsdef from rptcntls");
    EXPECT_EQ(count("reportsdef", "Name = 'client list'"), 1);
}

}  // namespace
