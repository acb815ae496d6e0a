#include "util/widgets.h"

#include "util/value_helpers.h"

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

void SelectAllOnFocus(QLineEdit* box) {
    box->installEventFilter(new SelectAllFilter(box));
}
