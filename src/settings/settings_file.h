#pragma once

#include "platform/variant.h"

#include <QString>

// The workstation's settings: tarnell.ini in the system directory, one section per program
// folder, so that copies of the program in two folders keep their settings apart.

extern QString gSystemDir;

QString GetSystemDir();
// The part of `s` before its first NUL character.
QString TrimAtNull(const QString& s);
// The section of a program in that folder: the folder and a separator.
QString FolderSection(const QString& folder);
// The section of the running program.
QString ProgramSection();

// A value is cut at 127 characters; a missing file, section or key, or an empty value, gives
// `defaultValue`. `file` "" is the standard settings file.
QString ReadIni(const QString& key, const QString& section = ProgramSection(),
                const QString& defaultValue = QString(), const QString& file = QString());
// Always the standard file; a failed write is silent. Returns the system call's result.
qint16 WriteIni(const QString& key, const QString& section, const rt::Variant& value);
