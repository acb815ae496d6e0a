#pragma once

#include "platform/ui.h"

#include <QObject>
#include <QRect>
#include <QString>

class QDialog;
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

// A fixed dialog without minimise and maximise buttons, named and captioned.
void MakeFixedDialog(QDialog* dialog, const QString& name, const QString& caption);

// Runs `handler` on each signal; a run-time failure it lets through ends the run, as the
// program's event handlers have no recovery of their own.
template <typename Sender, typename Signal, typename Handler>
void OnEvent(Sender* sender, Signal signal, QObject* context, Handler handler) {
    QObject::connect(sender, signal, context, [handler] { platform::runHandler(handler); });
}
