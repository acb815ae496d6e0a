// The value helpers.

#include "util/value_helpers.h"
#include "fixtures.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/os.h"

#include <QLineEdit>
#include <QtTest/QTest>

using rt::Variant;

namespace {

double day(int y, int m, int d) {
    return rt::DateSerial(y, m, d);
}

TEST(FormatValue, ByFieldType) {
    const Variant when = Variant::date(36530 + 0.5);
    // Value, field type, decimals, whether a zero shows, and the text.
    const std::tuple<Variant, qint16, qint16, bool, const char*> cases[] = {
        {0, 1, 2, false, ""},
        {0, 1, 2, true, "0.00"},
        {1234.567, 1, 2, false, "1,234.57"},
        {1234.5, 2, 2, false, "$1,234.50"},
        {when, 3, 0, false, "1/5/2000"},
        {"not a date", 3, 0, false, ""},
        {when, 4, 0, false, "12:00 PM"},
        {when, 33, 0, false, "Wednesday, January 05, 2000"},
        {"1.5", 20, 0, false, "1.500000"},
        {"2.5", 56, 2, false, "3"},
        {"1234567", 58, 0, false, "1234567"},
        {true, 62, 0, false, "Yes"},
        {"TRUE", 62, 0, false, "Yes"},
        {"true", 62, 0, false, "No"},
        {"{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\\f0 Hello\\par World}", 72, 0, false,
         "Hello\nWorld"},
        {"as is", 0, 0, false, "as is"},
        {Variant::null(), 0, 0, false, ""},
    };
    for (const auto& [value, type, decimals, showZero, out] : cases) {
        EXPECT_EQ(FormatValue(value, type, decimals, showZero), QString(out)) << type << " " << out;
    }
}

TEST(BusinessDays, SkipWeekends) {
    const std::tuple<double, double, double> cases[] = {
        {day(2000, 1, 7), 1, day(2000, 1, 10)},   // Friday + 1 = Monday
        {day(2000, 1, 8), 1, day(2000, 1, 10)},   // Saturday moves to the Friday first
        {day(2000, 1, 9), 1, day(2000, 1, 10)},   // and so does Sunday
        {day(2000, 1, 10), -1, day(2000, 1, 7)},  // Monday - 1 = Friday
        {day(2000, 1, 12), 7, day(2000, 1, 21)},
        {day(2000, 1, 12), -7, day(2000, 1, 3)},
        {day(2000, 1, 8), -1, day(2000, 1, 7)},  // Saturday moves on to Monday first
        {day(2000, 1, 12) + 0.25, 1.9, day(2000, 1, 13) + 0.25},
    };
    for (const auto& [from, days, to] : cases) {
        EXPECT_EQ(AddBusinessDays(Variant::date(from), days), Variant::date(to))
            << from << " " << days;
    }
    EXPECT_EQ(AddBusinessDays("1/7/2000", 1), Variant("1/7/2000"));  // not of date type
    EXPECT_EQ(AddBusinessDays(Variant::date(day(2000, 1, 7)), "1"), Variant::date(day(2000, 1, 7)));
    EXPECT_EQ(AddBusinessDays(Variant::date(day(2000, 1, 7)), 0), Variant::date(day(2000, 1, 7)));
}

TEST(DateOffsets, ByUnitWithWeekendsSkipped) {
    const Variant friday = Variant::date(day(2000, 1, 7));
    EXPECT_EQ(DateOffset(friday, 0, 1, false, false), Variant::date(day(2000, 1, 10)));
    EXPECT_EQ(DateOffset(friday, 0, 1, true, false), Variant::date(day(2000, 1, 8)));
    EXPECT_EQ(DateOffset(friday, 0, 1, true, true), Variant::date(day(2000, 1, 10)));
    EXPECT_EQ(DateOffset(friday, 0, 2, true, true), Variant::date(day(2000, 1, 10)));
    EXPECT_EQ(DateOffset(friday, 1, 2, false, false), Variant::date(day(2000, 1, 21)));
    EXPECT_EQ(DateOffset(Variant::date(day(2000, 1, 31)), 2, 1, false, false),
              Variant::date(day(2000, 2, 29)));
    EXPECT_EQ(DateOffset(friday, 3, 1, false, false), Variant::date(day(2001, 1, 7)));
    EXPECT_TRUE(DateOffset(friday, 4, 1, false, false).isEmpty());
}

TEST(ReplaceText, StepsOneCharacterPastEachFind) {
    EXPECT_EQ(ReplaceText("O'Brien's", "'", "''"), "O''Brien''s");
    EXPECT_EQ(ReplaceText("", "'", "''"), "");
    EXPECT_EQ(ReplaceText("abcd", "bc", "X"), "aXcd");  // the rest of the find stays
    EXPECT_EQ(ReplaceText("none", "'", "''"), "none");
}

TEST(Wildcards, AreReplacedForTheCallerToo) {
    const std::tuple<const char*, qint16, bool, const char*> cases[] = {
        {"1*2?", 1, true, "1121"},
        {"1/*/2000", 3, true, "1/1/2000"},
        {"1*.5", 2, true, "11.5"},
        {"abc*", 1, false, "abc1"},
        {"abc*", 10, false, "abc1"}};
    for (const auto& [given, type, valid, replaced] : cases) {
        QString text = given;
        EXPECT_EQ(WildcardIsValid(text, type), valid) << given;
        EXPECT_EQ(text, replaced) << given;
    }
    QString bad = "abc";
    EXPECT_THROW(WildcardIsValid(bad, 2), rt::Error);
}

TEST(TextBoxes, SelectAllAndCapitalizeAsTyped) {
    QLineEdit box;
    box.setText("some text");
    SelectAllText(&box);
    EXPECT_EQ(box.selectedText(), "some text");

    QLineEdit name;
    QObject::connect(&name, &QLineEdit::textEdited, [&] { CapitalizeField(&name); });
    QTest::keyClicks(&name, "mary-jane o'neil");
    EXPECT_EQ(name.text(), "Mary-Jane O'neil");
    name.setCursorPosition(0);
    QTest::keyClicks(&name, "x");
    EXPECT_EQ(name.text(), "xMary-Jane O'neil");  // typed in the middle: left alone
}

class BrowseTest : public testing_support::SeamTest {};

TEST_F(BrowseTest, TheDialogStartsInTheProgramFolderAndACancelKeepsThePath) {
    EXPECT_EQ(BrowseForFile("/data/old.mdb", "Database|*.mdb", true), "/data/old.mdb");
    ui.fileChoices.push_back(QString("/data/new.mdb"));
    EXPECT_EQ(BrowseForFile("/data", "Database|*.mdb", false), "/data/new.mdb");
    EXPECT_EQ(BrowseForFile("  ", "Database|*.mdb", false), "");
    QStringList dialogs;  // folder, name, filter, whether the file must exist
    for (const auto& d : ui.fileDialogs) {
        dialogs << QStringList({d.initialDir, d.fileName, d.filter, d.mustExist ? "old" : "any"})
                       .join(' ');
    }
    const QString folder = platform::programFolder();
    EXPECT_EQ(dialogs, QStringList({folder + " /data/old.mdb Database|*.mdb old",
                                    "/data  Database|*.mdb any", folder + "  Database|*.mdb any"}));
}

}  // namespace
