// Where a peer listens: a host and a port, as the command line says them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace RecStation {

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

}  // namespace RecStation
