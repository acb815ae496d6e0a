// The dialect's functions on a PostgreSQL server against the runtime: each call is made on the
// server and in the runtime with the same values, and must give the same value or the same failure.

#include "platform/engine/pg_functions.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/engine/dialect.h"
#include "platform/engine/engine.h"
#include "platform/rt_error.h"

#include <QRegularExpression>
#include <QTemporaryDir>

#include "backends.h"

#include <gtest/gtest.h>
#include <libpq-fe.h>

#include <functional>
#include <initializer_list>

namespace {

using Runtime = std::function<rt::Variant()>;

QString text(const QString& value) {
    return "'" + QString(value).replace('\'', QLatin1String("''")) + "'::text";
}

QString number(double value) {
    return "'" + QString::number(value, 'g', 17) + "'::double precision";
}

double serial(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    return rt::joinDate({year, month, day, hour, minute, second});
}

// The runtime's date of a serial, which fails off the calendar.
double date(double serial) {
    return rt::CDate(rt::Variant(serial));
}

// The runtime's count of characters, as the embedded engine's callbacks check it.
int characterCount(double value, int least) {
    const qint32 count = rt::CLng(rt::Variant(value));
    if (count < least) {
        throw rt::Error::standard(rt::InvalidProcedureCall);
    }
    return count;
}

// What a call gave, as one text: a value as the server writes it, numbers as doubles do; "Null";
// or a failure's number and text.
QString valueOutcome(const QString& value) {
    bool isNumber = false;
    const double n = value.toDouble(&isNumber);
    return isNumber ? QString::number(n, 'g', 17) : value;
}

QString failureOutcome(int number, const QString& message) {
    return QStringLiteral("failure %1: %2").arg(number).arg(message);
}

QString runtimeOutcome(const Runtime& call) {
    try {
        const rt::Variant value = call();
        if (value.isNull()) {
            return "Null";
        }
        if (value.type() == rt::VarType::Boolean) {
            return rt::CBool(value) ? "t" : "f";
        }
        return value.isString() ? valueOutcome(value.text())
                                : QString::number(rt::CDbl(value), 'g', 17);
    } catch (const rt::Error& failure) {
        return failureOutcome(failure.number(), failure.description());
    }
}

// A fresh database on the server, which the engine fills with the functions as it does any other.
class PgFunctionsTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (testing_support::postgresqlServerIsThere()) {
            const QString location = testing_support::newDatabaseLocation(
                testing_support::Backend::Postgresql, QTemporaryDir(), "functions");
            engine::createDatabase(location)->close();
            connection = PQconnectdb(location.toUtf8().constData());
        }
    }
    static void TearDownTestSuite() { PQfinish(connection); }

    void SetUp() override {
        if (!testing_support::postgresqlServerIsThere()) {
            GTEST_SKIP() << testing_support::kNoServer;
        }
        ASSERT_EQ(PQstatus(connection), CONNECTION_OK) << PQerrorMessage(connection);
    }

    static QString serverOutcome(const QString& call) {
        PGresult* result = PQexec(connection, ("SELECT " + call).toUtf8().constData());
        QString outcome;
        if (PQresultStatus(result) == PGRES_TUPLES_OK) {
            outcome = PQgetisnull(result, 0, 0)
                          ? "Null"
                          : valueOutcome(QString::fromUtf8(PQgetvalue(result, 0, 0)));
        } else {
            // A state of the server's own has number 0, which no runtime failure has.
            outcome = failureOutcome(
                engine::pg::errorNumber(PQresultErrorField(result, PG_DIAG_SQLSTATE)),
                QString::fromUtf8(PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY)));
        }
        PQclear(result);
        return outcome;
    }

    // The call on the server gives what the runtime gives.
    static void expectSame(const QString& call, const Runtime& runtime) {
        EXPECT_EQ(serverOutcome(call), runtimeOutcome(runtime)) << call.toStdString();
    }

    static inline PGconn* connection = nullptr;
};

TEST(PgFunctionErrors, StatesCarryTheFailureNumber) {
    const std::pair<const char*, int> cases[] = {{"OV005", 5}, {"OV380", 380}, {"O3075", 3075},
                                                 {"22012", 0}, {"OV05", 0},    {"OV0050", 0},
                                                 {"OVABC", 0}, {"P0001", 0},   {"", 0}};
    for (const auto& [state, number] : cases) {
        EXPECT_EQ(engine::pg::errorNumber(state), number) << state;
    }
}

// A Null argument gives Null before any other argument is looked at, however invalid.
TEST_F(PgFunctionsTest, NullGivesNull) {
    for (const char* call :
         {"dialect_ucase(NULL::text)", "dialect_lcase(NULL::text)", "dialect_len(NULL::text)",
          "dialect_trim(NULL::text)", "dialect_ltrim(NULL::text)", "dialect_rtrim(NULL::text)",
          "dialect_left(NULL, -1)", "dialect_right('abc', NULL)", "dialect_mid(NULL, 0, -1)",
          "dialect_mid('abc', 0, NULL)", "dialect_mod(NULL, 0)", "dialect_dateadd('x', NULL, 0)",
          "dialect_datediff('d', NULL, 0)", "dialect_like(NULL, 'a')", "dialect_like('[', NULL)"}) {
        expectSame(call, [] { return rt::Variant::null(); });
    }
}

TEST_F(PgFunctionsTest, TextFunctionsOfOneText) {
    const std::pair<const char*, std::function<QString(QString)>> functions[] = {
        {"ucase", [](QString t) { return t.toUpper(); }},
        {"lcase", [](QString t) { return t.toLower(); }},
        {"trim", [](QString t) { return t.remove(QRegularExpression("^ +| +\\z")); }},
        {"ltrim", [](QString t) { return t.remove(QRegularExpression("^ +")); }},
        {"rtrim", [](QString t) { return t.remove(QRegularExpression(" +\\z")); }},
        {"len", [](QString t) { return QString::number(t.size()); }},
    };
    const QString texts[] = {
        "",          "abc",       "  Two Words  ", "   ", " \tTab\nbreak\n ", "Grüße aus Köln",
        "ÉCOLE été", "ΟΔΟΣ οδός", "O'Brien"};
    for (const auto& [name, runtime] : functions) {
        for (const QString& t : texts) {
            expectSame(QStringLiteral("dialect_%1(%2)").arg(name, text(t)),
                       [&] { return rt::Variant(runtime(t)); });
        }
    }
}

// Counts round half to even; below zero, or past a Long, they fail.
TEST_F(PgFunctionsTest, LeftRightAndMidCountCharacters) {
    const double counts[] = {0,    3,    5,    100, 2.5,          3.5,
                             -0.4, -0.5, -0.6, -1,  2147483647.4, 2147483648.0};
    for (const QString& t : {QString(), QString("Hello"), QString("Ärger")}) {
        for (const double count : counts) {
            expectSame(QStringLiteral("dialect_left(%1, %2)").arg(text(t), number(count)),
                       [&] { return rt::Variant(t.left(characterCount(count, 0))); });
            expectSame(QStringLiteral("dialect_right(%1, %2)").arg(text(t), number(count)),
                       [&] { return rt::Variant(t.right(characterCount(count, 0))); });
        }
    }
    // Mid's start is checked before its length; every start against every length.
    const QString t = "Hello";
    const double starts[] = {1, 2, 5, 6, 9, 0, -1, 0.5, 1.5, 2147483647};
    const double lengths[] = {0, 1, 3, 5, 10, -1, 2.5, -0.5, 2147483647, 2147483648.0};
    for (const double start : starts) {
        expectSame(QStringLiteral("dialect_mid(%1, %2)").arg(text(t), number(start)),
                   [&] { return rt::Variant(t.mid(characterCount(start, 1) - 1)); });
        for (const double length : lengths) {
            expectSame(QStringLiteral("dialect_mid(%1, %2, %3)")
                           .arg(text(t), number(start), number(length)),
                       [&] {
                           const int from = characterCount(start, 1);
                           return rt::Variant(t.mid(from - 1, characterCount(length, 0)));
                       });
        }
    }
}

TEST_F(PgFunctionsTest, ChrGivesTheCharacterOfACode) {
    // Code 0 and the surrogates are left out: the server's text can hold neither by itself.
    const double codes[] = {65,   97, 9,      10,    233,     0x263A, 0xFFFD, 65.5,
                            66.5, -1, -30000, 32767, 32767.5, 32768,  -32768, -32769};
    for (const double code : codes) {
        expectSame(QStringLiteral("dialect_chr(%1)").arg(number(code)),
                   [&] { return rt::Variant(QString(QChar(rt::CInt(rt::Variant(code))))); });
    }
}

TEST_F(PgFunctionsTest, NzGivesItsValueUnlessNull) {
    const std::pair<const char*, rt::Variant> cases[] = {
        {"NULL::text, 'x'", "x"}, {"''::text, 'x'", ""},  {"NULL::float8, 0", 0},
        {"2.5::float8, 0", 2.5},  {"NULL::bigint, 7", 7}, {"NULL, NULL", rt::Variant::null()}};
    for (const auto& [arguments, value] : cases) {
        expectSame(QStringLiteral("dialect_nz(%1)").arg(arguments), [&] { return value; });
    }
}

// The condition counts as the runtime's CBool takes it, and Null as False.
TEST_F(PgFunctionsTest, IIfChoosesByItsCondition) {
    const rt::Variant null = rt::Variant::null();
    const std::pair<const char*, rt::Variant> conditions[] = {
        {"-1", -1},     {"NULL::boolean", null}, {"0", 0},         {"NULL::float8", null},
        {"0.4", 0.4},   {"' True '", " True "},  {"'0'", "0"},     {"'FALSE'", "FALSE"},
        {"NULL", null}, {"'maybe'", "maybe"},    {"'2.5'", "2.5"}, {"1 > 2", false},
        {"1 < 2", true}};
    for (const auto& [condition, value] : conditions) {
        expectSame(QStringLiteral("dialect_iif(%1, 'yes', 'no')").arg(condition),
                   [&] { return rt::Variant(!value.isNull() && rt::CBool(value) ? "yes" : "no"); });
    }
    expectSame("dialect_iif(5, NULL, 2)", [] { return rt::Variant::null(); });
}

// Every dividend against every divisor: signs, halves, zero, -1 and the ends of a Long.
TEST_F(PgFunctionsTest, ModKeepsTheDividendsSign) {
    const double dividends[] = {7, -7, 6, 0, -2147483648.0, 2147483647, 2147483648.0, 2.5, 3.5};
    const double divisors[] = {3, -3, 5, -1, 2.5, 0, 0.4, -2147483649.0};
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
}

// Serials at the edges of days and of the calendar, on both sides of the epoch.
TEST_F(PgFunctionsTest, YearMonthAndDayOfASerial) {
    const double serials[] = {
        0,       0.5,         0.999999,       0.9999999,  1,          -0.25,
        -0.75,   -1,          -1.75,          -1.9999999, -2.0000001, 59,
        60,      61,          45351.5,        -36522,     -657434,    -657434.5,
        -657435, 2958465.999, 2958465.999999, 2958466,    -1e12,      1e12};
    const std::pair<const char*, int (*)(const rt::DateParts&)> parts[] = {
        {"year", [](const rt::DateParts& p) { return p.year; }},
        {"month", [](const rt::DateParts& p) { return p.month; }},
        {"day", [](const rt::DateParts& p) { return p.day; }},
    };
    for (const auto& [name, part] : parts) {
        for (const double s : serials) {
            expectSame(QStringLiteral("dialect_%1(%2)").arg(name, number(s)),
                       [&] { return rt::Variant(part(rt::splitDate(date(s)))); });
        }
    }
}

using Cases = std::initializer_list<std::tuple<const char*, double, double>>;

TEST_F(PgFunctionsTest, DateAddMovesByIntervals) {
    // Months keep the day, or take the last day of a shorter month, up to the calendar's ends.
    const Cases months = {
        {"m", 1, serial(2024, 1, 31)},        {"m", 1, serial(2023, 1, 31, 18, 30)},
        {"m", -1, serial(2024, 3, 31)},       {"m", 13, serial(2023, 12, 31)},
        {"q", 1, serial(2024, 11, 30)},       {"q", -1, serial(2024, 5, 31)},
        {"yyyy", 1, serial(2024, 2, 29)},     {"yyyy", -1, serial(1900, 3, 1)},
        {"M", 2, serial(2024, 12, 31, 6)},    {"yyyy", 7899, serial(2100, 1, 1)},
        {"yyyy", 7900, serial(2100, 1, 1)},   {"yyyy", -2000, serial(2099, 12, 31)},
        {"yyyy", -2001, serial(2099, 12, 31)}};
    // Days, times and months of negative serials move along the timeline, through the epoch
    // either way, and off the calendar fail; so do intervals the runtime doesn't have. Numbers
    // round half to even.
    const Cases timeline = {
        {"YYYY", 1, -1.25}, {"m", 1, -0.75},   {"m", -1, -1.9999999}, {"d", 1, -1.25},
        {"d", -1, 0.25},    {"y", 1, 1.5},     {"w", 3, 0},           {"ww", 2, -3.5},
        {"h", -7, 0.25},    {"h", 30, -2.5},   {"n", 90, 0.999},      {"n", -1, 0},
        {"s", -86400, 1},   {"m", 1e9, 0},     {"d", -1, -657434},    {"d", 1, 2958465},
        {"d", 1, 2958466},  {"d", 1, -657435}, {"x", 1, 0},           {"", 1, 0},
        {"mm", 1, 0},       {"yy", 1, 0},      {"D", 2.5, 0},         {"d", 3.5, 0},
        {"d", -2.5, 0},     {"d", 0.4, 0.5}};
    // Times round to the nearest second, a half second up; numbers past a Long fail.
    const Cases rounding = {
        {"s", 0, 0.5 / 86400},       {"s", 0, 2.5 / 86400},      {"s", 0, 1.4999 / 86400},
        {"s", 0, -1 - 0.5 / 86400},  {"s", 0, -1 - 1.5 / 86400}, {"n", 0, 1 - 0.5 / 86400},
        {"s", 1, 0.999988425925926}, {"s", 1, 2958465.99998},    {"d", 2147483647.4, 0},
        {"d", 2147483648.0, 0},      {"d", -2147483649.0, 0},    {"m", -2147483648.0, 0}};
    for (const Cases& cases : {months, timeline, rounding}) {
        for (const auto& [interval, count, from] : cases) {
            expectSame(QStringLiteral("dialect_dateadd(%1, %2, %3)")
                           .arg(text(interval), number(count), number(from)),
                       [&] { return rt::Variant::date(rt::DateAdd(interval, count, date(from))); });
        }
    }
}

TEST_F(PgFunctionsTest, DateDiffCountsBoundaries) {
    const Cases calendar = {{"yyyy", serial(2023, 12, 31, 23, 59, 59), serial(2024, 1, 1)},
                            {"yyyy", serial(2024, 1, 1), serial(2024, 12, 31)},
                            {"yyyy", serial(2024, 6, 1), serial(1999, 6, 1)},
                            {"q", serial(2024, 3, 31), serial(2024, 4, 1)},
                            {"q", serial(2024, 1, 1), serial(2023, 12, 31)},
                            {"m", serial(2024, 1, 31), serial(2024, 2, 1)},
                            {"WW", serial(2024, 1, 6), serial(2024, 1, 7)}};
    // Days on both sides of the epoch; whole weeks of days, cut toward zero; Sundays crossed,
    // serial 0 being a Saturday and 1 a Sunday.
    const Cases days = {
        {"d", 0.9, 1.1},      {"d", 1.1, 0.9}, {"d", -1.25, -0.25}, {"d", -0.75, 0.25},
        {"d", -1.9999999, 0}, {"y", 10, 20.5}, {"m", -1.25, 0.5},   {"w", 0, 6.9},
        {"w", 0, 7},          {"w", 0, -13},   {"w", 0, -14},       {"w", 3.5, 10.2},
        {"ww", 0, 1},         {"ww", 1, 7},    {"ww", 1, 8},        {"ww", 0.99, 1.01},
        {"ww", 8, 1},         {"ww", -6, -5},  {"ww", -13, 1},      {"x", 0, 1}};
    // Times, and the ends of a Long's seconds and of the calendar.
    const Cases times = {{"h", 0.25, 0.2917},     {"h", -1.25, -1.3},      {"n", 0, 0.0007},
                         {"n", 0.5, -0.5},        {"s", 0, 0.00001},       {"s", -1.00001, -1},
                         {"s", 0, 24855},         {"s", 0, 24856},         {"s", 0, -24856},
                         {"s", -657434, 2958465}, {"n", -657434, 2958465}, {"m", -657434, 2958465},
                         {"d", 2958466, 0},       {"d", 0, -657435}};
    for (const Cases& cases : {calendar, days, times}) {
        for (const auto& [interval, from, to] : cases) {
            expectSame(
                QStringLiteral("dialect_datediff(%1, %2, %3)")
                    .arg(text(interval), number(from), number(to)),
                [&] { return rt::Variant(int(rt::DateDiff(interval, date(from), date(to)))); });
        }
    }
}

TEST_F(PgFunctionsTest, LikeMatchesTheDialectsWildcards) {
    using Cases = std::initializer_list<std::pair<const char*, const char*>>;
    // The wildcards and the ranges, without regard to case.
    const Cases wildcards = {
        {"b*", "Bob"},      {"B*", "bob"},       {"b*", "ab"},       {"*", ""},
        {"?", ""},          {"?o?", "Bob"},      {"?o?", "Boob"},    {"b#*", "b1x"},
        {"b#*", "bx1"},     {"#", "٣"},          {"[a-c]*", "Carl"}, {"[a-c]*", "dan"},
        {"[A-C]x", "bx"},   {"[!a-b]*", "carl"}, {"[!a-b]*", "Bob"}, {"*[*]", "a*"},
        {"*[*]", "ab"},     {"[?]", "?"},        {"[#]", "#"},       {"[[]", "["},
        {"[]]", "]"},       {"[]x", "x"},        {"[!]x", "ax"},     {"[z-a]", "m"},
        {"[!z-a]", "m"},    {"[a-]", "-"},       {"[-a]", "-"},      {"[!!]", "!"},
        {"[a-cx-z]", "y"},  {"*ab", "aab"},      {"a*a", "a"},       {"*a*b*c*", "xxaxxbxxcxx"},
        {"*a*b*c", "abcab"}};
    // Letters of other scripts, and whatever means something in a regular expression or in the
    // other SQL's LIKE, which here matches itself alone.
    const Cases literals = {
        {"É*", "école"}, {"ß", "SS"},      {"[é-ë]", "Ê"},   {"ΣΑΣ", "σας"},       {"ſ*", "SOS"},
        {"σ", "ς"},      {"[ϐ]", "Β"},     {"a.c", "abc"},   {"a.c", "a.c"},       {"a+", "aa"},
        {"(x)|y", "y"},  {"$^\\", "$^\\"}, {"a{2}", "aa"},   {"*", "line\nbreak"}, {"?", "\n"},
        {"a ", "a"},     {"a", "a "},      {"it's", "IT'S"}, {"a[", "a["},         {"[a-c", "b"},
        {"*]", "x]"},    {"a%*", "a%x"},   {"a%*", "abc"},   {"a_?", "a_b"},       {"a_?", "abc"},
        {"[%]", "%"},    {"%[", "x["},     {"[\\-^]", "]"},  {"[*-,]", "+"},       {"a%", "alice"},
        {"a%", "A%"},    {"_", "x"},       {"_", "_"}};
    for (const Cases& cases : {wildcards, literals}) {
        for (const auto& [pattern, value] : cases) {
            const QString p = QString::fromUtf8(pattern);
            const QString v = QString::fromUtf8(value);
            expectSame(QStringLiteral("dialect_like(%1, %2)").arg(text(p), text(v)),
                       [&] { return rt::Variant(engine::dialect::matchesPattern(v, p)); });
        }
    }
}

}  // namespace
