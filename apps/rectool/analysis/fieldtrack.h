// Levels of one channel where they were measured: the track of a drive test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "replay/recordings.h"

namespace RecTool {

/// The levels that were measured at one position. Levels in dB, moments in milliseconds since the start of the first
/// recording.
struct FieldPoint {
    double latitudeDeg = 0;
    double longitudeDeg = 0;  ///< -180 to 180
    double positionMs = 0;    ///< of the record that told the position
    std::uint64_t levels = 0;
    double highest = 0;
    double lowest = 0;
    double powers = 0;  ///< sum of 10^(level/10)
    double firstMs = 0;
    double lastMs = 0;
    double highestMs = 0;

    [[nodiscard]] double mean() const;  ///< of the powers, in dB
};

struct FieldTrack {
    std::string device;
    std::string keyword;
    double hz = 0;                      ///< of the channel
    bool isPlain = false;               ///< a number such as LEVEL, not a channel of a spectrum
    std::vector<FieldPoint> points;     ///< in the order of the records
    std::uint64_t withoutPosition = 0;  ///< levels that are left out
};

/// Two passes: a device that has no position of its own was where the first other device was that has one. Levels of
/// spectra; where none has such a channel, the numbers of LEVEL and FIELDSTRENGTH while the receiver was tuned to it.
/// @return those with levels
[[nodiscard]] std::vector<FieldTrack> trackField(Recordings& recordings, double hz);

}  // namespace RecTool
