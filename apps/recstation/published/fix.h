// Where a station is and how it lies, as far as one message tells.
#pragma once

#include <cmath>
#include <optional>

namespace RecStation {

/// From 0 to below 360, without the dust of a sum in the last digits.
[[nodiscard]] inline double wrappedDegrees(double degrees)
{
    constexpr double PerDegree = 1e6;
    constexpr double FullCircle = 360 * PerDegree;
    const double turned = std::fmod(std::round(degrees * PerDegree), FullCircle);
    return (turned < 0 ? turned + FullCircle : turned) / PerDegree;
}

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
