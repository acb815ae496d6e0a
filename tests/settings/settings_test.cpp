// The workstation's settings file and the options table.

#include "data/session.h"
#include "fixtures.h"
#include "platform/convert.h"
#include "platform/os.h"
#include "settings/options.h"
#include "settings/settings_file.h"

#include <QDir>
#include <QFile>

namespace {

class SettingsFileTest : public testing_support::SeamTest {
protected:
    void SetUp() override {
        SeamTest::SetUp();
        gSystemDir = GetSystemDir();
        QFile::remove(platform::joinPath(gSystemDir, "tarnell.ini"));
    }
};

TEST_F(SettingsFileTest, TheSystemDirectoryIsSharedAndMade) {
    EXPECT_FALSE(gSystemDir.isEmpty());
    EXPECT_TRUE(QDir(gSystemDir).exists());
    EXPECT_EQ(GetSystemDir(), gSystemDir);
    EXPECT_EQ(QStringList({TrimAtNull(QString("abc") + QChar(0) + "def"), TrimAtNull("abc")}),
              QStringList({"abc", "abc"}));
    EXPECT_EQ(ProgramSection(), platform::programFolder() + QDir::separator());
}

TEST_F(SettingsFileTest, AValueIsCutAt127Characters) {
    const QString path127 = "/data/" + QString(121, 'p');
    WriteIni("Database", ProgramSection(), path127 + "q");
    EXPECT_EQ(ReadIni("Database"), path127);
}

TEST_F(SettingsFileTest, MissingOrEmptyGivesTheDefault) {
    EXPECT_EQ(ReadIni("LG", ProgramSection(), "fallback"), "fallback");
    WriteIni("LG", ProgramSection(), "");
    EXPECT_EQ(ReadIni("LG", ProgramSection(), "fallback"), "fallback");
    WriteIni("LG", ProgramSection(), 42);
    EXPECT_EQ(ReadIni("lg", ProgramSection(), "fallback"), "42");
    // A settings file given by its path.
    const QString temp = path("temp.tmp");
    ASSERT_TRUE(
        platform::WritePrivateProfileString("Temp", QString("Logon"), QString("boss"), temp));
    EXPECT_EQ(ReadIni("logon", "TEMP", "", temp), "boss");
}

TEST_F(SettingsFileTest, EachProgramFolderHasASectionOfItsOwn) {
    const QString first = "/opt/first" + QString(QDir::separator());
    const QString second = "/opt/second" + QString(QDir::separator());
    WriteIni("Database", first, "/one.mdb");
    WriteIni("Database", " " + second + " ", "/two.mdb");
    EXPECT_EQ(ReadIni("Database", first), "/one.mdb");
    EXPECT_EQ(ReadIni("Database", second), "/two.mdb");
    QFile file(platform::joinPath(gSystemDir, "tarnell.ini"));  // the blanks are no part of it
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().count("[/opt/"), 2);
}

using OptionsTest = testing_support::OptionsSessionTest;

TEST_F(OptionsTest, TagsOfOneSectionAndUserShareARow) {
    EXPECT_EQ(rt::CStr(GetOption(4, "Options2", "/docs", false)), "/docs");
    SaveOption(4, "Options2", "/mine", false);
    SaveOption(7, "Options2", 12, false);
    SaveOption(4, "Options2", "/everyone", true);
    EXPECT_EQ(count("options", "section = 'Options2' AND userid = 1"), 1);
    EXPECT_EQ(count("options", "section = 'Options2' AND userid = 0"), 1);
    EXPECT_EQ(rt::CStr(GetOption(4, "Options2", "/docs", false)), "/mine");
    EXPECT_EQ(rt::CStr(GetOption(7, "options2", 0, false)), "12");
    EXPECT_EQ(rt::CStr(GetOption(4, "Options2", "/docs", true)), "/everyone");
    SaveOption(4, "Options2", "", false);
    EXPECT_EQ(rt::CStr(GetOption(4, "Options2", "/docs", false)), "/docs");
}

TEST_F(OptionsTest, TagsOutOfBoundsAreRefusedWithTheMessage) {
    for (qint16 tag : {0, 26}) {
        SaveOption(tag, "Options", "x", false);
    }
    EXPECT_EQ(ui.texts(),
              std::vector<QString>(2, "Error in saving options.  Option tag out of bounds."));
    EXPECT_EQ(ui.messages[0].title, "Orvane Administration");
    EXPECT_EQ(count("options"), 0);
    // An empty table asks for no column.
    EXPECT_EQ(rt::CStr(GetOption(26, "Options", "none", false)), "none");
    SaveOption(1, "Options", "x", false);
    EXPECT_THROW(GetOption(26, "Options", "", false), rt::Error);  // no column value26
}

TEST_F(OptionsTest, WithoutTheCursorSaveIsSilentAndGetFails) {
    gOptionsRS.reset();
    SaveOption(1, "Options", "x", false);
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(testing_support::errorOf([] { GetOption(1, "Options", 1, false); }),
              rt::ObjectNotSet);
}

}  // namespace
