#include "settings/settings_file.h"

#include "platform/convert.h"
#include "platform/os.h"

#include <QDir>

QString gSystemDir;

namespace {

constexpr int kSystemDirBuffer = 255;

QString settingsFile() {
    return platform::joinPath(gSystemDir, QStringLiteral("tarnell.ini"));
}

}  // namespace

QString GetSystemDir() {
    QString buffer(kSystemDirBuffer, ' ');
    if (platform::GetSystemDirectory(buffer, kSystemDirBuffer) > 0) {
        return TrimAtNull(buffer);
    }
    return {};
}

QString TrimAtNull(const QString& s) {
    const int at = s.indexOf(QChar(0));
    return at < 0 ? s : s.left(at);
}

QString FolderSection(const QString& folder) {
    return (QDir::toNativeSeparators(folder) + QDir::separator()).trimmed();
}

QString ProgramSection() {
    return FolderSection(platform::programFolder());
}

QString ReadIni(const QString& key, const QString& section, const QString& defaultValue,
                const QString& file) {
    return platform::ReadProfileValue(section.trimmed(), key, defaultValue,
                                      file.isEmpty() ? settingsFile() : file);
}

qint16 WriteIni(const QString& key, const QString& section, const rt::Variant& value) {
    return platform::WritePrivateProfileString(section.trimmed(), key, rt::CStr(value),
                                               settingsFile())
               ? -1
               : 0;
}
