// The dialect's functions on a PostgreSQL server against the runtime: each call is made on the
// server and in the runtime with the same values, and must give the same value or the same failure.

#include "platform/engine/pg_functions.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/engine/dialect.h"
#include "platform/rt_error.h"

#include <QRegularExpression>
#include <QUuid>

#include <gtest/gtest.h>
#include <libpq-fe.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <optional>

namespace {

using Runtime = std::function<rt::Variant()>;

// What a call gave: a value as the server writes it (the runtime's as the server would), or a
// failure's number and text.
struct Outcome {
    std::optional<QString> value;  // no value for Null
    int error = 0;
    QString message;
};

QString text(const QString& value) {
    return "'" + QString(value).replace('\'', QLatin1String("''")) + "'::text";
}

QString number(double value) {
    return "'" + QString::number(value, 'g', 17) + "'::double precision";
}

double serial(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    return rt::joinDate({year, month, day, hour, minute, second});
}

// The runtime's count of characters, as the embedded engine's callbacks check it.
int characterCount(double value, int least) {
    const qint32 count = rt::CLng(rt::Variant(value));
    if (count < least) {
        throw rt::Error::standard(rt::InvalidProcedureCall);
    }
    return count;
}

Outcome runtimeOutcome(const Runtime& call) {
    Outcome outcome;
    try {
        const rt::Variant value = call();
        if (value.isNull()) {
            return outcome;
        }
        if (value.isString()) {
            outcome.value = value.text();
        } else if (value.type() == rt::VarType::Boolean) {
            outcome.value = rt::CBool(value) ? "t" : "f";
        } else {
            // Numbers compare as doubles below; this is only their text in a failure's message.
            outcome.value = QString::number(rt::CDbl(value), 'g', 17);
        }
    } catch (const rt::Error& failure) {
        outcome.error = failure.number();
        outcome.message = failure.description();
    }
    return outcome;
}

class PgFunctionsTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (qEnvironmentVariableIsEmpty("PGHOST")) {
            return;
        }
        PGconn* maintenance = PQconnectdb("");
        ASSERT_EQ(PQstatus(maintenance), CONNECTION_OK) << PQerrorMessage(maintenance);
        databaseName = "pg_functions_test_" +
                       QUuid::createUuid().toString(QUuid::Id128).left(12).toStdString();
        run(maintenance, "CREATE DATABASE " + databaseName);
        PQfinish(maintenance);

        const char* keys[] = {"dbname", nullptr};
        const char* values[] = {databaseName.c_str(), nullptr};
        connection = PQconnectdbParams(keys, values, 1);
        ASSERT_EQ(PQstatus(connection), CONNECTION_OK) << PQerrorMessage(connection);
        for (const QString& definition : engine::pg::functionDefinitions()) {
            run(connection, definition.toStdString());
        }
    }

    static void TearDownTestSuite() {
        if (connection == nullptr) {
            return;
        }
        PQfinish(connection);
        connection = nullptr;
        PGconn* maintenance = PQconnectdb("");
        run(maintenance, "DROP DATABASE IF EXISTS " + databaseName);
        PQfinish(maintenance);
    }

    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("PGHOST")) {
            GTEST_SKIP() << "PGHOST is not set: no PostgreSQL server to run the functions on.";
        }
        ASSERT_NE(connection, nullptr);
    }

    static void run(PGconn* db, const std::string& sql) {
        PGresult* result = PQexec(db, sql.c_str());
        EXPECT_EQ(PQresultStatus(result), PGRES_COMMAND_OK) << sql << "\n"
                                                            << PQresultErrorMessage(result);
        PQclear(result);
    }

    static Outcome serverOutcome(const QString& call) {
        Outcome outcome;
        PGresult* result = PQexec(connection, ("SELECT " + call).toUtf8().constData());
        if (PQresultStatus(result) == PGRES_TUPLES_OK) {
            if (!PQgetisnull(result, 0, 0)) {
                outcome.value = QString::fromUtf8(PQgetvalue(result, 0, 0));
            }
        } else {
            const QString state = QString::fromUtf8(PQresultErrorField(result, PG_DIAG_SQLSTATE));
            outcome.error = engine::pg::errorNumber(state);
            outcome.message =
                QString::fromUtf8(PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY));
            if (outcome.error == 0) {
                outcome.message = state + ": " + outcome.message;
                outcome.error = -1;  // the server's own failure, which no runtime call gives
            }
        }
        PQclear(result);
        return outcome;
    }

    // The call on the server gives what the runtime gives.
    static void expectSame(const QString& call, const Runtime& runtime) {
        const Outcome expected = runtimeOutcome(runtime);
        const Outcome actual = serverOutcome(call);
        SCOPED_TRACE(call.toStdString());
        EXPECT_EQ(actual.error, expected.error) << actual.message.toStdString();
        EXPECT_EQ(actual.message, expected.message);
        EXPECT_EQ(actual.value.has_value(), expected.value.has_value());
        if (!actual.value || !expected.value) {
            return;
        }
        bool actualIsNumber = false;
        bool expectedIsNumber = false;
        const double actualNumber = actual.value->toDouble(&actualIsNumber);
        const double expectedNumber = expected.value->toDouble(&expectedIsNumber);
        if (actualIsNumber && expectedIsNumber) {
            EXPECT_EQ(actualNumber, expectedNumber) << actual.value->toStdString();
        } else {
            EXPECT_EQ(*actual.value, *expected.value);
        }
    }

    static inline std::string databaseName;
    static inline PGconn* connection = nullptr;
};

TEST(PgFunctionErrors, StatesCarryTheFailureNumber) {
    const struct {
        const char* state;
        int number;
    } cases[] = {
        {"OV005", 5}, {"OV011", 11}, {"OV380", 380}, {"O3075", 3075}, {"22012", 0},
        {"OV05", 0},  {"OV0050", 0}, {"OVABC", 0},   {"P0001", 0},    {"", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(engine::pg::errorNumber(c.state), c.number) << c.state;
    }
}

TEST_F(PgFunctionsTest, TextFunctionsOfOneText) {
    const struct {
        const char* name;
        std::function<rt::Variant(const QString&)> runtime;
    } functions[] = {
        {"ucase", [](const QString& t) { return rt::Variant(t.toUpper()); }},
        {"lcase", [](const QString& t) { return rt::Variant(t.toLower()); }},
        {"len", [](const QString& t) { return rt::Variant(int(t.size())); }},
        {"trim",
         [](const QString& t) {
             return rt::Variant(t.mid(0).remove(QRegularExpression("^ +| +\\z")));
         }},
        {"ltrim",
         [](const QString& t) { return rt::Variant(t.mid(0).remove(QRegularExpression("^ +"))); }},
        {"rtrim",
         [](const QString& t) {
             return rt::Variant(t.mid(0).remove(QRegularExpression(" +\\z")));
         }},
    };
    const QString texts[] = {
        "",
        "abc",
        "  Two Words  ",
        "   ",
        "\tTabbed\t",
        " line\nbreak \n",
        "Grüße aus Köln",
        "ÉCOLE été",
        "ΟΔΟΣ οδός",
        "Ярослав",
        "O'Brien",
    };
    for (const auto& function : functions) {
        for (const QString& t : texts) {
            expectSame(QStringLiteral("dialect_%1(%2)").arg(function.name, text(t)),
                       [&] { return function.runtime(t); });
        }
        expectSame(QStringLiteral("dialect_%1(NULL::text)").arg(function.name),
                   [] { return rt::Variant::null(); });
    }
}

TEST_F(PgFunctionsTest, LeftAndRightCountCharacters) {
    const double counts[] = {0,    1,    3,    5,  100,          2.5,         3.5,
                             -0.4, -0.5, -0.6, -1, 2147483647.4, 2147483648.0};
    for (const QString& t : {QString(), QString("Hello"), QString("Ärger")}) {
        for (const double count : counts) {
            expectSame(QStringLiteral("dialect_left(%1, %2)").arg(text(t), number(count)),
                       [&] { return rt::Variant(t.left(characterCount(count, 0))); });
            expectSame(QStringLiteral("dialect_right(%1, %2)").arg(text(t), number(count)),
                       [&] { return rt::Variant(t.right(characterCount(count, 0))); });
        }
    }
    expectSame("dialect_left(NULL, -1)", [] { return rt::Variant::null(); });
    expectSame("dialect_right('abc', NULL)", [] { return rt::Variant::null(); });
}

TEST_F(PgFunctionsTest, MidTakesFromAStartForALength) {
    const QString t = "Hello";
    for (const double start : {1.0, 2.0, 5.0, 6.0, 7.0, 100.0, 0.0, -1.0, 0.5, 1.5}) {
        expectSame(QStringLiteral("dialect_mid(%1, %2)").arg(text(t), number(start)),
                   [&] { return rt::Variant(t.mid(characterCount(start, 1) - 1)); });
    }
    // Every start against every length.
    const double starts[] = {1, 2, 4, 6, 9, 0, 3, 2147483647};
    const double lengths[] = {0, 1, 2, 3, 5, 10, -1, 2.5, -0.5, 2147483647, 2147483648.0};
    for (const double start : starts) {
        for (const double length : lengths) {
            expectSame(QStringLiteral("dialect_mid(%1, %2, %3)")
                           .arg(text(t), number(start), number(length)),
                       [&] {
                           const int from = characterCount(start, 1);
                           return rt::Variant(t.mid(from - 1, characterCount(length, 0)));
                       });
        }
    }
    expectSame("dialect_mid(NULL, 0, -1)", [] { return rt::Variant::null(); });
    expectSame("dialect_mid('abc', 0, NULL)", [] { return rt::Variant::null(); });
}

TEST_F(PgFunctionsTest, ChrGivesTheCharacterOfACode) {
    // Code 0 and the surrogates are left out: the server's text can hold neither by itself.
    const double codes[] = {65,   97, 32,     9,     10,      233,   0x263A, 0xFFFD, 65.5,
                            66.5, -1, -30000, 32767, 32767.5, 32768, -32768, -32769};
    for (const double code : codes) {
        expectSame(QStringLiteral("dialect_chr(%1)").arg(number(code)),
                   [&] { return rt::Variant(QString(QChar(rt::CInt(rt::Variant(code))))); });
    }
}

TEST_F(PgFunctionsTest, NzAndIIfGiveOneOfTheirValues) {
    const struct {
        const char* call;
        rt::Variant first;   // Nz's value or IIf's condition
        rt::Variant second;  // the other value of Nz, IIf's True part
        rt::Variant third;   // IIf's False part
    } cases[] = {
        {"dialect_nz(NULL::text, 'x')", rt::Variant::null(), "x", {}},
        {"dialect_nz('a'::text, 'x')", "a", "x", {}},
        {"dialect_nz(''::text, 'x')", "", "x", {}},
        {"dialect_nz(NULL::double precision, 0)", rt::Variant::null(), 0, {}},
        {"dialect_nz(2.5::double precision, 0)", 2.5, 0, {}},
        {"dialect_nz(NULL, NULL)", rt::Variant::null(), rt::Variant::null(), {}},
        {"dialect_nz(NULL::bigint, 7)", rt::Variant::null(), 7, {}},
        {"dialect_iif(1 < 2, 'yes', 'no')", true, "yes", "no"},
        {"dialect_iif(1 > 2, 'yes', 'no')", false, "yes", "no"},
        {"dialect_iif(NULL::boolean, 'yes', 'no')", rt::Variant::null(), "yes", "no"},
        {"dialect_iif(-1, 1, 2)", -1, 1, 2},
        {"dialect_iif(0, 1, 2)", 0, 1, 2},
        {"dialect_iif(0.4, 1, 2)", 0.4, 1, 2},
        {"dialect_iif(NULL::double precision, 1, 2)", rt::Variant::null(), 1, 2},
        {"dialect_iif(NULL, 1, 2)", rt::Variant::null(), 1, 2},
        {"dialect_iif(5, NULL, 2)", 5, rt::Variant::null(), 2},
        {"dialect_iif(' True ', 1, 2)", " True ", 1, 2},
        {"dialect_iif('FALSE', 1, 2)", "FALSE", 1, 2},
        {"dialect_iif('0', 1, 2)", "0", 1, 2},
        {"dialect_iif('2.5', 1, 2)", "2.5", 1, 2},
        {"dialect_iif('maybe', 1, 2)", "maybe", 1, 2},
    };
    for (const auto& c : cases) {
        const bool nz = QByteArray(c.call).startsWith("dialect_nz");
        expectSame(c.call, [&] {
            if (nz) {
                return c.first.isNull() ? c.second : c.first;
            }
            return !c.first.isNull() && rt::CBool(c.first) ? c.second : c.third;
        });
    }
}

// Every dividend against every divisor: signs, halves, zero, -1 and the ends of a Long.
TEST_F(PgFunctionsTest, ModKeepsTheDividendsSign) {
    const double dividends[] = {7, -7, 6, 0, 3, -2147483648.0, 2147483647, 2147483648.0, 2.5, 3.5};
    const double divisors[] = {3, -3, 5, -1, 2, 2.5, 0, 0.4, -2147483649.0};
    for (const double a : dividends) {
        for (const double b : divisors) {
            expectSame(QStringLiteral("dialect_mod(%1, %2)").arg(number(a), number(b)), [&] {
                const qint32 dividend = rt::CLng(rt::Variant(a));
                const qint32 divisor = rt::CLng(rt::Variant(b));
                if (divisor == 0) {
                    throw rt::Error::standard(rt::DivisionByZero);
                }
                return rt::Variant(divisor == -1 ? 0 : dividend % divisor);
            });
        }
    }
    expectSame("dialect_mod(NULL, 0)", [] { return rt::Variant::null(); });
}

// Serials at the edges of days and of the calendar, on both sides of the epoch.
const double kSerials[] = {
    0,           0.25,    0.5,      0.999999,      0.9999999,      1,          -0.25,
    -0.75,       -1,      -1.25,    -1.75,         -1.9999999,     -2.0000001, 59,
    60,          61,      45322.75, 45351.5,       -36522,         -657434,    -657434.5,
    -657434.999, -657435, 2958465,  2958465.99999, 2958465.999999, 2958466,    -1e12,
    1e12,
};

TEST_F(PgFunctionsTest, YearMonthAndDayOfASerial) {
    const struct {
        const char* name;
        int (*part)(const rt::DateParts&);
    } parts[] = {
        {"year", [](const rt::DateParts& p) { return p.year; }},
        {"month", [](const rt::DateParts& p) { return p.month; }},
        {"day", [](const rt::DateParts& p) { return p.day; }},
    };
    for (const auto& part : parts) {
        for (const double s : kSerials) {
            expectSame(QStringLiteral("dialect_%1(%2)").arg(part.name, number(s)), [&] {
                return rt::Variant(part.part(rt::splitDate(rt::CDate(rt::Variant(s)))));
            });
        }
    }
}

TEST_F(PgFunctionsTest, DateAddMovesByIntervals) {
    const struct {
        const char* interval;
        double number;
        double date;
    } cases[] = {
        // Months keep the day, or take the last day of a shorter month.
        {"m", 1, serial(2024, 1, 31)},
        {"m", 1, serial(2023, 1, 31, 18, 30)},
        {"m", -1, serial(2024, 3, 31)},
        {"m", 13, serial(2023, 12, 31)},
        {"q", 1, serial(2024, 11, 30)},
        {"q", -1, serial(2024, 5, 31)},
        {"yyyy", 1, serial(2024, 2, 29)},
        {"yyyy", 4, serial(2024, 2, 29)},
        {"yyyy", -1, serial(1900, 3, 1)},
        {"M", 2, serial(2024, 12, 31, 6)},
        {"YYYY", 1, -1.25},
        {"m", 1, -0.75},
        {"m", -1, -1.9999999},
        // Days and times move along the timeline, through the epoch either way.
        {"d", 1, -1.25},
        {"d", -1, 0.25},
        {"y", 1, 1.5},
        {"w", 3, 0},
        {"ww", 2, -3.5},
        {"h", -7, 0.25},
        {"h", 30, -2.5},
        {"n", 90, 0.999},
        {"n", -1, 0},
        {"s", 1, 0.999988425925926},
        {"s", -86400, 1},
        // Times round to the nearest second, a half second up.
        {"s", 0, 0.5 / 86400},
        {"s", 0, 2.5 / 86400},
        {"s", 0, 1.4999 / 86400},
        {"s", 0, -1 - 0.5 / 86400},
        {"s", 0, -1 - 1.5 / 86400},
        {"n", 0, 1 - 0.5 / 86400},
        {"D", 2.5, 0},
        {"d", 3.5, 0},
        {"d", -2.5, 0},
        {"d", 0.4, 0.5},
        // The ends of the calendar and of a Long.
        {"yyyy", 7899, serial(2100, 1, 1)},
        {"yyyy", 7900, serial(2100, 1, 1)},
        {"yyyy", -2000, serial(2099, 12, 31)},
        {"yyyy", -2001, serial(2099, 12, 31)},
        {"m", 1e9, 0},
        {"m", -2147483648.0, 0},
        {"d", -1, -657434},
        {"d", 1, 2958465},
        {"s", 1, 2958465.99998},
        {"d", 2147483647.4, 0},
        {"d", 2147483648.0, 0},
        {"d", -2147483649.0, 0},
        {"d", 1, 2958466},
        {"d", 1, -657435},
        // Intervals the runtime doesn't have.
        {"x", 1, 0},
        {"", 1, 0},
        {"mm", 1, 0},
        {"yy", 1, 0},
    };
    for (const auto& c : cases) {
        expectSame(QStringLiteral("dialect_dateadd(%1, %2, %3)")
                       .arg(text(c.interval), number(c.number), number(c.date)),
                   [&] {
                       const double date = rt::CDate(rt::Variant(c.date));
                       return rt::Variant::date(rt::DateAdd(c.interval, c.number, date));
                   });
    }
    expectSame("dialect_dateadd('x', NULL, 0)", [] { return rt::Variant::null(); });
}

TEST_F(PgFunctionsTest, DateDiffCountsBoundaries) {
    const std::tuple<const char*, double, double> cases[] = {
        {"yyyy", serial(2023, 12, 31, 23, 59, 59), serial(2024, 1, 1)},
        {"yyyy", serial(2024, 1, 1), serial(2024, 12, 31)},
        {"yyyy", serial(2024, 6, 1), serial(1999, 6, 1)},
        {"q", serial(2024, 3, 31), serial(2024, 4, 1)},
        {"q", serial(2024, 1, 1), serial(2023, 12, 31)},
        {"m", serial(2024, 1, 31), serial(2024, 2, 1)},
        {"m", -1.25, 0.5},
        {"m", -657434, 2958465},
        {"d", 0.9, 1.1},
        {"d", 1.1, 0.9},
        {"d", -1.25, -0.25},
        {"d", -0.75, 0.25},
        {"d", -1.9999999, 0},
        {"y", 10, 20.5},
        // Whole weeks of days, cut toward zero.
        {"w", 0, 6.9},
        {"w", 0, 7},
        {"w", 0, -13},
        {"w", 0, -14},
        {"w", 3.5, 10.2},
        // Sundays crossed: serial 0 is a Saturday, 1 a Sunday.
        {"ww", 0, 1},
        {"ww", 1, 7},
        {"ww", 1, 8},
        {"ww", 0.99, 1.01},
        {"ww", 8, 1},
        {"ww", -6, -5},
        {"ww", -13, 1},
        {"WW", serial(2024, 1, 6), serial(2024, 1, 7)},
        {"h", 0.25, 0.2917},
        {"h", -1.25, -1.3},
        {"n", 0, 0.0007},
        {"n", 0.5, -0.5},
        {"s", 0, 0.00001},
        {"s", -1.00001, -1},
        {"s", 0, 24855},
        {"s", 0, 24856},
        {"s", 0, -24856},
        {"s", -657434, 2958465},
        {"n", -657434, 2958465},
        {"x", 0, 1},
        {"d", 2958466, 0},
        {"d", 0, -657435},
    };
    for (const auto& [interval, from, to] : cases) {
        expectSame(QStringLiteral("dialect_datediff(%1, %2, %3)")
                       .arg(text(interval), number(from), number(to)),
                   [&] {
                       const double date1 = rt::CDate(rt::Variant(from));
                       const double date2 = rt::CDate(rt::Variant(to));
                       return rt::Variant(int(rt::DateDiff(interval, date1, date2)));
                   });
    }
    expectSame("dialect_datediff('d', NULL, 0)", [] { return rt::Variant::null(); });
}

TEST_F(PgFunctionsTest, LikeMatchesTheDialectsWildcards) {
    const struct {
        const char* pattern;
        const char* value;
    } cases[] = {
        {"b*", "Bob"},       {"B*", "bob"},
        {"b*", "ab"},        {"*", ""},
        {"?", ""},           {"?o?", "Bob"},
        {"?o?", "Boob"},     {"b#*", "b1x"},
        {"b#*", "bx1"},      {"#", "٣"},
        {"[a-c]*", "Carl"},  {"[a-c]*", "dan"},
        {"[A-C]x", "bx"},    {"[!a-b]*", "carl"},
        {"[!a-b]*", "Bob"},  {"*[*]", "a*"},
        {"*[*]", "ab"},      {"[?]", "?"},
        {"[#]", "#"},        {"[[]", "["},
        {"[]]", "]"},        {"[]x", "x"},
        {"[!]x", "ax"},      {"[z-a]", "m"},
        {"[!z-a]", "m"},     {"[a-]", "-"},
        {"[-a]", "-"},       {"[!!]", "!"},
        {"[a-cx-z]", "y"},   {"*a*b*c*", "xxaxxbxxcxx"},
        {"*a*b*c", "abcab"}, {"*ab", "aab"},
        {"a*a", "a"},        {"É*", "école"},
        {"ß", "SS"},         {"[é-ë]", "Ê"},
        {"ΣΑΣ", "σας"},      {"a.c", "abc"},
        {"a.c", "a.c"},      {"a+", "aa"},
        {"(x)|y", "y"},      {"$^\\", "$^\\"},
        {"a{2}", "aa"},      {"*", "line\nbreak"},
        {"?", "\n"},         {"a ", "a"},
        {"a", "a "},         {"it's", "IT'S"},
        {"a[", "a["},        {"[a-c", "b"},
        {"*]", "x]"},        {"ſ*", "SOS"},
        {"σ", "ς"},          {"[ϐ]", "Β"},
        {"a%*", "a%x"},      {"a%*", "abc"},
        {"a_?", "a_b"},      {"a_?", "abc"},
        {"[%]", "%"},        {"%[", "x["},
        {"[\\-^]", "]"},     {"[*-,]", "+"},
        {"a%", "alice"},     {"a%", "A%"},
        {"_", "x"},          {"_", "_"},
    };
    for (const auto& c : cases) {
        const QString pattern = QString::fromUtf8(c.pattern);
        const QString value = QString::fromUtf8(c.value);
        expectSame(QStringLiteral("dialect_like(%1, %2)").arg(text(pattern), text(value)),
                   [&] { return rt::Variant(engine::dialect::matchesPattern(value, pattern)); });
    }
    expectSame("dialect_like(NULL, 'a')", [] { return rt::Variant::null(); });
    expectSame("dialect_like('[', NULL)", [] { return rt::Variant::null(); });
}
}  // namespace
