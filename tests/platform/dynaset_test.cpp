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
using testing_support::rowsOf;

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
        other = engine::openDatabase(path);
    }
    void TearDown() override { engine::setLockWait(3000); }

    std::unique_ptr<engine::Recordset> openEmp() {
        return db->openRecordset("SELECT id, name FROM emp ORDER BY id");
    }
    // The name of the row `row` rows after the first.
    static QString nameAt(engine::Recordset& rs, int row) {
        rs.moveFirst();
        rs.move(row);
        return rt::CStr(rs.field("name").value());
    }

    QTemporaryDir dir;
    QString path;
    std::unique_ptr<engine::Database> db;
    std::unique_ptr<engine::Database> other;  // another program's connection
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
    const std::tuple<const char*, int, const char*, int> cases[] = {
        {"UPDATE emp SET name = 'b2' WHERE id = 2", 1, "b2", 0},
        {"UPDATE emp SET name = 'e2' WHERE id = 5", 4, "e2", 0},
        {"UPDATE emp SET name = 'a2', age = 99 WHERE id = 1", 0, "a2", 0},  // out of the WHERE
        {"DELETE FROM emp WHERE id = 4", 3, "", engine::RecordDeleted},
        {"DELETE FROM emp WHERE id = 3", 2, "", engine::RecordDeleted},
        {"UPDATE emp SET name = 'e3' WHERE id = 5", 4, "e3", 0},  // moved over deleted rows
    };
    for (const auto& [change, row, name, number] : cases) {
        SCOPED_TRACE(change);
        nameAt(*rs, 0);  // the current row read before the change
        other->execute(change);
        QString seen;
        EXPECT_EQ(errorOf([&] { seen = nameAt(*rs, row); }), number);
        EXPECT_EQ(seen, name);
    }
    rs->findFirst("name = 'E3'");
    EXPECT_FALSE(rs->noMatch());
    EXPECT_EQ(rs->absolutePosition(), 4);
}

TEST_P(DynasetTest, CursorsOnTheSameTextKeepTheirOwnRowsAndSeeANewDefinition) {
    auto first = openEmp();
    auto second = openEmp();
    second->moveLast();
    for (int i = 0; i < 3; ++i) {
        first->moveNext();
        second->movePrevious();
    }
    EXPECT_EQ(rt::CStr(first->field("name").value()) + rt::CStr(second->field("name").value()),
              "db");
    first.reset();
    db->execute("ALTER TABLE emp ADD COLUMN grade INT");
    EXPECT_EQ(db->openRecordset("SELECT * FROM emp ORDER BY id")->fieldCount(), 4);
}

TEST_F(FileDynasetTest, RowsReadTogetherComeFromOneMomentAndLetOtherWritersGoAfterwards) {
    auto rs = openEmp();
    {
        engine::ReadScope together(*db);
        EXPECT_EQ(rt::CStr(rs->field("name").value()), "a");  // read at the open: no look-up
        EXPECT_EQ(errorOf([&] { other->execute("UPDATE emp SET name = 'b2' WHERE id = 2"); }),
                  engine::Locked);
        rs->moveNext();
        EXPECT_EQ(rt::CStr(rs->field("name").value()), "b");
    }
    other->execute("UPDATE emp SET name = 'b2' WHERE id = 2");
    EXPECT_EQ(nameAt(*rs, 1), "b2");

    // Inside a unit the reads are the unit's, which the scope leaves alone.
    engine::Transaction unit(*db);
    db->execute("UPDATE emp SET name = 'b3' WHERE id = 2");
    {
        engine::ReadScope together(*db);
        EXPECT_EQ(nameAt(*rs, 1), "b3");
    }
    unit.commit();
    EXPECT_EQ(rowsOf(*other, "SELECT name FROM emp WHERE id = 2"), QStringList({"b3"}));
}

// Rows read at an open inside a read or a unit stand in for the rows' first visits only while
// nothing can have changed them.
TEST_P(DynasetTest, ValuesReadAtAnOpenGiveWayToChangesMadeAfterIt) {
    std::unique_ptr<engine::Recordset> rs;
    const auto openInARead = [&] {
        engine::ReadScope together(*db);
        rs = openEmp();
    };
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"c", openInARead},
        {"c2",  // another program, once the read is over
         [&] {
             openInARead();
             other->execute("UPDATE emp SET name = 'c2' WHERE id = 3");
         }},
        {"c3",  // another program, between two reads
         [&] {
             openInARead();
             other->execute("UPDATE emp SET name = 'c3' WHERE id = 3");
             engine::ReadScope again(*db);
             EXPECT_EQ(nameAt(*rs, 2), "c3");
         }},
        {"c4",  // a statement inside the unit
         [&] {
             engine::Transaction unit(*db);
             rs = openEmp();
             db->execute("UPDATE emp SET name = 'c4' WHERE id = 3");
             unit.commit();
         }},
        {"c5",  // another cursor inside the unit
         [&] {
             engine::Transaction unit(*db);
             rs = openEmp();
             auto writer = db->openRecordset("SELECT * FROM emp WHERE id = 3");
             writer->edit();
             writer->setFieldValue(writer->fieldIndex("name"), rt::Variant(QString("c5")));
             writer->update();
             EXPECT_EQ(nameAt(*rs, 2), "c5");
             unit.commit();
         }},
    };
    for (const auto& [third, openAndChange] : cases) {
        SCOPED_TRACE(third);
        openAndChange();
        EXPECT_EQ(nameAt(*rs, 2), third);
        other->execute("UPDATE emp SET name = 'c' WHERE id = 3");
    }
}

// Another connection's unit holds the rows it wrote: a write to them waits the bounded time and
// then fails, and goes through once the unit is over.
TEST_P(DynasetTest, AWriteToRowsAnotherUnitHoldsFailsAfterTheLockWait) {
    other->beginTrans();
    other->execute("UPDATE emp SET age = 10 WHERE id = 1");
    EXPECT_EQ(errorOf([&] { db->execute("UPDATE emp SET age = 20 WHERE id = 1"); }),
              engine::Locked);
    other->commitTrans();
    db->execute("UPDATE emp SET age = 20 WHERE id = 1");
    EXPECT_EQ(rowsOf(*other, "SELECT age FROM emp WHERE id = 1"), QStringList({"20"}));
}

}  // namespace
