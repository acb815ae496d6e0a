#include "platform/os.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace platform {

namespace {

// A settings file is shared by every program of the suite, each in its own section and some in
// other 8-bit code pages. It is handled as bytes, so that a write re-encodes only the line it
// changes; only names, to compare them, and the value asked for are decoded.

// Windows-1252, the 8-bit code page the other programs write, puts printable characters where
// Latin-1 has the controls 0x80-0x9F; its five unused bytes there read as those controls, as they
// do on Windows.
constexpr char16_t windows1252Controls[32] = {
    u'\u20AC', u'\u0081', u'\u201A', u'\u0192', u'\u201E', u'\u2026', u'\u2020', u'\u2021',
    u'\u02C6', u'\u2030', u'\u0160', u'\u2039', u'\u0152', u'\u008D', u'\u017D', u'\u008F',
    u'\u0090', u'\u2018', u'\u2019', u'\u201C', u'\u201D', u'\u2022', u'\u2013', u'\u2014',
    u'\u02DC', u'\u2122', u'\u0161', u'\u203A', u'\u0153', u'\u009D', u'\u017E', u'\u0178'};

char16_t windows1252Char(uchar byte) {
    return byte >= 0x80 && byte < 0xA0 ? windows1252Controls[byte - 0x80] : byte;
}

QString fromWindows1252(const QByteArray& bytes) {
    QString text(bytes.size(), Qt::Uninitialized);
    std::transform(bytes.begin(), bytes.end(), text.begin(),
                   [](char byte) { return QChar(windows1252Char(static_cast<uchar>(byte))); });
    return text;
}

// The text in Windows-1252, or nothing where it has a character the code page lacks.
std::optional<QByteArray> toWindows1252(const QString& text) {
    QByteArray bytes;
    for (const QChar c : text) {
        const char16_t code = c.unicode();
        if (code <= 0xFF && windows1252Char(static_cast<uchar>(code)) == code) {
            bytes += static_cast<char>(code);
            continue;
        }
        const auto* at =
            std::find(std::begin(windows1252Controls), std::end(windows1252Controls), code);
        if (at == std::end(windows1252Controls)) {
            return std::nullopt;
        }
        bytes += static_cast<char>(0x80 + (at - std::begin(windows1252Controls)));
    }
    return bytes;
}

// Stored text: UTF-8 where the bytes are valid UTF-8, else Windows-1252, so that another
// program's 8-bit text reads as its own letters rather than as replacement characters that a
// later write would make permanent.
QString decodeText(const QByteArray& bytes) {
    return bytes.isValidUtf8() ? QString::fromUtf8(bytes) : fromWindows1252(bytes);
}

// Text we store: Windows-1252, the code page the other programs read, wherever it decodes back
// to the same text; UTF-8 for characters beyond it, and for the rare 8-bit text whose bytes
// happen to form UTF-8.
QByteArray encodeText(const QString& text) {
    const std::optional<QByteArray> ansi = toWindows1252(text);
    return ansi && decodeText(*ansi) == text ? *ansi : text.toUtf8();
}

// The first `count` characters of `text`, as the call copies them; a character beyond 16 bits
// that the cut would split is dropped whole rather than left as half a pair.
QString cutText(const QString& text, int count) {
    QString kept = text.left(count);
    if (kept.size() < text.size() && text.at(kept.size()).isLowSurrogate()) {
        kept.chop(1);
    }
    return kept;
}

// A line break in a name or value would end its line early and start another: a value could
// add keys of its own, such as a database path followed by "WP=...".
bool breaksLine(const QString& text) {
    return text.contains('\n') || text.contains('\r');
}

struct ProfileLine {
    QByteArray text;  // the line's bytes without its line end
    QByteArray end;   // "\r\n", "\n" or "\r"; nothing on a last line without one
    enum Kind { Other, Section, Key } kind = Other;
    QString name;      // section or key name, trimmed
    QByteArray value;  // a key's value as stored, trimmed and unquoted
};

// A value between two of the same quote, single or double, is stored without them.
bool isQuoted(const QByteArray& value) {
    return value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
           value.back() == value.front();
}

ProfileLine parseLine(const QByteArray& text, const QByteArray& end = {}) {
    ProfileLine line;
    line.text = text;
    line.end = end;
    const QByteArray trimmed = text.trimmed();
    if (trimmed.startsWith('[')) {
        const qsizetype close = trimmed.indexOf(']');
        line.kind = ProfileLine::Section;
        line.name = decodeText((close < 0 ? trimmed.mid(1) : trimmed.mid(1, close - 1)).trimmed());
        return line;
    }
    const qsizetype equals = trimmed.indexOf('=');
    if (equals >= 0) {
        line.kind = ProfileLine::Key;
        line.name = decodeText(trimmed.left(equals).trimmed());
        line.value = trimmed.mid(equals + 1).trimmed();
        if (isQuoted(line.value)) {
            line.value = line.value.mid(1, line.value.size() - 2);
        }
    }
    return line;
}

// Lines end at CR LF, LF or a CR alone; each keeps its own end.
std::vector<ProfileLine> splitLines(const QByteArray& data) {
    std::vector<ProfileLine> lines;
    qsizetype start = 0;
    while (start < data.size()) {
        qsizetype stop = start;
        while (stop < data.size() && data[stop] != '\n' && data[stop] != '\r') {
            ++stop;
        }
        const QByteArray end = data.mid(stop, data.mid(stop, 2) == "\r\n" ? 2 : 1);
        lines.push_back(parseLine(data.mid(start, stop - start), end));
        start = stop + end.size();
    }
    return lines;
}

// The file's lines; none for a missing file, and no answer for one that is there but can't be
// read, which a write must then leave alone rather than replace.
std::optional<std::vector<ProfileLine>> readProfile(const QString& file) {
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly)) {
        return f.exists() ? std::nullopt : std::make_optional(std::vector<ProfileLine>());
    }
    return splitLines(f.readAll());
}

bool sameName(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// The line range [first, end) of the first section of that name, or nothing.
std::optional<std::pair<size_t, size_t>> findSection(const std::vector<ProfileLine>& lines,
                                                     const QString& section) {
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].kind == ProfileLine::Section && sameName(lines[i].name, section)) {
            size_t end = i + 1;
            while (end < lines.size() && lines[end].kind != ProfileLine::Section) {
                ++end;
            }
            return std::make_pair(i, end);
        }
    }
    return std::nullopt;
}

std::optional<size_t> findKey(const std::vector<ProfileLine>& lines,
                              std::pair<size_t, size_t> range, const QString& key) {
    for (size_t i = range.first + 1; i < range.second; ++i) {
        if (lines[i].kind == ProfileLine::Key && sameName(lines[i].name, key)) {
            return i;
        }
    }
    return std::nullopt;
}

// The stored value of `key` in `section`, or nothing where file, section or key is missing.
std::optional<QByteArray> findValue(const QString& file, const QString& section,
                                    const QString& key) {
    if (key.isEmpty()) {
        return std::nullopt;
    }
    const std::vector<ProfileLine> lines = readProfile(file).value_or(std::vector<ProfileLine>());
    const auto range = findSection(lines, section);
    const std::optional<size_t> at = range ? findKey(lines, *range, key) : std::nullopt;
    return at ? std::make_optional(lines[*at].value) : std::nullopt;
}

// Puts `added` before line `at`, with the line end of the file's first line, or the call's CR LF.
// Appended after a last line without a line end, that line gets one and the new last line goes
// without, so that the file still ends as it did.
void insertLines(std::vector<ProfileLine>& lines, size_t at, std::vector<ProfileLine> added) {
    const auto ended = std::find_if(lines.begin(), lines.end(),
                                    [](const ProfileLine& line) { return !line.end.isEmpty(); });
    const QByteArray end = ended == lines.end() ? QByteArray("\r\n") : ended->end;
    for (ProfileLine& line : added) {
        line.end = end;
    }
    if (at == lines.size() && !lines.empty() && lines.back().end.isEmpty()) {
        lines.back().end = end;
        added.back().end.clear();
    }
    lines.insert(lines.begin() + at, added.begin(), added.end());
}

// Sets the value of the key in `range`, or adds the key at the end of the section, before its
// trailing blank lines. A key found keeps its bytes up to the "=", so its name keeps its case.
void setValue(std::vector<ProfileLine>& lines, std::pair<size_t, size_t> range, const QString& key,
              const QString& value) {
    if (const auto at = findKey(lines, range, key)) {
        ProfileLine& line = lines[*at];
        line = parseLine(line.text.left(line.text.indexOf('=') + 1) + encodeText(value), line.end);
        return;
    }
    size_t insertAt = range.second;
    while (insertAt > range.first + 1 && lines[insertAt - 1].text.trimmed().isEmpty()) {
        --insertAt;
    }
    insertLines(lines, insertAt, {parseLine(encodeText(key) + '=' + encodeText(value))});
}

// Replaces the file through a temporary one renamed over it, so that a crash leaves the old file
// or the new one, never a part; a hard link to the old file keeps the old text. As the rename
// gives the file a new inode, the temporary file takes an existing file's mode, and a new file is
// made readable by its owner alone, before a byte is written: the suite keeps passwords in its
// settings files.
bool writeProfile(const QString& file, const std::vector<ProfileLine>& lines) {
    QByteArray data;
    for (const ProfileLine& line : lines) {
        data += line.text + line.end;
    }
    const bool isNew = !QFileInfo::exists(file);
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly) ||
        (isNew && !out.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner))) {
        return false;
    }
    out.write(data);
    return out.commit();
}

}  // namespace

QString ReadProfileValue(const QString& section, const QString& key, const QString& defaultValue,
                         const QString& file) {
    constexpr int kValueBuffer = 128;
    QString buffer(kValueBuffer, ' ');
    const int count = GetPrivateProfileString(section, key, QString(), buffer, kValueBuffer, file);
    return count >= 1 ? buffer.left(count) : defaultValue;
}

int GetPrivateProfileString(const QString& section, const QString& key, const QString& defaultValue,
                            QString& buffer, int size, const QString& file) {
    if (size <= 0) {
        return 0;
    }
    QString text = defaultValue;
    while (text.endsWith(' ')) {
        text.chop(1);
    }
    if (const std::optional<QByteArray> stored = findValue(file, section, key)) {
        text = decodeText(*stored);
    }
    buffer = cutText(text, size - 1);
    return static_cast<int>(buffer.size());
}

bool WritePrivateProfileString(const QString& section, const std::optional<QString>& key,
                               const std::optional<QString>& value, const QString& file) {
    if (file.isEmpty() || breaksLine(section) || breaksLine(key.value_or(QString())) ||
        breaksLine(value.value_or(QString()))) {
        return false;
    }
    std::optional<std::vector<ProfileLine>> read = readProfile(file);
    if (!read) {
        return false;
    }
    std::vector<ProfileLine>& lines = *read;
    const auto range = findSection(lines, section);
    if (!key) {
        if (!range) {
            return true;
        }
        lines.erase(lines.begin() + range->first, lines.begin() + range->second);
        return writeProfile(file, lines);
    }
    if (!value) {
        const std::optional<size_t> at = range ? findKey(lines, *range, *key) : std::nullopt;
        if (!at) {
            return true;
        }
        lines.erase(lines.begin() + *at);
        return writeProfile(file, lines);
    }
    if (range) {
        setValue(lines, *range, *key, *value);
    } else {
        insertLines(lines, lines.size(),
                    {parseLine('[' + encodeText(section) + ']'),
                     parseLine(encodeText(*key) + '=' + encodeText(*value))});
    }
    return writeProfile(file, lines);
}

int GetSystemDirectory(QString& buffer, int size) {
#ifdef Q_OS_WIN
    wchar_t path[MAX_PATH];
    const UINT length = ::GetSystemDirectoryW(path, MAX_PATH);
    const QString directory = length > 0 ? QString::fromWCharArray(path, length) : QString();
#else
    const QString directory =
        joinPath(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation),
                 QStringLiteral("Lattimer"));
    QDir().mkpath(directory);
#endif
    if (directory.isEmpty()) {
        return 0;
    }
    if (directory.size() >= size) {
        return static_cast<int>(directory.size()) + 1;
    }
    buffer = directory;
    return static_cast<int>(directory.size());
}

namespace {

QString& standInProgramFolder() {
    static QString folder;
    return folder;
}

}  // namespace

QString programFolder() {
    if (!standInProgramFolder().isEmpty()) {
        return standInProgramFolder();
    }
    if (QCoreApplication::instance()) {
        return QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
    }
    return QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).absolutePath();
}

void setProgramFolder(const QString& folder) {
    standInProgramFolder() = QDir::toNativeSeparators(folder);
}

QString joinPath(const QString& folder, const QString& name) {
    if (folder.endsWith(QDir::separator())) {
        return folder + name;
    }
    return folder + QDir::separator() + name;
}

}  // namespace platform
