// The tests' entry: a Qt application on the offscreen platform, the en-US locale, and a
// settings location of their own, so that no test reads or writes the user's real settings.

#include <QApplication>
#include <QLocale>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    QTemporaryDir configHome;
    qputenv("XDG_CONFIG_HOME", configHome.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
