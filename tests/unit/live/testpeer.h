// A TCP server for tests, on a free port of the loopback address.
#pragma once

#include <mutex>

#include "live/connection.h"
#include "support/testing.h"

namespace RecStation {

/// One connection of the server's, in the server's thread.
class TestClient {
public:
    explicit TestClient(int handle) : m_socket(handle) {}

    /// False when the other side is gone.
    bool send(std::string_view bytes) const;
    /// Empty when the other side is gone.
    [[nodiscard]] std::string receive() const;

private:
    int m_socket;
};

/// Serves one connection after the other until it goes.
class TestPeer {
public:
    using Serve = std::function<void(const TestClient&)>;

    /// @param serve called for each connection, which is closed behind it @param port 0: a free one
    explicit TestPeer(Serve serve, std::uint16_t port = 0);
    TestPeer(const TestPeer&) = delete;
    TestPeer& operator=(const TestPeer&) = delete;
    ~TestPeer();  ///< ends the connection, as when a program is killed

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    [[nodiscard]] Address address() const { return {"127.0.0.1", m_port}; }

private:
    void run(const Serve& serve);

    int m_listener = -1;
    int m_connection = -1;
    std::uint16_t m_port = 0;
    bool m_ends = false;
    std::mutex m_mutex;
    std::thread m_thread;
};

}  // namespace RecStation
