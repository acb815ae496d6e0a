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
        {0.5, 0},
        {1.5, 2},
        {2.5, 2},
        {-0.5, 0},
        {-1.5, -2},
        {0.6, 1},
        {-0.6, -1},
        {"1.5", 2},
        {"0.5", 0},
        {" 12 ", 12},
        {true, -1},
        {Variant(), 0},
        {32767.4, 32767},
        {-32768.5, -32768},             // to even, in range
        {Variant::currency(25000), 2},  // 2.5 as currency
    };
    for (const auto& [in, out] : cases) {
        SCOPED_TRACE(rt::CStr(in).toStdString());
        EXPECT_EQ(rt::CInt(in), out);
        EXPECT_EQ(rt::CLng(in), out);
    }
    EXPECT_EQ(rt::CLng(2147483647.0), 2147483647);
}

TEST(Conversions, RangesAreCheckedAfterRoundingAndBadInputRaisesTheRuntimeError) {
    const struct {
        const char* call;
        std::function<void()> action;
        int error;
    } cases[] = {
        {"CInt(32767.5)", [] { rt::CInt(32767.5); }, rt::Overflow},
        {"CInt(32768.0)", [] { rt::CInt(32768.0); }, rt::Overflow},
        {"CInt(-32769)", [] { rt::CInt(-32769); }, rt::Overflow},
        {"CLng(2147483647.5)", [] { rt::CLng(2147483647.5); }, rt::Overflow},
        {"CSng(1e39)", [] { rt::CSng(1e39); }, rt::Overflow},
        {"CInt(\"\")", [] { rt::CInt(""); }, rt::TypeMismatch},
        {"CDbl(\"abc\")", [] { rt::CDbl("abc"); }, rt::TypeMismatch},
        {"CBool(\"Yes\")", [] { rt::CBool("Yes"); }, rt::TypeMismatch},
        {"CInt(Null)", [] { rt::CInt(Variant::null()); }, rt::InvalidUseOfNull},
        {"CStr(Null)", [] { rt::CStr(Variant::null()); }, rt::InvalidUseOfNull},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(errorOf(c.action), c.error) << c.call;
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
        {1e20, "1E+20"},
        {1e15, "1E+15"},
        {123456789012345.0, "123456789012345"},
        {1234567890123456.0, "1.23456789012346E+15"},
        {0.0001, "0.0001"},
        {0.00001, "1E-05"},
        {1.7976931348623157e308, "1.79769313486232E+308"},
        {-2.5, "-2.5"},
        {100.0, "100"},
        {6.5f, "6.5"},
        {float(1.0 / 3.0), "0.3333333"},
        {16777217.0f, "1.677722E+07"},
        {3.40282347e38f, "3.402823E+38"},
        {654322.23456f, "654322.3"},  // exactly 654322.25: a tie, away from zero
        {6.49f, "6.49"},
        {6.51f, "6.51"},
        {true, "True"},
        {false, "False"},
        {Variant(), ""},
        {qint16(-7), "-7"},
        // Dates show what they hold.
        {Variant::date(0), "12:00:00 AM"},
        {Variant::date(365.0), "12/30/1900"},
        {Variant::date(365.25), "12/30/1900 6:00:00 AM"},
        {Variant::date(1461.5), "12/31/1903 12:00:00 PM"},
        {Variant::date(3.34), "1/2/1900 8:09:36 AM"},
        {Variant::date(2958465), "12/31/9999"},
        {Variant::date(2958465 + 86399.0 / 86400), "12/31/9999 11:59:59 PM"},
        {Variant::date(25570), "1/2/1970"},
    };
    for (const auto& [in, out] : cases) {
        EXPECT_EQ(rt::CStr(in), QString(out)) << out;
    }
}

// Currency text is exact, without trailing zeros, and reads back.
TEST(DefaultText, CurrencyIsExactAndReadsBack) {
    const std::pair<qint64, const char*> cases[] = {
        {11000, "1.1"},  // CStr(CCur(1.1)) printed binary noise
        {12345000, "1234.5"},
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
    EXPECT_EQ(rt::CStr(Variant::currency(rt::CCur(1.1))), "1.1");
}

// Four decimals, ties to even as CInt and CLng ("Type Conversion Functions"); past the range of
// "Currency data type" is an overflow.
TEST(DefaultText, CurrencyRoundsHalfToEvenAndOverflowsPastItsRange) {
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
        SCOPED_TRACE(rt::CStr(c.in).toStdString());
        qint64 scaled = 0;
        EXPECT_EQ(errorOf([&] { scaled = rt::CCur(c.in); }), c.error);
        EXPECT_EQ(scaled, c.scaled);
    }
}

TEST(NumbersFromText, ReadsSignsSymbolsAndParenthesesOnEitherSide) {
    const std::pair<const char*, double> cases[] = {
        // Platform facts: FormatCurrency(-5), FormatCurrency(1234.5), CDbl("1,000"), IsNumeric of
        // "$5", " 12 " and "&H10".
        {"($5.00)", -5},
        {"$1,234.50", 1234.5},
        {"1,000", 1000},
        {"$5", 5},
        {" 12 ", 12},
        {"&H10", 16},
        {"&HFFFF", -1},
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
        {"1e3", 1000},
        {"-3.5", -3.5},
        {".5", 0.5},
    };
    for (const auto& [text, value] : cases) {
        EXPECT_TRUE(rt::IsNumeric(text)) << text;
        EXPECT_EQ(rt::CDbl(text), value) << text;
    }
    // The other kinds.
    const std::pair<Variant, bool> kinds[] = {
        {Variant(), true}, {Variant::null(), false}, {true, true}, {Variant::date(1), false}};
    for (const auto& [in, numeric] : kinds) {
        EXPECT_EQ(rt::IsNumeric(in), numeric) << int(in.type());
    }
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

// What the program displays, it can read back: FormatCurrency writes a negative amount in
// parentheses (platform facts), each locale writes its symbol where it belongs.
TEST(NumbersFromText, CurrencyTextReadsBack) {
    const qint64 scaledAmounts[] = {-50000, -12345000, 2500, 12345678900, -100};
    for (qint64 scaled : scaledAmounts) {
        const QString shown = rt::FormatCurrency(scaled / 10000.0);
        EXPECT_EQ(rt::CDbl(shown), scaled / 10000.0) << shown.toStdString();
        EXPECT_EQ(rt::CCur(shown), scaled) << shown.toStdString();
    }
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
