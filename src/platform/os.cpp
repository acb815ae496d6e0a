#include "platform/os.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStringList>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace platform {

namespace {

struct ProfileLine {
    QString raw;
    enum Kind { Other, Section, Key } kind = Other;
    QString name;  // section or key name, trimmed
    QString value;
};

ProfileLine parseLine(const QString& raw) {
    ProfileLine line;
    line.raw = raw;
    const QString text = raw.trimmed();
    if (text.startsWith('[')) {
        const int close = text.indexOf(']');
        line.kind = ProfileLine::Section;
        line.name = (close < 0 ? text.mid(1) : text.mid(1, close - 1)).trimmed();
        return line;
    }
    const int equals = text.indexOf('=');
    if (equals >= 0) {
        line.kind = ProfileLine::Key;
        line.name = text.left(equals).trimmed();
        line.value = text.mid(equals + 1).trimmed();
        if (line.value.size() >= 2 && line.value.startsWith('"') && line.value.endsWith('"')) {
            line.value = line.value.mid(1, line.value.size() - 2);
        }
    }
    return line;
}

std::vector<ProfileLine> readProfile(const QString& file) {
    std::vector<ProfileLine> lines;
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly)) {
        return lines;
    }
    QString text = QString::fromLocal8Bit(f.readAll());
    text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace('\r', '\n');
    QStringList raw = text.split('\n');
    if (!raw.isEmpty() && raw.back().isEmpty()) {
        raw.removeLast();
    }
    for (const QString& r : raw) {
        lines.push_back(parseLine(r));
    }
    return lines;
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

bool writeProfile(const QString& file, const std::vector<ProfileLine>& lines) {
    QByteArray data;
    for (const ProfileLine& line : lines) {
        data += line.raw.toLocal8Bit() + "\r\n";
    }
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly)) {
        return false;
    }
    out.write(data);
    return out.commit();
}

}  // namespace

int GetPrivateProfileString(const QString& section, const QString& key, const QString& defaultValue,
                            QString& buffer, int size, const QString& file) {
    if (size <= 0) {
        return 0;
    }
    QString value;
    bool found = false;
    if (!key.isEmpty()) {
        const std::vector<ProfileLine> lines = readProfile(file);
        if (const auto range = findSection(lines, section)) {
            if (const auto at = findKey(lines, *range, key)) {
                value = lines[*at].value;
                found = true;
            }
        }
    }
    if (!found) {
        value = defaultValue;
        while (value.endsWith(' ')) {
            value.chop(1);
        }
    }
    // The call copies single-byte characters: the cut falls on bytes, and a character split by
    // it is dropped whole.
    QByteArray bytes = value.toLocal8Bit().left(size - 1);
    buffer = QString::fromLocal8Bit(bytes);
    while (buffer.endsWith(QChar::ReplacementCharacter)) {
        buffer.chop(1);
    }
    return static_cast<int>(buffer.size());
}

bool WritePrivateProfileString(const QString& section, const std::optional<QString>& key,
                               const std::optional<QString>& value, const QString& file) {
    if (file.isEmpty()) {
        return false;
    }
    std::vector<ProfileLine> lines = readProfile(file);
    const auto range = findSection(lines, section);
    if (!key) {
        if (range) {
            lines.erase(lines.begin() + range->first, lines.begin() + range->second);
            return writeProfile(file, lines);
        }
        return true;
    }
    const std::optional<size_t> at = range ? findKey(lines, *range, *key) : std::nullopt;
    if (!value) {
        if (at) {
            lines.erase(lines.begin() + *at);
            return writeProfile(file, lines);
        }
        return true;
    }
    const ProfileLine entry = parseLine(*key + "=" + *value);
    if (at) {
        lines[*at] = parseLine(lines[*at].name + "=" + *value);  // the stored name keeps its case
    } else if (range) {
        size_t insertAt = range->second;
        while (insertAt > range->first + 1 && lines[insertAt - 1].raw.trimmed().isEmpty()) {
            --insertAt;
        }
        lines.insert(lines.begin() + insertAt, entry);
    } else {
        lines.push_back(parseLine("[" + section + "]"));
        lines.push_back(entry);
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

QString programFolder() {
    if (QCoreApplication::instance()) {
        return QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
    }
    return QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).absolutePath();
}

QString joinPath(const QString& folder, const QString& name) {
    if (folder.endsWith(QDir::separator())) {
        return folder + name;
    }
    return folder + QDir::separator() + name;
}

}  // namespace platform
