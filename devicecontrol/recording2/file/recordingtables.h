// What the copies of a CFileAccess share of a recording in memory, and what each of them has of its own.
#pragma once

#include <cstdint>
#include <memory>

#include "../format/layout.h"
#include "../index/timeindex.h"
#include "bookmarks.h"
#include "channelranges.h"
#include "keycursor.h"

namespace Recording2 {

/// The tables after the records.
struct RecordingTables {
    std::unique_ptr<Index::TimeIndex> index = std::make_unique<Index::TimeIndex>();  // null once it is closed
    ChannelRanges channelRanges;
    Bookmarks bookmarks;
};

struct CopyState {
    bool valid = false;
    Format::Positions positions;
    std::uint64_t lastTime = 0;  // of the records that were written
    RangeWalk rangeWalk;
    KeyCursor bookmark;  // that is given next
    bool bookmarksChanged = false;
};

}  // namespace Recording2
