// The time table of a damaged file: every entry that can be one.
#include "salvageparts.h"

#include <algorithm>

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

    SalvagedTimes read()
    {
        SalvagedTimes times;
        if (m_header.positions.timeTable == 0) {
            return times;
        }
        const std::int64_t end = timeTableEnd(m_header, m_source.size());
        FieldReader fields(m_source, m_header.positions.timeTable, end);
        FieldReader records(m_source, m_header.positions.firstRecord, m_header.positions.timeTable,
                            Format::MaxRecordHeadBytes);
        std::int64_t at = m_header.positions.timeTable;
        bool sound = true;
        bool complete = false;
        while (at < end && !complete) {
            TimeEntry entry;
            if (readEntry(fields, at, entry)) {
                at = fields.position();
                times.end = at;
                // Where the table is sound the last entry is at its end; only there is looked whether it is the last.
                times.entries.push_back(entry);
                complete = at < end && nextIsNone(fields, at) &&
                           records.endOfRecord(entry.position) == m_header.positions.timeTable;
                fields.seek(at);
            } else {
                sound = false;
                ++at;
            }
        }
        times.isSound = sound && times.end != 0;
        sortByPosition(times.entries);
        return times;
    }

private:
    static void sortByPosition(std::vector<TimeEntry>& entries)
    {
        std::stable_sort(entries.begin(), entries.end(),
                         [](const TimeEntry& a, const TimeEntry& b) { return a.position < b.position; });
        entries.erase(std::unique(entries.begin(), entries.end(),
                                  [](const TimeEntry& a, const TimeEntry& b) { return a.position == b.position; }),
                      entries.end());
    }
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
};

}  // namespace

SalvagedTimes salvageTimes(InputFile& source, const Header& header, std::int32_t shift)
{
    return TimesSalvage(source, header, shift).read();
}

}  // namespace Recording2::Inspection
