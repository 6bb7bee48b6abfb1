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
    /// The entry that comes next; null at the end, and when it was taken away meanwhile and none follows.
    template <typename Container>
    [[nodiscard]] const typename Container::value_type* in(const Container& container) const
    {
        const auto entry = m_next ? container.lower_bound(*m_next) : container.end();
        return entry == container.end() ? nullptr : &*entry;
    }
    /// Where there is one.
    template <typename Container>
    void advance(const Container& container)
    {
        set(container, std::next(container.lower_bound(*m_next)));
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
