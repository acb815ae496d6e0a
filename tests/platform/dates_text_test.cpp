// Dates: serials and their roll-over, text read under the locale (the runtime's forms, other
// scripts' digits, the program's own date text under real locales), DateAdd and DateDiff, the
// edges of the calendar, and the locale the program adopts at start.

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/formats.h"
#include "platform/regional.h"
#include "platform/rt_error.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>

#include "fixtures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using rt::Variant;

namespace {

using testing_support::errorOf;

const QDate kEpoch(1899, 12, 30);
const QLocale kUnitedStates(QLocale::English, QLocale::UnitedStates);
// The calendar runs from serial -657434 (1 Jan 100) to 2958465 (31 Dec 9999).
constexpr double kFirstDay = -657434;
constexpr double kLastDay = 2958465;

double serialOf(const QDate& date) {
    return static_cast<double>(kEpoch.daysTo(date));
}

QDateTime momentOf(double serial) {
    const rt::DateParts p = rt::splitDate(serial);
    return {QDate(p.year, p.month, p.day), QTime(p.hour, p.minute, p.second)};
}

// Switches the program's locale for one test, and back to the tests' en-US after it.
class LocaleTest : public ::testing::Test {
protected:
    void TearDown() override { QLocale::setDefault(kUnitedStates); }
};

TEST(DateSerial, CountsFromTheEpochAndRollsOverLikeTheRuntime) {
    // The runtime's DateSerial reference: a value past its unit's range increments the next
    // larger unit ("35 days ... one month and some number of days"); two-digit years as CDate
    // reads them (facts sheet: 00-29 are 20xx, 30-99 are 19xx).
    const std::tuple<int, int, int, QDate> cases[] = {
        {1899, 12, 30, kEpoch},
        {1900, 1, 1, QDate(1900, 1, 1)},
        {2000, 1, 5, QDate(2000, 1, 5)},
        {100, 1, 1, QDate(100, 1, 1)},
        {2000, 13, 1, QDate(2001, 1, 1)},
        {2000, 0, 1, QDate(1999, 12, 1)},
        {2000, -1, 1, QDate(1999, 11, 1)},
        {2000, -12, 1, QDate(1998, 12, 1)},
        {2000, 24, 1, QDate(2001, 12, 1)},
        {2000, 3, 0, QDate(2000, 2, 29)},
        {2000, 2, 30, QDate(2000, 3, 1)},
        {1999, 2, 30, QDate(1999, 3, 2)},
        {2000, 1, -1, QDate(1999, 12, 30)},
        {2000, 1, 35, QDate(2000, 2, 4)},
        {2000, 0, 0, QDate(1999, 11, 30)},
        {29, 1, 1, QDate(2029, 1, 1)},
        {30, 1, 1, QDate(1930, 1, 1)},
        {0, 1, 1, QDate(2000, 1, 1)},
        {99, 13, 1, QDate(2000, 1, 1)},
        {10000, 1, 0, QDate(9999, 12, 31)},
        {100, 1, 32767, QDate(189, 9, 17)},
        {1899, 12, -32768, QDate(1810, 3, 14)},
    };
    for (const auto& [year, month, day, date] : cases) {
        EXPECT_EQ(rt::DateSerial(year, month, day), serialOf(date))
            << year << "-" << month << "-" << day;
    }
    EXPECT_EQ(rt::DateSerial(2000, 1, 5), 36530);      // the facts sheet's anchor
    EXPECT_EQ(rt::Weekday(36530), 4);                  // Wednesday
    EXPECT_EQ(rt::Weekday(0), 7);                      // Saturday
    EXPECT_EQ(rt::Weekday(1), 1);                      // Sunday
    const rt::DateParts parts = rt::splitDate(-1.25);  // 29 Dec 1899, 6:00
    EXPECT_EQ(momentOf(-1.25), QDateTime(QDate(1899, 12, 29), QTime(6, 0)));
    EXPECT_EQ(rt::joinDate(parts), -1.25);
    EXPECT_EQ(momentOf(kFirstDay).date(), QDate(100, 1, 1));
}

TEST(DateText, IsReadUnderTheLocaleInAnyDigits) {
    const int year = QDate::currentDate().year();
    const double thisYear = rt::DateSerial(year, 1, 1) - 1;
    const std::pair<const char*, double> cases[] = {
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
        // The facts sheet's "Long Date" of 5 Jan 2000, weekday and all; the weekday only restates
        // the date, abbreviated as the locale's short day name.
        {"Wednesday, January 05, 2000", 36530},
        {"Wed, Jan 5, 2000", 36530},
        // Full-width and Arabic-Indic digits are digits (Unicode category Nd).
        {"１/５/２０００", 36530},
        {"١/٥/٢٠٠٠", 36530},
        {"１２:３０", 0.5 + 1.0 / 48},
    };
    for (const auto& [written, serial] : cases) {
        const QString text = QString::fromUtf8(written);
        ASSERT_TRUE(rt::IsDate(text)) << written;
        EXPECT_DOUBLE_EQ(rt::CDate(text), serial) << written;
    }
    for (const char* text :
         {"True", "0", "24:00", "0:60", "32 49", "1.2.3.4", "2/30/2000", "", "abc", "1/2/3/4"}) {
        EXPECT_FALSE(rt::IsDate(text)) << text;
        EXPECT_EQ(errorOf([&] { rt::CDate(text); }), rt::TypeMismatch) << text;
    }
}

TEST(DateText, NegativeSerialsRoundToTheSecondForward) {
    // A negative serial's fraction is a time forward from its day's midnight (facts sheet: -1.25 is
    // 29 Dec 1899 6:00), so rounding up to midnight lands on the day after, toward the epoch.
    const std::tuple<double, QDateTime, const char*> cases[] = {
        {-1.9999999, {QDate(1899, 12, 30), QTime(0, 0)}, "12:00:00 AM"},
        {-2.9999999, {QDate(1899, 12, 29), QTime(0, 0)}, "12/29/1899"},
        {-1.99999, {QDate(1899, 12, 29), QTime(23, 59, 59)}, "12/29/1899 11:59:59 PM"},
        {-0.9999999, {QDate(1899, 12, 31), QTime(0, 0)}, "12/31/1899"},
        // The first day of the calendar (facts sheet: -657434 = 1/1/100) takes its last instant.
        {-657434.9999999, {QDate(100, 1, 2), QTime(0, 0)}, "1/2/0100"},
    };
    for (const auto& [serial, moment, text] : cases) {
        EXPECT_EQ(momentOf(serial), moment) << serial;
        EXPECT_EQ(rt::CStr(Variant::date(serial)), QString(text)) << serial;
    }
}

// Whatever the program writes as a date it reads back as that date, to the second, under the
// locales it meets in the field. The date-only forms drop the time.
TEST_F(LocaleTest, TheProgramsDateTextReadsBack) {
    const double serials[] = {
        36530 + (13 * 3600 + 5 * 60 + 9) / 86400.0,  // 5 Jan 2000 13:05:09 (facts sheet)
        36530.123456789,                             // not a whole second
        -1.25,                                       // 29 Dec 1899 6:00 (facts sheet)
        -1.9999999,                                  // just before midnight on a negative day
        -657434.5,                                   // noon of the first day, 1 Jan 100
        2958465 + 86399 / 86400.0,                   // the last second, 31 Dec 9999
        0.75,                                        // a time alone: day 0
        25570,                                       // midnight alone: 2 Jan 1970
    };
    const std::pair<const char*, bool> writers[] = {
        {"Short Date", false}, {"Long Date", false}, {"General Date", true}};
    for (const char* name : {"en_US", "ja_JP", "ko_KR", "fi_FI", "ar_SA", "de_DE", "fr_FR"}) {
        QLocale::setDefault(QLocale(QString::fromLatin1(name)));
        for (const double serial : serials) {
            const double day = serialOf(momentOf(serial).date());
            for (const auto& [form, withTime] : writers) {
                const QString text = rt::Format(Variant::date(serial), form);
                SCOPED_TRACE(testing::Message()
                             << name << " " << form << ": " << text.toStdString());
                ASSERT_TRUE(rt::IsDate(text));
                EXPECT_EQ(rt::DateDiff("s", withTime ? serial : day, rt::CDate(text)), 0);
            }
            const QString text = rt::CStr(Variant::date(serial));
            EXPECT_EQ(rt::DateDiff("s", serial, rt::CDate(text)), 0)
                << name << ": " << text.toStdString();
        }
    }
}

TEST_F(LocaleTest, OwnFormsWinOverTheGeneralRules) {
    // Finnish long times use "." (Qt's fi_FI "H.mm.ss"); the general rules would read three
    // numbers as 13 May 2009.
    QLocale::setDefault(QLocale(QLocale::Finnish, QLocale::Finland));
    EXPECT_DOUBLE_EQ(rt::CDate("13.05.09"), (13 * 3600 + 5 * 60 + 9) / 86400.0);
    // SQL's date literals are en-US whatever the locale (facts sheet), so they keep the general
    // rules: 5 Jan 2000.
    EXPECT_EQ(rt::parseDateText("1/5/2000", kUnitedStates), 36530);
}

TEST(DateAdd, MovesByIntervalsRoundsCountsAndCrossesTheEpoch) {
    // The runtime's DateAdd reference: months keep the day or take the last of a shorter month; a
    // number that isn't a Long "is rounded to the nearest whole number", halves to even as the
    // runtime's CLng (facts sheet). Times before the epoch run forward from their day's midnight
    // (facts sheet: -1.25 is 29 Dec 1899 6:00).
    const double jan31 = rt::DateSerial(2000, 1, 31) + 0.25;
    const std::tuple<const char*, double, double, double> cases[] = {
        {"m", 1, jan31, rt::DateSerial(2000, 2, 29) + 0.25},
        {"m", 1, rt::DateSerial(1999, 1, 31), rt::DateSerial(1999, 2, 28)},
        {"yyyy", 1, rt::DateSerial(2000, 2, 29), rt::DateSerial(2001, 2, 28)},
        {"d", -3, 36766, 36763},
        {"ww", 2, 36766, 36780},
        {"h", 6, 36766, 36766.25},
        {"d", 0.6, 36530, 36531},
        {"d", -0.6, 36530, 36529},
        {"d", 1.5, 36530, 36532},
        {"d", 2.5, 36530, 36532},
        {"h", 1.4, 36530, 36530 + 1.0 / 24},
        {"m", 0.5, 36530, 36530},
        {"h", 25, -1.5, 13.0 / 24},  // 29 Dec 12:00 to 30 Dec 13:00
        {"h", -30, 0.25, -1.0},      // 30 Dec 6:00 to 29 Dec 0:00
        {"n", -1, 0, -1 - 1439.0 / 1440},
        {"s", 1, -1 - 86399.0 / 86400, 0},
        {"h", 6, -1.25, -1.5},
        // The calendar's edges still work.
        {"d", 1, kLastDay - 1, kLastDay},
        {"m", 2, rt::DateSerial(9999, 10, 31), kLastDay},
        {"yyyy", 9899, kFirstDay, rt::DateSerial(9999, 1, 1)},
        {"s", -1, kFirstDay + 1, kFirstDay - 86399.0 / 86400},  // the first day's last second
    };
    for (const auto& [interval, number, date, expected] : cases) {
        EXPECT_EQ(rt::DateAdd(interval, number, date), expected)
            << interval << " " << number << " " << date;
    }
}

TEST(DateDiff, CountsTheBoundariesBetween) {
    const double sat = rt::DateSerial(2000, 1, 1);
    const double sun = rt::DateSerial(2000, 1, 2);
    const std::tuple<const char*, double, double, qint64> cases[] = {
        {"ww", sat, sun, 1},
        {"ww", sun, rt::DateSerial(2000, 1, 8), 0},
        {"w", sat, sat + 13, 1},
        {"yyyy", rt::DateSerial(1999, 12, 31), sat, 1},
        {"d", sat + 0.9, sun + 0.1, 1},
        {"d", sun, sat, -1},
        {"m", rt::DateSerial(2000, 1, 31), rt::DateSerial(2000, 2, 1), 1},
        {"d", kFirstDay, kLastDay, 3615899},  // across the calendar
        {"s", 0, 24855, 2147472000},          // seconds that fill a Long
        {"h", -1.25, -1.5, 6},                // times before 1900
        {"s", kLastDay, kLastDay + 86399.0 / 86400, 86399},
    };
    for (const auto& [interval, from, to, expected] : cases) {
        EXPECT_EQ(rt::DateDiff(interval, from, to), expected)
            << interval << " " << from << " " << to;
    }
}

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
        {"CDate of a number off it", [] { rt::CDate(3000000.0); }, rt::Overflow},
        // The runtime's DateSerial reference: an argument beyond an Integer, or a date off the
        // calendar of 100 to 9999, is an error; 6 as for any Integer, 5 as for DateAdd.
        {"DateSerial a day before", [] { rt::DateSerial(100, 1, 0); }, rt::InvalidProcedureCall},
        {"DateSerial a day after", [] { rt::DateSerial(9999, 12, 32); }, rt::InvalidProcedureCall},
        {"DateSerial year 0", [] { rt::DateSerial(100, -1199, 1); }, rt::InvalidProcedureCall},
        {"DateSerial year -1", [] { rt::DateSerial(-1, 1, 1); }, rt::InvalidProcedureCall},
        {"DateSerial month", [] { rt::DateSerial(2000, 32768, 1); }, rt::Overflow},
        {"DateSerial day", [] { rt::DateSerial(2000, 1, -32769); }, rt::Overflow},
        {"DateSerial year", [] { rt::DateSerial(32768, 1, 1); }, rt::Overflow},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(errorOf(c.action), c.error) << c.what;
    }
}

TEST_F(LocaleTest, AdoptsUnitedStatesEnglishForNoRegionalSetting) {
    // C and POSIX are no regional setting: the desktop's default, en-US, stands in. A real locale
    // is followed as it is.
    const std::pair<QLocale, QLocale> cases[] = {
        {QLocale::c(), kUnitedStates},
        {QLocale(QStringLiteral("POSIX")), kUnitedStates},
        {QLocale(QLocale::Finnish, QLocale::Finland), QLocale(QLocale::Finnish, QLocale::Finland)},
        {QLocale(QLocale::English, QLocale::UnitedKingdom),
         QLocale(QLocale::English, QLocale::UnitedKingdom)},
        {QLocale(QLocale::Japanese, QLocale::Japan), QLocale(QLocale::Japanese, QLocale::Japan)},
    };
    for (const auto& [system, adopted] : cases) {
        platform::adoptRegionalSettings(system);
        EXPECT_EQ(QLocale(), adopted) << system.name().toStdString();
    }
    // Under C the program reads and writes as en-US (facts sheet: 36530 is 5 Jan 2000,
    // FormatCurrency(1234.5) is "$1,234.50").
    platform::adoptRegionalSettings(QLocale::c());
    EXPECT_EQ(rt::CDate("1/5/2000"), 36530);
    EXPECT_EQ(rt::FormatCurrency(1234.5), "$1,234.50");
}

}  // namespace
