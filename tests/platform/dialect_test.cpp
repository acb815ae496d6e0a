// The suite's SQL dialect run on a real database: the forms the embedded engine lacks (LIKE
// wildcards, TOP, DELETE *, DISTINCTROW, MOD, the runtime's functions) select, change and find the
// rows the original engine would, and what can't be translated is refused.

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/engine/engine.h"
#include "platform/engine/errors.h"

#include <QFile>
#include <QTemporaryDir>

#include "fixtures.h"

#include <gtest/gtest.h>

using rt::Variant;

namespace {

using testing_support::errorOf;

class DialectTest : public ::testing::Test {
protected:
    void SetUp() override { reset(); }

    // A fresh table, for each statement that changes it.
    void reset() {
        db.reset();
        QFile::remove(dir.filePath("dialect.mdb"));
        db = engine::createDatabase(dir.filePath("dialect.mdb"));
        db->execute(
            "CREATE TABLE people (id INTEGER PRIMARY KEY, name VARCHAR(20) COLLATE NOCASE, "
            "age INTEGER, born DATETIME, notes LONGTEXT)");
        db->execute(
            "INSERT INTO people (id, name, age, born) VALUES (1, 'bob', 30, #1/31/2000#), "
            "(2, 'Alice', 40, #12/25/1999#), (3, 'carol', 25, Null), (4, 'B7*', 7, #2/29/2000#), "
            "(5, Null, Null, Null), (6, ' bob ', -7, Null)");
    }

    QStringList column(const QString& sql) { return testing_support::rowsOf(*db, sql); }

    QTemporaryDir dir;
    std::unique_ptr<engine::Database> db;
};

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
        {"UPDATE people SET age = 0 WHERE name LIKE 'b*'",
         "SELECT id FROM people WHERE age = 0",
         {"1", "4"}},
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
