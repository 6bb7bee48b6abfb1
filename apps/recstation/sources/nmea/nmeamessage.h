// What a sentence says of time, position and attitude.
#pragma once

#include <optional>
#include <string>

#include "published/positionvalues.h"
#include "sources/nmea/nmeasentence.h"

namespace RecStation {

struct NmeaMessage {
    std::optional<long long> timeOfDay;  ///< microseconds since midnight UTC
    std::optional<long long> day;        ///< since 1970-01-01
    std::string dayProblem;              ///< why the day cannot be read; empty when it can, or there is none
    std::optional<bool> valid;           ///< of sentences with a position: whether the receiver has a fix
    bool unsure = false;                 ///< does not say whether it is of a fix
    bool clockOnly = false;              ///< its time is that of no fix
    std::optional<double> magneticDeg;   ///< heading by the compass, with its deviation
    std::optional<double> variationDeg;  ///< what makes it a true one; east is positive
    Fix fix;
};

/// Nothing for sentences of other types; of those that say themselves that they are not valid at most that.
/// @throws LineError when a field in use cannot be read
[[nodiscard]] std::optional<NmeaMessage> readNmeaMessage(const NmeaSentence& sentence);

}  // namespace RecStation
