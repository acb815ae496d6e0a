#pragma once

#include <QRect>
#include <QString>

class QLineEdit;
class QWidget;

// A control made on `parent`, named for the code that finds it, at a fixed place: the windows
// are fixed layouts.
template <typename Widget, typename... Args>
Widget* place(QWidget* parent, const QString& name, QRect geometry, Args&&... args) {
    auto* widget = new Widget(std::forward<Args>(args)..., parent);
    widget->setObjectName(name);
    widget->setGeometry(geometry);
    return widget;
}

// The box selects all its text whenever it receives the focus.
void SelectAllOnFocus(QLineEdit* box);
