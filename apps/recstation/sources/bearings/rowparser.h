// What a row of a direction-finding log says.
#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "input/badlines.h"
#include "input/logtime.h"
#include "sources/bearings/bearingssource.h"
#include "sources/bearings/csvreader.h"

namespace RecStation {

struct LoggedBearing {
    unsigned long long time = 0;  ///< microseconds since 1970 UTC
    double frequencyHz = 0;
    double azimuthDeg = 0;  ///< 0 to 360
    // Not a number where the log has none.
    double latitudeDeg = std::numeric_limits<double>::quiet_NaN();   ///< north is positive
    double longitudeDeg = std::numeric_limits<double>::quiet_NaN();  ///< east is positive
    double altitudeM = std::numeric_limits<double>::quiet_NaN();
    std::string station;
};

struct LogRow {
    std::optional<double> frequencyHz;     ///< nothing: a row of another station
    std::optional<LoggedBearing> bearing;  ///< nothing: a row to skip
};

struct LogColumn {
    std::size_t index = 0;
    std::string name;
};

class RowParser {
public:
    /// @throws std::runtime_error when an option cannot be used, or the header lacks a column
    RowParser(const BearingsOptions& options, const CsvRecord& header);

    /// @throws LineError that says which column cannot be used, and why
    [[nodiscard]] LogRow parse(const CsvRecord& row) const;
    [[nodiscard]] bool hasPosition() const { return !m_latitude.empty(); }
    [[nodiscard]] bool hasAltitude() const { return m_altitude.has_value(); }

private:
    [[nodiscard]] unsigned long long readTime(const CsvRecord& row) const;
    [[nodiscard]] double readFrequency(const CsvRecord& row) const;
    [[nodiscard]] LoggedBearing readBearing(const CsvRecord& row, double frequencyHz) const;

    std::size_t m_columns;
    LogColumn m_date;
    LogColumn m_time;
    std::optional<LogColumn> m_station;
    std::vector<LogColumn> m_latitude;   // degrees, minutes, seconds
    std::vector<LogColumn> m_longitude;  // the same
    std::optional<LogColumn> m_altitude;
    LogColumn m_frequency;
    LogColumn m_azimuth;

    std::string m_dateFormatText;
    LogDateFormat m_dateFormat;
    long long m_utcOffset;  // microseconds
    double m_hzPerUnit;
    std::string m_onlyStation;
    bool m_south;
    bool m_west;
};

}  // namespace RecStation
