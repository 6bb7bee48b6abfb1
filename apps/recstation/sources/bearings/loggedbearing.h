// A bearing as a direction finder reports it.
#pragma once

#include <limits>
#include <string>

namespace RecStation {

struct LoggedBearing {
    unsigned long long time = 0;  ///< microseconds since 1970 UTC
    double frequencyHz = 0;
    double azimuthDeg = 0;  ///< 0 to 360
    // Not a number where it was not told.
    double elevationDeg = std::numeric_limits<double>::quiet_NaN();  ///< -90 to 90
    double levelDb = std::numeric_limits<double>::quiet_NaN();
    double quality = std::numeric_limits<double>::quiet_NaN();       ///< 0 to 100
    double headingDeg = std::numeric_limits<double>::quiet_NaN();    ///< true heading of azimuth 0
    double latitudeDeg = std::numeric_limits<double>::quiet_NaN();   ///< north is positive
    double longitudeDeg = std::numeric_limits<double>::quiet_NaN();  ///< east is positive
    double altitudeM = std::numeric_limits<double>::quiet_NaN();
    std::string station;
};

}  // namespace RecStation
