// A dynaset's rows read as they stand when the cursor comes to them, while other programs write.

#include "platform/convert.h"
#include "platform/engine/engine.h"
#include "platform/engine/errors.h"

#include <QTemporaryDir>

#include <functional>

#include "backends.h"
#include "fixtures.h"

#include <gtest/gtest.h>

namespace {

using testing_support::errorOf;

class DynasetFixture : public ::testing::Test {
protected:
    void SetUp() override {
        if (testing_support::lacksServer(backend)) {
            GTEST_SKIP() << testing_support::kNoServer;
        }
        // Short, so that a read lock a cursor forgot to let go of fails the other's write.
        engine::setLockWait(300);
        path = testing_support::newDatabaseLocation(backend, dir, "dynaset");
        db = engine::createDatabase(path);
        db->execute("CREATE TABLE emp (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT, age INT)");
        db->execute(
            "INSERT INTO emp (name, age) VALUES ('a', 1), ('b', 2), ('c', 3), ('d', 4), ('e', 5)");
    }
    void TearDown() override { engine::setLockWait(3000); }

    QTemporaryDir dir;
    QString path;
    std::unique_ptr<engine::Database> db;
    testing_support::Backend backend = testing_support::Backend::Sqlite;
};

class DynasetTest : public testing_support::OnEveryBackend<DynasetFixture> {};

ORVANE_ON_EVERY_BACKEND(DynasetTest);

// The embedded engine's read lock: the writers of other programs wait for the end of a read.
class FileDynasetTest : public DynasetFixture {};

TEST_P(DynasetTest, ARowShowsWhatAnotherConnectionWroteSinceItWasLastVisited) {
    auto rs = db->openRecordset("SELECT id, name FROM emp WHERE age < 50 ORDER BY id");
    rs->moveNext();
    rs->moveNext();  // rows 0 to 2 visited
    auto other = engine::openDatabase(path);
    const struct {
        const char* change;
        int row;
        const char* name;
        int number;
    } cases[] = {
        {"UPDATE emp SET name = 'b2' WHERE id = 2", 1, "b2", 0},
        {"UPDATE emp SET name = 'e2' WHERE id = 5", 4, "e2", 0},
        {"UPDATE emp SET name = 'a2', age = 99 WHERE id = 1", 0, "a2", 0},  // out of the WHERE
        {"DELETE FROM emp WHERE id = 4", 3, "", engine::RecordDeleted},
        {"DELETE FROM emp WHERE id = 3", 2, "", engine::RecordDeleted},
        {"UPDATE emp SET name = 'e3' WHERE id = 5", 4, "e3", 0},  // moved over deleted rows
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.change);
        rs->moveFirst();
        rt::CStr(rs->field("name").value());  // the current row read before the change
        other->execute(c.change);
        rs->moveFirst();
        rs->move(c.row);
        QString name;
        EXPECT_EQ(errorOf([&] { name = rt::CStr(rs->field("name").value()); }), c.number);
        EXPECT_EQ(name, c.number ? "" : c.name);
    }
    rs->findFirst("name = 'E3'");
    EXPECT_FALSE(rs->noMatch());
    EXPECT_EQ(rs->absolutePosition(), 4);
}

TEST_P(DynasetTest, CursorsOnTheSameTextKeepTheirOwnRowsAndSeeANewDefinition) {
    const QString sql = "SELECT * FROM emp ORDER BY id";
    auto first = db->openRecordset(sql);
    auto second = db->openRecordset(sql);
    second->moveLast();
    for (int i = 0; i < 3; ++i) {
        first->moveNext();
        second->movePrevious();
    }
    EXPECT_EQ(rt::CStr(first->field("name").value()), "d");
    EXPECT_EQ(rt::CStr(second->field("name").value()), "b");
    first.reset();
    db->execute("ALTER TABLE emp ADD COLUMN grade INT");
    EXPECT_EQ(db->openRecordset(sql)->fieldCount(), 4);
    db->close();
    EXPECT_EQ(errorOf([&] { second->moveFirst(); }), engine::ObjectInvalid);
}

TEST_F(FileDynasetTest, RowsReadTogetherComeFromOneMomentAndLetOtherWritersGoAfterwards) {
    auto rs = db->openRecordset("SELECT id, name FROM emp ORDER BY id");
    auto other = engine::openDatabase(path);
    {
        engine::ReadScope together(*db);
        EXPECT_EQ(rt::CStr(rs->field("name").value()), "a");
        EXPECT_EQ(errorOf([&] { other->execute("UPDATE emp SET name = 'b2' WHERE id = 2"); }),
                  engine::Locked);
        rs->moveNext();
        EXPECT_EQ(rt::CStr(rs->field("name").value()), "b");
    }
    other->execute("UPDATE emp SET name = 'b2' WHERE id = 2");
    rs->moveFirst();
    rs->moveNext();
    EXPECT_EQ(rt::CStr(rs->field("name").value()), "b2");

    // Inside a unit the reads are the unit's, which the scope leaves alone.
    engine::Transaction unit(*db);
    db->execute("UPDATE emp SET name = 'b3' WHERE id = 2");
    {
        engine::ReadScope together(*db);
        rs->moveFirst();
        rs->moveNext();
        EXPECT_EQ(rt::CStr(rs->field("name").value()), "b3");
    }
    unit.commit();
    EXPECT_EQ(testing_support::rowsOf(*other, "SELECT name FROM emp WHERE id = 2"),
              QStringList({"b3"}));
}

// Rows read at an open inside a read or a unit stand in for the rows' first visits only while
// nothing can have changed them.
TEST_P(DynasetTest, ValuesReadAtAnOpenGiveWayToChangesMadeAfterIt) {
    auto other = engine::openDatabase(path);
    const struct {
        const char* name;
        std::function<void(std::unique_ptr<engine::Recordset>&)> openAndChange;
        const char* third;
    } cases[] = {
        {"read, unchanged",
         [&](auto& rs) {
             engine::ReadScope together(*db);
             rs = db->openRecordset("SELECT id, name FROM emp ORDER BY id");
         },
         "c"},
        {"another program, once the read is over",
         [&](auto& rs) {
             {
                 engine::ReadScope together(*db);
                 rs = db->openRecordset("SELECT id, name FROM emp ORDER BY id");
             }
             other->execute("UPDATE emp SET name = 'c2' WHERE id = 3");
         },
         "c2"},
        {"another program, between two reads",
         [&](auto& rs) {
             {
                 engine::ReadScope together(*db);
                 rs = db->openRecordset("SELECT id, name FROM emp ORDER BY id");
             }
             other->execute("UPDATE emp SET name = 'c3' WHERE id = 3");
             engine::ReadScope again(*db);
             rs->moveNext();
             rs->moveNext();
             EXPECT_EQ(rt::CStr(rs->field("name").value()), "c3");
             rs->moveFirst();
         },
         "c3"},
        {"a statement inside the unit",
         [&](auto& rs) {
             engine::Transaction unit(*db);
             rs = db->openRecordset("SELECT id, name FROM emp ORDER BY id");
             db->execute("UPDATE emp SET name = 'c4' WHERE id = 3");
             unit.commit();
         },
         "c4"},
        {"another cursor inside the unit",
         [&](auto& rs) {
             engine::Transaction unit(*db);
             rs = db->openRecordset("SELECT id, name FROM emp ORDER BY id");
             auto writer = db->openRecordset("SELECT * FROM emp WHERE id = 3");
             writer->edit();
             writer->setFieldValue(writer->fieldIndex("name"), rt::Variant(QString("c5")));
             writer->update();
             rs->moveNext();
             rs->moveNext();
             EXPECT_EQ(rt::CStr(rs->field("name").value()), "c5");
             rs->moveFirst();
             unit.commit();
         },
         "c5"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::unique_ptr<engine::Recordset> rs;
        c.openAndChange(rs);
        rs->moveNext();
        rs->moveNext();
        EXPECT_EQ(rt::CStr(rs->field("name").value()), c.third);
        other->execute("UPDATE emp SET name = 'c' WHERE id = 3");
    }
}

// Another connection's unit holds the rows it wrote: a write to them waits the bounded time and
// then fails, and goes through once the unit is over.
TEST_P(DynasetTest, AWriteToRowsAnotherUnitHoldsFailsAfterTheLockWait) {
    auto other = engine::openDatabase(path);
    other->beginTrans();
    other->execute("UPDATE emp SET age = 10 WHERE id = 1");
    EXPECT_EQ(errorOf([&] { db->execute("UPDATE emp SET age = 20 WHERE id = 1"); }),
              engine::Locked);
    other->commitTrans();
    db->execute("UPDATE emp SET age = 20 WHERE id = 1");
    EXPECT_EQ(testing_support::rowsOf(*other, "SELECT age FROM emp WHERE id = 1"),
              QStringList({"20"}));
}

}  // namespace
