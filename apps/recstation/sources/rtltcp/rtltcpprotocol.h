// The protocol of rtl_tcp: 12 bytes of greeting, commands of 5 bytes, samples as cu8.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace RecStation {

constexpr std::size_t RtlTcpGreetingBytes = 12;

/// What the server says first.
struct RtlTcpGreeting {
    std::uint32_t tuner = 0;  ///< its kind, 1 to 6
    std::uint32_t gains = 0;  ///< how many settings its gain has
};

/// @param bytes twelve: "RTL0", tuner and number of gains, big endian; nothing for anything else
[[nodiscard]] std::optional<RtlTcpGreeting> parseRtlTcpGreeting(std::string_view bytes);

enum class RtlTcpCommand : std::uint8_t {
    Frequency = 0x01,   ///< Hz
    SampleRate = 0x02,  ///< samples a second
    GainMode = 0x03,    ///< 0: the tuner's own control, 1: Gain
    Gain = 0x04,        ///< tenths of a dB
};

/// The command's number and its value, big endian.
[[nodiscard]] std::array<char, 5> rtlTcpBytes(RtlTcpCommand command, std::uint32_t value);

}  // namespace RecStation
