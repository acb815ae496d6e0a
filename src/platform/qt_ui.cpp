#include "platform/qt_ui.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>
#include <QWidget>

#include <cstdio>
#include <cstdlib>

namespace platform {

namespace {

QMessageBox::StandardButton standardButtonOf(int answer) {
    switch (answer) {
        case Msg::OK:
            return QMessageBox::Ok;
        case Msg::Cancel:
            return QMessageBox::Cancel;
        case Msg::Abort:
            return QMessageBox::Abort;
        case Msg::Retry:
            return QMessageBox::Retry;
        case Msg::Ignore:
            return QMessageBox::Ignore;
        case Msg::Yes:
            return QMessageBox::Yes;
        default:
            return QMessageBox::No;
    }
}

QMessageBox::Icon iconFor(int style) {
    switch (Msg::iconOf(style)) {
        case Msg::Critical:
            return QMessageBox::Critical;
        case Msg::Question:
            return QMessageBox::Question;
        case Msg::Exclamation:
            return QMessageBox::Warning;
        case Msg::Information:
            return QMessageBox::Information;
        default:
            return QMessageBox::NoIcon;
    }
}

// "Database|*.mdb|All|*.*" as Qt writes it: "Database (*.mdb);;All (*.*)".
QString qtFilter(const QString& filter) {
    const QStringList parts = filter.split('|');
    QStringList result;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        result << QStringLiteral("%1 (%2)").arg(parts[i], QString(parts[i + 1]).replace(';', ' '));
    }
    return result.join(QStringLiteral(";;"));
}

// Quits an event loop when the watched window is hidden.
class HideWatcher : public QObject {
public:
    HideWatcher(QWidget* window, QEventLoop* loop) : loop_(loop) {
        window->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Hide) {
            loop_->quit();
        }
        return false;
    }

private:
    QEventLoop* loop_;
};

}  // namespace

int QtUi::messageBox(const QString& text, int style, const QString& title) {
    QMessageBox box(iconFor(style), title, text, QMessageBox::NoButton,
                    QApplication::activeWindow());
    const std::vector<int> answers = Msg::answersOf(style);
    for (int answer : answers) {
        box.addButton(standardButtonOf(answer));
    }
    const size_t defaultIndex = std::min<size_t>(Msg::defaultButtonOf(style), answers.size()) - 1;
    box.setDefaultButton(standardButtonOf(answers[defaultIndex]));
    const bool restoreBusy = busy_;
    setBusy(false);
    const auto chosen = static_cast<QMessageBox::StandardButton>(box.exec());
    setBusy(restoreBusy);
    for (int answer : answers) {
        if (standardButtonOf(answer) == chosen) {
            return answer;
        }
    }
    return answers.back();
}

void QtUi::showModal(QWidget* window, QWidget* owner) {
    if (owner && window->parentWidget() != owner) {
        window->setParent(owner, window->windowFlags() | Qt::Dialog);
    }
    window->setWindowModality(Qt::ApplicationModal);
    QEventLoop loop;
    HideWatcher watcher(window, &loop);
    window->show();
    loop.exec();
}

void QtUi::setBusy(bool busy) {
    if (busy == busy_) {
        return;
    }
    busy_ = busy;
    if (busy) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
        QApplication::restoreOverrideCursor();
    }
}

void QtUi::doEvents() {
    QApplication::processEvents();
}

std::optional<QString> QtUi::openFileDialog(const FileDialogRequest& request) {
    QFileDialog dialog(QApplication::activeWindow());
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(request.mustExist ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    dialog.setDirectory(request.initialDir);
    const QStringList filters = qtFilter(request.filter).split(QStringLiteral(";;"));
    dialog.setNameFilters(filters);
    if (request.filterIndex >= 1 && request.filterIndex <= filters.size()) {
        dialog.selectNameFilter(filters[request.filterIndex - 1]);
    }
    if (!request.fileName.isEmpty()) {
        dialog.selectFile(request.fileName);
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return dialog.selectedFiles().constFirst();
}

int QtUi::launch(const QString& file) {
    const QUrl url = QUrl::fromUserInput(file, QString(), QUrl::AssumeLocalFile);
    if (url.isEmpty() || !url.isValid()) {
        return 2;  // a blank name names no file
    }
    if (url.isLocalFile()) {
        const QFileInfo info(url.toLocalFile());
        if (!info.exists()) {
            return info.dir().exists() ? 2 : 3;
        }
        if (!info.isReadable()) {
            return 5;
        }
    }
    // The desktop tells no more than that it found nothing to open the file with.
    return QDesktopServices::openUrl(url) ? 42 : 31;
}

void QtUi::showHelp(const QString& file) {
    if (!QFileInfo::exists(file) || launch(file) <= 32) {
        QMessageBox::information(QApplication::activeWindow(), QStringLiteral("Help"),
                                 QStringLiteral("The help file %1 cannot be found.").arg(file));
    }
}

void QtUi::endRun(int exitStatus) {
    // The run ends at once, as the program's End statement does: no window is unloaded and the
    // database is left to the engine, whose every statement is already committed.
    std::fflush(nullptr);
    std::_Exit(exitStatus);
}

}  // namespace platform
