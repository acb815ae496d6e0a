// Opening a file with its application: what reaches the user on each failure, and the rich
// text documents that the user's options send to the suite's own editor.

#include "util/open_document.h"
#include "fixtures.h"
#include "logon/command_line.h"
#include "logon/frm_startup.h"
#include "platform/qt_ui.h"
#include "settings/options.h"

namespace {

// A test that may hand documents to the editor leaves no editor behind for the next.
template <typename Session>
class EditorTest : public Session {
protected:
    void TearDown() override {
        gDocumentEditor = nullptr;
        Session::TearDown();
    }
};

using OpenDocumentTest = EditorTest<testing_support::OptionsSessionTest>;
// The console opens the options at logon, so the user's own choice counts from then on.
using OpenDocumentAfterLogonTest = EditorTest<testing_support::DemoTest>;

TEST_F(OpenDocumentTest, EachFailureOfTheLaunchReachesTheUserInWords) {
    // Above 32 the launch succeeded and says nothing.
    for (const int result : {2, 3, 5, 8, 11, 26, 27, 28, 29, 30, 31, 32, 0, 4, 33, 42}) {
        ui.launchResults.push_back(result);
        OpenDocument("/docs/letter.txt");
    }
    EXPECT_EQ(ui.launched, std::vector<QString>(16, "/docs/letter.txt"));
    EXPECT_EQ(
        ui.texts(),
        std::vector<QString>(
            {"File not found", "Path not found", "Access denied", "Out of memory",
             "Invalid EXE file or error in EXE image", "A sharing violation occurred",
             "Incomplete or invalid file association", "DDE Time out", "DDE transaction failed",
             "DDE busy", "No association exists for this file extension", "DLL not found",
             "Unknown error", "Unknown error"}));
    EXPECT_EQ(ui.messages.back().title, "Orvane Administration");
    EXPECT_EQ(ui.messages.back().buttons, platform::Msg::OKOnly);
}

// The desktop's launch tells a missing file from a missing folder; a blank name is a file it
// doesn't find.
TEST_F(OpenDocumentTest, NoNameIsRefusedButABlankOneGoesToTheLaunch) {
    OpenDocument("");
    EXPECT_EQ(ui.texts(), std::vector<QString>{"No file specified."});
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
    QStringList editorCalls;  // one line a call
    gDocumentEditor = [&](const QString& commandLine, const QString& caption, bool flag) {
        editorCalls << commandLine + "|" + caption + "|" + (flag ? "True" : "False");
    };
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
