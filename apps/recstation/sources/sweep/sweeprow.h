// What a row of a sweep says.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "input/badlines.h"

namespace RecStation {

/// Bins that tile [lowHz, highHz) evenly, one for each of levelsDb.
struct SweepRow {
    unsigned long long time = 0;  ///< microseconds since 1970 UTC
    double lowHz = 0;
    double highHz = 0;
    std::vector<float> levelsDb;  ///< not a number: no measurement
    bool operator==(const SweepRow&) const = default;
};

class SweepRowParser {
public:
    static constexpr std::size_t MostBins = 16'777'216;  ///< a map has no more channels

    /// @param utcOffsetUs local time minus UTC, microseconds
    explicit SweepRowParser(long long utcOffsetUs) : m_utcOffsetUs(utcOffsetUs) {}

    /// True for a line without a row: blank, a comment after #, or the names of the columns.
    [[nodiscard]] static bool isNoRow(std::string_view line);

    /// @param whole false: the line has no line end, so its last number may have lost digits
    /// @param row replaced, its memory used again
    /// @throws LineError
    void parse(std::string_view line, bool whole, SweepRow& row);

private:
    [[nodiscard]] unsigned long long parseTime(std::string_view date, std::string_view time);

    long long m_utcOffsetUs;
    // Rows of one sweep often have the same time: what was parsed last.
    std::string m_dateText;
    std::string m_timeText;
    long long m_day = 0;
    long long m_timeOfDay = 0;
};

}  // namespace RecStation
