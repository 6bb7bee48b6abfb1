// Which changes of a feed a recorder puts to another time than their own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "feedline.h"

namespace RecStation {

/// A recording starts at the time of its first map that has one of its own: what was recorded before moves with it.
class MovedTimes {
public:
    /// @param atUs when a recorder was switched on, microseconds since 1970 UTC
    void recordingBegins(unsigned long long atUs);
    /// A change that a recorder watches.
    /// @return what to tell of it; empty: nothing
    [[nodiscard]] std::string changed(const FeedLine& line);

private:
    std::optional<unsigned long long> m_start;  // when the recording began; nothing: before the feed
    std::uint64_t m_before = 0;                 // changes recorded since
    bool m_moved = false;                       // a map has told its start
};

}  // namespace RecStation
