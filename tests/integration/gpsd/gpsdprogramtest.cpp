// Sockets of the loopback address, and a program that is waited for.
#include "gpsdprogramtest.h"

#include <cmath>
#include <csignal>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QElapsedTimer>

namespace {

int listenOnFreePort(std::uint16_t& port)
{
    const int listening = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(::bind(listening, any, size), 0);
    EXPECT_EQ(::listen(listening, 4), 0);
    EXPECT_EQ(::getsockname(listening, any, &size), 0);
    port = ntohs(address.sin_port);
    return listening;
}

bool awaitBytes(int descriptor)
{
    pollfd wait{descriptor, POLLIN, 0};
    return ::poll(&wait, 1, gpsdPatienceMs) == 1;
}

}  // namespace

Peer::Peer()
{
    m_listening = listenOnFreePort(m_port);
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
    while (!bytes.empty()) {
        const auto sent = ::send(m_connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return;  // the other end is gone: the test sees what that does
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
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

std::uint16_t freePort()
{
    std::uint16_t port = 0;
    ::close(listenOnFreePort(port));
    return port;
}

GpsdProgramTest::~GpsdProgramTest()
{
    if (m_program.state() != QProcess::NotRunning) {
        m_program.kill();
        m_program.waitForFinished(gpsdPatienceMs);
    }
}

void GpsdProgramTest::startProgram(std::uint16_t port, const QStringList& more)
{
    start(m_program, QStringList{QStringLiteral("gpsd"), QStringLiteral("127.0.0.1:%1").arg(port)} + more);
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
    while (count() < times && waited.elapsed() < gpsdPatienceMs && m_program.state() == QProcess::Running) {
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
    EXPECT_TRUE(m_program.waitForFinished(gpsdPatienceMs));
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

std::vector<std::string> GpsdProgramTest::changes(const RecordedFile& file, std::int32_t code, int digits)
{
    std::vector<std::string> out;
    for (const auto& number : file.numbers(code)) {
        out.push_back(std::isnan(number.number) ? "nan" : QString::number(number.number, 'f', digits).toStdString());
    }
    return out;
}
