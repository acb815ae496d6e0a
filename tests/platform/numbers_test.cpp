// Numbers read from text and Currency values written as text (en-US unless a test names a
// locale).

#include "platform/convert.h"
#include "platform/formats.h"
#include "platform/rt_error.h"

#include "fixtures.h"

#include <gtest/gtest.h>

#include <limits>

using rt::Variant;

namespace {

using testing_support::errorOf;

constexpr qint64 currencyMax = std::numeric_limits<qint64>::max();
constexpr qint64 currencyMin = std::numeric_limits<qint64>::min();

TEST(NumbersFromText, ReadsSignsSymbolsAndParenthesesOnEitherSide) {
    const struct {
        const char* text;
        double value;
    } cases[] = {
        {"($5.00)", -5},        // FormatCurrency(-5), platform facts
        {"$1,234.50", 1234.5},  // FormatCurrency(1234.5), platform facts
        {"1,000", 1000},        // CDbl("1,000"), platform facts
        {"$5", 5},              // IsNumeric("$5"), platform facts
        {" 12 ", 12},           // IsNumeric(" 12 "), platform facts
        {"&H10", 16},           // IsNumeric("&H10"), platform facts
        // The rest: leading or trailing sign, symbol and parentheses, "NUMPARSE structure".
        {"-$5", -5},
        {"$-5", -5},
        {"5-", -5},
        {"5$-", -5},
        {"5 $", 5},
        {"+5", 5},
        {"5+", 5},
        {"( 1,234.5 )", -1234.5},
        {"(1e3)", -1000},
        {"-.5", -0.5},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(rt::IsNumeric(c.text)) << c.text;
        EXPECT_EQ(rt::CDbl(c.text), c.value) << c.text;
    }
}

TEST(NumbersFromText, RefusesMoreThanOneWayOfSayingNegative) {
    const char* cases[] = {
        // IsNumeric is False for these, platform facts.
        "",
        "-",
        ".",
        // One sign, one symbol, one pair of parentheses around the digits, "NUMPARSE structure".
        "--5",
        "-5-",
        "+-5",
        "(-5)",
        "-(5)",
        "(5)-",
        "((5))",
        "(5",
        "5)",
        ")5(",
        "()",
        "$5$",
        "5$5",
        "$",
        "5 5",
        "1e",
        "1e+",
        "5-5",
    };
    for (const char* text : cases) {
        EXPECT_FALSE(rt::IsNumeric(text)) << text;
        EXPECT_EQ(errorOf([&] { rt::CDbl(text); }), rt::TypeMismatch) << text;
        EXPECT_EQ(errorOf([&] { rt::CCur(text); }), rt::TypeMismatch) << text;
        EXPECT_EQ(errorOf([&] { rt::CLng(text); }), rt::TypeMismatch) << text;
    }
}

// What the program displays, it can read back: FormatCurrency writes a negative amount in
// parentheses (platform facts), each locale writes its symbol where it belongs.
TEST(NumbersFromText, CurrencyTextReadsBack) {
    const qint64 scaledAmounts[] = {-50000, -12345000, 2500, 12345678900, -100};
    for (qint64 scaled : scaledAmounts) {
        const QString shown = rt::FormatCurrency(scaled / 10000.0);
        EXPECT_EQ(rt::CDbl(shown), scaled / 10000.0) << shown.toStdString();
        EXPECT_EQ(rt::CCur(shown), scaled) << shown.toStdString();
    }
    const QLocale locales[] = {QLocale(QLocale::English, QLocale::UnitedStates),
                               QLocale(QLocale::German, QLocale::Germany),
                               QLocale(QLocale::French, QLocale::France),
                               QLocale(QLocale::Dutch, QLocale::Netherlands)};
    for (const QLocale& locale : locales) {
        for (qint64 scaled : scaledAmounts) {
            const QString shown = locale.toCurrencyString(scaled / 10000.0);
            EXPECT_EQ(rt::parseNumberText(shown, locale), scaled / 10000.0) << shown.toStdString();
        }
    }
}

TEST(CurrencyText, IsExactWithoutTrailingZeros) {
    const struct {
        qint64 scaled;
        const char* text;
    } cases[] = {
        {11000, "1.1"},  // CStr(CCur(1.1)) printed binary noise
        {12345000, "1234.5"},
        {10000, "1"},
        {1, "0.0001"},
        {-5000, "-0.5"},
        {0, "0"},
        {currencyMax, "922337203685477.5807"},  // range, "Currency data type"
        {currencyMin, "-922337203685477.5808"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rt::CStr(Variant::currency(c.scaled)), QString(c.text)) << c.text;
        EXPECT_EQ(rt::CCur(c.text), c.scaled) << c.text;
    }
    EXPECT_EQ(rt::CStr(Variant::currency(rt::CCur(1.1))), "1.1");
}

// Four decimals, ties to even as CInt and CLng ("Type Conversion Functions"); past the range of
// "Currency data type" is an overflow.
TEST(CurrencyText, RoundsHalfToEvenAndOverflowsPastItsRange) {
    const struct {
        Variant in;
        qint64 scaled;  // 0 with an error
        int error;
    } cases[] = {
        {"1.00005", 10000, 0},
        {"1.00015", 10002, 0},
        {"1.000050001", 10001, 0},
        {"-1.00005", -10000, 0},
        {"-1.00015", -10002, 0},
        {"0.00005", 0, 0},
        {"922337203685477.58074", currencyMax, 0},
        {"922337203685477.58075", 0, rt::Overflow},
        {"922337203685477.5808", 0, rt::Overflow},
        {"-922337203685477.5809", 0, rt::Overflow},
        {"1e15", 0, rt::Overflow},
        {"9.2233720368547758e14", currencyMax - 7, 0},
        {2.5, 25000, 0},
        {922337203685477.625, 0, rt::Overflow},  // the next double up: times 10000 is 2^63
        {-1e15, 0, rt::Overflow},
        {1e300, 0, rt::Overflow},
    };
    for (const auto& c : cases) {
        qint64 scaled = 0;
        EXPECT_EQ(errorOf([&] { scaled = rt::CCur(c.in); }), c.error)
            << rt::CStr(c.in).toStdString();
        EXPECT_EQ(scaled, c.scaled) << rt::CStr(c.in).toStdString();
    }
}

}  // namespace
