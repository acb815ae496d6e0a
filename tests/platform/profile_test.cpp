// Settings files with the semantics of the desktop's profile calls.

#include "platform/os.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class ProfileTest : public ::testing::Test {
protected:
    void write(const QByteArray& content) {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(content);
    }
    QByteArray content() const {
        QFile f(file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    // The value read with that buffer size, and the count the call gave back.
    std::pair<QString, int> read(const QString& section, const QString& key, int size = 128,
                                 const QString& def = "default") {
        QString buffer = "untouched";
        const int count = platform::GetPrivateProfileString(section, key, def, buffer, size, file);
        return {buffer, count};
    }

    QTemporaryDir dir;
    QString file = dir.filePath("test.ini");
};

TEST_F(ProfileTest, ReadingFollowsTheProfileCalls) {
    write(
        "[section1]\r\nname1=val1\r\nname2=\"val2\"\r\nname3\r\nname4=a\r\nname5=\r\n  Spaced  =  "
        "value with blanks  "
        "\r\nname1=second\r\n[section2]\r\nname1=other\r\n");
    const struct {
        const char* section;
        const char* key;
        int size;
        const char* value;
        int count;
    } cases[] = {
        {"section1", "NaMe1", 128, "val1", 4},  // names ignore case
        {"SECTION1", "name1", 128, "val1", 4},  // the first of duplicate keys wins
        {"section1", "name2", 128, "val2", 4},  // surrounding quotes go
        {"section1", "name1", 5, "val1", 4},    // size - 1 characters
        {"section1", "name1", 4, "val", 3},
        {"section1", "name1", 1, "", 0},
        {"section1", "name3", 128, "default", 7},  // a line without = is no key
        {"section1", "name5", 128, "", 0},         // an empty value is not the default
        {"section1", "spaced", 128, "value with blanks", 17},
        {"section1", "missing", 128, "default", 7},
        {"nosection", "name1", 128, "default", 7},
        {"section2", "name1", 128, "other", 5},
        {"section1", "", 128, "default", 7},  // an empty key also gets the default
    };
    for (const auto& c : cases) {
        const auto [value, count] = read(c.section, c.key, c.size);
        EXPECT_EQ(value, QString(c.value)) << c.section << "/" << c.key << "/" << c.size;
        EXPECT_EQ(count, c.count) << c.section << "/" << c.key << "/" << c.size;
    }
    EXPECT_EQ(read("section1", "name1", 0).first, "untouched");
    EXPECT_EQ(read("section1", "missing", 128, "padded   ").first, "padded");
}

TEST_F(ProfileTest, CarriageReturnsAloneEndLinesToo) {
    write("[s]\rk=v\r");
    EXPECT_EQ(read("s", "k").first, "v");
}

TEST_F(ProfileTest, AMissingFileGivesTheDefault) {
    EXPECT_EQ(read("s", "k"), std::make_pair(QString("default"), 7));
}

TEST_F(ProfileTest, WritingMakesFileSectionAndKey) {
    EXPECT_TRUE(platform::WritePrivateProfileString("App", QString("key"), QString(""), file));
    EXPECT_EQ(content(), "[App]\r\nkey=\r\n");
    EXPECT_TRUE(platform::WritePrivateProfileString("App", QString("second"), QString("2"), file));
    EXPECT_TRUE(platform::WritePrivateProfileString("Other", QString("a"), QString("b"), file));
    EXPECT_TRUE(
        platform::WritePrivateProfileString("APP", QString("KEY"), QString("replaced"), file));
    EXPECT_EQ(content(), "[App]\r\nkey=replaced\r\nsecond=2\r\n[Other]\r\na=b\r\n");
}

TEST_F(ProfileTest, NoValueDeletesTheKeyAndNoKeyTheSection) {
    write("[A]\r\nx=1\r\ny=2\r\n[B]\r\nz=3\r\n");
    EXPECT_TRUE(platform::WritePrivateProfileString("A", QString("x"), std::nullopt, file));
    EXPECT_EQ(content(), "[A]\r\ny=2\r\n[B]\r\nz=3\r\n");
    EXPECT_TRUE(platform::WritePrivateProfileString("B", std::nullopt, std::nullopt, file));
    EXPECT_EQ(content(), "[A]\r\ny=2\r\n");
    EXPECT_TRUE(platform::WritePrivateProfileString("Absent", QString("x"), std::nullopt, file));
    EXPECT_FALSE(platform::WritePrivateProfileString("A", QString("x"), QString("1"), ""));
}

TEST_F(ProfileTest, ANewKeyGoesAtTheEndOfItsSectionBeforeBlankLines) {
    write("; comment\r\n[A]\r\nx=1\r\n\r\n[B]\r\n");
    EXPECT_TRUE(platform::WritePrivateProfileString("A", QString("y"), QString("2"), file));
    EXPECT_EQ(content(), "; comment\r\n[A]\r\nx=1\r\ny=2\r\n\r\n[B]\r\n");
}

}  // namespace
