#pragma once

#include <QString>

#include <optional>

// The few operating-system calls the program makes, with the semantics of the desktop's own.
namespace platform {

// Copies the value of `key` in `section` of the settings file, or `defaultValue` (its trailing
// blanks cut) where file, section or key is missing, into `buffer`, cut to `size` - 1
// characters; returns the count copied. Sections and keys match without regard to case; a key
// present with an empty value copies nothing, a value in single or double quotes copies what is
// between them. With `size` 0 the buffer is left as it is. Stored bytes read as UTF-8 where they
// are valid UTF-8, else as Windows-1252.
// A value as the suite's programs read their settings: through a buffer of 128 characters, so
// cut at 127, and a key that is missing or empty gives `defaultValue`.
QString ReadProfileValue(const QString& section, const QString& key, const QString& defaultValue,
                         const QString& file);
int GetPrivateProfileString(const QString& section, const QString& key, const QString& defaultValue,
                            QString& buffer, int size, const QString& file);

// Writes `key`=`value` into `section`, making file, section and key as needed. No value deletes
// the key, no key deletes the section. Every other line keeps its bytes and its line end; the
// text written is Windows-1252 where that reads back as itself, else UTF-8. A new file is readable
// by its owner alone, an existing one keeps its mode. False, with the file untouched, for an empty
// file name, a line break in section, key or value, a file that can't be read, or a failed write.
bool WritePrivateProfileString(const QString& section, const std::optional<QString>& key,
                               const std::optional<QString>& value, const QString& file);

// The system directory into `buffer` when it fits in `size`; returns its length, or the length
// needed when it doesn't fit. On Windows it is the real one; elsewhere one folder shared by all
// the suite's programs of the user, under the generic configuration location, made on first use.
int GetSystemDirectory(QString& buffer, int size);

// The folder the program runs from: the executable's own, unless the process was set to run in
// another folder's place.
QString programFolder();

// Makes `folder` the program folder for the rest of the process, for a process that stands in
// for a program installed there, as each test process does with an installation of its own.
void setProgramFolder(const QString& folder);

// A folder and a name in it, with the platform's separator.
QString joinPath(const QString& folder, const QString& name);

}  // namespace platform
