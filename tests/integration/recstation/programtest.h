// The real program with the real plug-in, run in a directory of its own.
#pragma once

#include <csignal>

#include <nlohmann/json.hpp>

#include "support/program.h"

namespace RecStation {

using TestSupport::PatienceMs;

struct Result : TestSupport::ProgramResult {
    [[nodiscard]] nlohmann::json summary() const { return nlohmann::json::parse(out); }
};

class ProgramTest : public testing::Test {
protected:
    ProgramTest() { TestSupport::requireApplication(); }

    void start(QProcess& process, const QStringList& arguments, const QString& program = QStringLiteral(RECSTATION))
    {
        process.setWorkingDirectory(m_directory.path());
        process.start(program, arguments);
        ASSERT_TRUE(process.waitForStarted(PatienceMs));
    }

    static Result finish(QProcess& process) { return {TestSupport::finish(process)}; }

    Result run(const QStringList& arguments, const QByteArray& input = {})
    {
        QProcess process;
        start(process, arguments);
        process.write(input);
        return finish(process);
    }

    /// A run in which no file gets larger than so many blocks, which stops the writing as a full disk does.
    Result runLimited(int blocks, const QString& arguments)
    {
        QProcess process;
        const QString script = "trap '' XFSZ; ulimit -f %1; exec \"$0\" %2";
        start(process, {"-c", script.arg(blocks).arg(arguments), RECSTATION}, "/bin/bash");
        return finish(process);
    }

    Result runFeed(const QByteArray& input, QStringList arguments = {})
    {
        arguments += {"feed", "--start", "2026-01-02T03:04:05Z", "--json"};
        return run(arguments, input);
    }

    /// Starts a recording that goes on, with levels accepted at 1500 and 2500 ms.
    void beginLevels(QProcess& process, const QStringList& arguments)
    {
        start(process, arguments + QStringList{"feed", "--start", "2026-01-02T03:04:05Z"});
        process.write(R"({"at": 0, "path": "/LEVEL", "create": "number", "value": -30}
{"at": 0, "record": "On"}
{"at": 1500, "path": "/LEVEL", "set": -31.5}
{"at": 2500, "path": "/LEVEL", "set": -40.25}
mark
)");
        waitForMessage(process, "feed: line 5");
    }

    // Waits until the messages contain a text. @return what came until then
    static QByteArray waitForMessage(QProcess& process, const QByteArray& text)
    {
        process.setReadChannel(QProcess::StandardError);
        QByteArray messages;
        while (!messages.contains(text)) {
            if (!process.waitForReadyRead(PatienceMs)) {
                ADD_FAILURE() << messages.toStdString();
                break;
            }
            messages += process.readAllStandardError();
        }
        return messages;
    }

#if !defined(_WIN32)
    /// Sends a signal, on which the program is to close its recordings and end by itself.
    static void endBySignal(QProcess& process, int signal)
    {
        ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), signal), 0);
        ASSERT_TRUE(process.waitForFinished(PatienceMs));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    }
#endif

    [[nodiscard]] QStringList files(const char* pattern) const
    {
        return QDir(m_directory.path()).entryList({QString::fromLatin1(pattern)}, QDir::Files, QDir::Name);
    }

    [[nodiscard]] QString path(const QString& name) const
    {
        return m_directory.filePath(name);
    }

    QTemporaryDir m_directory;
};

}  // namespace RecStation
