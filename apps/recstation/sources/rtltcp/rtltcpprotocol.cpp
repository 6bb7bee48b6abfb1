// Bytes of rtl_tcp's greeting and commands.
#include "sources/rtltcp/rtltcpprotocol.h"

namespace RecStation {

namespace {

std::uint32_t bigEndian(std::string_view bytes)
{
    std::uint32_t number = 0;
    for (const char byte : bytes) {
        number = number << 8U | static_cast<unsigned char>(byte);
    }
    return number;
}

}  // namespace

std::optional<RtlTcpGreeting> parseRtlTcpGreeting(std::string_view bytes)
{
    constexpr std::size_t NumberBytes = 4;
    if (bytes.size() != RtlTcpGreetingBytes || !bytes.starts_with("RTL0")) {
        return std::nullopt;
    }
    return RtlTcpGreeting{bigEndian(bytes.substr(NumberBytes, NumberBytes)), bigEndian(bytes.substr(2 * NumberBytes))};
}

std::array<char, 5> rtlTcpBytes(RtlTcpCommand command, std::uint32_t value)
{
    const auto byte = [value](unsigned shift) { return static_cast<char>(value >> shift & 0xFFU); };
    return {static_cast<char>(command), byte(24), byte(16), byte(8), byte(0)};
}

}  // namespace RecStation
