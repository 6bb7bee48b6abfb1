// Programs that tests run, and what they printed.
#pragma once

#include <string>

#include <QCoreApplication>
#include <QProcess>

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

namespace TestSupport {

constexpr int PatienceMs = 60'000;

struct ProgramResult {
    int exitCode = -1;
    std::string out;
    std::string err;

    [[nodiscard]] nlohmann::json json() const { return nlohmann::json::parse(out); }
};

/// The application object that event loops and processes need.
inline void requireApplication()
{
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
}

/// Of a service: without a display, a home or anything else.
/// @param leaksOfQt the file that tells a sanitizer of them
inline QProcessEnvironment serviceEnvironment(const QString& leaksOfQt)
{
    QProcessEnvironment environment;
    for (const char* kept : {"PATH", "LD_LIBRARY_PATH", "UBSAN_OPTIONS", "SystemRoot", "WINEPREFIX"}) {
        if (qEnvironmentVariableIsSet(kept)) {
            environment.insert(kept, qEnvironmentVariable(kept));
        }
    }
    // Of a build with sanitizers: whole stacks, by which the leaks of Qt are told from others.
    environment.insert("ASAN_OPTIONS", "fast_unwind_on_malloc=0:" + qEnvironmentVariable("ASAN_OPTIONS"));
    environment.insert("LSAN_OPTIONS", "print_suppressions=0:suppressions=" + leaksOfQt);
    return environment;
}

/// Ends the input of a program and waits for its end.
inline ProgramResult finish(QProcess& process)
{
    process.closeWriteChannel();
    EXPECT_TRUE(process.state() == QProcess::NotRunning || process.waitForFinished(PatienceMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

/// Runs a program to its end; directory and environment are those of the process object.
inline ProgramResult runProgram(QProcess& process, const QString& program, const QStringList& arguments,
                                const QByteArray& input = {})
{
    requireApplication();
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForStarted(PatienceMs)) << program.toStdString();
    if (!input.isEmpty()) {
        process.write(input);
    }
    return finish(process);
}
inline ProgramResult runProgram(const QString& program, const QStringList& arguments)
{
    QProcess process;
    return runProgram(process, program, arguments);
}

}  // namespace TestSupport
