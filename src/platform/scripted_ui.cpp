#include "platform/scripted_ui.h"

#include <QWidget>

namespace platform {

int ScriptedUi::messageBox(const QString& text, int style, const QString& title) {
    const std::vector<int> choices = Msg::answersOf(style);
    int answer = choices[std::min<size_t>(Msg::defaultButtonOf(style), choices.size()) - 1];
    if (!answers.empty()) {
        answer = answers.front();
        answers.pop_front();
    }
    messages.push_back({text, title, Msg::buttonsOf(style), Msg::iconOf(style),
                        Msg::defaultButtonOf(style), answer});
    return answer;
}

void ScriptedUi::showModal(QWidget* window, QWidget*) {
    modalWindows.push_back(window->objectName());
    window->show();
    if (!modalScripts.empty()) {
        auto script = std::move(modalScripts.front());
        modalScripts.pop_front();
        script(window);
    }
    window->hide();
}

void ScriptedUi::setBusy(bool value) {
    if (busy != value) {
        ++busyChanges;
    }
    busy = value;
}

void ScriptedUi::doEvents() {
    ++eventRuns;
}

std::optional<QString> ScriptedUi::openFileDialog(const FileDialogRequest& request) {
    fileDialogs.push_back(request);
    if (fileChoices.empty()) {
        return std::nullopt;
    }
    auto choice = fileChoices.front();
    fileChoices.pop_front();
    return choice;
}

int ScriptedUi::launch(const QString& file) {
    launched.push_back(file);
    if (launchResults.empty()) {
        return 42;
    }
    const int result = launchResults.front();
    launchResults.pop_front();
    return result;
}

void ScriptedUi::showHelp(const QString& file) {
    helpShown.push_back(file);
}

void ScriptedUi::endRun(int status) {
    ended = true;
    exitStatus = status;
    throw RunEnded{};
}

std::vector<QString> ScriptedUi::texts() const {
    std::vector<QString> result;
    for (const Message& m : messages) {
        result.push_back(m.text);
    }
    return result;
}

}  // namespace platform
