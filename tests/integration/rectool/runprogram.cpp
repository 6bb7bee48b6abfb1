// A program's exit code and output, waited for up to a minute.
#include "runprogram.h"

#include <gtest/gtest.h>
#include <QProcess>

ProgramResult runProgram(const QString& program, const QStringList& arguments)
{
    constexpr int Patience = 60'000;
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(Patience));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}
