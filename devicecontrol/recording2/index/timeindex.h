// Where is time t? The pairs of a recording's time table, found by time and by position.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Recording2::Index {

/// One record: when, and at which byte it begins.
struct TimeEntry {
    std::uint64_t time = 0;  ///< milliseconds since the start of the recording
    std::int32_t position = 0;
};

/// Two views of the same pairs, by ascending time and by ascending position. Each keeps the first pair of a key.
///
/// Files that are sound add their pairs in ascending order of both, which costs an append and 12 bytes a pair; only
/// pairs out of order (damaged or stray ones) make the views separate, sorted once.
class TimeIndex {
public:
    void add(std::uint64_t time, std::int32_t position)
    {
        const bool inOrder =
            m_ordered && (empty() || (time > m_added.times.back() && position > m_added.positions.back()));
        if (!inOrder && !takesOutOfOrder(time, position)) {
            return;
        }
        m_added.times.push_back(time);
        m_added.positions.push_back(position);
    }
    /// Makes room for so many pairs: adding them moves none. @return the memory that they will take
    std::array<std::span<std::byte>, 2> reserve(std::size_t pairs);

    [[nodiscard]] bool empty() const { return m_added.times.empty(); }
    /// Pairs of the view by time.
    [[nodiscard]] std::size_t size() const { return byTimes().times.size(); }

    [[nodiscard]] bool contains(std::uint64_t time) const
    {
        const bool behindAll = m_ordered && (empty() || time > m_added.times.back());
        return !behindAll && find(time);
    }
    /// The pair at the time, else the first later one, else the last one; nothing only when empty.
    [[nodiscard]] std::optional<TimeEntry> atOrAfterOrLast(std::uint64_t time) const;
    /// The pair before the one at exactly that time.
    [[nodiscard]] std::optional<TimeEntry> before(std::uint64_t time) const;
    /// The pair with that rank by time; rank below size().
    [[nodiscard]] TimeEntry byTime(std::size_t rank) const { return byTimes().at(rank); }

    /// The time of exactly that position, 0 when there is none (and for a record whose time is 0).
    [[nodiscard]] std::uint64_t timeAt(std::int64_t position) const;
    /// The rank of exactly that position in the view by position.
    [[nodiscard]] std::optional<std::size_t> rankOf(std::int64_t position) const;
    [[nodiscard]] std::optional<TimeEntry> byPosition(std::size_t rank) const;  ///< nothing past the end

private:
    struct Pairs {
        std::vector<std::uint64_t> times;
        std::vector<std::int32_t> positions;

        [[nodiscard]] TimeEntry at(std::size_t rank) const { return {times[rank], positions[rank]}; }
    };
    bool takesOutOfOrder(std::uint64_t time, std::int32_t position);
    [[nodiscard]] bool find(std::uint64_t time) const;
    void separate() const;
    [[nodiscard]] const Pairs& byTimes() const { return m_ordered ? m_added : separated(m_byTime); }
    [[nodiscard]] const Pairs& byPositions() const { return m_ordered ? m_added : separated(m_byPosition); }
    [[nodiscard]] const Pairs& separated(const Pairs& view) const
    {
        separate();
        return view;
    }

    // While m_ordered, both views are the pairs as they were added; otherwise they are made from these when asked.
    Pairs m_added;
    bool m_ordered = true;
    mutable bool m_separated = false;
    mutable Pairs m_byTime;
    mutable Pairs m_byPosition;
    mutable std::size_t m_hint = 0;  // rank by position that was asked for last: records are mostly read in order
};

}  // namespace Recording2::Index
