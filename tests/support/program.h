// Runs the real programs and waits for them.
#pragma once

#include <QCoreApplication>

#include "support/files.h"

namespace TestSupport {

/// For what a program is to do or say next, in milliseconds.
constexpr int PatienceMs = 60'000;

/// Makes the application object that event loops and processes need.
inline void requireApplication()
{
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
}

struct ProgramResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};

/// Ends a program's input and waits for its end.
inline ProgramResult finish(QProcess& process)
{
    process.closeWriteChannel();
    EXPECT_TRUE(process.state() == QProcess::NotRunning || process.waitForFinished(PatienceMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

[[nodiscard]] inline ProgramResult runProgram(const QString& program, const QStringList& arguments,
                                              const QByteArray& input = {})
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    return finish(process);
}

/// That of a service: no display, no home. @param leaksOfQt by which sanitizers tell the leaks of Qt from others
[[nodiscard]] inline QProcessEnvironment bareEnvironment(const char* leaksOfQt)
{
    QProcessEnvironment environment;
    for (const char* kept : {"PATH", "LD_LIBRARY_PATH", "UBSAN_OPTIONS", "SystemRoot", "WINEPREFIX"}) {
        if (qEnvironmentVariableIsSet(kept)) {
            environment.insert(kept, qEnvironmentVariable(kept));
        }
    }
    environment.insert("ASAN_OPTIONS",
                       "fast_unwind_on_malloc=0:" + qEnvironmentVariable("ASAN_OPTIONS"));  // whole stacks
    environment.insert("LSAN_OPTIONS", QString("print_suppressions=0:suppressions=") + leaksOfQt);
    return environment;
}

}  // namespace TestSupport
