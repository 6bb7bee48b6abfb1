// Accepting, serving, and ending in the middle of it.
#include "testpeer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace RecStation {

bool TestClient::send(std::string_view bytes) const
{
    while (!bytes.empty()) {
        const ssize_t count = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

std::string TestClient::receive() const
{
    std::array<char, 4096> buffer{};
    const ssize_t count = ::recv(m_socket, buffer.data(), buffer.size(), 0);
    return count > 0 ? std::string(buffer.data(), static_cast<std::size_t>(count)) : std::string();
}

TestPeer::TestPeer(Serve serve, std::uint16_t port) : m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in at{};
    at.sin_family = AF_INET;
    at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    at.sin_port = htons(port);
    const int on = 1;
    ::setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    socklen_t size = sizeof(at);
    if (::bind(m_listener, reinterpret_cast<const sockaddr*>(&at), size) != 0 || ::listen(m_listener, 8) != 0 ||
        ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&at), &size) != 0) {
        throw std::runtime_error("cannot listen");
    }
    m_port = ntohs(at.sin_port);
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
