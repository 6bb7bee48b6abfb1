// Where a station is and how it lies, as far as one message tells.
#pragma once

#include <optional>

namespace RecStation {

/// Nothing where the message says nothing; not a number where it says that nothing is known.
struct Fix {
    std::optional<double> latitudeDeg;   ///< north is positive; given together with the longitude
    std::optional<double> longitudeDeg;  ///< east is positive
    std::optional<double> altitudeM;     ///< above mean sea level
    std::optional<double> speedMps;
    std::optional<double> headingDeg;  ///< true, 0 to below 360
    std::optional<double> pitchDeg;
    std::optional<double> rollDeg;

    [[nodiscard]] bool empty() const
    {
        return !latitudeDeg && !altitudeM && !speedMps && !headingDeg && !pitchDeg && !rollDeg;
    }
};

}  // namespace RecStation
