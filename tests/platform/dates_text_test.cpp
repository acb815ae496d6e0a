// Dates: serials and their roll-over, text read under the locale (the runtime's forms, other
// scripts' digits, the program's own date text under real locales), DateAdd and DateDiff, the
// edges of the calendar, and the locale the program adopts at start.

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/formats.h"
#include "platform/regional.h"
#include "platform/rt_error.h"

#include <QDateTime>
#include <QLocale>
#include <QScopeGuard>

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
    // A value past its unit's range increments the next larger unit; two-digit years as CDate
    // reads them (facts sheet: 00-29 are 20xx, 30-99 are 19xx).
    const std::tuple<int, int, int, const char*> cases[] = {
        {100, 1, 1, "0100-01-01"},     {2000, 13, 1, "2001-01-01"},
        {2000, 0, 1, "1999-12-01"},    {2000, 3, 0, "2000-02-29"},
        {2000, 0, 0, "1999-11-30"},    {29, 1, 1, "2029-01-01"},
        {30, 1, 1, "1930-01-01"},      {0, 1, 1, "2000-01-01"},
        {99, 13, 1, "2000-01-01"},     {10000, 1, 0, "9999-12-31"},
        {100, 1, 32767, "0189-09-17"}, {1899, 12, -32768, "1810-03-14"}};
    for (const auto& [year, month, day, date] : cases) {
        EXPECT_EQ(momentOf(rt::DateSerial(year, month, day)).date().toString(Qt::ISODate), date)
            << year << "-" << month << "-" << day;
    }
    EXPECT_EQ(rt::DateSerial(2000, 1, 5), 36530);  // the facts sheet's anchor
    EXPECT_EQ(QList<int>({rt::Weekday(36530), rt::Weekday(0), rt::Weekday(1)}),
              QList<int>({4, 7, 1}));  // Wednesday, Saturday, Sunday
}

TEST(DateText, IsReadUnderTheLocaleInAnyDigits) {
    rt::pinClock(QDateTime(QDate(2007, 6, 1), QTime(9, 0)));  // a missing year is this one
    const auto unpin = qScopeGuard([] { rt::pinClock(std::nullopt); });
    const std::pair<const char*, double> cases[] = {
        {"1 2 29", 47120},
        {"1 2 30", 10960},
        {"1/2/1970", 25570},
        {"Jan 35", rt::DateSerial(1935, 1, 1)},
        {"13/1/2000", rt::DateSerial(2000, 1, 13)},
        {"2000-01-05", 36530},
        {"Jan 2", rt::DateSerial(2007, 1, 2)},
        {"1 am", 1.0 / 24},
        {"13:00 AM", 13.0 / 24},
        {"2.5", (2 * 60 + 5) / 1440.0},
        {"1/5/2000 1:05:09 PM", 36530 + (13 * 3600 + 5 * 60 + 9) / 86400.0},
        {"Wed, Jan 5, 2000", 36530},  // the locale's short day name, which only restates the date
        {"１/５/２０００", 36530},    // any script's decimal digits are digits
        {"١/٥/٢٠٠٠", 36530},
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
    // A negative serial's fraction is a time forward from its day's midnight, so rounding up to
    // midnight lands on the day after, toward the epoch.
    const std::tuple<double, QDateTime, const char*> cases[] = {
        {-1.9999999, {QDate(1899, 12, 30), QTime(0, 0)}, "12:00:00 AM"},
        {-2.9999999, {QDate(1899, 12, 29), QTime(0, 0)}, "12/29/1899"},
        // The first day of the calendar takes its last instant.
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
        36530 + (13 * 3600 + 5 * 60 + 9) / 86400.0,  // 5 Jan 2000 13:05:09
        36530.123456789,                             // not a whole second
        -1.9999999,                                  // just before midnight on a negative day
        -657434.5,                                   // noon of the first day, 1 Jan 100
        kLastDay + 86399 / 86400.0,                  // the last second, 31 Dec 9999
        0.75,                                        // a time alone: day 0
        25570,                                       // midnight alone: 2 Jan 1970
    };
    const std::pair<const char*, bool> writers[] = {
        {"Short Date", false}, {"Long Date", false}, {"General Date", true}};
    for (const char* name : {"en_US", "ja_JP", "ko_KR", "fi_FI", "ar_SA", "de_DE", "fr_FR"}) {
        QLocale::setDefault(QLocale(QString::fromLatin1(name)));
        for (const double serial : serials) {
            const double day = kEpoch.daysTo(momentOf(serial).date());
            for (const auto& [form, withTime] : writers) {
                const QString text = rt::Format(Variant::date(serial), form);
                SCOPED_TRACE(testing::Message()
                             << name << " " << form << ": " << text.toStdString());
                ASSERT_TRUE(rt::IsDate(text));
                EXPECT_EQ(rt::DateDiff("s", withTime ? serial : day, rt::CDate(text)), 0);
            }
        }
    }
}

TEST_F(LocaleTest, OwnFormsWinOverTheGeneralRules) {
    // Finnish long times use "." (Qt's fi_FI "H.mm.ss"); the general rules would read three
    // numbers as 13 May 2009.
    QLocale::setDefault(QLocale(QLocale::Finnish, QLocale::Finland));
    EXPECT_DOUBLE_EQ(rt::CDate("13.05.09"), (13 * 3600 + 5 * 60 + 9) / 86400.0);
    // SQL's date literals are en-US whatever the locale, so they keep the general rules.
    EXPECT_EQ(rt::parseDateText("1/5/2000", kUnitedStates), 36530);
}

TEST(DateAdd, MovesByIntervalsRoundsCountsAndCrossesTheEpoch) {
    // Months keep the day or take the last of a shorter month; a count that isn't a Long rounds
    // halves to even, as CLng. Times before the epoch run forward from their day's midnight.
    const double jan31 = rt::DateSerial(2000, 1, 31) + 0.25;
    const std::tuple<const char*, double, double, double> cases[] = {
        {"m", 1, jan31, rt::DateSerial(2000, 2, 29) + 0.25},
        {"m", 1, rt::DateSerial(1999, 1, 31), rt::DateSerial(1999, 2, 28)},
        {"yyyy", 1, rt::DateSerial(2000, 2, 29), rt::DateSerial(2001, 2, 28)},
        {"ww", 2, 36766, 36780},
        {"d", 1.5, 36530, 36532},
        {"d", 2.5, 36530, 36532},
        {"h", 25, -1.5, 13.0 / 24},  // 29 Dec 12:00 to 30 Dec 13:00
        {"h", -30, 0.25, -1.0},      // 30 Dec 6:00 to 29 Dec 0:00
        {"s", 1, -1 - 86399.0 / 86400, 0},
        {"m", 2, rt::DateSerial(9999, 10, 31), kLastDay},
        {"s", -1, kFirstDay + 1, kFirstDay - 86399.0 / 86400},  // the first day's last second
    };
    for (const auto& [interval, number, date, expected] : cases) {
        EXPECT_EQ(rt::DateAdd(interval, number, date), expected)
            << interval << " " << number << " " << date;
    }
}

TEST(DateDiff, CountsTheBoundariesBetween) {
    const double sat = rt::DateSerial(2000, 1, 1);
    const double sun = sat + 1;
    const std::tuple<const char*, double, double, qint64> cases[] = {
        {"ww", sat, sun, 1},
        {"ww", sun, sat + 7, 0},
        {"w", sat, sat + 13, 1},
        {"yyyy", sat - 1, sat, 1},
        {"d", sat + 0.9, sun + 0.1, 1},
        {"d", sun, sat, -1},
        {"m", rt::DateSerial(2000, 1, 31), rt::DateSerial(2000, 2, 1), 1},
        {"s", 0, 24855, 2147472000},  // seconds that fill a Long
        {"h", -1.25, -1.5, 6},        // times before 1900
    };
    for (const auto& [interval, from, to, expected] : cases) {
        EXPECT_EQ(rt::DateDiff(interval, from, to), expected)
            << interval << " " << from << " " << to;
    }
}

TEST(Dates, OffTheCalendarRaisesTheRuntimeError) {
    const std::pair<std::function<void()>, int> cases[] = {
        {[] { rt::DateAdd("s", 2147483648.0, 0); }, rt::Overflow},
        {[] { rt::DateAdd("d", std::nan(""), 0); }, rt::Overflow},
        {[] { rt::DateAdd("d", 2147483647.9, 0); }, rt::InvalidProcedureCall},
        // 357913942 years are 2^32 + 8 months: a 32-bit month count would wrap onto the calendar.
        {[] { rt::DateAdd("yyyy", 357913942, 0); }, rt::InvalidProcedureCall},
        {[] { rt::DateAdd("d", 1, kLastDay); }, rt::InvalidProcedureCall},
        {[] { rt::DateAdd("s", -1, kFirstDay); }, rt::InvalidProcedureCall},
        {[] { rt::DateAdd("fortnight", 1, 0); }, rt::InvalidProcedureCall},
        {[] { rt::DateDiff("s", 0, 24856); }, rt::Overflow},
        {[] { rt::DateDiff("yyyy", -1e300, 0); }, rt::Overflow},
        {[] { rt::CStr(Variant::date(kLastDay + 1)); }, rt::Overflow},
        {[] { rt::CStr(Variant::date(kFirstDay - 1)); }, rt::Overflow},
        {[] { rt::CStr(Variant::date(kLastDay + 0.9999999)); }, rt::Overflow},
        {[] { rt::CDate(3000000.0); }, rt::Overflow},
        // DateSerial's arguments are Integers (6 beyond one); a date off the calendar is a 5.
        {[] { rt::DateSerial(100, 1, 0); }, rt::InvalidProcedureCall},
        {[] { rt::DateSerial(100, -1199, 1); }, rt::InvalidProcedureCall},
        {[] { rt::DateSerial(2000, 1, -32769); }, rt::Overflow},
        {[] { rt::DateSerial(32768, 1, 1); }, rt::Overflow},
    };
    for (std::size_t row = 0; row < std::size(cases); ++row) {
        EXPECT_EQ(errorOf(cases[row].first), cases[row].second) << "row " << row;
    }
}

TEST_F(LocaleTest, AdoptsUnitedStatesEnglishForNoRegionalSetting) {
    const QLocale finnish(QLocale::Finnish, QLocale::Finland);
    platform::adoptRegionalSettings(finnish);
    EXPECT_EQ(QLocale(), finnish);
    // C (POSIX too) is no regional setting: the desktop's default, en-US, stands in.
    platform::adoptRegionalSettings(QLocale::c());
    EXPECT_EQ(QLocale(), kUnitedStates);
    EXPECT_EQ(rt::CDate("1/5/2000"), 36530);
    EXPECT_EQ(rt::FormatCurrency(1234.5), "$1,234.50");
}

}  // namespace
