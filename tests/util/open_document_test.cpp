// Opening a file with its application: what reaches the user on each failure, and the rich
// text documents that the user's options send to the suite's own editor.

#include "util/open_document.h"
#include "fixtures.h"
#include "logon/command_line.h"
#include "logon/frm_startup.h"
#include "platform/qt_ui.h"
#include "settings/options.h"

#include <QDir>

namespace {

class OpenDocumentTest : public testing_support::OptionsSessionTest {
protected:
    void TearDown() override {
        gDocumentEditor = nullptr;
        OptionsSessionTest::TearDown();
    }
    // What the document editor was handed, one line a call.
    QStringList editorCalls;
    void watchEditor() {
        gDocumentEditor = [this](const QString& commandLine, const QString& caption, bool flag) {
            editorCalls << commandLine + "|" + caption + "|" + (flag ? "True" : "False");
        };
    }
};

TEST_F(OpenDocumentTest, EachFailureOfTheLaunchReachesTheUserInWords) {
    const struct {
        int result;
        const char* text;  // nullptr: the launch succeeded
    } cases[] = {
        {2, "File not found"},
        {3, "Path not found"},
        {5, "Access denied"},
        {8, "Out of memory"},
        {11, "Invalid EXE file or error in EXE image"},
        {26, "A sharing violation occurred"},
        {27, "Incomplete or invalid file association"},
        {28, "DDE Time out"},
        {29, "DDE transaction failed"},
        {30, "DDE busy"},
        {31, "No association exists for this file extension"},
        {32, "DLL not found"},
        {0, "Unknown error"},
        {4, "Unknown error"},
        {33, nullptr},
        {42, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.result);
        ui.messages.clear();
        ui.launched.clear();
        ui.launchResults.push_back(c.result);
        OpenDocument("/docs/letter.txt");
        EXPECT_EQ(ui.launched, std::vector<QString>{"/docs/letter.txt"});
        if (!c.text) {
            EXPECT_TRUE(ui.messages.empty());
            continue;
        }
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text, c.text);
        EXPECT_EQ(ui.messages[0].title, "Orvane Administration");
        EXPECT_EQ(ui.messages[0].buttons, platform::Msg::OKOnly);
    }
}

// The desktop's launch tells a missing file from a missing folder; a blank name is a file it
// doesn't find.
TEST_F(OpenDocumentTest, NoNameIsRefusedButABlankOneGoesToTheLaunch) {
    for (const QString& none : {QString(), QString("")}) {
        OpenDocument(none);
    }
    EXPECT_EQ(ui.texts(), std::vector<QString>(2, "No file specified."));
    EXPECT_TRUE(ui.launched.empty());

    platform::QtUi desktop;
    EXPECT_EQ(desktop.launch(path("missing.txt")), 2);
    EXPECT_EQ(desktop.launch(path("nowhere/missing.txt")), 3);
    EXPECT_EQ(desktop.launch(""), 2);
    ui.messages.clear();
    ui.launchResults.push_back(desktop.launch("   "));
    OpenDocument("   ");
    EXPECT_EQ(ui.launched, std::vector<QString>{"   "});
    EXPECT_EQ(ui.texts(), std::vector<QString>{"File not found"});
}

TEST_F(OpenDocumentTest, RichTextGoesToTheOwnEditorOnlyWhenTheOptionSaysSo) {
    watchEditor();
    OpenDocument("/docs/Notes.RTF");    // no option stored: the default 1 launches
    SaveOption(1, "Options", 0, true);  // the shared row is not the user's choice
    OpenDocument("/docs/notes.rtf");
    SaveOption(1, "Options", 0, false);
    OpenDocument("/docs/Notes.RTF");
    OpenDocument("/docs/notes.rtf.txt");
    EXPECT_EQ(editorCalls, QStringList{"-d/docs/Notes.RTF|Document /docs/Notes.RTF|True"});
    EXPECT_EQ(ui.launched,
              std::vector<QString>({"/docs/Notes.RTF", "/docs/notes.rtf", "/docs/notes.rtf.txt"}));
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(OpenDocumentTest, WithoutTheOptionsCursorTheFailureReachesTheCaller) {
    gOptionsRS.reset();
    EXPECT_NE(testing_support::errorOf([] { OpenDocument("/docs/letter.txt"); }), 0);
    EXPECT_TRUE(ui.launched.empty());
}

// The console opens the options at logon, so the user's own choice counts from then on.
class OpenDocumentAfterLogonTest : public testing_support::DemoTest {
protected:
    void TearDown() override {
        gDocumentEditor = nullptr;
        DemoTest::TearDown();
    }
};

TEST_F(OpenDocumentAfterLogonTest, TheLogonOpensTheUsersOptions) {
    SetCommandLine("-ladmin -porvane");
    frmStartUp logonWindow;
    ASSERT_TRUE(logonWindow.ShowMe(false, false, true));
    bool edited = false;
    gDocumentEditor = [&](const QString&, const QString&, bool) { edited = true; };
    SaveOption(1, "Options", 0, false);
    OpenDocument("/docs/notes.rtf");
    EXPECT_TRUE(edited);
    EXPECT_TRUE(ui.launched.empty());
}

}  // namespace
