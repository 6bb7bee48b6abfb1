// The columns of a direction-finding log, found by their names, and what a row says.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "input/badlines.h"
#include "input/timetext.h"
#include "sources/bearings/bearingssource.h"
#include "sources/bearings/csvreader.h"
#include "sources/bearings/krakenrow.h"

namespace RecStation {

struct LogColumn {
    std::size_t index = 0;
    std::string name;
};

/// @throws std::runtime_error with the source's name in front
[[noreturn]] void failLog(const std::string& sentence);

// All of these throw std::runtime_error when a name fits several columns, and when a column that is named is not there.

/// Upper and lower case are alike. A column of just this name counts before one that has a unit behind it.
[[nodiscard]] std::optional<LogColumn> findColumn(const CsvRecord& header, const std::string& name);
/// @param option that names the column
[[nodiscard]] LogColumn requireColumn(const CsvRecord& header, const std::string& name, const char* option);
/// @param name empty: none, also where the standard one is there
/// @param standardName of a column that may be missing while nobody names another one
[[nodiscard]] std::optional<LogColumn> optionalColumn(const CsvRecord& header, const std::optional<std::string>& name,
                                                      const char* standardName, const char* option);
/// The columns of degrees, minutes and seconds, as far as they are named; none without a name and a standard column.
[[nodiscard]] std::vector<LogColumn> angleColumns(const CsvRecord& header, const std::optional<std::string>& names,
                                                  const char* standardName, const char* option);
/// Of a frequency's unit as a column's name tells it; that of MHz where it does not.
[[nodiscard]] double hzPerUnitOf(const std::string& column);

struct LogRow {
    std::optional<double> frequencyHz;     ///< nothing: a row of another station
    std::optional<LoggedBearing> bearing;  ///< nothing: a row to skip
};

/// Makes bearings of the rows of one form of log.
class RowReader {
public:
    RowReader() = default;
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;
    virtual ~RowReader() = default;

    /// @param row without a problem
    /// @throws LineError that says what cannot be used, and why
    [[nodiscard]] virtual LogRow parse(const CsvRecord& row) = 0;
    [[nodiscard]] virtual bool hasPosition() const = 0;
    [[nodiscard]] virtual bool hasAltitude() const = 0;
    /// Anything that people should know of what was read; empty: nothing.
    [[nodiscard]] virtual std::string remark() const { return {}; }
};

/// Columns that have names.
class RowParser final : public RowReader {
public:
    /// @throws std::runtime_error when an option cannot be used, or the header lacks a column
    RowParser(const BearingsOptions& options, const CsvRecord& header);

    [[nodiscard]] LogRow parse(const CsvRecord& row) override;
    [[nodiscard]] bool hasPosition() const override { return !m_latitude.empty(); }
    [[nodiscard]] bool hasAltitude() const override { return m_altitude.has_value(); }
    [[nodiscard]] std::string remark() const override { return m_remark; }

private:
    [[nodiscard]] unsigned long long readTime(const CsvRecord& row) const;
    [[nodiscard]] unsigned long long readTimestamp(const CsvRecord& row) const;
    [[nodiscard]] double readFrequency(const CsvRecord& row) const;
    [[nodiscard]] LoggedBearing readBearing(const CsvRecord& row, double frequencyHz) const;

    std::size_t m_columns;
    bool m_named;                          // by an option, not by the first line
    std::optional<LogColumn> m_timestamp;  // in place of date and time
    LogColumn m_date;
    LogColumn m_time;
    std::optional<LogColumn> m_station;
    std::vector<LogColumn> m_latitude;   // degrees, minutes, seconds
    std::vector<LogColumn> m_longitude;  // the same
    std::optional<LogColumn> m_altitude;
    LogColumn m_frequency;
    LogColumn m_azimuth;
    std::optional<LogColumn> m_elevation;
    std::optional<LogColumn> m_level;
    std::optional<LogColumn> m_quality;
    std::optional<LogColumn> m_heading;
    std::string m_remark;

    LogDateFormat m_dateFormat;
    long long m_utcOffsetUs;
    double m_hzPerUnit;
    std::string m_onlyStation;
    bool m_south;
    bool m_west;
};

}  // namespace RecStation
