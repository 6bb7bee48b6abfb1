// The checks of the records: both visit each of them in order, and report after the last.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "checks.h"

namespace Recording2::Inspection {

/// Records whose type has no name in the type table. How many types are told is bounded, however many a file has.
class UnnamedTypes {
public:
    explicit UnnamedTypes(const std::vector<TypeEntry>& types);
    void visit(const Record& record);
    void report(Remarks& remarks) const;

private:
    struct Found {
        std::int64_t first = 0;
        std::uint64_t records = 0;
    };
    std::set<std::int32_t> m_named;
    std::map<std::int32_t, Found> m_unnamed;
    Found m_others;
};

/// Whether the channel range table names records that carry a channel range. As in replay, the range may stand in any
/// of the records at the milliseconds that follow without a gap, and 11 ms is taken for 10 ms.
class RangeCheck {
public:
    explicit RangeCheck(const Summary& summary);
    void visit(const Record& record);
    void report(Remarks& remarks);

private:
    struct Some {
        std::size_t first = 0;  // the index of a range
        std::uint64_t count = 0;

        void add(std::size_t index) { first = count++ == 0 ? index : first; }
    };
    void closeOpen();
    [[nodiscard]] std::int64_t offset(const Some& some) const;

    std::int64_t m_position;
    std::vector<std::uint64_t> m_ranges;
    std::size_t m_next = 0;
    std::uint64_t m_previous = 0;
    bool m_initialState = false;
    bool m_initialStateCarries = false;
    Some m_open;  // named, and no range seen yet
    Some m_withoutRecord;
    Some m_withoutRange;
};

}  // namespace Recording2::Inspection
