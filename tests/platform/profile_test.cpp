// Settings files with the semantics of the desktop's profile calls.

#include "platform/os.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

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
    bool writeKey(const QString& section, const QString& key, const QString& value) {
        return platform::WritePrivateProfileString(section, key, value, file);
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
    EXPECT_EQ(read("section1", "name1"), std::make_pair(QString("default"), 7));  // no file yet
    write("[s]\rk=v\r");  // carriage returns alone end lines too
    EXPECT_EQ(read("s", "k").first, "v");
    write(
        "[section1]\r\nname1=val1\r\nname2=\"val2\"\r\nname3\r\nname4=a\r\nname5=\r\n  Spaced  =  "
        "value with blanks  \r\nname1=second\r\nname6='val6'\r\nname7='val7\"\r\nname8='\r\n"
        "[section2]\r\nname1=other\r\n");
    // The count is the length of what was read, the default included.
    const std::tuple<const char*, const char*, int, const char*> cases[] = {
        {"section1", "NaMe1", 128, "val1"},     // names ignore case
        {"SECTION1", "name1", 128, "val1"},     // the first of duplicate keys wins
        {"section1", "name2", 128, "val2"},     // surrounding quotes go
        {"section1", "name6", 128, "val6"},     // single ones too
        {"section1", "name7", 128, "'val7\""},  // but only a matching pair
        {"section1", "name8", 128, "'"},
        {"section1", "name1", 5, "val1"},  // size - 1 characters
        {"section1", "name1", 4, "val"},
        {"section1", "name3", 128, "default"},  // a line without = is no key
        {"section1", "name5", 128, ""},         // an empty value is not the default
        {"section1", "spaced", 128, "value with blanks"},
        {"section1", "missing", 128, "default"},
        {"nosection", "name1", 128, "default"},
        {"section2", "name1", 128, "other"},
        {"section1", "", 128, "default"},  // an empty key also gets the default
    };
    for (const auto& [section, key, size, value] : cases) {
        EXPECT_EQ(read(section, key, size), std::make_pair(QString(value), int(strlen(value))))
            << section << "/" << key << "/" << size;
    }
    EXPECT_EQ(read("section1", "name1", 0).first, "untouched");
    EXPECT_EQ(read("section1", "missing", 128, "padded   ").first, "padded");
}

TEST_F(ProfileTest, WritingFollowsTheProfileCalls) {
    EXPECT_TRUE(writeKey("App", "key", ""));
    EXPECT_EQ(content(), "[App]\r\nkey=\r\n");
    EXPECT_TRUE(writeKey("App", "second", "2"));
    EXPECT_TRUE(writeKey("Other", "a", "b"));
    EXPECT_TRUE(writeKey("APP", "KEY", "replaced"));
    EXPECT_EQ(content(), "[App]\r\nkey=replaced\r\nsecond=2\r\n[Other]\r\na=b\r\n");

    // No value deletes the key, no key the section.
    write("[A]\r\nx=1\r\ny=2\r\n[B]\r\nz=3\r\n");
    EXPECT_TRUE(platform::WritePrivateProfileString("A", QString("x"), std::nullopt, file));
    EXPECT_EQ(content(), "[A]\r\ny=2\r\n[B]\r\nz=3\r\n");
    EXPECT_TRUE(platform::WritePrivateProfileString("B", std::nullopt, std::nullopt, file));
    EXPECT_EQ(content(), "[A]\r\ny=2\r\n");
    EXPECT_TRUE(platform::WritePrivateProfileString("Absent", QString("x"), std::nullopt, file));
    EXPECT_FALSE(platform::WritePrivateProfileString("A", QString("x"), QString("1"), ""));

    // A new key goes at the end of its section, before blank lines.
    write("; comment\r\n[A]\r\nx=1\r\n\r\n[B]\r\n");
    EXPECT_TRUE(writeKey("A", "y", "2"));
    EXPECT_EQ(content(), "; comment\r\n[A]\r\nx=1\r\ny=2\r\n\r\n[B]\r\n");
}

TEST_F(ProfileTest, AWriteLeavesEveryOtherLineByteForByte) {
    const QByteArray otherProgram =
        QByteArrayLiteral("[C:\\Other\\]\r\nOwner=M\xFCller\r\nBlob=\x00\x01\xFF\xFE\r\n");
    write(otherProgram + "[C:\\Ours\\]\r\nLG=old\r\n");
    EXPECT_EQ(read("c:\\other\\", "owner").first, QString::fromUtf8("M\u00FCller"));
    EXPECT_TRUE(writeKey("C:\\Ours\\", "LG", "new"));
    EXPECT_EQ(content(), otherProgram + "[C:\\Ours\\]\r\nLG=new\r\n");
    // Each line keeps its own end, and a new line takes that of the line before it.
    const std::tuple<QByteArray, const char*, QByteArray> cases[] = {
        {"[A]\nx=1\n[B]\n", "y", "[A]\nx=1\ny=new\n[B]\n"},
        {"[A]\r\nx=1\n[B]\rz=3\r\n", "x", "[A]\r\nx=new\n[B]\rz=3\r\n"},
        {"[A]\r\nx=1", "x", "[A]\r\nx=new"},
        {"[A]\r\nx=1", "y", "[A]\r\nx=1\r\ny=new"},  // the file still ends without a line end
    };
    for (const auto& [before, key, after] : cases) {
        write(before);
        EXPECT_TRUE(writeKey("A", key, "new")) << before.constData();
        EXPECT_EQ(content(), after);
        EXPECT_EQ(read("A", key).first, "new") << before.constData();
    }
}

// Stored bytes read as UTF-8 where they are that, else as Windows-1252, cut in characters.
TEST_F(ProfileTest, TextIsStoredAsWindows1252WhereItReadsBackElseAsUtf8) {
    const struct {
        const char* text;  // UTF-8 in the source
        QByteArray stored;
    } cases[] = {
        {"\u20AC \u2013 \u201CJos\u00E9\u201D", "\x80 \x96 \x93Jos\xE9\x94"},
        {"\u0081\u008D\u008F\u0090\u009D", "\x81\x8D\x8F\x90\x9D"},  // the code page's unused bytes
        {"\u0080", "\xC2\x80"},          // a control the code page lacks
        {"Z\u0142oty", "Z\xC5\x82oty"},  // beyond the code page
        // 8-bit bytes that would read back as UTF-8 "\u00E9"
        {"\u00C3\u00A9", "\xC3\x83\xC2\xA9"},
    };
    for (const auto& c : cases) {
        const QString text = QString::fromUtf8(c.text);
        ASSERT_TRUE(writeKey("S", "k", text)) << c.text;
        EXPECT_EQ(content(), "[S]\r\nk=" + c.stored + "\r\n") << c.text;
        EXPECT_EQ(read("S", "k").first, text) << c.text;
        QFile::remove(file);
    }
    ASSERT_TRUE(writeKey("S", "k", QString(200, QChar(0x142))));
    EXPECT_EQ(read("S", "k"), std::make_pair(QString(127, QChar(0x142)), 127));
    ASSERT_TRUE(writeKey("S", "k", QString::fromUtf8("a\U0001F600")));
    EXPECT_EQ(read("S", "k", 3), std::make_pair(QString("a"), 1));  // a split pair goes whole
}

TEST_F(ProfileTest, ALineBreakCannotAddKeys) {
    const QByteArray before = "[S]\r\nDatabase=/old.mdb\r\n";
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"S", "Database", "/new.mdb\nWP=secret"},
        {"S", "Database", "/new.mdb\rWP=secret"},
        {"S", "Database\r\nWP", "secret"},
        {"S]\nWP=secret\n[S", "Database", "x"},
    };
    for (const auto& [section, key, value] : cases) {
        write(before);
        EXPECT_FALSE(writeKey(section, key, value)) << section << "/" << key;
        EXPECT_EQ(content(), before) << section << "/" << key;
    }
    QFile::remove(file);
    EXPECT_FALSE(writeKey("S", "Database", "/new.mdb\nWP=secret"));
    EXPECT_FALSE(QFile::exists(file));
}

#ifdef Q_OS_UNIX
TEST_F(ProfileTest, ANewFileIsTheOwnersAloneAndAnOldOneKeepsItsMode) {
    const auto mode = [this] {
        struct stat info {};
        const bool found = ::stat(QFile::encodeName(file).constData(), &info) == 0;
        return found ? QString::number(info.st_mode & 0777, 8) : QString();
    };
    ASSERT_TRUE(writeKey("S", "WP", "secret"));
    EXPECT_EQ(mode(), "600");
    ASSERT_EQ(::chmod(QFile::encodeName(file).constData(), 0640), 0);
    ASSERT_TRUE(writeKey("S", "WP", "other"));
    EXPECT_EQ(mode(), "640");
}
#endif

}  // namespace
