// The real program with the real plug-in, run in a directory of its own.
#pragma once

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

    Result runFeed(const QByteArray& input, QStringList arguments = {})
    {
        arguments += {"feed", "--start", "2026-01-02T03:04:05Z", "--json"};
        return run(arguments, input);
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

    [[nodiscard]] QStringList files(const char* pattern) const
    {
        return QDir(m_directory.path()).entryList({QString::fromLatin1(pattern)}, QDir::Files, QDir::Name);
    }

    [[nodiscard]] QString path(const QString& name) const { return m_directory.filePath(name); }

    QTemporaryDir m_directory;
};

}  // namespace RecStation
