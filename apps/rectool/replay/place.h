// Which recorded positions are places on the earth.
#pragma once

#include <cmath>

namespace RecTool {

/// Whether a latitude and a longitude in degrees are a place; a longitude may be given from 0 to 360. 0, 0 is what
/// values hold that nobody has set.
[[nodiscard]] inline bool isPlace(double latitudeDeg, double longitudeDeg)
{
    constexpr double PoleDeg = 90;
    constexpr double AroundDeg = 360;
    const bool isSet = latitudeDeg != 0 || longitudeDeg != 0;
    // Written so that numbers that are none are no place.
    return isSet && std::abs(latitudeDeg) <= PoleDeg && std::abs(longitudeDeg) <= AroundDeg;
}

}  // namespace RecTool
