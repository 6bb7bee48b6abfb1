// The time table of a damaged file: every entry that can be one.
#include "salvageparts.h"

#include <algorithm>
#include <utility>

#include "../../format/layout.h"
#include "../strict/tables.h"

namespace Recording2::Inspection {

namespace {

/// What the time table names, ascending by position.
class TimesSalvage {
public:
    TimesSalvage(InputFile& source, const Header& header, std::int32_t shift)
        : m_source(source), m_header(header), m_shift(shift)
    {
    }

    void read()
    {
        if (m_header.positions.timeTable == 0) {
            return;
        }
        const std::int64_t end = timeTableEnd(m_header, m_source.size());
        FieldReader fields(m_source, m_header.positions.timeTable, end);
        FieldReader records(m_source, m_header.positions.firstRecord, m_header.positions.timeTable,
                            Format::MaxRecordHeadBytes);
        std::int64_t at = m_header.positions.timeTable;
        while (at < end && !m_complete) {
            TimeEntry entry;
            if (readEntry(fields, at, entry)) {
                at = fields.position();
                m_end = at;
                // Where the table is sound the last entry is at its end; only there is looked whether it is the last.
                m_entries.push_back(entry);
                m_complete = at < end && nextIsNone(fields, at) &&
                             records.endOfRecord(entry.position) == m_header.positions.timeTable;
                fields.seek(at);
            } else {
                m_sound = false;
                ++at;
            }
        }
        std::stable_sort(m_entries.begin(), m_entries.end(),
                         [](const TimeEntry& a, const TimeEntry& b) { return a.position < b.position; });
        m_entries.erase(std::unique(m_entries.begin(), m_entries.end(),
                                    [](const TimeEntry& a, const TimeEntry& b) { return a.position == b.position; }),
                        m_entries.end());
    }
    SalvagedTimes take() { return {std::move(m_entries), m_sound && m_end != 0, m_end}; }

private:
    bool readEntry(FieldReader& fields, std::int64_t at, TimeEntry& entry)
    {
        constexpr std::int64_t TimeValueBytes = 8;
        if (!fields.holdsOnly(at + TimeValueBytes, at + TimeValueBytes + 1, Format::Separator)) {
            return false;
        }
        fields.seek(at);
        if (!fields.time(entry.timeMs) || !fields.number(entry.position)) {
            return false;
        }
        entry.position = static_cast<std::int32_t>(
            std::clamp<std::int64_t>(std::int64_t{entry.position} + m_shift, 0, Format::LastPosition));
        return entry.position >= m_header.positions.firstRecord && entry.position < m_header.positions.timeTable;
    }
    bool nextIsNone(FieldReader& fields, std::int64_t at)
    {
        TimeEntry next;
        return !readEntry(fields, at, next);
    }

    InputFile& m_source;
    const Header& m_header;
    std::int32_t m_shift;
    std::vector<TimeEntry> m_entries;
    std::int64_t m_end = 0;
    bool m_sound = true;
    bool m_complete = false;
};

}  // namespace

SalvagedTimes salvageTimes(InputFile& source, const Header& header, std::int32_t shift)
{
    TimesSalvage times(source, header, shift);
    times.read();
    return times.take();
}

}  // namespace Recording2::Inspection
