// Runtime values: conversions, default texts, numbers read from text and Currency written as text,
// against the platform's own observable behaviour (en-US unless a test names a locale).

#include "platform/convert.h"
#include "platform/formats.h"
#include "platform/rt_error.h"

#include "fixtures.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

using rt::Variant;

namespace {

using testing_support::errorOf;

constexpr qint64 currencyMax = std::numeric_limits<qint64>::max();
constexpr qint64 currencyMin = std::numeric_limits<qint64>::min();

TEST(Conversions, IntegerRoundingIsHalfToEven) {
    const std::pair<Variant, qint32> cases[] = {
        {0.5, 0},   {1.5, 2},   {2.5, 2},     {-0.5, 0},      {-1.5, -2},        {-0.6, -1},
        {"1.5", 2}, {true, -1}, {" 12 ", 12}, {Variant(), 0}, {-32768.5, -32768}};
    for (const auto& [in, out] : cases) {
        SCOPED_TRACE(rt::CStr(in).toStdString());
        EXPECT_EQ(rt::CInt(in), out);
        EXPECT_EQ(rt::CLng(in), out);
    }
    EXPECT_EQ(rt::CInt(Variant::currency(25000)), 2);  // 2.5 as currency
    EXPECT_EQ(rt::CLng(2147483647.0), 2147483647);
}

TEST(Conversions, RangesAreCheckedAfterRoundingAndBadInputRaisesTheRuntimeError) {
    const std::pair<std::function<void()>, int> cases[] = {
        {[] { rt::CInt(32767.5); }, rt::Overflow},
        {[] { rt::CInt(-32769); }, rt::Overflow},
        {[] { rt::CLng(2147483647.5); }, rt::Overflow},
        {[] { rt::CSng(1e39); }, rt::Overflow},
        {[] { rt::CInt(""); }, rt::TypeMismatch},
        {[] { rt::CDbl("abc"); }, rt::TypeMismatch},
        {[] { rt::CBool("Yes"); }, rt::TypeMismatch},
        {[] { rt::CInt(Variant::null()); }, rt::InvalidUseOfNull},
        {[] { rt::CStr(Variant::null()); }, rt::InvalidUseOfNull},
    };
    for (std::size_t row = 0; row < std::size(cases); ++row) {
        EXPECT_EQ(errorOf(cases[row].first), cases[row].second) << "row " << row;
    }
}

TEST(Conversions, BooleansFromText) {
    const std::pair<const char*, bool> cases[] = {{"true", true}, {"TRUE", true}, {"False", false},
                                                  {"0", false},   {"-1", true},   {"0.1", true}};
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(rt::CBool(text), value) << text;
    }
}

// Doubles show fifteen significant digits, Singles seven with ties away from zero.
TEST(DefaultText, OfEachKind) {
    const std::pair<Variant, const char*> cases[] = {
        {0.1 + 0.2, "0.3"},
        {2.0 / 3.0, "0.666666666666667"},
        {1e15, "1E+15"},
        {123456789012345.0, "123456789012345"},
        {1234567890123456.0, "1.23456789012346E+15"},
        {0.0001, "0.0001"},
        {0.00001, "1E-05"},
        {-2.5, "-2.5"},
        {100.0, "100"},
        {float(1.0 / 3.0), "0.3333333"},
        {16777217.0f, "1.677722E+07"},
        {654322.23456f, "654322.3"},  // exactly 654322.25: a tie, away from zero
        {true, "True"},
        {false, "False"},
        {Variant(), ""},
        {qint16(-7), "-7"},
        // Dates show what they hold.
        {Variant::date(365.25), "12/30/1900 6:00:00 AM"},
        {Variant::date(3.34), "1/2/1900 8:09:36 AM"},
    };
    for (const auto& [in, out] : cases) {
        EXPECT_EQ(rt::CStr(in), QString(out)) << out;
    }
}

// Currency text is exact, without trailing zeros, and reads back.
TEST(DefaultText, CurrencyIsExactAndReadsBack) {
    const std::pair<qint64, const char*> cases[] = {
        {11000, "1.1"},  // CStr(CCur(1.1)) printed binary noise
        {10000, "1"},
        {1, "0.0001"},
        {-5000, "-0.5"},
        {0, "0"},
        {currencyMax, "922337203685477.5807"},  // range, "Currency data type"
        {currencyMin, "-922337203685477.5808"},
    };
    for (const auto& [scaled, text] : cases) {
        EXPECT_EQ(rt::CStr(Variant::currency(scaled)), QString(text)) << text;
        EXPECT_EQ(rt::CCur(text), scaled) << text;
    }
}

// Four decimals, ties to even as CInt and CLng ("Type Conversion Functions"); past the range of
// "Currency data type" is an overflow.
TEST(DefaultText, CurrencyRoundsHalfToEvenAndOverflowsPastItsRange) {
    const std::pair<Variant, qint64> cases[] = {{"1.00005", 10000},     {"1.00015", 10002},
                                                {"1.000050001", 10001}, {"-1.00005", -10000},
                                                {"-1.00015", -10002},   {2.5, 25000}};
    for (const auto& [in, scaled] : cases) {
        EXPECT_EQ(rt::CCur(in), scaled) << rt::CStr(in).toStdString();
    }
    EXPECT_EQ(rt::CCur("922337203685477.58074"), currencyMax);
    EXPECT_EQ(rt::CCur("9.2233720368547758e14"), currencyMax - 7);
    // 922337203685477.625 is the double after the largest amount: times 10000 it is 2^63.
    for (const Variant& in : {Variant("922337203685477.58075"), Variant("-922337203685477.5809"),
                              Variant(922337203685477.625)}) {
        EXPECT_EQ(errorOf([&] { rt::CCur(in); }), rt::Overflow) << rt::CStr(in).toStdString();
    }
}

TEST(NumbersFromText, ReadsSignsSymbolsAndParenthesesOnEitherSide) {
    // One leading or trailing sign, symbol and pair of parentheses, as the runtime's number parser
    // takes them; FormatCurrency(-5) and the facts sheet's IsNumeric examples among them.
    const std::pair<const char*, double> cases[] = {
        {"($5.00)", -5},      {"$1,234.50", 1234.5}, {"1,000", 1000}, {" 12 ", 12},
        {"&H10", 16},         {"&HFFFF", -1},        {"-$5", -5},     {"$-5", -5},
        {"5-", -5},           {"5$-", -5},           {"5 $", 5},      {"5+", 5},
        {"( 1,234 )", -1234}, {"-.5", -0.5},         {"1e3", 1000}};
    for (const auto& [text, value] : cases) {
        EXPECT_TRUE(rt::IsNumeric(text)) << text;
        EXPECT_EQ(rt::CDbl(text), value) << text;
        EXPECT_EQ(rt::CCur(text), qint64(value * 10000)) << text;
    }
    // The other kinds: Empty and True are numbers, Null and a date aren't.
    EXPECT_EQ(QList<bool>({rt::IsNumeric(Variant()), rt::IsNumeric(true),
                           rt::IsNumeric(Variant::null()), rt::IsNumeric(Variant::date(1))}),
              QList<bool>({true, true, false, false}));
}

TEST(NumbersFromText, RefusesMoreThanOneWayOfSayingNegative) {
    const char* cases[] = {
        // IsNumeric is False for these, platform facts.
        "", "-", ".", "1.2.3", "12abc",
        // One sign, one symbol, one pair of parentheses around the digits, "NUMPARSE structure".
        "--5", "-5-", "+-5", "(-5)", "-(5)", "(5)-", "((5))", "(5", "5)", ")5(", "()", "$5$", "5$5",
        "$", "5 5", "1e", "1e+", "5-5"};
    for (const char* text : cases) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(rt::IsNumeric(text));
        EXPECT_EQ(errorOf([&] { rt::CDbl(text); }), rt::TypeMismatch);
        EXPECT_EQ(errorOf([&] { rt::CCur(text); }), rt::TypeMismatch);
        EXPECT_EQ(errorOf([&] { rt::CLng(text); }), rt::TypeMismatch);
    }
}

// What each locale displays as currency, with its symbol where it belongs, reads back.
TEST(NumbersFromText, CurrencyTextReadsBack) {
    const qint64 scaledAmounts[] = {-50000, -12345000, 2500, 12345678900, -100};
    for (const char* name : {"en_US", "de_DE", "fr_FR", "nl_NL"}) {
        const QLocale locale(QString::fromLatin1(name));
        for (qint64 scaled : scaledAmounts) {
            const QString shown = locale.toCurrencyString(scaled / 10000.0);
            EXPECT_EQ(rt::parseNumberText(shown, locale), scaled / 10000.0) << shown.toStdString();
        }
    }
}

TEST(NumbersFromText, ValReadsTheLeadingNumber) {
    const std::pair<const char*, double> cases[] = {
        {"1615 198th St", 1615198}, {"1,000", 1},   {"&H10", 16}, {"&HFFFF", -1}, {"abc", 0},
        {" 2.5e2x", 250},           {"-1.5", -1.5}, {"", 0},
    };
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(rt::Val(text), value) << text;
    }
}

}  // namespace
