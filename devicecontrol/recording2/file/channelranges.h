// Channel range definitions: the records that describe the channels that the receiver was set to.
#pragma once

#include <cstdint>
#include <set>

#include "keycursor.h"
#include "recordreader.h"

namespace Recording2 {

/// The walk through the definitions and their records. Each copy of a CFileAccess has its own.
class RangeWalk {
public:
    /// @param ranges times of the definitions, here and below
    void toBegin(const std::set<std::uint64_t>& ranges) { m_place.toBegin(ranges); }
    /// Forgets what was looked through and what was damaged: the file may be another.
    void startAnew();
    /// The definition here and its record; goes on to the next. @return whether there is a next one; at the end record
    /// and time are untouched
    bool next(const std::set<std::uint64_t>& ranges, RecordReader& reader, CVTCmdData& record,
              unsigned long long& time);

private:
    /// The records of one moment that were looked through. None but the last may carry a range.
    struct Moment {
        std::uint64_t first = 0;  // times; none is 0
        std::uint64_t last = 0;
        std::uint64_t lastRead = 0;  // the last of them with data

        [[nodiscard]] bool covers(std::uint64_t time) const { return first != 0 && first <= time && time <= last; }
    };

    bool read(RecordReader& reader, CVTCmdData& record, std::uint64_t time);
    void readFrom(RecordReader& reader, std::uint64_t& time, CVTCmdData& record);
    [[nodiscard]] bool readTooMuch(const RecordReader& reader) const;

    KeyCursor m_place;
    Moment m_moment;
    std::int64_t m_damagedBytes = 0;  // of records not as in a sound file, read since the first definition
};

}  // namespace Recording2
