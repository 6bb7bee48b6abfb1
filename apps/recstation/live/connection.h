// Where a peer listens, a TCP connection to it, and its datagrams, for the thread that a live source waits in. Linux
// only.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace RecStation {

/// Where a peer listens, as the command line says it.
struct Address {
    std::string host;  ///< a name, or an address without brackets
    std::uint16_t port = 0;
};

/// "HOST", "HOST:PORT", "[::1]", "[::1]:PORT", and an IPv6 address without brackets and port. Nothing for anything
/// else.
[[nodiscard]] std::optional<Address> parseAddress(std::string_view text, std::uint16_t defaultPort);
/// That for an option's text.
[[nodiscard]] inline auto addressWith(std::uint16_t defaultPort)
{
    return [defaultPort](const std::string& text) { return parseAddress(text, defaultPort); };
}
/// "127.0.0.1:4532", "[::1]:4532": as messages name it.
[[nodiscard]] std::string addressText(const Address& address);

/// The peer is not there, went away or does not answer as it should. One clause that follows the peer's name, such as
/// "connection lost: the peer closed it".
class ConnectionError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Thrown by every wait when the process is asked to stop. No std::exception: nobody catches it by mistake.
struct Stopped {};

using Deadline = std::chrono::steady_clock::time_point;
[[nodiscard]] Deadline in(std::chrono::milliseconds time);

/// Waits until something can be read from the descriptor. @return false when the deadline passed before @throws Stopped
[[nodiscard]] bool waitToRead(int descriptor, Deadline deadline);
/// @throws Stopped
void pauseUntil(Deadline deadline);

/// One thread at a time. Every wait ends at once with Stopped when the process is asked to stop.
class Connection {
public:
    static constexpr std::chrono::milliseconds Patience{10'000};

    Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { close(); }

    /// Looks the host up and connects to the first of its addresses that takes the connection.
    /// @throws ConnectionError, also when that takes longer; the connection is closed then
    void open(const Address& address, std::chrono::milliseconds patience = Patience);
    void close() noexcept;
    [[nodiscard]] bool isOpen() const { return m_socket >= 0; }

    /// @throws ConnectionError, also when the peer does not take the bytes in that time
    void send(std::string_view bytes, std::chrono::milliseconds patience = Patience);
    /// Waits for bytes and takes at most so many. @return how many came; 0 when the deadline passed before
    /// @throws ConnectionError when the peer has closed the connection, or it broke
    [[nodiscard]] std::size_t read(char* buffer, std::size_t size, Deadline deadline);

private:
    int m_socket = -1;
};

/// Datagrams that a peer sends to a multicast group, or to this machine. One thread at a time. Waits end as those of
/// Connection.
class Datagrams {
public:
    Datagrams() = default;
    Datagrams(const Datagrams&) = delete;
    Datagrams& operator=(const Datagrams&) = delete;
    ~Datagrams() { close(); }

    /// @param address of IPv4 in digits; of a group, it is joined on every interface that can
    /// @throws ConnectionError
    void open(const Address& address);
    void close() noexcept;
    /// Waits for the next. It is good until the next call. @return empty when the deadline passed before
    /// @throws ConnectionError
    [[nodiscard]] std::string_view read(Deadline deadline);

private:
    void join(unsigned int group) const;

    int m_socket = -1;
    std::string m_buffer;
};

}  // namespace RecStation
