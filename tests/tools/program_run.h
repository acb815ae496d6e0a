#pragma once

#include <QProcess>
#include <QStringList>

#include <gtest/gtest.h>

// How a program ended, -1 for a crash, and what it wrote.
struct ProgramRun {
    int exitCode;
    QString out;
    QString err;
};

inline ProgramRun runProgram(
    const QString& program, const QStringList& arguments,
    const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(180000))
        << program.toStdString() << ": " << process.errorString().toStdString();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}
