// What is known of samples besides what the command line says: from metadata, a header or a name.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace RecStation {

/// Samples without a gap, at one frequency.
struct KnownCapture {
    std::uint64_t firstSample = 0;         ///< of the recording: the time since the captures before, where none is told
    std::uint64_t firstByte = 0;           ///< in the file
    std::optional<std::uint64_t> samples;  ///< nothing: to the end of the file
    std::optional<double> centreHz;
    std::optional<unsigned long long> startTime;  ///< microseconds since 1970 UTC
};

struct KnownSamples {
    std::string format;                                                 ///< by its SigMF name; empty: not known
    std::optional<double> rateHz;                                       ///< positive
    std::vector<KnownCapture> captures = std::vector<KnownCapture>(1);  ///< at least one, one behind the other
    bool localTime = false;           ///< the first one's time was taken as this computer's local time
    std::uint64_t trailingBytes = 0;  ///< at the end of the file, which are no samples
};

}  // namespace RecStation
