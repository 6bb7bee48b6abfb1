// The blocks of a recording as they are appended to its file, entry by entry.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "../format/layout.h"
#include "../index/timeindex.h"
#include "files.h"

namespace Recording2::Blocks {

inline void appendRecord(OutputFile& output, std::int32_t code, std::string_view data)
{
    output.commit(Format::putRecordHead(output.reserve(), code, static_cast<std::uint32_t>(data.size())));
    output.append(data);
}

/// Where a table begins, and whether anything was left out: no header can name a place after the last position.
struct TablePlace {
    std::int32_t& position;  ///< 0 until it is written
    bool& leftOut;

    /// @return whether the table is to be written here; one that was written before keeps the position it had
    [[nodiscard]] bool takeHere(const OutputFile& output, bool empty) const
    {
        if (!output.good() || empty) {
            return false;
        }
        leftOut = leftOut || (position == 0 && output.position() > Format::LastPosition);
        if (position == 0 && output.position() <= Format::LastPosition) {
            position = static_cast<std::int32_t>(output.position());
        }
        return position != 0;
    }
};

/// @param at gives the time in milliseconds and the position of a record; times ascend
template <typename At>
void appendTimeTable(OutputFile& output, TablePlace place, std::size_t records, const At& at)
{
    if (place.takeHere(output, records == 0)) {
        for (std::size_t i = 0; i < records; ++i) {
            const Index::TimeEntry entry = at(i);
            output.commit(Format::putTimeEntry(output.reserve(), entry.time, entry.position));
        }
    }
}

/// @param times milliseconds, ascending
template <typename Times>
void appendChannelRanges(OutputFile& output, TablePlace place, const Times& times)
{
    if (place.takeHere(output, times.empty())) {
        for (const std::uint64_t milliseconds : times) {
            output.commit(Format::putTime(output.reserve(), milliseconds));
        }
    }
}

inline void appendBookmarks(OutputFile& output, TablePlace place, const std::map<std::uint64_t, std::string>& bookmarks)
{
    if (place.takeHere(output, bookmarks.empty())) {
        for (const auto& [milliseconds, text] : bookmarks) {
            output.commit(Format::putTime(output.reserve(), milliseconds));
            output.commit(Format::putNumber(output.reserve(), std::uint64_t{text.size()}));
            output.append(text);
        }
    }
}

}  // namespace Recording2::Blocks
