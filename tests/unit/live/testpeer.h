// A TCP server for tests, on a free port of the loopback address.
#pragma once

#include <mutex>

#include "live/connection.h"
#include "support/loopback.h"
#include "support/testing.h"

namespace RecStation {

/// One connection of the server's, in the server's thread.
class TestClient {
public:
    explicit TestClient(int handle) : m_socket(handle) {}

    /// False when the other side is gone.
    bool send(std::string_view bytes) const { return TestSupport::sendAll(m_socket, bytes); }
    /// Empty when the other side is gone.
    [[nodiscard]] std::string receive() const
    {
        std::array<char, 4096> buffer{};
        const ssize_t count = ::recv(m_socket, buffer.data(), buffer.size(), 0);
        return count > 0 ? std::string(buffer.data(), static_cast<std::size_t>(count)) : std::string();
    }

private:
    int m_socket;
};

/// Serves one connection after the other until it goes.
class TestPeer {
public:
    using Serve = std::function<void(const TestClient&)>;

    /// @param serve called for each connection, which is closed behind it @param port 0: a free one
    explicit TestPeer(Serve serve, std::uint16_t port = 0) : m_port(port)
    {
        m_listener = TestSupport::bindToLoopback(SOCK_STREAM, m_port);
        m_thread = std::thread([this, serve = std::move(serve)] { run(serve); });
    }
    TestPeer(const TestPeer&) = delete;
    TestPeer& operator=(const TestPeer&) = delete;
    /// Ends the connection, as when a program is killed
    ~TestPeer()
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

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    [[nodiscard]] Address address() const { return {"127.0.0.1", m_port}; }

private:
    void run(const Serve& serve)
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

    int m_listener = -1;
    int m_connection = -1;
    std::uint16_t m_port = 0;
    bool m_ends = false;
    std::mutex m_mutex;
    std::thread m_thread;
};

}  // namespace RecStation
