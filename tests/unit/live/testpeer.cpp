// Accepting, serving, and ending in the middle of it.
#include "testpeer.h"

#include "support/loopback.h"

namespace RecStation {

bool TestClient::send(std::string_view bytes) const
{
    return TestSupport::sendAll(m_socket, bytes);
}

std::string TestClient::receive() const
{
    std::array<char, 4096> buffer{};
    const ssize_t count = ::recv(m_socket, buffer.data(), buffer.size(), 0);
    return count > 0 ? std::string(buffer.data(), static_cast<std::size_t>(count)) : std::string();
}

TestPeer::TestPeer(Serve serve, std::uint16_t port) : m_port(port)
{
    m_listener = TestSupport::bindToLoopback(SOCK_STREAM, m_port);
    m_thread = std::thread([this, serve = std::move(serve)] { run(serve); });
}

TestPeer::~TestPeer()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
        ::shutdown(m_listener, SHUT_RDWR);
        if (m_connection >= 0) {
            ::shutdown(m_connection, SHUT_RDWR);
        }
    }
    m_thread.join();
    ::close(m_listener);
}

void TestPeer::run(const Serve& serve)
{
    for (;;) {
        const int connection = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        {
            const std::lock_guard lock(m_mutex);
            if (m_ends || connection < 0) {
                break;
            }
            m_connection = connection;
        }
        serve(TestClient(connection));
        const std::lock_guard lock(m_mutex);
        ::close(std::exchange(m_connection, -1));
    }
}

}  // namespace RecStation
