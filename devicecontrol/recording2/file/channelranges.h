// Channel range definitions: which records describe the channels that the receiver was set to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>

#include "files.h"
#include "keycursor.h"
#include "recordreader.h"

namespace Recording2 {

/// The table of their times. The copies of a CFileAccess share it.
class ChannelRanges {
public:
    void add(std::uint64_t time) { m_times.insert(time); }
    void clear() { m_times.clear(); }
    [[nodiscard]] bool empty() const { return m_times.empty(); }
    [[nodiscard]] std::size_t size() const { return m_times.size(); }
    [[nodiscard]] const std::set<std::uint64_t>& times() const { return m_times; }

    /// Adds those from the cursor on up to a bound, the first time that is 0 or negative, or the end of the file.
    void read(Format::Cursor& cursor, std::int64_t bound);
    void write(OutputFile& output) const;

private:
    std::set<std::uint64_t> m_times;
};

/// The walk through the definitions and their records. Each copy of a CFileAccess has its own.
class RangeWalk {
public:
    void toBegin(const ChannelRanges& ranges) { m_place.toBegin(ranges.times()); }
    /// Forgets what was looked through and what was damaged: the file may be another.
    void startAnew();
    /// The definition here and its record; goes on to the next. @return whether there is a next one; at the end record
    /// and time are untouched
    bool next(const ChannelRanges& ranges, RecordReader& reader, CVTCmdData& record, unsigned long long& time);

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
