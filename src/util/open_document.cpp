#include "util/open_document.h"

#include "platform/convert.h"
#include "platform/ui.h"
#include "settings/options.h"

DocumentEditorEntry gDocumentEditor;

namespace {

// The desktop's launch succeeds with a result above this; at or below it the result is a
// failure code.
constexpr int kLastFailureCode = 32;

QString launchFailureText(int code) {
    switch (code) {
        case 2:
            return QStringLiteral("File not found");
        case 3:
            return QStringLiteral("Path not found");
        case 5:
            return QStringLiteral("Access denied");
        case 8:
            return QStringLiteral("Out of memory");
        case 11:
            return QStringLiteral("Invalid EXE file or error in EXE image");
        case 26:
            return QStringLiteral("A sharing violation occurred");
        case 27:
            return QStringLiteral("Incomplete or invalid file association");
        case 28:
            return QStringLiteral("DDE Time out");
        case 29:
            return QStringLiteral("DDE transaction failed");
        case 30:
            return QStringLiteral("DDE busy");
        case 31:
            return QStringLiteral("No association exists for this file extension");
        case 32:
            return QStringLiteral("DLL not found");
        default:
            return QStringLiteral("Unknown error");
    }
}

// Option 1 of "Options" at 0 sends rich text documents to the suite's own editor.
bool opensInDocumentEditor(const QString& sFile) {
    const bool ownEditor = rt::CDbl(GetOption(1, QStringLiteral("Options"), 1, false)) == 0;
    return ownEditor && sFile.right(4).toLower() == QLatin1String(".rtf");
}

}  // namespace

void OpenDocument(const QString& sFile) {
    if (sFile.isEmpty()) {
        ShowMsg(QStringLiteral("No file specified."), platform::Msg::OKOnly);
        return;
    }
    if (opensInDocumentEditor(sFile)) {
        if (gDocumentEditor) {
            gDocumentEditor("-d" + sFile, "Document " + sFile, true);
        }
        return;
    }
    const int result = platform::ui().launch(sFile);
    if (result <= kLastFailureCode) {
        ShowMsg(launchFailureText(result), platform::Msg::OKOnly);
    }
}
