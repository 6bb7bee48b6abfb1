// One report of gpsd, out of a line of JSON.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "published/positionvalues.h"

namespace RecStation {

struct GpsdReport {
    enum class Kind : std::uint8_t { Version, Devices, Fix, Attitude, Error, Other };

    Kind kind = Kind::Other;
    std::string device;                        ///< that it comes from; empty where gpsd does not say
    std::string text;                          ///< of Version: the release; of Error: gpsd's sentence
    std::vector<std::string> devices;          ///< of Devices
    int dimensions = 0;                        ///< of Fix: 2, 3, or less where there is none
    std::optional<unsigned long long> timeUs;  ///< since 1970 UTC
    RecStation::Fix fix;                       ///< what is known; of a report without a fix nothing
    std::optional<double> magneticDeg;         ///< of Attitude: heading by the compass
    std::optional<double> variationDeg;        ///< of Fix: east is positive
};

/// Nothing for a line that is no report, or has a number that cannot be. Any bytes are harmless.
[[nodiscard]] std::optional<GpsdReport> parseGpsdReport(std::string_view line);

}  // namespace RecStation
