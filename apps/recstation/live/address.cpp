// Parsing addresses, with IPv6 in brackets.
#include "live/address.h"

#include "input/fields.h"

namespace RecStation {

namespace {

bool isHost(std::string_view text)
{
    constexpr std::size_t Longest = 253;
    return !text.empty() && text.size() <= Longest &&
           text.find_first_not_of("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ.-_:%") ==
               std::string_view::npos;
}

}  // namespace

std::optional<Address> parseAddress(std::string_view text, std::uint16_t defaultPort)
{
    std::string_view host = text;
    std::string_view port;
    bool hasPort = false;
    if (text.starts_with('[')) {
        const std::size_t bracket = text.find(']');
        if (bracket == std::string_view::npos) {
            return std::nullopt;
        }
        host = text.substr(1, bracket - 1);
        port = text.substr(bracket + 1);
        hasPort = !port.empty();
        if (hasPort && !port.starts_with(':')) {
            return std::nullopt;
        }
        port.remove_prefix(hasPort ? 1 : 0);
    } else if (const std::size_t colon = text.find(':'); colon != std::string_view::npos && colon == text.rfind(':')) {
        host = text.substr(0, colon);
        port = text.substr(colon + 1);
        hasPort = true;
    }
    const auto number = hasPort ? parseNumber<std::uint16_t>(port) : std::optional(defaultPort);
    return isHost(host) && number && *number != 0 ? std::optional(Address{std::string(host), *number}) : std::nullopt;
}

std::string addressText(const Address& address)
{
    const bool brackets = address.host.find(':') != std::string::npos;
    return (brackets ? "[" + address.host + "]" : address.host) + ":" + std::to_string(address.port);
}

}  // namespace RecStation
