#include "platform/ui.h"

#include <cstdlib>
#include <vector>

namespace platform {

namespace {
Ui* installed = nullptr;
}

std::vector<int> Msg::answersOf(int style) {
    switch (buttonsOf(style)) {
        case OKCancel:
            return {OK, Cancel};
        case AbortRetryIgnore:
            return {Abort, Retry, Ignore};
        case YesNoCancel:
            return {Yes, No, Cancel};
        case YesNo:
            return {Yes, No};
        case RetryCancel:
            return {Retry, Cancel};
        default:
            return {OK};
    }
}

Ui& ui() {
    if (!installed) {
        throw rt::Error::standard(rt::ObjectNotSet, QStringLiteral("platform::ui"));
    }
    return *installed;
}

void setUi(Ui* seam) {
    installed = seam;
}

void failRun(const rt::Error& error) {
    ShowMsg(error.description());
    End(kExitFailure);
}

}  // namespace platform

int ShowMsg(const QString& prompt, int buttons, const QString& title) {
    return platform::ui().messageBox(prompt, buttons,
                                     title.isEmpty() ? platform::kApplicationTitle : title);
}

void ShowBusy() {
    platform::ui().setBusy(true);
}

void ShowIdle() {
    platform::ui().setBusy(false);
}

void DoEvents() {
    platform::ui().doEvents();
}

void End(int exitStatus) {
    platform::ui().endRun(exitStatus);
    std::abort();  // endRun never comes back; this keeps the promise if a seam breaks it
}
