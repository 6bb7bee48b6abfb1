// The real program with the real plug-in, run in a directory of its own.
#pragma once

#include <string>

#include <QDir>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include "application.h"

namespace RecStation {

constexpr int patienceMs = 60'000;

struct Result {
    int exitCode = -1;
    std::string output;
    std::string messages;

    [[nodiscard]] nlohmann::json summary() const { return nlohmann::json::parse(output); }
};

class ProgramTest : public testing::Test {
protected:
    ProgramTest() { requireApplication(); }

    void start(QProcess& process, const QStringList& arguments, const QString& program = QStringLiteral(RECSTATION))
    {
        process.setWorkingDirectory(m_directory.path());
        process.start(program, arguments);
        ASSERT_TRUE(process.waitForStarted(patienceMs));
    }

    static Result finish(QProcess& process)
    {
        process.closeWriteChannel();
        EXPECT_TRUE(process.state() == QProcess::NotRunning || process.waitForFinished(patienceMs));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    Result run(const QStringList& arguments, const QByteArray& input = {})
    {
        QProcess process;
        start(process, arguments);
        process.write(input);
        return finish(process);
    }

    Result runFeed(const QByteArray& input, QStringList arguments = {})
    {
        arguments += {QStringLiteral("feed"), QStringLiteral("--start"), QStringLiteral("2026-01-02T03:04:05Z"),
                      QStringLiteral("--json")};
        return run(arguments, input);
    }

    // Waits until the messages contain a text. @return what came until then
    static QByteArray waitForMessage(QProcess& process, const QByteArray& text)
    {
        process.setReadChannel(QProcess::StandardError);
        QByteArray messages;
        while (!messages.contains(text)) {
            if (!process.waitForReadyRead(patienceMs)) {
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
