#pragma once

#include "platform/ui.h"

#include <QString>

#include <deque>
#include <functional>
#include <vector>

namespace platform {

// The seam for tests: answers come from queues, and everything shown is recorded.
class ScriptedUi : public Ui {
public:
    struct Message {
        QString text;
        QString title;
        int buttons;        // Msg::OKOnly, Msg::YesNo ...
        int icon;           // 0 or Msg::Question ...
        int defaultButton;  // 1, 2 or 3
        int answer;         // what the box returned
    };

    // Answers for the coming boxes, in order. With none queued a box answers with its
    // default button, as Enter would.
    std::deque<int> answers;
    // What the user does in each coming modal window; with none queued the window is closed.
    std::deque<std::function<void(QWidget*)>> modalScripts;
    // Files chosen in the coming file dialogs; nothing for a cancelled one. With none queued
    // the dialog is cancelled.
    std::deque<std::optional<QString>> fileChoices;
    // Results of the coming launches; 42 (success) with none queued.
    std::deque<int> launchResults;

    std::vector<Message> messages;
    std::vector<QString> modalWindows;  // objectName of each window shown modally
    std::vector<FileDialogRequest> fileDialogs;
    std::vector<QString> launched;
    std::vector<QString> helpShown;
    bool busy = false;
    int busyChanges = 0;
    int eventRuns = 0;
    bool ended = false;
    int exitStatus = -1;  // of the end of the run, once it ended

    int messageBox(const QString& text, int style, const QString& title) override;
    void showModal(QWidget* window, QWidget* owner) override;
    void setBusy(bool busy) override;
    void doEvents() override;
    std::optional<QString> openFileDialog(const FileDialogRequest& request) override;
    int launch(const QString& file) override;
    void showHelp(const QString& file) override;
    [[noreturn]] void endRun(int exitStatus) override;

    // The texts of all messages shown so far.
    std::vector<QString> texts() const;
};

}  // namespace platform
