// A receiver behind an rtl_tcp server.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "iqspectra/receiver.h"
#include "live/connection.h"

namespace RecStation {

constexpr double RtlTcpHighestHz = 4'294'967'295.0;  ///< of rate and frequency, which the protocol has 32 bits for

struct RtlTcpOptions : ReceiverOptions {
    Address address;
};

/// The source "rtltcp". @throws UsageError when options do not go together
[[nodiscard]] std::unique_ptr<Source> makeRtlTcpSource(const RtlTcpOptions& options, const SourceRun& run);

// ---- the protocol of rtl_tcp: 12 bytes of greeting, commands of 5 bytes, samples as cu8

constexpr std::size_t RtlTcpGreetingBytes = 12;

/// Whether these are what the server says first: "RTL0", its tuner and how many gains that has.
[[nodiscard]] inline bool isRtlTcpGreeting(std::string_view bytes)
{
    return bytes.size() == RtlTcpGreetingBytes && bytes.starts_with("RTL0");
}

enum class RtlTcpCommand : std::uint8_t {
    Frequency = 0x01,   ///< Hz
    SampleRate = 0x02,  ///< samples a second
    GainMode = 0x03,    ///< 0: the tuner's own control, 1: Gain
    Gain = 0x04,        ///< tenths of a dB
};

/// The command's number and its value, big endian.
[[nodiscard]] inline std::array<char, 5> rtlTcpBytes(RtlTcpCommand command, std::uint32_t value)
{
    const auto byte = [value](unsigned shift) { return static_cast<char>(value >> shift & 0xFFU); };
    return {static_cast<char>(command), byte(24), byte(16), byte(8), byte(0)};
}

}  // namespace RecStation
