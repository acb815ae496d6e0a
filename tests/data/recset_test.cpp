// The record cursor and the database handle.

#include "data/dbase.h"
#include "data/session.h"
#include "fixtures.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/engine/errors.h"

#include <QFile>

using rt::Variant;
using testing_support::errorOf;

namespace {

using RecSetTest = testing_support::SessionTest;

// An unknown column fails in the caller, but not in ColsNoErr.
TEST_F(RecSetTest, ColsNeverGivesANullForTextNumbersOrBooleans) {
    execute(
        "CREATE TABLE kinds (t VARCHAR(10), m LONGTEXT, s SMALLINT, l INTEGER, c CURRENCY, "
        "f SINGLE, d DOUBLE, b BIT, dt DATETIME, bin LONGBLOB)");
    execute("INSERT INTO kinds (t) VALUES (NULL)");
    auto rs = open("SELECT * FROM kinds");
    const std::pair<const char*, Variant> cases[] = {
        {"t", QString()},        {"m", QString()},         {"s", qint16(0)}, {"l", qint16(0)},
        {"c", qint16(0)},        {"f", qint16(0)},         {"d", qint16(0)}, {"b", false},
        {"dt", Variant::null()}, {"bin", Variant::null()},
    };
    for (const auto& [column, value] : cases) {
        EXPECT_EQ(Variant(rs->Cols(column)), value) << column;
        EXPECT_TRUE(rs->ColsWithNull(column).isNull()) << column;
        EXPECT_TRUE(rs->ColsNoErr(column).isNull()) << column;
    }
    EXPECT_EQ(errorOf([&] { Variant value = rs->Cols("nosuch"); }), engine::ItemNotFound);
    EXPECT_TRUE(rs->ColsNoErr("nosuch").isEmpty());
    EXPECT_THROW(rs->ColsWithNull("nosuch"), rt::Error);
}

// A table without the stamp columns takes a new row all the same.
TEST_F(RecSetTest, EditAndAddNewStampWhoAndWhen) {
    gUsers(0).id = 77;
    const double before = rt::Now();
    auto rs = open("SELECT * FROM clients");
    rs->AddNew();
    rs->Cols("Name") = "Stamped";
    rs->Update();
    rs->MoveLast();
    EXPECT_EQ(rt::CStr(rs->Cols("addedby")) + "|" + rt::CStr(rs->Cols("lastmodby")), "77|77");
    EXPECT_GE(rt::CDate(rs->Cols("addedon")), before);
    EXPECT_EQ(rt::CDate(rs->Cols("addedon")), rt::CDate(rs->Cols("lastedit")));

    gUsers.erase();  // before logon: times only
    auto rem = open("SELECT * FROM reminder");
    rem->Edit();
    rem->Cols("subject") = "moved";
    rem->Update();
    EXPECT_TRUE(rem->ColsWithNull("lastmodby").isNull());
    EXPECT_FALSE(rem->ColsWithNull("lastedit").isNull());

    auto ext = open("SELECT * FROM extaccess");
    ext->AddNew();
    ext->Cols("userid") = 1;
    ext->Update();
    EXPECT_EQ(count("extaccess"), 1);
}

TEST_F(RecSetTest, MoveIsAnAbsolutePosition) {
    auto rs = open("SELECT * FROM udfs ORDER BY id");
    rs->Move(3);
    const Variant third = rs->Cols("id");
    rs->Move(3);
    EXPECT_EQ(Variant(rs->Cols("id")), third);
    EXPECT_EQ(rs->AbsolutePosition(), 3);
}

TEST_F(RecSetTest, FindRecordAppendsOnlyTheSecondConditionToTheCallersText) {
    execute("INSERT INTO options (userid, section, value1) VALUES (0, 'Options', 'shared')");
    execute("INSERT INTO options (userid, section, value1) VALUES (1, 'Options', 'mine')");
    auto rs = open("SELECT * FROM options");
    QString sql = "section = 'Options'";
    EXPECT_TRUE(rs->FindRecord(sql, "ignored", "ignored", "userid", 1));
    EXPECT_EQ(sql, "section = 'Options' AND userid = 1");
    EXPECT_EQ(rt::CStr(rs->Cols("value1")), "mine");
    EXPECT_FALSE(rs->FindFirst("section = 'None'"));
    EXPECT_TRUE(rs->NoMatch());
    EXPECT_TRUE(rs->FindFirst("section = 'OPTIONS'"));
    EXPECT_TRUE(rs->FindNext("section = 'options'"));
    EXPECT_FALSE(rs->FindNext("section = 'options'"));
}

class DBaseTest : public testing_support::SeamTest {
protected:
    void TearDown() override {
        testing_support::endSession();
        SeamTest::TearDown();
    }
};

// A closed handle fails a command, a failed open shows the engine's text and keeps the path, and
// a second open replaces the first database on the same handle.
TEST_F(DBaseTest, FailsWithoutAHandleOrAFileAndOpensAgainOnTheSameHandle) {
    gDBase.CloseDB();
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(errorOf([] { gDBase.Execute("DELETE FROM users"); }), rt::ObjectNotSet);
    const QString missing = path("missing.mdb");
    ShowBusy();
    EXPECT_FALSE(gDBase.DBInit(missing));
    EXPECT_EQ(gDatabasePath, missing);
    EXPECT_FALSE(ui.busy);
    EXPECT_TRUE(testing_support::saidOnly(ui, "Couldn't find file '" + missing + "'."));
    EXPECT_FALSE(QFile::exists(missing));
    EXPECT_TRUE(gDBase.DBInit(newDatabase("first.mdb")));
    gDBase.Execute("DELETE FROM users");
    const QString second = newDatabase("second.mdb");
    EXPECT_TRUE(gDBase.DBInit(second));
    EXPECT_EQ(gDatabasePath, second);
    EXPECT_EQ(gDBase.OpenRecordset("SELECT * FROM users")->RecordCount(), 1);
    EXPECT_THROW(gDBase.Execute("DELETE FROM users WHERE name = 'x''"), rt::Error);
}

}  // namespace
