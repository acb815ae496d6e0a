// The engine's conformance: what the program relies on of a database and its dynaset cursors,
// whose rows read as they stand when the cursor comes to them while other programs write. Every
// backend runs these.

#include "platform/engine/engine.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/engine/errors.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include "backends.h"
#include "fixtures.h"

#include <gtest/gtest.h>

#include <functional>

using rt::Variant;

namespace {

using testing_support::errorOf;
using testing_support::OtherProgram;

class EngineFixture : public ::testing::Test {
protected:
    void SetUp() override {
        if (testing_support::lacksServer(backend)) {
            GTEST_SKIP() << testing_support::kNoServer;
        }
        engine::setLockWait(lockWait);
        path = testing_support::newDatabaseLocation(backend, dir, "engine");
        db = engine::createDatabase(path);
        db->execute(
            "CREATE TABLE people (id INTEGER PRIMARY KEY AUTOINCREMENT, "
            "name VARCHAR(20) COLLATE NOCASE CHECK (length(name) <= 20), age SMALLINT, "
            "salary CURRENCY, born DATETIME, active BIT, score SINGLE, ratio DOUBLE, "
            "notes LONGTEXT COLLATE NOCASE, photo LONGBLOB, boss INTEGER)");
        db->execute("CREATE TABLE plain (code VARCHAR(5) COLLATE NOCASE, amount INTEGER)");
        db->execute(
            "INSERT INTO people (name, age, boss) VALUES ('bob', 30, 1), ('Alice', 40, 1), "
            "('carol', 25, 2)");
    }

    std::unique_ptr<engine::Recordset> open(const QString& sql) { return db->openRecordset(sql); }
    static QString nameOf(engine::Recordset& rs) { return rt::CStr(rs.field("name").value()); }
    // The name field of every row, in the order the cursor gives them.
    static QStringList namesOf(engine::Recordset& rs) {
        QStringList result;
        for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
            result << nameOf(rs);
        }
        return result;
    }
    QStringList names(const QString& sql) { return namesOf(*open(sql)); }
    QString first(const QString& sql) { return rt::CStr(open(sql)->field(0).value()); }
    // Begins an AddNew or an Edit, sets one field and updates.
    static void write(engine::Recordset& rs, void (engine::Recordset::*begin)(), const char* field,
                      const Variant& value) {
        (rs.*begin)();
        rs.field(field).setValue(value);
        rs.update();
    }
    // The body as a unit of work, by the calls or by a scope.
    void inUnit(const std::function<void()>& body) {
        db->beginTrans();
        body();
        db->commitTrans();
    }
    void inScope(const std::function<void()>& body) {
        engine::Transaction scope(*db);
        body();
        scope.commit();
    }

    QTemporaryDir dir;
    QString path;
    std::unique_ptr<engine::Database> db;
    testing_support::Backend backend = testing_support::Backend::Sqlite;
    int lockWait = 3000;
};

// What every backend gives alike.
class EngineTest : public testing_support::OnEveryBackend<EngineFixture> {};

ORVANE_ON_EVERY_BACKEND(EngineTest);

// What is the embedded engine's own: database files, and other processes on the same file.
class FileEngineTest : public EngineFixture {};

// A second table of five rows, and another program's connection to the database.
class DynasetFixture : public EngineFixture {
protected:
    // Short, so that a read lock a cursor forgot to let go of fails the other's write.
    DynasetFixture() { lockWait = 300; }
    void SetUp() override {
        EngineFixture::SetUp();
        if (IsSkipped()) {
            return;
        }
        db->execute("CREATE TABLE emp (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT, age INT)");
        db->execute(
            "INSERT INTO emp (name, age) VALUES ('a', 1), ('b', 2), ('c', 3), ('d', 4), ('e', 5)");
        other = engine::openDatabase(path);
    }

    std::unique_ptr<engine::Recordset> openEmp() {
        return open("SELECT id, name FROM emp ORDER BY id");
    }
    // The name of the row `row` rows after the first.
    static QString nameAt(engine::Recordset& rs, int row) {
        rs.moveFirst();
        rs.move(row);
        return nameOf(rs);
    }

    std::unique_ptr<engine::Database> other;
};

class DynasetTest : public testing_support::OnEveryBackend<DynasetFixture> {};

ORVANE_ON_EVERY_BACKEND(DynasetTest);

// The embedded engine's read lock: the writers of other programs wait for the end of a read.
class FileDynasetTest : public DynasetFixture {};

// The dialect's forms the embedded engine lacks (LIKE wildcards, TOP, DELETE *, DISTINCTROW, MOD,
// the runtime's functions) select, change and find the rows the original engine would, and what
// can't be translated is refused; on six people, put back before each statement that changes them.
class DialectTest : public EngineFixture {
protected:
    void SetUp() override {
        EngineFixture::SetUp();
        reset();
    }
    void reset() {
        db->execute("DELETE FROM people");
        db->execute(
            "INSERT INTO people (id, name, age, born) VALUES (1, 'bob', 30, #1/31/2000#), "
            "(2, 'Alice', 40, #12/25/1999#), (3, 'carol', 25, Null), (4, 'B7*', 7, #2/29/2000#), "
            "(5, Null, Null, Null), (6, ' bob ', -7, Null)");
    }

    QStringList column(const QString& sql) { return testing_support::rowsOf(*db, sql); }
};

TEST_F(FileEngineTest, OpeningRefusesWhatIsNoDatabaseAndNeverCreatesOne) {
    const QString missing = dir.filePath("missing.mdb");
    const QString text = dir.filePath("notes.txt");
    const QString empty = dir.filePath("empty.mdb");
    QFile file(text);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("This is not a database, just some words of text that fill a page.");
    file.close();
    QFile(empty).open(QIODevice::WriteOnly);
    const std::tuple<QString, int, QString> cases[] = {
        {missing, engine::FileNotFound, "Couldn't find file '" + missing + "'."},
        {text, engine::UnrecognizedFormat, "Unrecognized database format '" + text + "'."},
        {empty, engine::UnrecognizedFormat, "Unrecognized database format '" + empty + "'."},
        {dir.path(), engine::InvalidPath, "'" + dir.path() + "' isn't a valid path."},
    };
    for (const auto& [location, number, message] : cases) {
        try {
            engine::openDatabase(location);
            ADD_FAILURE() << location.toStdString();
        } catch (const rt::Error& e) {
            EXPECT_EQ(e.number(), number);
            EXPECT_EQ(e.description(), message);
        }
    }
    EXPECT_FALSE(QFile::exists(missing));
    EXPECT_EQ(errorOf([&] { engine::createDatabase(path); }), engine::DatabaseExists);
}

// The count grows as rows are visited; moves past the ends, and any move on an empty set, fail. A
// deleted row stays current, unreadable, until the cursor moves off it, and is never shown again.
TEST_P(EngineTest, ACursorCountsTheRowsItVisitedAndStopsAtTheEnds) {
    auto rs = open("SELECT * FROM people ORDER BY name");
    EXPECT_FALSE(rs->bof() || rs->eof());
    EXPECT_EQ(rs->recordCount(), 1);
    rs->moveNext();
    rs->moveFirst();
    EXPECT_EQ(rs->recordCount(), 2);
    rs->moveLast();
    EXPECT_EQ(rs->recordCount(), 3);
    rs->moveNext();
    EXPECT_TRUE(rs->eof());
    EXPECT_EQ(errorOf([&] { rs->moveNext(); }), engine::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { nameOf(*rs); }), engine::NoCurrentRecord);
    rs->movePrevious();
    EXPECT_EQ(nameOf(*rs), "carol");
    rs->moveFirst();
    rs->movePrevious();
    EXPECT_TRUE(rs->bof());
    EXPECT_EQ(errorOf([&] { rs->movePrevious(); }), engine::NoCurrentRecord);
    rs->moveFirst();
    rs->move(2);
    EXPECT_EQ(rs->absolutePosition(), 2);
    rs->deleteCurrent();
    EXPECT_EQ(rs->recordCount(), 2);
    rs->requery();
    EXPECT_EQ(rs->recordCount(), 1);
    rs->move(-5);
    EXPECT_TRUE(rs->bof());

    auto fresh = open("SELECT * FROM people ORDER BY name");  // its first row read at the open
    fresh->deleteCurrent();
    EXPECT_EQ(errorOf([&] { nameOf(*fresh); }), engine::RecordDeleted);
    EXPECT_FALSE(fresh->eof());
    fresh->moveNext();
    EXPECT_EQ(nameOf(*fresh), "bob");
    fresh->moveFirst();
    EXPECT_EQ(nameOf(*fresh), "bob");
    EXPECT_EQ(first("SELECT count(*) FROM people"), "1");

    auto none = open("SELECT * FROM people WHERE age > 100");
    EXPECT_EQ(none->recordCount(), 0);
    EXPECT_TRUE(none->bof() && none->eof());
    for (const auto& action : std::vector<std::function<void()>>{
             [&] { none->moveFirst(); }, [&] { none->moveNext(); }, [&] { none->moveLast(); },
             [&] { none->move(1); }, [&] { nameOf(*none); }, [&] { none->edit(); }}) {
        EXPECT_EQ(errorOf(action), engine::NoCurrentRecord);
    }
}

TEST_P(EngineTest, FindComparesByTheEnginesRules) {
    auto rs = open("SELECT * FROM people ORDER BY name");
    rs->findFirst("name = 'BOB'");
    EXPECT_FALSE(rs->noMatch());
    EXPECT_EQ(nameOf(*rs), "bob");
    rs->findFirst("boss = 1");
    EXPECT_EQ(nameOf(*rs), "Alice");
    rs->findNext("boss = 1");
    EXPECT_EQ(nameOf(*rs), "bob");
    rs->findNext("boss = 1");
    EXPECT_TRUE(rs->noMatch());
    rs->moveFirst();  // a move leaves NoMatch as it was
    EXPECT_TRUE(rs->noMatch());
    rs->findFirst("name LIKE '*[*]' OR name & age LIKE 'c*5'");
    EXPECT_EQ(nameOf(*rs), "carol");
    EXPECT_EQ(errorOf([&] { rs->findFirst("nosuch = 1"); }), engine::UnknownName);
}

TEST_P(EngineTest, EditUpdateAndCancel) {
    auto rs = open("SELECT * FROM people WHERE name = 'bob'");
    EXPECT_EQ(errorOf([&] { rs->update(); }), engine::UpdateWithoutEdit);
    EXPECT_EQ(errorOf([&] { rs->field("age").setValue(1); }), engine::UpdateWithoutEdit);
    rs->edit();
    rs->field("age").setValue(31);
    EXPECT_EQ(rt::CInt(rs->field("age").value()), 31);
    rs->cancelUpdate();
    EXPECT_EQ(rt::CInt(rs->field("age").value()), 30);
    write(*rs, &engine::Recordset::edit, "age", "32");
    EXPECT_EQ(first("SELECT age FROM people WHERE name = 'bob'"), "32");
    EXPECT_EQ(errorOf([&] { rs->cancelUpdate(); }), engine::UpdateWithoutEdit);

    auto plain = open("plain");  // a table with no key of its own is written all the same
    write(*plain, &engine::Recordset::addNew, "code", "A1");
    plain->moveLast();
    write(*plain, &engine::Recordset::edit, "amount", 5);
    EXPECT_EQ(first("SELECT code & amount FROM plain"), "A15");
}

// Rows asked for in no order come in the order they were added, however often they were
// written since: lists that show a table as it stands rely on it.
TEST_P(EngineTest, RowsInNoOrderComeAsTheyWereAdded) {
    db->execute("UPDATE people SET age = 31 WHERE name = 'bob'");
    write(*open("SELECT * FROM people WHERE name <> 'carol'"), &engine::Recordset::edit, "age", 32);
    for (const QString& source :
         {"SELECT * FROM people", "people", "SELECT name FROM people WHERE age > 0"}) {
        SCOPED_TRACE(source.toStdString());
        EXPECT_EQ(names(source), (QStringList{"bob", "Alice", "carol"}));
    }
}

TEST_P(EngineTest, ANewRowsCounterIsReadableAtAddNewAndMoveLastLandsOnIt) {
    auto rs = open("SELECT * FROM people ORDER BY name");
    rs->moveNext();  // on bob
    rs->addNew();
    EXPECT_EQ(rt::CLng(rs->field("id").value()), 4);
    EXPECT_TRUE(rs->field("name").value().isNull());
    EXPECT_EQ(errorOf([&] { rs->field("id").setValue(9); }), engine::FieldNotUpdatable);
    rs->field("name").setValue("dave");
    rs->update();
    EXPECT_EQ(nameOf(*rs), "bob");  // the row before AddNew stays current
    rs->moveLast();
    EXPECT_EQ(rs->field("id").value(), Variant(4));
    EXPECT_EQ(nameOf(*rs), "dave");

    rs->addNew();  // a cancelled row leaves its number unused
    EXPECT_EQ(rt::CLng(rs->field("id").value()), 5);
    rs->cancelUpdate();
    db->execute("INSERT INTO people (name) VALUES ('erin')");
    EXPECT_EQ(first("SELECT id FROM people WHERE name = 'erin'"), "6");

    auto empty = open("SELECT * FROM people WHERE age > 100");
    write(*empty, &engine::Recordset::addNew, "name", "old");
    empty->moveLast();
    EXPECT_EQ(nameOf(*empty), "old");
}

TEST_P(EngineTest, FieldsCarryTheLibrarysTypeNumbersSizesAndValues) {
    db->execute(
        "UPDATE people SET salary = 1234.5678, born = CDATE('1/5/2000'), active = True, "
        "score = 6.5, ratio = 0.25, notes = 'long', photo = NULL WHERE name = 'bob'");
    auto rs = open("SELECT * FROM people WHERE name = 'bob'");
    using namespace engine;
    using rt::VarType;
    const std::tuple<const char*, int, qint32, VarType> cases[] = {
        {"id", dbLong, 4, VarType::Long},        {"salary", dbCurrency, 8, VarType::Currency},
        {"name", dbText, 20, VarType::String},   {"born", dbDate, 8, VarType::Date},
        {"age", dbInteger, 2, VarType::Integer}, {"active", dbBoolean, 1, VarType::Boolean},
        {"score", dbSingle, 4, VarType::Single}, {"notes", dbMemo, 0, VarType::String},
        {"ratio", dbDouble, 8, VarType::Double}, {"photo", dbLongBinary, 0, VarType::Null}};
    for (const auto& [name, type, size, kind] : cases) {
        const engine::Field f = rs->field(name);
        EXPECT_EQ(std::tuple(f.type(), f.size(), f.value().type()), std::tuple(type, size, kind))
            << name;
    }
    EXPECT_EQ(rs->field("salary").value().integerValue(), 12345678);
    EXPECT_EQ(rs->field("born").value().realValue(), 36530);
    EXPECT_EQ(rs->field("active").value().integerValue(), -1);
    EXPECT_EQ(rt::CStr(rs->field("score").value()), "6.5");
    EXPECT_EQ(errorOf([&] { rs->field("nosuch"); }), engine::ItemNotFound);

    rs->edit();
    EXPECT_EQ(errorOf([&] { rs->field("name").setValue(QString(21, 'x')); }), engine::DataTooLong);
    EXPECT_EQ(errorOf([&] { rs->field("age").setValue("many"); }), engine::ConversionError);
    EXPECT_EQ(errorOf([&] { rs->field("age").setValue(40000); }), rt::Overflow);
    rs->field("photo").appendChunk(QByteArray("abc"));
    rs->field("photo").appendChunk(QByteArray("def"));
    rs->update();
    EXPECT_EQ(rs->field("photo").getChunk(2, 3).bytes(), "cde");
    EXPECT_EQ(rs->field("photo").getChunk(5, 10).bytes(), "f");
    EXPECT_EQ(errorOf([&] { db->execute("UPDATE people SET name = '" + QString(21, 'y') + "'"); }),
              engine::DataTooLong);
}

// Text compares and sorts without regard to case, dates as dates, Null first, in the dialect's
// forms.
TEST_P(EngineTest, QueriesSelectByTheDialectsRules) {
    db->execute("UPDATE people SET born = CDATE('12/31/1999') WHERE name = \"bob\"");
    db->execute("UPDATE people SET born = CDATE('1/2/2000') WHERE name = 'Alice'");
    db->execute(
        "UPDATE [people] SET born = DATEADD(\"m\",-11,#1/1/2000 10:30#) WHERE [name] = 'carol'");
    db->execute("UPDATE people SET salary = 100 WHERE name = 'carol'");
    const std::pair<const char*, QStringList> cases[] = {
        // Null sorts below every value.
        {"SELECT * FROM people ORDER BY salary DESC, name", {"carol", "Alice", "bob"}},
        {"SELECT TOP 2 * FROM people ORDER BY salary, name DESC", {"bob", "Alice"}},
        {"SELECT * FROM people ORDER BY name", {"Alice", "bob", "carol"}},
        {"SELECT * FROM people WHERE name = 'ALICE'", {"Alice"}},
        {"SELECT * FROM people WHERE name LIKE Left(name, 1) & '*O*' ORDER BY name",
         {"bob", "carol"}},
        {"SELECT * FROM people WHERE name IN ('BOB', 'CAROL') ORDER BY name DESC",
         {"carol", "bob"}},
        {"SELECT * FROM people ORDER BY born", {"carol", "bob", "Alice"}},
        {"SELECT * FROM people WHERE born > CDATE('1/1/2000')", {"Alice"}},
        {"SELECT * FROM people WHERE born < #1/1/2000# AND born > #2/1/1999 10:29#",
         {"bob", "carol"}},
        {"SELECT name FROM people WHERE age < 30 UNION SELECT name FROM people WHERE age > 35 "
         "ORDER BY name",
         {"Alice", "carol"}},
        {"SELECT * FROM people WHERE id IN (SELECT boss FROM people WHERE boss > 1)", {"Alice"}},
        {"SELECT * FROM people WHERE id NOT IN(SELECT boss FROM people) ORDER BY name", {"carol"}},
    };
    for (const auto& [sql, rows] : cases) {
        EXPECT_EQ(names(sql), rows) << sql;
    }
    EXPECT_EQ(errorOf([&] { db->execute("SELECT * FROM people"); }), engine::CannotExecuteSelect);
    EXPECT_EQ(errorOf([&] { open("SELECT * FROM nosuch"); }), engine::InputTableNotFound);
    EXPECT_EQ(errorOf([&] { open("SELECT nosuch FROM people"); }), engine::TooFewParameters);
    EXPECT_EQ(errorOf([&] { open("SELECT DISTINCT boss FROM people")->edit(); }), engine::ReadOnly);
}

TEST_P(EngineTest, SelectIntoCopiesATableHereOrIntoAnotherFile) {
    db->execute("SELECT * INTO staff from people");
    auto staff = open("SELECT * FROM staff WHERE name = 'ALICE'");  // the collation came along
    EXPECT_EQ(staff->recordCount(), 1);
    EXPECT_EQ(staff->field("age").type(), engine::dbInteger);
    EXPECT_EQ(errorOf([&] { db->execute("SELECT * INTO staff from people"); }),
              engine::TableExists);

    const QString other = dir.filePath("other.new");
    engine::createDatabase(other)->close();
    db->execute("SELECT * INTO [;database=" + other + "].people from people");
    auto copy = engine::openDatabase(other);
    EXPECT_EQ(rt::CLng(copy->openRecordset("SELECT count(*) FROM people")->field(0).value()), 3);
    const QString none = dir.filePath("none.new");
    EXPECT_EQ(errorOf([&] { db->execute("SELECT * INTO [;database=" + none + "].p from people"); }),
              engine::FileNotFound);
    db->deleteTable("staff");
    EXPECT_EQ(errorOf([&] { db->deleteTable("staff"); }), engine::ItemNotFound);
}

TEST_P(EngineTest, OneStatementPerCallWhateverAValueHolds) {
    // Values typed into a query end it early or leave a quote open: either way nothing runs.
    const std::pair<QString, int> injections[] = {
        {"DELETE FROM people WHERE id = 1; DROP TABLE people", engine::CharactersAfterEnd},
        {"SELECT * FROM people WHERE name = 'x'; DROP TABLE people; --'", engine::SyntaxError},
        {"SELECT * FROM people WHERE name = 'x'; DROP TABLE people", engine::CharactersAfterEnd},
        {"UPDATE people SET name = 'x' WHERE name = 'a';DELETE FROM people",
         engine::CharactersAfterEnd},
        {"UPDATE people SET age = 1 WHERE name = 'o'brien'", engine::SyntaxError},
    };
    for (const auto& [sql, number] : injections) {
        EXPECT_EQ(errorOf([&] { db->execute(sql); }), number) << sql.toStdString();
        EXPECT_EQ(errorOf([&] { open(sql); }), number) << sql.toStdString();
    }
    db->execute("UPDATE people SET age = 1 WHERE name = 'bob';  ");
    EXPECT_EQ(first("SELECT count(*) FROM people"), "3");
}

TEST_P(EngineTest, ATransactionLeavesNothingHalfDone) {
    EXPECT_EQ(errorOf([&] {
                  inScope([&] {
                      db->execute("DELETE FROM people WHERE name = 'bob'");
                      db->execute("UPDATE nosuch SET x = 1");
                  });
              }),
              engine::InputTableNotFound);
    EXPECT_EQ(first("SELECT count(*) FROM people"), "3");
    inScope([&] {
        db->execute("DELETE FROM people WHERE name = 'bob'");
        engine::Transaction inner(*db);  // left without a commit, rolled back alone
        db->execute("DELETE FROM people WHERE name = 'carol'");
    });
    EXPECT_EQ(names("SELECT * FROM people ORDER BY name"), QStringList({"Alice", "carol"}));
    EXPECT_EQ(errorOf([&] { db->commitTrans(); }), engine::NoTransaction);
}

// A unit undone leaves each cursor as it stood before the unit changed it: rows that are no more
// are not shown, and an AddNew or Edit interrupted by the failure can be updated again.
TEST_P(EngineTest, AnUndoneUnitPutsItsCursorsBack) {
    auto rs = open("SELECT * FROM people ORDER BY name");  // on Alice
    const auto addDave = [&] { write(*rs, &engine::Recordset::addNew, "name", "dave"); };
    const auto rename = [&] { write(*rs, &engine::Recordset::edit, "name", "Alicia"); };
    const auto remove = [&] { rs->deleteCurrent(); };
    const std::tuple<const char*, std::function<void()>, std::function<void()>, QStringList>
        units[] = {
            // What the caller tries again, on the restored cursor.
            {"a new row", addDave, [&] { rs->update(); }, {"Alice", "bob", "carol", "dave"}},
            {"an edit", rename, rename, {"Alicia", "bob", "carol"}},
            {"a deletion", remove, remove, {"bob", "carol"}},
        };
    for (const auto& [unit, change, retry, after] : units) {
        SCOPED_TRACE(unit);
        rs->requery();
        db->beginTrans();
        change();
        inUnit([&] { db->execute("DELETE FROM people WHERE name = 'carol'"); });  // counts too
        db->rollback();
        EXPECT_EQ(first("SELECT name FROM people WHERE id = 2"), "Alice");
        retry();
        EXPECT_EQ(namesOf(*rs), after);
        EXPECT_EQ(names("SELECT * FROM people ORDER BY name"), after);
        db->execute("DELETE FROM people WHERE name = 'dave' OR id = 2");
        db->execute("INSERT INTO people (id, name, age, boss) VALUES (2, 'Alice', 40, 1)");
    }
}

TEST_F(FileEngineTest, AUnitThatFailsToCommitIsUndoneWholeAndLeavesNothingOpen) {
    engine::setLockWait(100);
    db = engine::openDatabase(path);
    // Another program reading: its lock lets a unit begin and write, but not commit.
    OtherProgram reader(path, "BEGIN; SELECT count(*) FROM people");
    const auto deleteBob = [&] { db->execute("DELETE FROM people WHERE name = 'bob'"); };
    const std::tuple<const char*, int, std::function<void()>> units[] = {
        {"one level", engine::Locked, [&] { inUnit(deleteBob); }},
        {"nested levels", engine::Locked, [&] { inUnit([&] { inUnit(deleteBob); }); }},
        {"a scope", engine::Locked, [&] { inScope(deleteBob); }},
        // The engine's own units: a new row's counter, a copied table.
        {"a counter", engine::Locked, [&] { open("people")->addNew(); }},
        {"a copy", engine::Locked, [&] { db->execute("SELECT * INTO staff FROM people"); }},
        // SQLite ends the whole transaction itself on some failures, under any level.
        {"a level whose transaction SQLite ended", engine::DuplicateValue,
         [&] {
             inUnit([&] {
                 deleteBob();
                 inUnit([&] { db->execute("INSERT OR ROLLBACK INTO people (id) VALUES (2)"); });
             });
         }},
    };
    for (const auto& [unit, number, run] : units) {
        SCOPED_TRACE(unit);
        EXPECT_EQ(errorOf(run), number);
        EXPECT_EQ(errorOf([&] { db->rollback(); }), engine::NoTransaction);
        EXPECT_EQ(errorOf([&] {
                      db->beginTrans();
                      db->rollback();
                  }),
                  0);
        // Refused while the lock is held, rather than taken into a unit that is no more.
        EXPECT_EQ(errorOf([&] { db->execute("UPDATE people SET age = 1"); }), engine::Locked);
    }
    reader.letGo();
    inUnit([&] { db->execute("UPDATE people SET age = 77 WHERE name = 'bob'"); });
    db->execute("UPDATE people SET age = 66 WHERE name = 'carol'");
    db = engine::openDatabase(path);
    EXPECT_EQ(names("SELECT name & ' ' & age AS name FROM people ORDER BY id"),
              QStringList({"bob 77", "Alice 40", "carol 66"}));
}

TEST_P(EngineTest, AStatementMeansWhatTheDialectReadsWhateverItsSpacing) {
    const QStringList unchanged = {"a 1", "b 2", "c 3"};
    const QStringList added = {"a 2", "b 3", "c 4"};
    const std::tuple<QString, int, QStringList> cases[] = {
        // Two minus signs are two operators, however they came to stand side by side: the
        // dialect has no comments.
        {"UPDATE plain SET amount = amount--1", 0, added},
        {"UPDATE plain SET amount = amount-True", 0, added},
        {"UPDATE plain SET amount = amount-#12/29/1899#", 0, added},  // day -1
        {"UPDATE plain SET amount = 0 /*, code = 'x' */", engine::SyntaxError, unchanged},
        // A line break between tokens is a blank like any other.
        {"UPDATE plain SET amount = 0 WHERE amount = 1 --amount\nOR amount = 3",
         0,
         {"a 1", "b 2", "c 0"}},
        // Tokens side by side stay apart, whatever the embedded engine would make of them
        // joined: a longer number, a doubled quote, a blob, a parameter, a shift.
        {"UPDATE plain SET amount = 1#12/31/1899#", engine::SyntaxError, unchanged},
        {"UPDATE plain SET amount = #12/31/1899#.5", engine::SyntaxError, unchanged},
        {"UPDATE plain SET code = 'a'\"b\"", engine::SyntaxError, unchanged},
        {"UPDATE plain SET code = x'41'", engine::SyntaxError, unchanged},
        {"UPDATE plain SET amount = :amount", engine::SyntaxError, unchanged},
        {"UPDATE plain SET amount = amount<<1", engine::SyntaxError, unchanged},
        // A line break inside a string is part of the string.
        {"UPDATE plain SET code = 'x\ny' WHERE amount = 2", 0, {"a 1", "x\ny 2", "c 3"}},
    };
    for (const auto& [sql, number, rows] : cases) {
        db->execute("DELETE FROM plain");
        db->execute("INSERT INTO plain (code, amount) VALUES ('a', 1), ('b', 2), ('c', 3)");
        EXPECT_EQ(errorOf([&] { db->execute(sql); }), number) << sql.toStdString();
        EXPECT_EQ(names("SELECT code & ' ' & amount AS name FROM plain"), rows)
            << sql.toStdString();
    }
}

TEST_P(EngineTest, PropertiesAndClosedObjects) {
    EXPECT_EQ(errorOf([&] { db->property("LSIsReplica"); }), engine::PropertyNotFound);
    db->setProperty("LSIsReplica", true);
    EXPECT_TRUE(rt::CBool(db->property("lsisreplica")));
    auto rs = open("people");
    rs->close();
    EXPECT_EQ(errorOf([&] { rs->moveFirst(); }), engine::ObjectInvalid);
    auto other = open("people");
    db->close();
    EXPECT_EQ(errorOf([&] { open("people"); }), engine::ObjectInvalid);
    EXPECT_EQ(errorOf([&] { other->edit(); }), engine::ObjectInvalid);
    EXPECT_EQ(errorOf([&] { nameOf(*other); }), engine::ObjectInvalid);
}

TEST_P(DynasetTest, ARowShowsWhatAnotherConnectionWroteSinceItWasLastVisited) {
    auto rs = open("SELECT id, name FROM emp WHERE age < 50 ORDER BY id");
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
    EXPECT_EQ(nameOf(*first) + nameOf(*second), "db");
    first.reset();
    db->execute("ALTER TABLE emp ADD COLUMN grade INT");
    EXPECT_EQ(open("SELECT * FROM emp ORDER BY id")->fieldCount(), 4);
}

TEST_F(FileDynasetTest, RowsReadTogetherComeFromOneMomentAndLetOtherWritersGoAfterwards) {
    auto rs = openEmp();
    {
        engine::ReadScope together(*db);
        EXPECT_EQ(nameOf(*rs), "a");  // read at the open: no look-up
        EXPECT_EQ(errorOf([&] { other->execute("UPDATE emp SET name = 'b2' WHERE id = 2"); }),
                  engine::Locked);
        rs->moveNext();
        EXPECT_EQ(nameOf(*rs), "b");
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
    EXPECT_EQ(testing_support::rowsOf(*other, "SELECT name FROM emp WHERE id = 2"),
              QStringList({"b3"}));
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
             write(*open("SELECT * FROM emp WHERE id = 3"), &engine::Recordset::edit, "name", "c5");
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

// Another connection's unit holds the rows it wrote: readers get in, a write to them waits the
// bounded time and then fails, and goes through once the unit is over.
TEST_P(DynasetTest, AWriteToRowsAnotherUnitHoldsFailsAfterTheLockWait) {
    other->beginTrans();
    other->execute("UPDATE emp SET age = 10 WHERE id = 1");
    EXPECT_EQ(first("SELECT count(*) FROM emp"), "5");
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(errorOf([&] { db->execute("UPDATE emp SET age = 20 WHERE id = 1"); }),
              engine::Locked);
    EXPECT_GE(timer.elapsed(), 250);
    EXPECT_LT(timer.elapsed(), 2900);
    other->commitTrans();
    db->execute("UPDATE emp SET age = 20 WHERE id = 1");
    EXPECT_EQ(testing_support::rowsOf(*other, "SELECT age FROM emp WHERE id = 1"),
              QStringList({"20"}));
}

// LIKE's wildcards are * ? # [a-c] [!a] [*], without regard to case, and % and _ are plain
// characters; Null on either side matches neither LIKE nor NOT LIKE. MOD rounds its operands half
// to even, keeps the dividend's sign, and binds above + and below * and /.
TEST_F(DialectTest, ConditionsSelectTheRowsTheEngineWould) {
    const std::pair<const char*, QStringList> cases[] = {
        {"name LIKE 'b*'", {"1", "4"}},
        {"name LIKE '?o?'", {"1"}},
        {"name LIKE 'b#*'", {"4"}},
        {"name LIKE '[a-c]*'", {"1", "2", "3", "4"}},
        {"name LIKE '[!a-b]*'", {"3", "6"}},
        {"name LIKE '*[*]'", {"4"}},
        {"name NOT LIKE '*o*'", {"2", "4"}},
        {"name LIKE Left(name, 1) & '*l*'", {"2", "3"}},
        {"name LIKE 'a%' OR name LIKE 'alic_'", {}},
        {"age / 4 MOD 3 = 2", {"1", "4"}},
        {"age MOD -4 = -3", {"6"}},
        {"age + 1 MOD 4 = 31", {"1"}},
        {"Len(name) = 5", {"2", "3", "6"}},
        {"Len(Trim(name)) = 3 AND Len(LTrim(name)) = 4 AND Len(RTrim(name)) = 4", {"6"}},
        {"Mid(name, 2, 3) = 'lic' OR Mid(name, 3) = 'rol' OR Right(name, 2) = '7*'",
         {"2", "3", "4"}},
        {"Year(born) = 2000 AND Month(born) = 2 AND Day(born) = 29", {"4"}},
        {"DateAdd('m', 1, born) = #2/29/2000#", {"1"}},
        {"Nz(age, 99) = 99", {"5"}},
        {"IIf(age > 26, 'old', 'young') = 'young'", {"3", "4", "5", "6"}},
        {"Format(born, 'yyyy-mm-dd') = '1999-12-25'", {"2"}},
    };
    for (const auto& [condition, ids] : cases) {
        EXPECT_EQ(column(QString("SELECT id FROM people WHERE %1 ORDER BY id").arg(condition)), ids)
            << condition;
    }
}

// What each of the runtime's functions returns.
TEST_F(DialectTest, ExpressionColumnsKeepTheTypeOfTheirFunction) {
    const std::tuple<const char*, Variant, int> cases[] = {
        {"DateAdd('m', 1, born)", Variant::date(rt::DateSerial(2000, 1, 25)), engine::dbDate},
        {"CDate('1/2/2000')", Variant::date(rt::DateSerial(2000, 1, 2)), engine::dbDate},
        {"Year(born)", Variant(qint16(1999)), engine::dbInteger},
        {"Len(notes)", Variant::null(), engine::dbLong},
        {"Mid(notes, 1)", Variant::null(), engine::dbText},
        {"Format(born, 'yyyy')", Variant("1999"), engine::dbText},
        {"5.5 MOD 4", Variant(2), engine::dbLong},
        {"-age MOD 7", Variant(-5), engine::dbLong},
        // Behind a *, the items after it still find their columns.
        {"*, Day(born)", Variant(qint16(25)), engine::dbInteger},
    };
    for (const auto& [expression, value, type] : cases) {
        auto rs =
            db->openRecordset(QString("SELECT %1 AS v FROM people WHERE id = 2").arg(expression));
        EXPECT_EQ(std::pair(rs->field("v").value(), rs->field("v").type()), std::pair(value, type))
            << expression;
    }
}

// TOP n takes the first n rows in order; DISTINCTROW over one table leaves every row; DELETE *
// and UPDATE take LIKE criteria.
TEST_F(DialectTest, StatementsSelectAndChangeTheRowsTheEngineWould) {
    const std::tuple<const char*, const char*, QStringList> cases[] = {
        {"", "SELECT TOP 2 id FROM people ORDER BY age DESC", {"2", "1"}},
        {"", "SELECT DISTINCTROW Trim(name) FROM people WHERE Trim(name) = 'bob'", {"bob", "bob"}},
        {"", "SELECT UCase(name) & LCase(name) FROM people WHERE id = 2", {"ALICEalice"}},
        {"DELETE * FROM people WHERE name LIKE '*o*'", "SELECT id FROM people", {"2", "4", "5"}},
        {"UPDATE people SET name = UCase(Left(name, 1)) & Mid(name, 2) WHERE name LIKE 'c*'",
         "SELECT name FROM people WHERE id = 3",
         {"Carol"}},
    };
    for (const auto& [statement, query, values] : cases) {
        SCOPED_TRACE(*statement ? statement : query);
        reset();
        if (*statement) {
            db->execute(statement);
        }
        EXPECT_EQ(column(query), values);
    }
}

// Find's criteria are a WHERE clause without the word WHERE, in the same dialect.
TEST_F(DialectTest, FindUsesTheSameDialect) {
    auto rs = db->openRecordset("SELECT * FROM people ORDER BY id");
    QStringList found;
    for (const char* criteria : {"name LIKE '*[*]'", "name NOT LIKE 'b*' AND age MOD 2 = 1",
                                 "Trim(name) LIKE 'BO?'", "name LIKE 'z*'"}) {
        rs->findFirst(criteria);
        found << (rs->noMatch() ? "none" : rt::CStr(rs->field("id").value()));
    }
    EXPECT_EQ(found, QStringList({"4", "3", "1", "none"}));
}

// The embedded engine has functions of these names that mean something else, or none.
TEST_F(DialectTest, WhatCannotBeTranslatedIsRefused) {
    for (const char* sql :
         {"SELECT substr(name, 1) FROM people", "SELECT instr(name, 'o') FROM people",
          "SELECT like('b*', name) FROM people", "SELECT First(name) FROM people",
          "SELECT Trim(name, 'b') FROM people", "SELECT Mid(name) FROM people",
          "SELECT TOP 50 PERCENT * FROM people",
          "SELECT DISTINCTROW a.name FROM people AS a, people AS b"}) {
        EXPECT_EQ(errorOf([&] { db->openRecordset(sql); }), engine::SyntaxError) << sql;
    }
    auto rs = db->openRecordset("people");
    EXPECT_EQ(errorOf([&] { rs->findFirst("round(age) = 30"); }), engine::SyntaxError);
}

}  // namespace
