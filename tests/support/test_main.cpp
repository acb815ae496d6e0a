// The tests' entry: a Qt application on the offscreen platform, the en-US locale, and a
// settings location and a program folder of their own, so that no test reads or writes the
// user's real settings, and the installation one test process lays out for a first logon is no
// other process's to provision.

#include "platform/os.h"

#include <QApplication>
#include <QLocale>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    QTemporaryDir configHome;
    qputenv("XDG_CONFIG_HOME", configHome.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir programFolder;
    platform::setProgramFolder(programFolder.path());
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
