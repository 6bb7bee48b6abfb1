// What a sentence says of time, position and attitude.
#pragma once

#include <optional>

#include "sources/nmea/nmeasentence.h"

namespace RecStation {

/// Nothing where the sentence says nothing.
struct NmeaFix {
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

struct NmeaMessage {
    std::optional<long long> timeOfDay;  ///< microseconds since midnight UTC
    std::optional<long long> day;        ///< since 1970-01-01
    std::optional<double> magneticDeg;   ///< heading by the compass, with its deviation
    std::optional<double> variationDeg;  ///< what makes it a true one; east is positive
    NmeaFix fix;
};

/// Nothing for sentences of other types and for those that say themselves that they are not valid.
/// @throws LineError when a field in use cannot be read
[[nodiscard]] std::optional<NmeaMessage> readNmeaMessage(const NmeaSentence& sentence);

}  // namespace RecStation
