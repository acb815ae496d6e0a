// Runtime values: conversions, default texts, dates and formats, against the platform's own
// observable behaviour (en-US).

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/formats.h"
#include "platform/rt_error.h"

#include <QDate>

#include "fixtures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using rt::Variant;

namespace {

using testing_support::errorOf;

TEST(Conversions, IntegerRoundingIsHalfToEven) {
    const struct {
        Variant in;
        qint32 out;
    } cases[] = {
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
        {Variant::currency(25000), 2},  // 2.5 as currency
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rt::CInt(c.in), c.out) << rt::CStr(c.in).toStdString();
        EXPECT_EQ(rt::CLng(c.in), c.out) << rt::CStr(c.in).toStdString();
    }
}

TEST(Conversions, RangesAreCheckedAfterRounding) {
    EXPECT_EQ(rt::CInt(32767.4), 32767);
    EXPECT_EQ(rt::CInt(-32768.5), -32768);  // rounds to even, inside the range
    EXPECT_EQ(errorOf([] { rt::CInt(32767.5); }), rt::Overflow);
    EXPECT_EQ(errorOf([] { rt::CInt(32768.0); }), rt::Overflow);
    EXPECT_EQ(errorOf([] { rt::CInt(-32769); }), rt::Overflow);
    EXPECT_EQ(rt::CLng(2147483647.0), 2147483647);
    EXPECT_EQ(errorOf([] { rt::CLng(2147483647.5); }), rt::Overflow);
    EXPECT_EQ(errorOf([] { rt::CSng(1e39); }), rt::Overflow);
}

TEST(Conversions, BadInputRaisesTheRuntimeError) {
    EXPECT_EQ(errorOf([] { rt::CInt(""); }), rt::TypeMismatch);
    EXPECT_EQ(errorOf([] { rt::CDbl("abc"); }), rt::TypeMismatch);
    EXPECT_EQ(errorOf([] { rt::CInt(Variant::null()); }), rt::InvalidUseOfNull);
    EXPECT_EQ(errorOf([] { rt::CStr(Variant::null()); }), rt::InvalidUseOfNull);
    EXPECT_EQ(errorOf([] { rt::CBool("Yes"); }), rt::TypeMismatch);
}

TEST(Conversions, BooleansFromText) {
    EXPECT_TRUE(rt::CBool("true"));
    EXPECT_TRUE(rt::CBool("TRUE"));
    EXPECT_FALSE(rt::CBool("False"));
    EXPECT_FALSE(rt::CBool("0"));
    EXPECT_TRUE(rt::CBool("-1"));
    EXPECT_TRUE(rt::CBool("0.1"));
}

TEST(DefaultText, DoubleHasFifteenSignificantDigits) {
    const struct {
        double in;
        const char* out;
    } cases[] = {
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
        {100, "100"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rt::CStr(c.in), QString(c.out)) << c.out;
    }
}

TEST(DefaultText, SingleHasSevenSignificantDigitsWithTiesAwayFromZero) {
    const struct {
        float in;
        const char* out;
    } cases[] = {
        {6.5f, "6.5"},
        {float(1.0 / 3.0), "0.3333333"},
        {16777217.0f, "1.677722E+07"},
        {3.40282347e38f, "3.402823E+38"},
        {654322.23456f, "654322.3"},  // exactly 654322.25: a tie, away from zero
        {6.49f, "6.49"},
        {6.51f, "6.51"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rt::CStr(c.in), QString(c.out)) << c.out;
    }
}

TEST(DefaultText, OtherKinds) {
    EXPECT_EQ(rt::CStr(true), "True");
    EXPECT_EQ(rt::CStr(false), "False");
    EXPECT_EQ(rt::CStr(Variant()), "");
    EXPECT_EQ(rt::CStr(qint16(-7)), "-7");
    EXPECT_EQ(rt::CStr(Variant::currency(12345000)), "1234.5");
}

TEST(DefaultText, DatesShowWhatTheyHold) {
    const struct {
        double serial;
        const char* out;
    } cases[] = {
        {0, "12:00:00 AM"},
        {365.0, "12/30/1900"},
        {365.25, "12/30/1900 6:00:00 AM"},
        {1461.5, "12/31/1903 12:00:00 PM"},
        {3.34, "1/2/1900 8:09:36 AM"},
        {2958465, "12/31/9999"},
        {25570, "1/2/1970"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rt::CStr(Variant::date(c.serial)), QString(c.out)) << c.out;
    }
}

TEST(Dates, SerialsAndWeekdays) {
    EXPECT_EQ(rt::DateSerial(1899, 12, 30), 0);
    EXPECT_EQ(rt::DateSerial(1900, 1, 1), 2);
    EXPECT_EQ(rt::DateSerial(2000, 1, 5), 36530);
    EXPECT_EQ(rt::DateSerial(100, 1, 1), -657434);
    EXPECT_EQ(rt::Weekday(36530), 4);                  // Wednesday
    EXPECT_EQ(rt::Weekday(0), 7);                      // Saturday
    EXPECT_EQ(rt::Weekday(1), 1);                      // Sunday
    const rt::DateParts parts = rt::splitDate(-1.25);  // 29 Dec 1899, 6:00
    EXPECT_EQ(parts.day, 29);
    EXPECT_EQ(parts.hour, 6);
    EXPECT_EQ(rt::joinDate(parts), -1.25);
}

TEST(Dates, TextIsReadUnderTheLocale) {
    const int year = QDate::currentDate().year();
    const double thisYear = rt::DateSerial(year, 1, 1) - 1;
    const struct {
        const char* text;
        double serial;
    } cases[] = {
        {"1 2 29", 47120},
        {"1 2 30", 10960},
        {"2 January, 1970", 25570},
        {"2-Jan-1970", 25570},
        {"1/2/1970", 25570},
        {"Jan 35", rt::DateSerial(1935, 1, 1)},
        {"13/1/2000", rt::DateSerial(2000, 1, 13)},
        {"2000-01-05", 36530},
        {"Jan 2", thisYear + 2},
        {"2 Jan", thisYear + 2},
        {"14 1", thisYear + 14},
        {"1 am", 1.0 / 24},
        {"13:00 AM", 13.0 / 24},
        {"2.5", (2 * 60 + 5) / 1440.0},
        {"12:00", 0.5},
        {"1/5/2000 1:05:09 PM", 36530 + (13 * 3600 + 5 * 60 + 9) / 86400.0},
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(rt::IsDate(c.text)) << c.text;
        EXPECT_DOUBLE_EQ(rt::CDate(c.text), c.serial) << c.text;
    }
}

TEST(Dates, TextThatIsNoDate) {
    for (const char* text :
         {"True", "0", "24:00", "0:60", "32 49", "1.2.3.4", "2/30/2000", "", "abc", "1/2/3/4"}) {
        EXPECT_FALSE(rt::IsDate(text)) << text;
        EXPECT_EQ(errorOf([&] { rt::CDate(text); }), rt::TypeMismatch) << text;
    }
    EXPECT_EQ(errorOf([] { rt::CDate(3000000.0); }), rt::Overflow);
}

TEST(Dates, AddAndDiff) {
    const double jan31 = rt::DateSerial(2000, 1, 31) + 0.25;
    EXPECT_EQ(rt::DateAdd("m", 1, jan31), rt::DateSerial(2000, 2, 29) + 0.25);
    EXPECT_EQ(rt::DateAdd("m", 1, rt::DateSerial(1999, 1, 31)), rt::DateSerial(1999, 2, 28));
    EXPECT_EQ(rt::DateAdd("yyyy", 1, rt::DateSerial(2000, 2, 29)), rt::DateSerial(2001, 2, 28));
    EXPECT_EQ(rt::DateAdd("d", -3, 36766), 36763);
    EXPECT_EQ(rt::DateAdd("ww", 2, 36766), 36780);
    EXPECT_EQ(rt::DateAdd("h", 6, 36766), 36766.25);

    const double sat = rt::DateSerial(2000, 1, 1);
    const double sun = rt::DateSerial(2000, 1, 2);
    EXPECT_EQ(rt::DateDiff("ww", sat, sun), 1);
    EXPECT_EQ(rt::DateDiff("ww", sun, rt::DateSerial(2000, 1, 8)), 0);
    EXPECT_EQ(rt::DateDiff("w", sat, sat + 13), 1);
    EXPECT_EQ(rt::DateDiff("yyyy", rt::DateSerial(1999, 12, 31), sat), 1);
    EXPECT_EQ(rt::DateDiff("d", sat + 0.9, sun + 0.1), 1);
    EXPECT_EQ(rt::DateDiff("d", sun, sat), -1);
    EXPECT_EQ(rt::DateDiff("m", rt::DateSerial(2000, 1, 31), rt::DateSerial(2000, 2, 1)), 1);
}

// The calendar runs from serial -657434 (1 Jan 100) to 2958465 (31 Dec 9999).
constexpr double kFirstDay = -657434;
constexpr double kLastDay = 2958465;

TEST(Dates, OffTheCalendarRaisesTheRuntimeError) {
    const struct {
        const char* what;
        std::function<void()> action;
        int error;
    } cases[] = {
        {"count far past a Long", [] { rt::DateAdd("d", rt::CDbl("1,235.5e71"), 0); },
         rt::Overflow},
        {"weeks far past a Long", [] { rt::DateAdd("ww", 2e18, 0); }, rt::Overflow},
        {"count just past a Long", [] { rt::DateAdd("s", 2147483648.0, 0); }, rt::Overflow},
        {"count not a number", [] { rt::DateAdd("d", std::nan(""), 0); }, rt::Overflow},
        {"a Long count off the calendar", [] { rt::DateAdd("d", 2147483647.9, 0); },
         rt::InvalidProcedureCall},
        // 357913942 years are 2^32 + 8 months: a 32-bit month count would wrap onto the calendar.
        {"years off the calendar", [] { rt::DateAdd("yyyy", 357913942, 0); },
         rt::InvalidProcedureCall},
        {"months before it", [] { rt::DateAdd("m", -2147483648.0, 0); }, rt::InvalidProcedureCall},
        {"a day past the last", [] { rt::DateAdd("d", 1, kLastDay); }, rt::InvalidProcedureCall},
        {"a second before the first", [] { rt::DateAdd("s", -1, kFirstDay); },
         rt::InvalidProcedureCall},
        {"an interval it lacks", [] { rt::DateAdd("fortnight", 1, 0); }, rt::InvalidProcedureCall},
        {"adding to a date off it", [] { rt::DateAdd("d", 1, 9e18); }, rt::Overflow},
        {"seconds across the calendar", [] { rt::DateDiff("s", kLastDay, kFirstDay); },
         rt::Overflow},
        {"seconds just past a Long", [] { rt::DateDiff("s", 0, 24856); }, rt::Overflow},
        {"days to a date off it", [] { rt::DateDiff("d", 0, 1e19); }, rt::Overflow},
        {"years from a date off it", [] { rt::DateDiff("yyyy", -1e300, 0); }, rt::Overflow},
        {"a diff interval it lacks", [] { rt::DateDiff("fortnight", 0, 1); },
         rt::InvalidProcedureCall},
        {"text of the day after", [] { rt::CStr(Variant::date(kLastDay + 1)); }, rt::Overflow},
        {"text of the day before", [] { rt::CStr(Variant::date(kFirstDay - 1)); }, rt::Overflow},
        {"text of a time rounding into 10000",
         [] { rt::CStr(Variant::date(kLastDay + 0.9999999)); }, rt::Overflow},
        {"text of infinity", [] { rt::CStr(Variant::date(HUGE_VAL)); }, rt::Overflow},
        {"a named format", [] { rt::Format(Variant::date(-1e18), "Short Date"); }, rt::Overflow},
        {"the general date", [] { rt::Format(Variant::date(1e10), "General Date"); }, rt::Overflow},
        {"a time format", [] { rt::Format(Variant::date(3e6), "Long Time"); }, rt::Overflow},
        {"weekday", [] { rt::Weekday(-1e19); }, rt::Overflow},
        {"a date-typed value", [] { rt::CDate(Variant::date(3e6)); }, rt::Overflow},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(errorOf(c.action), c.error) << c.what;
    }
}

TEST(Dates, TheCalendarsEdgesStillWork) {
    const double lastSecond = kLastDay + 86399.0 / 86400;
    EXPECT_EQ(rt::CStr(Variant::date(kLastDay)), "12/31/9999");
    EXPECT_EQ(rt::CStr(Variant::date(lastSecond)), "12/31/9999 11:59:59 PM");
    EXPECT_EQ(rt::Format(Variant::date(kLastDay), "Short Date"), "12/31/9999");
    EXPECT_EQ(rt::Format(Variant::date(kFirstDay - 0.5), "Long Time"), "12:00:00 PM");
    const rt::DateParts first = rt::splitDate(kFirstDay);
    EXPECT_EQ(QDate(first.year, first.month, first.day), QDate(100, 1, 1));

    const struct {
        const char* what;
        double actual;
        double expected;
    } cases[] = {
        {"a day onto the last", rt::DateAdd("d", 1, kLastDay - 1), kLastDay},
        {"months onto the last", rt::DateAdd("m", 2, rt::DateSerial(9999, 10, 31)), kLastDay},
        {"years onto the last year", rt::DateAdd("yyyy", 9899, kFirstDay),
         rt::DateSerial(9999, 1, 1)},
        {"back to the first day's last second", rt::DateAdd("s", -1, kFirstDay + 1),
         kFirstDay - 86399.0 / 86400},
        {"hours on a day before 1900", rt::DateAdd("h", 6, -1.25), -1.5},
        {"days across the calendar", double(rt::DateDiff("d", kFirstDay, kLastDay)), 3615899},
        {"seconds that fill a Long", double(rt::DateDiff("s", 0, 24855)), 2147472000},
        {"hours between times before 1900", double(rt::DateDiff("h", -1.25, -1.5)), 6},
        {"seconds to the last", double(rt::DateDiff("s", kLastDay, lastSecond)), 86399},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.actual, c.expected) << c.what;
    }
}

// Text in every accepted form is in numbers_test.cpp; these are the other kinds and the edges.
TEST(Numbers, IsNumericOnTrickyText) {
    const struct {
        Variant in;
        bool numeric;
    } cases[] = {
        {"1e3", true},    {Variant(), true}, {Variant::null(), false},
        {"1.2.3", false}, {"12abc", false},  {"-3.5", true},
        {".5", true},     {true, true},      {Variant::date(1), false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rt::IsNumeric(c.in), c.numeric)
            << (c.in.isString() ? c.in.text().toStdString() : "");
    }
    EXPECT_EQ(rt::CDbl("&HFFFF"), -1);
}

TEST(Numbers, ValReadsTheLeadingNumber) {
    const struct {
        const char* text;
        double value;
    } cases[] = {
        {"1615 198th St", 1615198}, {"1,000", 1},   {"&H10", 16}, {"&HFFFF", -1}, {"abc", 0},
        {" 2.5e2x", 250},           {"-1.5", -1.5}, {"", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rt::Val(c.text), c.value) << c.text;
    }
}

}  // namespace
