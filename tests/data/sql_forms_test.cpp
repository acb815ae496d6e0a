// Every form of SQL the program issues, run through the handle on the installer's demo
// database: the dialect must read each one and give the rows it means.

#include "data/dbase.h"
#include "data/session.h"
#include "fixtures.h"
#include "installation.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/os.h"

using rt::Variant;

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
    qint32 rows(const QString& sql) {
        auto rs = gDBase.OpenRecordset(sql);
        if (rs->RecordCount() > 0) {
            rs->MoveLast();
        }
        return rs->RecordCount();
    }
    qint32 count(const QString& table, const QString& where) {
        return rt::CLng(gDBase.OpenRecordset("SELECT count(*) FROM " + table + " WHERE " + where)
                            ->ColsWithNull(0));
    }
};

class SqlFormsTest : public testing_support::OnEveryBackend<SqlFormsTestFixture> {};

ORVANE_ON_EVERY_BACKEND(SqlFormsTest);

// The reachable list of a user without the right to all clients, as logon writes it.
QString reachableQuery(const QString& n) {
    return "SELECT DISTINCT id,logon,password,name,acclevel,Num,type FROM users WHERE id <> " + n +
           " AND (id IN (SELECT extid FROM extaccess WHERE userid = " + n +
           ") OR (id IN (SELECT userid FROM extaccess WHERE extid = " + n +
           ") AND type > 0 AND type < 3)) UNION SELECT DISTINCT "
           "id,logon,password,name,acclevel,Num,type FROM "
           "users WHERE id <> " +
           n +
           " AND id IN (SELECT extid FROM extaccess WHERE userid IN ( SELECT DISTINCT "
           "id FROM users WHERE (id IN (SELECT extid FROM extaccess WHERE userid = " +
           n + ") AND type = 3))) ORDER BY type,name";
}

// The demo directory: employees 1 (administrator) to 5, workgroups 6 and 7, equipment 8 and 9,
// branches 10 and 11; extended access 1->2, 4->3, 6->2, 6->4, 7->3, 8->5, 10->1, 10->3.
TEST_P(SqlFormsTest, QueriesGiveTheRowsTheyMean) {
    const struct {
        QString sql;
        qint32 rows;
    } cases[] = {
        {"SELECT * FROM users WHERE logon = 'ADMIN' AND type = 0", 1},
        {"SELECT * FROM users WHERE id <> 1 ORDER BY name", 10},
        {"SELECT * FROM users WHERE id IN (SELECT userid FROM extaccess WHERE extid = 2) AND type "
         "> 0 AND type < 3",
         1},
        {reachableQuery("3"), 1},
        {"SELECT * FROM rts WHERE uid = 4", 1},
        {"SELECT lt FROM rts WHERE uid = 4", 1},
        {"SELECT id from rts where uid = 2", 0},
        {"SELECT * FROM sysinfo", 1},
        {"sysinfo", 1},
        {"SELECT * FROM users WHERE id = 1", 1},
        {"SELECT * FROM users WHERE type = 0 ORDER BY NAME", 5},
        {"SELECT * FROM users WHERE type = 3 ORDER BY NAME", 2},
        {"SELECT Name,id FROM users WHERE type = 0 AND id IN ( SELECT extid FROM extaccess WHERE "
         "userid = 6) ORDER "
         "BY name",
         2},
        {"SELECT Name,id FROM users WHERE type = 0 AND id <> 6 AND id NOT IN ( SELECT extid FROM "
         "extaccess WHERE "
         "userid = 6) ORDER BY name",
         3},
        {"SELECT Name,id FROM users WHERE type = 3 AND id IN ( SELECT extid FROM extaccess WHERE "
         "userid = 1) ORDER "
         "BY name",
         0},
        {"SELECT Name,id FROM users WHERE type = 3 AND id <> 1 AND id NOT IN ( SELECT extid FROM "
         "extaccess WHERE "
         "userid = 1) ORDER BY name",
         2},
        {"SELECT * FROM users WHERE logon = 'zq' AND id <> 2", 6},
        {"SELECT * FROM udfs  WHERE Descrpn <> '' AND (Class IN(0,1) OR (Class = 2 AND userid = "
         "1))",
         7},
        {"SELECT * FROM udfs WHERE parent = 'clntudf' And col = 'udf1' AND userid = 0", 1},
        {"SELECT parent,userid,class,descrpn,col FROM udfs WHERE userid = 0 AND parent = "
         "'clntudf2'",
         10},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rows(c.sql), c.rows) << c.sql.toStdString();
    }
}

TEST_P(SqlFormsTest, TheReachableListOfAnEmployeeWithoutTheRight) {
    auto rs = gDBase.OpenRecordset(reachableQuery("1"));
    QStringList names;
    while (!rs->Eof()) {
        names << rt::CStr(rs->Cols("Name"));
        rs->MoveNext();
    }
    EXPECT_EQ(names, QStringList({"Brian Cole"}));
}

TEST_P(SqlFormsTest, SessionRows) {
    const Variant logonTime = Variant::date(rt::Now());
    gDBase.Execute("INSERT INTO rts (lt, uid, fslevel) VALUES (CDATE('" + rt::CStr(logonTime) +
                   "'),2,0)");
    auto rs = gDBase.OpenRecordset("SELECT lt FROM rts WHERE uid = 2");
    EXPECT_EQ(Variant(rs->Cols("lt")), logonTime);
    gDBase.Execute("DELETE FROM rts WHERE uid = 2");
    EXPECT_EQ(count("rts", "uid = 2"), 0);
    EXPECT_EQ(count("rts", "uid = 4"), 1);
    gDBase.Execute("DELETE FROM rts");
    EXPECT_EQ(count("rts", "1 = 1"), 0);
}

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

TEST_P(SqlFormsTest, ActionStatementsChangeWhatTheyName) {
    const struct {
        QString sql;
        QString table;
        QString where;
        qint32 after;
    } cases[] = {
        {"INSERT INTO extaccess (userid,extid) VALUES(9,2)", "extaccess", "userid = 9", 1},
        {"DELETE FROM extaccess WHERE userid = 6", "extaccess", "userid = 6", 0},
        {"DELETE FROM extaccess WHERE extid = 5", "extaccess", "extid = 5", 0},
        {"DELETE FROM reminder WHERE userid = 1", "reminder", "userid = 1", 0},
        {"DELETE from watch_branch WHERE branchid = 10", "watch_branch", "branchid = 10", 0},
        {"DELETE FROM udfs WHERE userid = 3", "udfs", "userid = 3", 0},
        {"DELETE FROM budgets WHERE parentid = 3 AND type = 1", "budgets", "parentid = 3", 0},
        {"DELETE FROM budgets WHERE type = 0 AND parentid IN (SELECT id FROM files WHERE ownerid "
         "IN (SELECT id FROM "
         "clients WHERE userid = 3))",
         "budgets", "type = 0", 0},
        {"DELETE FROM autostep WHERE autoid IN(SELECT id FROM auto WHERE userid = 3)", "autostep",
         "1 = 1", 0},
        {"DELETE FROM disburse WHERE invoiceid IN(SELECT id FROM invoice WHERE accid IN (SELECT id "
         "FROM files WHERE "
         "ownerid IN (SELECT id FROM clients WHERE userid = 3)))",
         "disburse", "1 = 1", 0},
        {"DELETE FROM acctudf WHERE id IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM "
         "clients WHERE userid "
         "= 3))",
         "acctudf", "1 = 1", 0},
        {"DELETE FROM clntudf WHERE id IN (SELECT id FROM clients WHERE userid = 3)", "clntudf",
         "1 = 1", 0},
        {"DELETE FROM listflds WHERE listid IN (SELECT listid FROM lists WHERE userid = 3)",
         "listflds", "1 = 1", 0},
        {"DELETE FROM history WHERE client_id IN (SELECT id FROM clients WHERE userid = 3)",
         "history", "1 = 1", 0},
        {"UPDATE invoice SET userid = 2 WHERE accid IN (SELECT id FROM files WHERE ownerid IN "
         "(SELECT id FROM clients "
         "WHERE userid = 3))",
         "invoice", "userid = 2", 0},
        {"UPDATE clients SET userid = 2 WHERE userid = 3", "clients", "userid = 2", 3},
        {"DELETE FROM files WHERE ownerid IN (SELECT id FROM clients WHERE userid = 2)", "files",
         "1 = 1", 0},
        {"DELETE FROM users WHERE id = 9", "users", "id = 9", 0},
        {"UPDATE udfs SET descrpn = '' WHERE parent = 'clntudf' And col = 'udf2'", "udfs",
         "parent = 'clntudf' AND descrpn <> ''", 1},
        {"UPDATE clntudf SET udf2 = ''", "clntudf", "udf2 <> ''", 0},
        {"DELETE FROM udfs  WHERE parent = 'produdf' And col = 'udf1' AND userid = 0", "udfs",
         "parent = 'produdf'", 9},
        {"DELETE FROM udfs WHERE userid <> 0 AND parent = 'clntudf' AND col = 'udf1'", "udfs",
         "col = 'udf1'", 5},
        {"DELETE FROM options WHERE userid = 1", "options", "userid = 1", 0},
    };
    for (const auto& c : cases) {
        gDBase.Execute(c.sql);
        EXPECT_EQ(count(c.table, c.where), c.after) << c.sql.toStdString();
    }
}

TEST_P(SqlFormsTest, TheLevelsAreWrittenThroughTheBareTable) {
    auto rs = gDBase.OpenRecordset("sysinfo");
    rs->MoveFirst();
    rs->Edit();
    rs->Cols("level3name") = "Renamed";
    rs->Cols("level3") = QString(245, '0');
    rs->Update();
    rs->CloseRS();
    EXPECT_EQ(count("sysinfo", "level3name = 'renamed' AND level3 LIKE '000*'"), 1);
}

}  // namespace
