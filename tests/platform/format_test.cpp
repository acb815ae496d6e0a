// Format's pattern language: numbers, dates and text, and the named forms built on it (en-US).

#include "platform/formats.h"
#include "platform/rt_error.h"

#include <QLocale>

#include "fixtures.h"

#include <gtest/gtest.h>

using rt::Variant;

namespace {

using testing_support::errorOf;

struct Case {
    Variant in;
    const char* pattern;
    const char* out;
};

void expectFormats(const std::initializer_list<Case>& cases) {
    for (const Case& c : cases) {
        EXPECT_EQ(rt::Format(c.in, QString::fromUtf8(c.pattern)), QString::fromUtf8(c.out))
            << c.pattern;
    }
}

// 5 Jan 2000 13:05:09, a Wednesday (facts sheet: serial 36530 is Wed 5 Jan 2000).
const Variant kWhen = Variant::date(36530 + (13 * 3600 + 5 * 60 + 9) / 86400.0);

TEST(FormatNumbers, DocumentedPatternsOnFiveMinusFiveHalfAndZero) {
    // The table of "User-defined numeric formats" (runtime documentation), value by value.
    const std::pair<const char*, const char*> rows[] = {
        {"0", "5 -5 1 0"},
        {"0.00", "5.00 -5.00 0.50 0.00"},
        {"#,##0.00;;;Nil", "5.00 -5.00 0.50 0.00"},
        {"$#,##0.00;($#,##0.00)", "$5.00 ($5.00) $0.50 $0.00"},
        {"0%", "500% -500% 50% 0%"},
        {"0.00E+00", "5.00E+00 -5.00E+00 5.00E-01 0.00E+00"},
        {"0.00E-00", "5.00E00 -5.00E00 5.00E-01 0.00E00"},
    };
    for (const auto& [pattern, shown] : rows) {
        QStringList texts;
        for (const double value : {5.0, -5.0, 0.5, 0.0}) {
            texts << rt::Format(value, pattern);
        }
        EXPECT_EQ(texts.join(' '), shown) << pattern;
    }
    // Same table: the fourth section shows Null; without one Null shows nothing.
    expectFormats({{Variant::null(), "#,##0.00;;;Nil", "Nil"}, {Variant::null(), "0.00", ""}});
}

TEST(FormatNumbers, PlaceholdersScalingAndLiterals) {
    expectFormats({
        {1234.567, "#,##0.00", "1,234.57"},
        // "User-defined numeric formats": a comma before the point, or at the end, divides by
        // 1000 ("##0,," shows 100 million as 100); elsewhere it groups.
        {100000000.0, "##0,,", "100"},
        {1234567.0, "#,##0,", "1,235"},
        {1500.0, "0,.0", "1.5"},
        // Same page: with only "#" before the point, numbers below 1 start with the point.
        {0.5, "#.00", ".50"},
        // Placeholders: a number never loses integer digits; "0" pads, "#" doesn't.
        {12345, "00", "12345"},
        {0.0, "#######", ""},
        {"42", "#######", "42"},
        {7, "000", "007"},
        {5, "#.##", "5."},  // the point stays where the pattern puts it (unverified)
        {5551234567.0, "(000) 000-0000", "(555) 123-4567"},
        // Same page: backslash and double quotes show literal characters; - + $ ( ) and the
        // space show as they are.
        {5, "0 \\k\\g \"units\"", "5 kg units"},
        {-5, "+0;(0)", "(5)"},
        // Scientific: the mantissa rounds before the exponent is fixed; placeholders after E
        // give the exponent's digits.
        {9.996, "0.00E+00", "1.00E+01"},
        {12345, "0.0E+0", "1.2E+4"},
        {0.00012, "0.0e-00", "1.2e-04"},
        // Halves round away from zero (facts sheet), also after percent scaling.
        {0.125, "0.0%", "12.5%"},
        {-0.125, "0.00", "-0.13"},
        // A negative value that rounds to zero shows no sign.
        {-0.001, "0.00", "0.00"},
        // "User-defined numeric formats": positive;negative;zero. A negative section shows its
        // own sign; an empty section takes the positive one's form, with a minus sign.
        {-3, "0;(0);\\Z\\e\\r\\o", "(3)"},
        {0, "0;(0);\\Z\\e\\r\\o", "Zero"},
        {0, "0.0;(0.0)", "0.0"},
        {-3, "0;;\\Z", "-3"},
        {0, "0;-0;", "0"},
        {-0.001, "0;(0);\\Z", "(0)"},  // the section goes by the value, not its rounding
    });
}

TEST(FormatNamed, FormsFollowTheRegionalSettings) {
    // The facts sheet's named forms of 5 Jan 2000 13:05:09 (en-US).
    expectFormats({
        {kWhen, "Short Date", "1/5/2000"},
        {kWhen, "Long Date", "Wednesday, January 05, 2000"},
        {kWhen, "Medium Date", "05-Jan-00"},
        {kWhen, "Long Time", "1:05:09 PM"},
        {kWhen, "Medium Time", "01:05 PM"},
        {kWhen, "Short Time", "13:05"},
        {"1/5/2000", "Short Date", "1/5/2000"},
        {"not a date", "Short Date", "not a date"},
        // "Named formats": Yes/No, True/False, On/Off show the second word for zero; Scientific
        // is standard scientific notation; Fixed and Standard show two decimals.
        {0, "Yes/No", "No"},
        {-2.5, "yes/no", "Yes"},
        {false, "True/False", "False"},
        {"7", "True/False", "True"},
        {0.0, "On/Off", "Off"},
        {"abc", "Yes/No", "abc"},
        {1234.5, "Scientific", "1.23E+03"},
        {-0.00012345, "Scientific", "-1.23E-04"},
        {1234.565, "Fixed", "1234.57"},
        {1234.5, "Standard", "1,234.50"},
        {0.125, "Percent", "12.50%"},
        {Variant::null(), "Yes/No", ""},
    });
    // The regional defaults: two decimals, a leading zero, grouping; currency in parentheses.
    EXPECT_EQ(
        QStringList({rt::FormatNumber(1234.5), rt::FormatNumber(-0.125, 2),
                     rt::FormatNumber(0.5, 0), rt::FormatCurrency(-5), rt::FormatCurrency(7, 0)}),
        QStringList({"1,234.50", "-0.13", "1", "($5.00)", "$7"}));
}

TEST(FormatDates, CodesOnOneMoment) {
    // "User-defined date/time formats", applied to kWhen; the long and short forms are the en-US
    // ones of the facts sheet.
    expectFormats({
        {kWhen, "m/d/yy YYYY-mm-DD ddddd", "1/5/00 2000-01-05 1/5/2000"},
        {kWhen, "h:m:s hh:mm", "13:5:9 13:05"},  // m right after h is the minute
        {kWhen, "d dd ddd dddd m mm mmm mmmm", "5 05 Wed Wednesday 1 01 Jan January"},
        {kWhen, "dddddd", "Wednesday, January 05, 2000"},
        {kWhen, "c", "1/5/2000 1:05:09 PM"},
        {Variant::date(0.5), "c", "12:00:00 PM"},
        {kWhen, "w ww q y", "4 2 1 5"},  // Weekday 4 (facts sheet); 1 Jan 2000 is a Saturday
        {Variant::date(36891), "ww y q", "54 366 4"},  // Sun 31 Dec 2000: ww runs to 54
        {Variant::date(36526), "ww", "1"},             // Sat 1 Jan 2000 ends week 1
        {kWhen, "hh:nn:ss AM/PM h am/pm h A/P h a/p h AMPM", "01:05:09 PM 1 pm 1 P 1 p 1 PM"},
        {Variant::date(36530), "h:nn AM/PM", "12:00 AM"},
        {kWhen, "\\d\\a\\y d \"of\" yyyy", "day 5 of 2000"},
        {kWhen, "ddddddd", "Wednesday, January 05, 20005"},  // longer runs split up
        // The pattern decides how the value is read.
        {36530, "dddd", "Wednesday"},                   // a number is a day serial
        {"1/5/2000", "yyyy mmm", "2000 Jan"},           // text is read as a date
        {"not a date", "yyyy", "not a date"},           // text that is no date stays as it is
        {Variant::date(36530.25), "0.00", "36530.25"},  // a date is its serial for numbers
        {Variant(), "0", ""},
    });
    EXPECT_EQ(errorOf([] { rt::Format(Variant::date(3e6), "yyyy"); }), rt::Overflow);
}

TEST(FormatDates, SeparatorsAreTheLocales) {
    // ":" and "/" stand for the locale's time and date separators ("User-defined date/time
    // formats"); Qt's de_DE short date is "dd.MM.yy" and fi_FI's long time "H.mm.ss".
    const std::tuple<QLocale, const char*, const char*> cases[] = {
        {QLocale(QLocale::German, QLocale::Germany), "dd/mm/yyyy", "05.01.2000"},
        {QLocale(QLocale::Finnish, QLocale::Finland), "hh:nn", "13.05"},
        {QLocale(QLocale::English, QLocale::UnitedStates), "dd/mm hh:nn", "05/01 13:05"},
    };
    for (const auto& [locale, pattern, out] : cases) {
        QLocale::setDefault(locale);
        EXPECT_EQ(rt::Format(kWhen, pattern), out) << pattern;
    }
}

TEST(FormatText, PlaceholdersAndCase) {
    // "User-defined string formats": "@" is a character or a space, "&" a character or nothing,
    // filled from the right unless "!" is given; "<" and ">" force the case; a second section
    // shows Null and "".
    expectFormats({
        {"abc", "@@@@@", "  abc"},
        {"abc", "!@@@@@", "abc  "},
        {"abc", "&&&&&", "abc"},
        {"5551234", "@@@-@@@@", "555-1234"},
        {"abc", "!@-@@@@", "a-bc  "},
        {"abcdef", "@@@", "abcdef"},  // nothing is cut off (unverified)
        {"Hello", ">", "HELLO"},
        {"Hello", "<", "hello"},
        {"Hello", ">@@@@@@", " HELLO"},
        {42, "@@@@", "  42"},
        {"", "@;\"(none)\"", "(none)"},
        {Variant::null(), "@;\"(none)\"", "(none)"},
        {Variant::null(), "@", ""},
    });
}

}  // namespace
