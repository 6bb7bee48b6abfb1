// Types without a name, and times of channel ranges without a range.
#include "recordchecks.h"

#include <algorithm>

#include "../../format/layout.h"

namespace Recording2::Inspection {

UnnamedTypes::UnnamedTypes(const std::vector<TypeEntry>& types)
{
    for (const TypeEntry& type : types) {
        m_named.insert(type.typeNumber);
    }
}

void UnnamedTypes::visit(const Record& record)
{
    constexpr std::size_t MostTypes = 20;
    if (m_named.count(record.code) > 0) {
        return;
    }
    const auto found = m_unnamed.find(record.code);
    if (found != m_unnamed.end()) {
        ++found->second.records;
    } else if (m_unnamed.size() < MostTypes) {
        m_unnamed[record.code] = {record.position, 1};
    } else {
        m_others.first = m_others.records == 0 ? record.position : m_others.first;
        ++m_others.records;
    }
}

void UnnamedTypes::report(Remarks& remarks) const
{
    for (const auto& [code, found] : m_unnamed) {
        remarks.note(found.first, numbered(found.records, "record is", "records are") + " of type " +
                                      std::to_string(code) + ", which the type table does not name.");
    }
    if (m_others.records > 0) {
        remarks.note(m_others.first, numbered(m_others.records, "record is", "records are") +
                                         " of still other types that the type table does not name.");
    }
}

RangeCheck::RangeCheck(const Summary& summary)
    : m_position(summary.header.positions.channelRangeTable), m_ranges(summary.channelRangeTimes)
{
    std::sort(m_ranges.begin(), m_ranges.end());
}

void RangeCheck::visit(const Record& record)
{
    constexpr std::uint64_t InitialState = 10;
    if (record.timeMs != m_previous + 1) {
        closeOpen();
    }
    m_previous = record.timeMs;
    const bool carries = record.data.find("34;") != std::string::npos;
    for (; m_next < m_ranges.size() && m_ranges[m_next] < record.timeMs; ++m_next) {
        if (m_ranges[m_next] != InitialState + 1 || !m_initialState) {
            m_withoutRecord.add(m_next);
        }
    }
    for (; m_next < m_ranges.size() && m_ranges[m_next] == record.timeMs; ++m_next) {
        if (record.timeMs != InitialState + 1 || !m_initialStateCarries) {
            m_open.add(m_next);
        }
    }
    if (record.timeMs == InitialState) {
        m_initialState = true;
        m_initialStateCarries = carries;
    }
    if (carries) {
        m_open = {};
    }
}

void RangeCheck::report(Remarks& remarks)
{
    closeOpen();
    for (; m_next < m_ranges.size(); ++m_next) {
        m_withoutRecord.add(m_next);
    }
    if (m_withoutRecord.count > 0) {
        remarks.damage(offset(m_withoutRecord), numbered(m_withoutRecord.count, "time", "times") +
                                                    " in the channel range table at which there is no record.");
    }
    if (m_withoutRange.count > 0) {
        remarks.note(offset(m_withoutRange),
                     numbered(m_withoutRange.count, "time", "times") +
                         " in the channel range table at which no record carries a channel range.");
    }
}

void RangeCheck::closeOpen()
{
    if (m_open.count > 0) {
        m_withoutRange.first = m_withoutRange.count == 0 ? m_open.first : m_withoutRange.first;
        m_withoutRange.count += m_open.count;
    }
    m_open = {};
}

std::int64_t RangeCheck::offset(const Some& some) const
{
    return m_position + static_cast<std::int64_t>(some.first * Format::TimeBytes);
}

}  // namespace Recording2::Inspection
