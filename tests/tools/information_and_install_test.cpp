// The programs' --help and --version answer on standard output and do nothing else: no window,
// so no display, and no settings. What `cmake --install` lays out gives the desktop a console to
// start: the programs, the menu entry and, in every size, the icon the window itself shows.

#include "program_run.h"
#include "util/artwork.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QSettings>
#include <QTemporaryDir>

namespace {

TEST(InformationSwitchTest, AnswerOnStandardOutputWithoutDisplayOrSettings) {
    const QString admin = QStringLiteral(ORVANE_ADMIN);
    const QString tool = QStringLiteral(LATTIMER_DB);
    const QString version = QStringLiteral(ORVANE_VERSION);
    const struct {
        QString program;
        QStringList arguments;
        QString expectedStart;
    } cases[] = {
        {admin, {"--help"}, "Usage: orvane-admin [-l<logon> -p<password>]\n"},
        {admin, {"--version"}, "orvane-admin (Orvane Administration) " + version + "\n"},
        // The switches may stand anywhere in the console's command line.
        {admin, {"-ladmin", "-porvane", "--version"}, "orvane-admin (Orvane Administration) "},
        {admin, {"--help", "--version"}, "Usage: orvane-admin"},
        {tool, {"--help"}, "usage:\n  lattimer-db create DB\n"},
        {tool, {"--version"}, "lattimer-db (Orvane Administration) " + version + "\n"},
    };

    QTemporaryDir home;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", home.path());
    environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
    // A GUI application would abort on a platform that doesn't exist.
    environment.insert("QT_QPA_PLATFORM", "no-such-platform");
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");

    for (const auto& c : cases) {
        SCOPED_TRACE((QFileInfo(c.program).fileName() + ' ' + c.arguments.join(' ')).toStdString());
        const ProgramRun run = runProgram(c.program, c.arguments, environment);
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_TRUE(run.out.startsWith(c.expectedStart)) << run.out.toStdString();
        EXPECT_EQ(run.err.toStdString(), "");
        EXPECT_EQ(
            QDir(home.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
            QStringList());
    }
}

TEST(InstallTest, LaysOutTheProgramsTheDesktopEntryItsIconAndTheReadme) {
    QTemporaryDir prefix;
    const ProgramRun install =
        runProgram(QStringLiteral(CMAKE_COMMAND),
                   {"--install", QStringLiteral(BUILD_DIR), "--prefix", prefix.path()});
    ASSERT_EQ(install.exitCode, 0) << install.err.toStdString();
    const QDir root(prefix.path());

    for (const char* program : {"bin/orvane-admin", "bin/lattimer-db"}) {
        EXPECT_TRUE(QFileInfo(root.filePath(program)).isExecutable()) << program;
    }
    EXPECT_TRUE(QFileInfo::exists(root.filePath("share/doc/orvane-admin/README.md")));

    QSettings entry(root.filePath("share/applications/orvane-admin.desktop"), QSettings::IniFormat);
    entry.beginGroup("Desktop Entry");
    EXPECT_EQ(entry.value("Type"), "Application");
    EXPECT_EQ(entry.value("Name"), "Orvane Administration");
    EXPECT_TRUE(QFileInfo(root.filePath("bin/" + entry.value("Exec").toString())).isExecutable());

    const QString icon = entry.value("Icon").toString();
    ASSERT_FALSE(icon.isEmpty());
    const auto picture = [&](int size) {
        return QImage(
                   root.filePath(
                       QStringLiteral("share/icons/hicolor/%1x%1/apps/%2.png").arg(size).arg(icon)))
            .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    };
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        EXPECT_EQ(picture(size), artwork::consoleImage(size).toImage().convertToFormat(
                                     QImage::Format_ARGB32_Premultiplied))
            << size;
    }
    // The file of the window's own size is the window's icon, pixel for pixel.
    EXPECT_EQ(picture(32), artwork::consoleIcon().pixmap(32).toImage().convertToFormat(
                               QImage::Format_ARGB32_Premultiplied));
}

}  // namespace
