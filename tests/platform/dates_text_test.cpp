// Dates as text and back: the runtime's own date forms, other scripts' digits, the program's date
// text under real locales, DateSerial's roll-over, DateAdd's counts, and the locale the program
// adopts at start.

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

using rt::Variant;

namespace {

using testing_support::errorOf;

const QDate kEpoch(1899, 12, 30);
const QLocale kUnitedStates(QLocale::English, QLocale::UnitedStates);

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

TEST(DateText, ReadsTheRuntimesFormsInAnyDigits) {
    const struct {
        const char* text;
        double serial;
    } cases[] = {
        // The facts sheet's "Long Date" of 5 Jan 2000, weekday and all.
        {"Wednesday, January 05, 2000", 36530},
        // The weekday only restates the date; abbreviated as the locale's short day name.
        {"Wed, Jan 5, 2000", 36530},
        // Full-width and Arabic-Indic digits are digits (Unicode category Nd).
        {"１/５/２０００", 36530},
        {"١/٥/٢٠٠٠", 36530},
        {"１２:３０", 0.5 + 1.0 / 48},
    };
    for (const auto& c : cases) {
        const QString text = QString::fromUtf8(c.text);
        ASSERT_TRUE(rt::IsDate(text)) << c.text;
        EXPECT_DOUBLE_EQ(rt::CDate(text), c.serial) << c.text;
    }
}

TEST(DateText, NegativeSerialsRoundToTheSecondForward) {
    // A negative serial's fraction is a time forward from its day's midnight (facts sheet: -1.25 is
    // 29 Dec 1899 6:00), so rounding up to midnight lands on the day after, toward the epoch.
    const struct {
        double serial;
        QDateTime moment;
        const char* text;
    } cases[] = {
        {-1.9999999, {QDate(1899, 12, 30), QTime(0, 0)}, "12:00:00 AM"},
        {-2.9999999, {QDate(1899, 12, 29), QTime(0, 0)}, "12/29/1899"},
        {-1.99999, {QDate(1899, 12, 29), QTime(23, 59, 59)}, "12/29/1899 11:59:59 PM"},
        {-0.9999999, {QDate(1899, 12, 31), QTime(0, 0)}, "12/31/1899"},
        // The first day of the calendar (facts sheet: -657434 = 1/1/100) takes its last instant.
        {-657434.9999999, {QDate(100, 1, 2), QTime(0, 0)}, "1/2/0100"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(momentOf(c.serial), c.moment) << c.serial;
        EXPECT_EQ(rt::CStr(Variant::date(c.serial)), QString(c.text)) << c.serial;
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
    const struct {
        const char* form;
        bool withTime;
    } writers[] = {
        {"Short Date", false},
        {"Long Date", false},
        {"General Date", true},
    };
    for (const char* name : {"en_US", "ja_JP", "ko_KR", "fi_FI", "ar_SA", "de_DE", "fr_FR"}) {
        QLocale::setDefault(QLocale(QString::fromLatin1(name)));
        for (const double serial : serials) {
            const double day = serialOf(momentOf(serial).date());
            for (const auto& w : writers) {
                const QString text = rt::Format(Variant::date(serial), w.form);
                const double expected = w.withTime ? serial : day;
                ASSERT_TRUE(rt::IsDate(text))
                    << name << " " << w.form << ": " << text.toStdString();
                EXPECT_EQ(rt::DateDiff("s", expected, rt::CDate(text)), 0)
                    << name << " " << w.form << ": " << text.toStdString();
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

TEST(DateSerial, RollsOverLikeTheRuntime) {
    // The runtime's DateSerial reference: a value past its unit's range increments the next
    // larger unit ("35 days ... one month and some number of days"); two-digit years as CDate
    // reads them (facts sheet: 00-29 are 20xx, 30-99 are 19xx).
    const struct {
        int year, month, day;
        QDate date;
    } cases[] = {
        {2000, 13, 1, QDate(2001, 1, 1)},   {2000, 0, 1, QDate(1999, 12, 1)},
        {2000, -1, 1, QDate(1999, 11, 1)},  {2000, -12, 1, QDate(1998, 12, 1)},
        {2000, 24, 1, QDate(2001, 12, 1)},  {2000, 3, 0, QDate(2000, 2, 29)},
        {2000, 2, 30, QDate(2000, 3, 1)},   {1999, 2, 30, QDate(1999, 3, 2)},
        {2000, 1, -1, QDate(1999, 12, 30)}, {2000, 1, 35, QDate(2000, 2, 4)},
        {2000, 0, 0, QDate(1999, 11, 30)},  {29, 1, 1, QDate(2029, 1, 1)},
        {30, 1, 1, QDate(1930, 1, 1)},      {0, 1, 1, QDate(2000, 1, 1)},
        {99, 13, 1, QDate(2000, 1, 1)},     {10000, 1, 0, QDate(9999, 12, 31)},
        {100, 1, 32767, QDate(189, 9, 17)}, {1899, 12, -32768, QDate(1810, 3, 14)},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rt::DateSerial(c.year, c.month, c.day), serialOf(c.date))
            << c.year << "-" << c.month << "-" << c.day;
    }
}

TEST(DateSerial, OffTheRangesRaisesTheRuntimeError) {
    // The runtime's DateSerial reference: an argument beyond an Integer, or a date off the
    // calendar of 100 to 9999, is an error; 6 as for any Integer, 5 as for DateAdd.
    const struct {
        int year, month, day;
        int error;
    } cases[] = {
        {100, 1, 0, rt::InvalidProcedureCall},     {9999, 12, 32, rt::InvalidProcedureCall},
        {100, -1199, 1, rt::InvalidProcedureCall},  // year 0
        {-1, 1, 1, rt::InvalidProcedureCall},      {2000, 32768, 1, rt::Overflow},
        {2000, 1, -32769, rt::Overflow},           {32768, 1, 1, rt::Overflow},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(errorOf([&] { rt::DateSerial(c.year, c.month, c.day); }), c.error)
            << c.year << "-" << c.month << "-" << c.day;
    }
}

TEST(DateAdd, CountsAreRoundedAndTimesCrossTheEpoch) {
    // The runtime's DateAdd reference: a number that isn't a Long "is rounded to the nearest whole
    // number"; halves to even as the runtime's CLng (facts sheet). Times before the epoch run
    // forward from their day's midnight (facts sheet: -1.25 is 29 Dec 1899 6:00).
    const struct {
        const char* interval;
        double number;
        double date;
        double expected;
    } cases[] = {
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
    };
    for (const auto& c : cases) {
        EXPECT_DOUBLE_EQ(rt::DateAdd(c.interval, c.number, c.date), c.expected)
            << c.interval << " " << c.number << " " << c.date;
    }
}

TEST_F(LocaleTest, AdoptsUnitedStatesEnglishForNoRegionalSetting) {
    // C and POSIX are no regional setting: the desktop's default, en-US, stands in. A real locale
    // is followed as it is.
    const struct {
        QLocale system;
        QLocale adopted;
    } cases[] = {
        {QLocale::c(), kUnitedStates},
        {QLocale(QStringLiteral("POSIX")), kUnitedStates},
        {QLocale(QLocale::Finnish, QLocale::Finland), QLocale(QLocale::Finnish, QLocale::Finland)},
        {QLocale(QLocale::English, QLocale::UnitedKingdom),
         QLocale(QLocale::English, QLocale::UnitedKingdom)},
        {QLocale(QLocale::Japanese, QLocale::Japan), QLocale(QLocale::Japanese, QLocale::Japan)},
    };
    for (const auto& c : cases) {
        platform::adoptRegionalSettings(c.system);
        EXPECT_EQ(QLocale(), c.adopted) << c.system.name().toStdString();
    }
    // Under C the program reads and writes as en-US (facts sheet: 36530 is 5 Jan 2000,
    // FormatCurrency(1234.5) is "$1,234.50").
    platform::adoptRegionalSettings(QLocale::c());
    EXPECT_EQ(rt::CDate("1/5/2000"), 36530);
    EXPECT_EQ(rt::FormatCurrency(1234.5), "$1,234.50");
}

}  // namespace
