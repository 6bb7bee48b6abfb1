// Where the station is and how it lies, and the values of the tree that tell it.
#pragma once

#include <array>
#include <cmath>
#include <optional>

#include "published/attachedvalue.h"

namespace RecStation {

// Where a station is and how it lies, as far as one message tells.

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

/// The values stay in the tree when this object goes.
class PositionValues {
public:
    /// Values that are not there yet are made, and are not a number.
    /// @throws std::runtime_error when there is no tree, or a path holds another kind of value
    PositionValues();

    void show(const Fix& fix);
    void forget();  ///< none of them is known any more: not a number

private:
    std::array<values::ValuePtr<values::ValueNumeric<double>>, 7> m_values;
};

}  // namespace RecStation
