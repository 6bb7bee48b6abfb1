// The chunks of a WAV or RF64 file: where its samples lie, and what a receiver's program noted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace RecStation {

/// Reads bytes of a file at an offset: how many there were.
using ReadAt = std::function<std::size_t(std::uint64_t offset, char* buffer, std::size_t size)>;

constexpr std::uint16_t WavIntegers = 1;
constexpr std::uint16_t WavFloats = 3;

struct WavHeader {
    std::uint16_t kind = 0;  ///< of numbers: WavIntegers, WavFloats, or another, which is compressed
    std::uint16_t channels = 0;
    std::uint32_t rateHz = 0;
    std::uint16_t blockBytes = 0;            ///< of one sample of all channels
    std::uint64_t dataOffset = 0;            ///< of the first sample
    std::optional<std::uint64_t> dataBytes;  ///< as it says; nothing: it was never finished, samples go on to the end
    bool hasAuxi = false;                    ///< there is a chunk "auxi", understood or not
    std::optional<double> centreHz;          ///< by that
    std::optional<unsigned long long> startTime;  ///< by that, microseconds since 1970 UTC
};

/// Whether a file begins as WAV or RF64 files do.
[[nodiscard]] bool beginsAsWav(const ReadAt& readAt);
/// @throws std::runtime_error with what is wrong, as a clause: "it has no chunk \"data\""
[[nodiscard]] WavHeader readWavHeader(const ReadAt& readAt);

}  // namespace RecStation
