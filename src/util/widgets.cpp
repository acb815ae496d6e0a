#include "util/widgets.h"

#include "util/value_helpers.h"

#include <QDialog>
#include <QEvent>
#include <QLineEdit>

namespace {

class SelectAllFilter : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::FocusIn) {
            SelectAllText(static_cast<QLineEdit*>(watched));
        }
        return false;
    }
};

}  // namespace

void MakeFixedDialog(QDialog* dialog, const QString& name, const QString& caption) {
    dialog->setObjectName(name);
    dialog->setWindowTitle(caption);
    dialog->setWindowFlags(Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint | Qt::WindowTitleHint |
                           Qt::WindowCloseButtonHint);
}

void SelectAllOnFocus(QLineEdit* box) {
    box->installEventFilter(new SelectAllFilter(box));
}
