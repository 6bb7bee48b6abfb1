// Looking up times and positions, with a sort only for a table out of order.
#include "timeindex.h"

#include <algorithm>
#include <numeric>

namespace Recording2::Index {

namespace {

// Ranks of the keys in ascending order, of equal keys only the one that was added first.
template <typename Key>
std::vector<std::size_t> ascendingFirsts(const std::vector<Key>& keys)
{
    std::vector<std::size_t> order(keys.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
    const auto end =
        std::unique(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return keys[a] == keys[b]; });
    order.erase(end, order.end());
    return order;
}

template <typename T>
std::vector<T> pick(const std::vector<T>& values, const std::vector<std::size_t>& order)
{
    std::vector<T> picked;
    picked.reserve(order.size());
    for (const std::size_t i : order) {
        picked.push_back(values[i]);
    }
    return picked;
}

template <typename Key>
std::size_t rankAtOrAfter(const std::vector<Key>& keys, Key key)
{
    return static_cast<std::size_t>(std::lower_bound(keys.begin(), keys.end(), key) - keys.begin());
}

}  // namespace

// A table that is read again brings keys that are there: they change nothing and take no memory.
bool TimeIndex::takesOutOfOrder(std::uint64_t time, std::int32_t position)
{
    if ((m_ordered || m_separated) && contains(time) && rankOf(position)) {
        return false;
    }
    m_ordered = false;
    m_separated = false;
    return true;
}

std::array<std::span<std::byte>, 2> TimeIndex::reserve(std::size_t pairs)
{
    m_added.times.reserve(pairs);
    m_added.positions.reserve(pairs);
    const auto unused = [](auto& values) {
        const std::span all(values.data(), values.capacity());
        return std::as_writable_bytes(all.subspan(values.size()));
    };
    return {unused(m_added.times), unused(m_added.positions)};
}

void TimeIndex::separate() const
{
    if (m_separated) {
        return;
    }
    const auto inOrderOf = [this](const auto& keys) {
        const std::vector<std::size_t> order = ascendingFirsts(keys);
        return Pairs{pick(m_added.times, order), pick(m_added.positions, order)};
    };
    m_byTime = inOrderOf(m_added.times);
    m_byPosition = inOrderOf(m_added.positions);
    m_separated = true;
}

bool TimeIndex::find(std::uint64_t time) const
{
    const auto& times = byTimes().times;
    if (times.empty() || time >= times.back()) {
        return !times.empty() && time == times.back();
    }
    return times[rankAtOrAfter(times, time)] == time;
}

std::optional<TimeEntry> TimeIndex::atOrAfterOrLast(std::uint64_t time) const
{
    if (empty()) {
        return std::nullopt;
    }
    return byTime(std::min(rankAtOrAfter(byTimes().times, time), size() - 1));
}

std::optional<TimeEntry> TimeIndex::before(std::uint64_t time) const
{
    const auto& times = byTimes().times;
    const std::size_t rank = rankAtOrAfter(times, time);
    if (rank == 0 || rank == times.size() || times[rank] != time) {
        return std::nullopt;
    }
    return byTime(rank - 1);
}

std::optional<std::size_t> TimeIndex::rankOf(std::int64_t position) const
{
    const auto& positions = byPositions().positions;
    for (const std::size_t rank : {m_hint + 1, m_hint}) {
        if (rank < positions.size() && positions[rank] == position) {
            m_hint = rank;
            return rank;
        }
    }
    const auto found = std::lower_bound(positions.begin(), positions.end(), position);
    if (found == positions.end() || *found != position) {
        return std::nullopt;
    }
    m_hint = static_cast<std::size_t>(found - positions.begin());
    return m_hint;
}

std::uint64_t TimeIndex::timeAt(std::int64_t position) const
{
    const auto rank = rankOf(position);
    return rank ? byPositions().times[*rank] : 0;
}

std::optional<TimeEntry> TimeIndex::byPosition(std::size_t rank) const
{
    const Pairs& pairs = byPositions();
    return rank < pairs.positions.size() ? std::optional(pairs.at(rank)) : std::nullopt;
}

}  // namespace Recording2::Index
