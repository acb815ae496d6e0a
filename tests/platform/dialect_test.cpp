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
        for (const char* row :
             {"1, 'bob', 30, #1/31/2000#", "2, 'Alice', 40, #12/25/1999#", "3, 'carol', 25, Null",
              "4, 'B7*', 7, #2/29/2000#", "5, Null, Null, Null", "6, ' bob ', -7, Null"}) {
            db->execute(QString("INSERT INTO people (id, name, age, born) VALUES (%1)").arg(row));
        }
    }

    QStringList column(const QString& sql) { return testing_support::rowsOf(*db, sql); }
    QStringList idsWhere(const QString& condition) {
        return column("SELECT id FROM people WHERE " + condition + " ORDER BY id");
    }

    QTemporaryDir dir;
    std::unique_ptr<engine::Database> db;
};

TEST_F(DialectTest, ConditionsSelectTheRowsTheEngineWould) {
    const std::pair<const char*, QStringList> cases[] = {
        // The engine's SQL reference, "Like Operator": * ? # [a-c] [!a] [*], without regard to
        // case; Null on either side matches neither LIKE nor NOT LIKE.
        {"name LIKE 'b*'", {"1", "4"}},
        {"name LIKE '?o?'", {"1"}},
        {"name LIKE 'b#*'", {"4"}},
        {"name LIKE '[a-c]*'", {"1", "2", "3", "4"}},
        {"name LIKE '[!a-b]*'", {"3", "6"}},
        {"name LIKE '*[*]'", {"4"}},
        {"name NOT LIKE '*o*'", {"2", "4"}},
        {"name LIKE Left(name, 1) & '*l*'", {"2", "3"}},
        // The same reference: % and _ are the other SQL's wildcards, plain characters here.
        {"name LIKE 'a%'", {}},
        {"name LIKE 'alic_'", {}},
        // The runtime's language reference, "Mod Operator": operands rounded half to even, the
        // sign of the dividend, above + and below * and /.
        {"age / 4 MOD 3 = 2", {"1", "4"}},
        {"age MOD -4 = -3", {"6"}},
        {"age + 1 MOD 4 = 31", {"1"}},
        // The runtime's language reference: the string, date and Null functions.
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
        EXPECT_EQ(idsWhere(condition), ids) << condition;
    }
}

TEST_F(DialectTest, ExpressionColumnsKeepTheTypeOfTheirFunction) {
    const std::tuple<const char*, Variant, int> cases[] = {
        // The runtime's language reference: what each function returns.
        {"DateAdd('m', 1, born)", Variant::date(rt::DateSerial(2000, 1, 25)), engine::dbDate},
        {"CDate('1/2/2000')", Variant::date(rt::DateSerial(2000, 1, 2)), engine::dbDate},
        {"Year(born)", Variant(qint16(1999)), engine::dbInteger},
        {"Len(notes)", Variant::null(), engine::dbLong},
        {"Mid(notes, 1)", Variant::null(), engine::dbText},
        {"Format(born, 'yyyy')", Variant("1999"), engine::dbText},
        {"5.5 MOD 4", Variant(2), engine::dbLong},
        {"-age MOD 7", Variant(-5), engine::dbLong},
    };
    for (const auto& [expression, value, type] : cases) {
        auto rs = db->openRecordset(
            QString("SELECT %1 AS v FROM people WHERE id = 2").arg(QString::fromUtf8(expression)));
        EXPECT_EQ(rs->field("v").value(), value) << expression;
        EXPECT_EQ(rs->field("v").type(), type) << expression;
    }
    // Behind a *, the items after it still find their columns.
    auto rs = db->openRecordset("SELECT *, Now() AS stamp FROM people");
    EXPECT_EQ(rs->field("stamp").type(), engine::dbDate);
    EXPECT_TRUE(rs->field("stamp").value().isDate());
}

TEST_F(DialectTest, StatementsSelectAndChangeTheRowsTheEngineWould) {
    const struct {
        const char* statement;  // nullptr: the query alone
        const char* query;
        QStringList values;
    } cases[] = {
        // The engine's SQL reference, "ALL, DISTINCT, DISTINCTROW, TOP Predicates": TOP n takes
        // the first n rows in order; DISTINCTROW over one table leaves every row.
        {nullptr, "SELECT TOP 2 id FROM people ORDER BY age DESC", {"2", "1"}},
        {nullptr,
         "SELECT DISTINCTROW Trim(name) FROM people WHERE Trim(name) = 'bob'",
         {"bob", "bob"}},
        {nullptr, "SELECT UCase(name) & LCase(name) FROM people WHERE id = 2", {"ALICEalice"}},
        // The engine's SQL reference, "DELETE Statement" and "UPDATE Statement", with "Like
        // Operator" criteria.
        {"DELETE * FROM people WHERE name LIKE '*o*'",
         "SELECT id FROM people ORDER BY id",
         {"2", "4", "5"}},
        {"UPDATE people SET age = 0 WHERE name LIKE 'b*'",
         "SELECT id FROM people WHERE age = 0 ORDER BY id",
         {"1", "4"}},
        {"UPDATE people SET name = UCase(Left(name, 1)) & Mid(name, 2) WHERE name LIKE 'c*'",
         "SELECT name FROM people WHERE id = 3",
         {"Carol"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.statement ? c.statement : c.query);
        reset();
        if (c.statement) {
            db->execute(c.statement);
        }
        EXPECT_EQ(column(c.query), c.values);
    }
}

TEST_F(DialectTest, FindUsesTheSameDialect) {
    const struct {
        const char* criteria;
        int id;  // 0: no match
    } cases[] = {
        // The engine's reference, "FindFirst Method": criteria are a WHERE clause without the
        // word WHERE.
        {"name LIKE '*[*]'", 4},
        {"name NOT LIKE 'b*' AND age MOD 2 = 1", 3},
        {"Trim(name) LIKE 'BO?'", 1},
        {"name LIKE 'z*'", 0},
    };
    auto rs = db->openRecordset("SELECT * FROM people ORDER BY id");
    for (const auto& c : cases) {
        rs->findFirst(c.criteria);
        EXPECT_EQ(rs->noMatch(), c.id == 0) << c.criteria;
        if (c.id != 0) {
            EXPECT_EQ(rt::CLng(rs->field("id").value()), c.id) << c.criteria;
        }
    }
}

TEST_F(DialectTest, WhatCannotBeTranslatedIsRefused) {
    // The embedded engine has functions of these names that mean something else, or none.
    const char* const refused[] = {
        "SELECT substr(name, 1) FROM people",
        "SELECT instr(name, 'o') FROM people",
        "SELECT like('b*', name) FROM people",
        "SELECT First(name) FROM people",
        "SELECT Trim(name, 'b') FROM people",
        "SELECT Mid(name) FROM people",
        "SELECT TOP 50 PERCENT * FROM people",
        "SELECT DISTINCTROW a.name FROM people AS a, people AS b",
    };
    for (const char* sql : refused) {
        EXPECT_EQ(errorOf([&] { db->openRecordset(sql); }), engine::SyntaxError) << sql;
    }
    auto rs = db->openRecordset("people");
    EXPECT_EQ(errorOf([&] { rs->findFirst("round(age) = 30"); }), engine::SyntaxError);
}

}  // namespace
