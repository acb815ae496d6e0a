#pragma once

#include "platform/rt_error.h"

#include <QString>

#include <optional>
#include <vector>

class QWidget;

namespace platform {

// Message box styles, combined as buttons + icon + default button.
namespace Msg {
enum Style : int {
    OKOnly = 0,
    OKCancel = 1,
    AbortRetryIgnore = 2,
    YesNoCancel = 3,
    YesNo = 4,
    RetryCancel = 5,
    Critical = 16,
    Question = 32,
    Exclamation = 48,
    Information = 64,
    DefaultButton1 = 0,
    DefaultButton2 = 256,
    DefaultButton3 = 512,
};
enum Result : int { OK = 1, Cancel = 2, Abort = 3, Retry = 4, Ignore = 5, Yes = 6, No = 7 };

inline int buttonsOf(int style) {
    return style & 0x0F;
}
inline int iconOf(int style) {
    return style & 0xF0;
}
inline int defaultButtonOf(int style) {
    return (style & 0xF00) / 256 + 1;
}  // 1, 2 or 3
// The answers of a box's buttons, left to right.
std::vector<int> answersOf(int style);
}  // namespace Msg

// What a message box that passes no title shows.
inline const QString kApplicationTitle = QStringLiteral("Orvane Administration");

struct FileDialogRequest {
    QString initialDir;
    QString fileName;
    QString filter;  // "Description|*.ext|Other|*.a;*.b"
    int filterIndex = 1;
    bool mustExist = false;
};

// Exit statuses of a run: scripts that start the console with a logon on its command line can
// tell a run that ended in a failure or a refused logon from one the user ended.
constexpr int kExitNormal = 0;
constexpr int kExitFailure = 1;

// Thrown by the scripted seam at the end of the run, so that a test sees where the run ended.
struct RunEnded {};

// Everything the program does to the screen and the desktop beyond its own windows passes
// through here: message boxes, modal windows, the hourglass, letting events run, the file
// dialog, launching a file and the end of the run.
class Ui {
public:
    virtual ~Ui() = default;
    // Returns one of Msg::Result. `title` is already the one shown.
    virtual int messageBox(const QString& text, int style, const QString& title) = 0;
    // Shows the window modally and returns once it is hidden.
    virtual void showModal(QWidget* window, QWidget* owner) = 0;
    virtual void setBusy(bool busy) = 0;
    virtual void doEvents() = 0;
    // The chosen file, or nothing when the dialog was cancelled.
    virtual std::optional<QString> openFileDialog(const FileDialogRequest& request) = 0;
    // Opens a file or link with its application: above 32 on success, else a failure code
    // (2 file not found, 31 no association ...).
    virtual int launch(const QString& file) = 0;
    // Opens the help file on its index.
    virtual void showHelp(const QString& file) = 0;
    // Ends the process with that exit status.
    [[noreturn]] virtual void endRun(int exitStatus) = 0;
};

Ui& ui();
// Installs the seam for the rest of the run (or until the next call); the caller keeps
// ownership.
void setUi(Ui* seam);

// Shows the runtime's text of an unhandled failure, then ends the run.
[[noreturn]] void failRun(const rt::Error& error);

// Runs an event handler; a run-time failure it lets through ends the run with the runtime's
// message, as the program has no handler of its own there.
template <typename Handler>
void runHandler(Handler&& handler) {
    try {
        handler();
    } catch (const rt::Error& error) {
        failRun(error);
    }
}

}  // namespace platform

// The program's few words for the seam, used everywhere.
int ShowMsg(const QString& prompt, int buttons = platform::Msg::OKOnly,
            const QString& title = QString());
void ShowBusy();
void ShowIdle();
void DoEvents();
[[noreturn]] void End(int exitStatus = platform::kExitNormal);
