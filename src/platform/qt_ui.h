#pragma once

#include "platform/ui.h"

namespace platform {

// The seam on the desktop, with Qt's message boxes, dialogs and cursor.
class QtUi : public Ui {
public:
    int messageBox(const QString& text, int style, const QString& title) override;
    void showModal(QWidget* window, QWidget* owner) override;
    void setBusy(bool busy) override;
    void doEvents() override;
    std::optional<QString> openFileDialog(const FileDialogRequest& request) override;
    int launch(const QString& file) override;
    void showHelp(const QString& file) override;
    [[noreturn]] void endRun(int exitStatus) override;

private:
    bool busy_ = false;
};

}  // namespace platform
