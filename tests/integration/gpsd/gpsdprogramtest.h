// recstation while it runs, and peers of it on free ports of the loopback address.
#pragma once

#include <csignal>

#include <poll.h>

#include <QElapsedTimer>

#include "recordings.h"
#include "support/loopback.h"

using TestSupport::PatienceMs;

/// Listens, takes one connection at a time, and says what the test says.
class Peer {
public:
    Peer() { m_listening = TestSupport::bindToLoopback(SOCK_STREAM, m_port); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer()
    {
        hangUp();
        ::close(m_listening);
    }

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    /// Waits for a connection; one before is closed.
    [[nodiscard]] bool accept()
    {
        hangUp();
        if (awaitBytes(m_listening)) {
            m_connection = ::accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC);
        }
        return m_connection >= 0;
    }
    void send(std::string_view bytes)
    {
        TestSupport::sendAll(m_connection, bytes);  // when the other end is gone the test sees what that does
    }
    /// Waits until that came. @return false when it does not
    [[nodiscard]] bool awaitText(const std::string& text)
    {
        while (m_received.find(text) == std::string::npos) {
            char buffer[1024];
            const auto got = awaitBytes(m_connection) ? ::recv(m_connection, buffer, sizeof buffer, 0) : 0;
            if (got <= 0) {
                return false;
            }
            m_received.append(buffer, static_cast<std::size_t>(got));
        }
        return true;
    }
    void hangUp()
    {
        if (m_connection >= 0) {
            ::close(m_connection);
            m_connection = -1;
            m_received.clear();
        }
    }

private:
    static bool awaitBytes(int descriptor)
    {
        pollfd wait{descriptor, POLLIN, 0};
        return ::poll(&wait, 1, PatienceMs) == 1;
    }

    int m_listening = -1;
    int m_connection = -1;
    std::uint16_t m_port = 0;
    std::string m_received;
};

using TestSupport::freePort;

class GpsdProgramTest : public RecordingTest {
protected:
    ~GpsdProgramTest() override
    {
        if (m_program.state() != QProcess::NotRunning) {
            m_program.kill();
            m_program.waitForFinished(PatienceMs);
        }
    }

    /// Starts "recstation gpsd" with that peer.
    void startProgram(std::uint16_t port, const QStringList& more = {})
    {
        start(m_program, QStringList{"gpsd", QStringLiteral("127.0.0.1:%1").arg(port)} + more);
    }
    /// Waits until the program has said that so many times; each turn does something.
    [[nodiscard]] bool awaitMessage(const std::string& text, int times = 1, const std::function<void()>& turn = {})
    {
        constexpr int turnMs = 50;
        const auto count = [&] {
            int found = 0;
            for (auto at = m_messages.find(text); at != std::string::npos; at = m_messages.find(text, at + 1)) {
                ++found;
            }
            return found;
        };
        QElapsedTimer waited;
        waited.start();
        m_program.setReadChannel(QProcess::StandardError);
        while (count() < times && waited.elapsed() < PatienceMs && m_program.state() == QProcess::Running) {
            if (turn) {
                turn();
            }
            m_program.waitForReadyRead(turnMs);
            m_messages += m_program.readAllStandardError().toStdString();
        }
        return count() >= times;
    }
    /// Gives it that on its standard input, which stays open, and waits for its own end.
    Result endProgram(const QByteArray& input)
    {
        m_program.write(input);
        EXPECT_TRUE(m_program.waitForFinished(PatienceMs));
        return {m_program.exitCode(), m_program.readAllStandardError().toStdString(),
                nlohmann::json::parse(m_program.readAllStandardOutput().toStdString(), nullptr, false)};
    }
    /// Asks it to stop, as Ctrl-C does.
    Result stopProgram()
    {
        ::kill(static_cast<pid_t>(m_program.processId()), SIGINT);
        Result result = finish(m_program);
        result.messages = m_messages + result.messages;
        return result;
    }
    [[nodiscard]] const std::string& messages() const { return m_messages; }
    [[nodiscard]] static RecordedFile recordingOf(const Result& result)
    {
        return readRecordedFile(result.path("receiver"));
    }

private:
    QProcess m_program;
    std::string m_messages;
};
