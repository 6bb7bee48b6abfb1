// Sockets of the loopback address.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace TestSupport {

/// A socket of a kind (SOCK_STREAM, SOCK_DGRAM) that is bound to a port; one of SOCK_STREAM listens.
/// @param port in: 0 for a free one, out: which it is @throws std::runtime_error
[[nodiscard]] inline int bindToLoopback(int kind, std::uint16_t& port)
{
    const int made = ::socket(AF_INET, kind | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in at{};
    at.sin_family = AF_INET;
    at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    at.sin_port = htons(port);
    socklen_t size = sizeof at;
    auto* const any = reinterpret_cast<sockaddr*>(&at);
    if (::bind(made, any, size) != 0 || (kind == SOCK_STREAM && ::listen(made, 8) != 0) ||
        ::getsockname(made, any, &size) != 0) {
        throw std::runtime_error("cannot listen");
    }
    port = ntohs(at.sin_port);
    return made;
}

/// Nobody is there, as far as can be known.
[[nodiscard]] inline std::uint16_t freePort(int kind = SOCK_STREAM)
{
    std::uint16_t port = 0;
    ::close(bindToLoopback(kind, port));
    return port;
}

/// @return false when the other end is gone
inline bool sendAll(int connection, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto sent = ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

}  // namespace TestSupport
