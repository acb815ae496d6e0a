#pragma once

#include <QString>

#include <functional>

// The suite's own document editor, which takes rich text documents when the user's options ask
// for it: a command line, a caption and a flag. The console has no such editor, so here it is
// empty; a program of the suite that has one installs it.
using DocumentEditorEntry =
    std::function<void(const QString& commandLine, const QString& caption, bool flag)>;
extern DocumentEditorEntry gDocumentEditor;

// Opens a file or link with the application the desktop has for it, and puts a failed launch
// into words. A closed options cursor fails to the caller.
void OpenDocument(const QString& sFile);
