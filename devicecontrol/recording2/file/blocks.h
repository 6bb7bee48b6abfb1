// The blocks of a recording as they are appended to its file, entry by entry.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "../format/layout.h"
#include "files.h"

namespace Recording2::Blocks {

inline void appendRecord(OutputFile& output, std::int32_t code, std::string_view data)
{
    output.commit(Format::putRecordHead(output.reserve(), code, static_cast<std::uint32_t>(data.size())));
    output.append(data);
}

/// Of the time table.
inline void appendTimeEntry(OutputFile& output, std::uint64_t milliseconds, std::int32_t position)
{
    output.commit(Format::putTimeEntry(output.reserve(), milliseconds, position));
}

/// Notes where a table is written for the first time. @return false, and leftOut set, when no header could name that
inline bool beginTable(const OutputFile& output, std::int32_t& position, bool& leftOut)
{
    if (position == 0 && output.position() > Format::LastPosition) {
        leftOut = true;
        return false;
    }
    position = position == 0 ? static_cast<std::int32_t>(output.position()) : position;
    return true;
}

/// The channel range table, ascending.
template <typename Times>
void appendTimes(OutputFile& output, const Times& times)
{
    for (const std::uint64_t milliseconds : times) {
        output.commit(Format::putTime(output.reserve(), milliseconds));
    }
}

inline void appendBookmarks(OutputFile& output, const std::map<std::uint64_t, std::string>& bookmarks)
{
    for (const auto& [milliseconds, text] : bookmarks) {
        output.commit(Format::putTime(output.reserve(), milliseconds));
        output.commit(Format::putNumber(output.reserve(), std::uint64_t{text.size()}));
        output.append(text);
    }
}

}  // namespace Recording2::Blocks
