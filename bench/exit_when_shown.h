#pragma once

#include <QEvent>
#include <QObject>
#include <QString>

#include <unistd.h>

#include <cstdio>

// Ends the process the moment a window of that name is shown: what follows is not part of the
// start that the process benchmarks time.
class ExitWhenShown : public QObject {
public:
    explicit ExitWhenShown(QString windowName) : windowName_(std::move(windowName)) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show && watched->objectName() == windowName_) {
            std::fflush(stdout);
            _exit(0);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QString windowName_;
};
