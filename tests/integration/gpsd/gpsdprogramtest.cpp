// Sockets of the loopback address, and a program that is waited for.
#include "gpsdprogramtest.h"

#include <csignal>

#include <poll.h>

#include <QElapsedTimer>

namespace {

bool awaitBytes(int descriptor)
{
    pollfd wait{descriptor, POLLIN, 0};
    return ::poll(&wait, 1, PatienceMs) == 1;
}

}  // namespace

Peer::Peer()
{
    m_listening = TestSupport::bindToLoopback(SOCK_STREAM, m_port);
}

Peer::~Peer()
{
    hangUp();
    ::close(m_listening);
}

bool Peer::accept()
{
    hangUp();
    if (awaitBytes(m_listening)) {
        m_connection = ::accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC);
    }
    return m_connection >= 0;
}

void Peer::send(std::string_view bytes)
{
    TestSupport::sendAll(m_connection, bytes);  // when the other end is gone the test sees what that does
}

bool Peer::awaitText(const std::string& text)
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

void Peer::hangUp()
{
    if (m_connection >= 0) {
        ::close(m_connection);
        m_connection = -1;
        m_received.clear();
    }
}

GpsdProgramTest::~GpsdProgramTest()
{
    if (m_program.state() != QProcess::NotRunning) {
        m_program.kill();
        m_program.waitForFinished(PatienceMs);
    }
}

void GpsdProgramTest::startProgram(std::uint16_t port, const QStringList& more)
{
    start(m_program, QStringList{"gpsd", QStringLiteral("127.0.0.1:%1").arg(port)} + more);
}

bool GpsdProgramTest::awaitMessage(const std::string& text, int times, const std::function<void()>& turn)
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

RecordingTest::Result GpsdProgramTest::endProgram(const QByteArray& input)
{
    m_program.write(input);
    EXPECT_TRUE(m_program.waitForFinished(PatienceMs));
    return {m_program.exitCode(), m_program.readAllStandardError().toStdString(),
            nlohmann::json::parse(m_program.readAllStandardOutput().toStdString(), nullptr, false)};
}

RecordingTest::Result GpsdProgramTest::stopProgram()
{
    ::kill(static_cast<pid_t>(m_program.processId()), SIGINT);
    Result result = finish(m_program);
    result.messages = m_messages + result.messages;
    return result;
}
