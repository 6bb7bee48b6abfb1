// What the copies of a CFileAccess share of a recording in memory, and what each of them has of its own.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "../format/layout.h"
#include "../index/timeindex.h"
#include "channelranges.h"
#include "keycursor.h"

namespace Recording2 {

/// The tables after the records, by time.
struct RecordingTables {
    std::unique_ptr<Index::TimeIndex> index = std::make_unique<Index::TimeIndex>();  // null once it is closed
    std::set<std::uint64_t> channelRanges;                                           // times of their definitions
    std::map<std::uint64_t, std::string> bookmarks;                                  // at most one a time
};

struct CopyState {
    bool valid = false;
    Format::Positions positions;
    std::uint64_t lastTime = 0;  // of the records that were written
    RangeWalk rangeWalk;
    KeyCursor bookmark;  // that is given next
    bool bookmarksChanged = false;
    bool leftOut = false;  // what no position of the format could name, so that what is there stays a sound file
};

}  // namespace Recording2
