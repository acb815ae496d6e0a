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
    const struct {
        Variant value;
        qint16 type;
        qint16 decimals;
        bool showZero;
        const char* out;
    } cases[] = {
        {0, 1, 2, false, ""},
        {0, 1, 2, true, "0.00"},
        {Variant(), 1, 2, true, ""},  // an empty value fails its conversion
        {1234.567, 1, 2, false, "1,234.57"},
        {1234.5, 2, 2, false, "$1,234.50"},
        {-5, 52, 2, false, "($5.00)"},
        {0, 43, 2, false, ""},
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
        {"as is", 73, 0, false, "as is"},
        {"as is", 0, 0, false, "as is"},
        {Variant::null(), 0, 0, false, ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(FormatValue(c.value, c.type, c.decimals, c.showZero), QString(c.out))
            << c.type << " " << c.out;
    }
}

TEST(BusinessDays, SkipWeekends) {
    const std::tuple<double, double, double> cases[] = {
        {day(2000, 1, 7), 1, day(2000, 1, 10)},   // Friday + 1 = Monday
        {day(2000, 1, 8), 1, day(2000, 1, 10)},   // Saturday moves to the Friday first
        {day(2000, 1, 9), 1, day(2000, 1, 10)},   // and so does Sunday
        {day(2000, 1, 10), -1, day(2000, 1, 7)},  // Monday - 1 = Friday
        {day(2000, 1, 12), 5, day(2000, 1, 19)},  // a week later, same weekday
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
    QString number = "1*2?";
    EXPECT_TRUE(WildcardIsValid(number, 1));
    EXPECT_EQ(number, "1121");
    QString date = "1/*/2000";
    EXPECT_TRUE(WildcardIsValid(date, 3));
    QString money = "1*.5";
    EXPECT_TRUE(WildcardIsValid(money, 2));
    EXPECT_EQ(money, "11.5");
    QString text = "abc*";
    EXPECT_FALSE(WildcardIsValid(text, 1));
    EXPECT_FALSE(WildcardIsValid(text, 10));
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
    ASSERT_EQ(ui.fileDialogs.size(), 1u);
    EXPECT_EQ(ui.fileDialogs[0].initialDir, platform::programFolder());
    EXPECT_EQ(ui.fileDialogs[0].fileName, "/data/old.mdb");
    EXPECT_EQ(ui.fileDialogs[0].filter, "Database|*.mdb");
    EXPECT_TRUE(ui.fileDialogs[0].mustExist);

    ui.fileChoices.push_back(QString("/data/new.mdb"));
    EXPECT_EQ(BrowseForFile("/data", "Database|*.mdb", false), "/data/new.mdb");
    EXPECT_EQ(ui.fileDialogs[1].initialDir, "/data");
    EXPECT_EQ(ui.fileDialogs[1].fileName, "");
    EXPECT_FALSE(ui.fileDialogs[1].mustExist);
    EXPECT_EQ(BrowseForFile("  ", "Database|*.mdb", false), "");
    EXPECT_EQ(ui.fileDialogs[2].initialDir, platform::programFolder());
}

}  // namespace
