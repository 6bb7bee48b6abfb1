// A place in a table that is ordered by time.
#pragma once

#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

namespace Recording2 {

/// A place in an ordered container, kept as the key of the entry that comes next.
class KeyCursor {
public:
    [[nodiscard]] bool atEnd() const { return !m_next; }
    template <typename Container>
    void toBegin(const Container& container)
    {
        set(container, container.begin());
    }
    /// The entry that comes next; the container's end when it was taken away meanwhile and none follows.
    template <typename Container>
    [[nodiscard]] auto in(const Container& container) const
    {
        return container.lower_bound(*m_next);
    }
    template <typename Container>
    void advance(const Container& container)
    {
        set(container, std::next(in(container)));
    }

private:
    static std::uint64_t key(std::uint64_t entry) { return entry; }
    static std::uint64_t key(const std::pair<const std::uint64_t, std::string>& entry) { return entry.first; }
    template <typename Container, typename Iterator>
    void set(const Container& container, Iterator entry)
    {
        m_next = entry == container.end() ? std::nullopt : std::optional<std::uint64_t>(key(*entry));
    }

    std::optional<std::uint64_t> m_next;
};

}  // namespace Recording2
