// orvane-icons: writes the console's desktop icon in every size the icon theme asks for, painted
// by the code that paints the window's own icon, so that the two never drift apart.

#include "util/artwork.h"

#include <QDir>
#include <QGuiApplication>
#include <QStringList>

#include <cstdio>

int main(int argc, char** argv) {
    // Painting a pixmap needs a GUI application, though nothing is ever shown.
    QGuiApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 4) {
        std::fprintf(stderr, "usage: orvane-icons THEME_DIR NAME SIZE...\n");
        return 2;
    }
    const QDir theme(arguments[1]);
    const QString name = arguments[2];
    for (const QString& argument : arguments.mid(3)) {
        const int size = argument.toInt();
        const QString folder = QStringLiteral("%1x%1/apps").arg(size);
        const QString file = theme.filePath(folder + '/' + name + ".png");
        if (size <= 0 || !theme.mkpath(folder) || !artwork::consoleImage(size).save(file, "PNG")) {
            std::fprintf(stderr, "orvane-icons: cannot write %s\n", qPrintable(file));
            return 1;
        }
    }
    return 0;
}
