// The records of a damaged file: one after the other, and after damage from the next that the time table names.
#include "salvageparts.h"

#include <algorithm>
#include <limits>

#include "../strict/tables.h"

namespace Recording2::Inspection {

namespace {

/// The records that are whole, and the bytes that are not.
class RecordsSalvage {
public:
    RecordsSalvage(InputFile& source, const SalvagedTimes& times, Salvage& result)
        : m_times(times.entries),
          m_tableIsSound(times.isSound),
          m_result(result),
          m_end(recordsEnd(result.header, source.size())),
          m_fields(source, result.header.positions.firstRecord, m_end)
    {
    }

    void walk(const Progress& progress)
    {
        constexpr std::int64_t ProgressStep = std::int64_t{1} << 20U;
        const std::int64_t begin = m_result.header.positions.firstRecord;
        std::int64_t nextProgress = begin + ProgressStep;
        std::int64_t position = begin;
        while (position < m_end) {
            const std::int64_t end = m_fields.endOfRecord(position);
            if (end != 0 && isWhole(position, end)) {
                keep(position);
                position = end;
            } else {
                const std::int64_t next = namedBehind(position);
                m_result.lostBytes.push_back({position, next - position});
                position = next;
            }
            if (progress && position >= nextProgress) {
                progress(position - begin, m_end - begin);
                nextProgress = position + ProgressStep;
            }
        }
        believeTimes();
    }

private:
    [[nodiscard]] std::vector<TimeEntry>::const_iterator entryFrom(std::int64_t position) const
    {
        return std::lower_bound(m_times.begin(), m_times.end(), position,
                                [](const TimeEntry& entry, std::int64_t p) { return entry.position < p; });
    }
    [[nodiscard]] bool isNamed(std::int64_t position) const
    {
        const auto entry = entryFrom(position);
        return entry != m_times.end() && entry->position == position;
    }
    [[nodiscard]] std::int64_t namedBehind(std::int64_t position) const
    {
        const auto entry = entryFrom(position + 1);
        return entry == m_times.end() ? m_end : std::min<std::int64_t>(entry->position, m_end);
    }

    /// A record ends where the next begins. Where the time table does not say so, the record is believed unless it
    /// covers another one that the table names, or a sound table names no record where it ends and none is there.
    [[nodiscard]] bool isWhole(std::int64_t position, std::int64_t end)
    {
        if (end == m_end || isNamed(end)) {
            return true;
        }
        const std::int64_t next = namedBehind(position);
        if (next < end) {
            return false;
        }
        return !m_tableIsSound || next == m_end || m_fields.endOfRecord(end) != 0;
    }

    void keep(std::int64_t position)
    {
        SalvagedRecord record;
        record.position = position;
        const auto entry = entryFrom(position);
        constexpr auto Latest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        if (entry != m_times.end() && entry->position == position && entry->timeMs <= Latest) {
            record.timeMs = entry->timeMs;
        }
        m_result.records.push_back(record);
    }

    /// Keeps the largest set of times that ascend; the others are damaged.
    void believeTimes()
    {
        constexpr std::size_t None = std::numeric_limits<std::size_t>::max();
        std::vector<SalvagedRecord>& records = m_result.records;
        std::vector<std::size_t> lasts;  // by length of a set, less one: its record with the earliest last time
        std::vector<std::size_t> before(records.size(), None);
        for (std::size_t i = 0; i < records.size(); ++i) {
            if (!records[i].timeMs) {
                continue;
            }
            const auto place =
                std::lower_bound(lasts.begin(), lasts.end(), *records[i].timeMs,
                                 [&](std::size_t r, std::uint64_t time) { return *records[r].timeMs < time; });
            before[i] = place == lasts.begin() ? None : *(place - 1);
            if (place == lasts.end()) {
                lasts.push_back(i);
            } else {
                *place = i;
            }
        }
        std::vector<bool> believed(records.size());
        for (std::size_t i = lasts.empty() ? None : lasts.back(); i != None; i = before[i]) {
            believed[i] = true;
        }
        for (std::size_t i = 0; i < records.size(); ++i) {
            if (!believed[i]) {
                records[i].timeMs.reset();
            }
        }
    }

    const std::vector<TimeEntry>& m_times;
    bool m_tableIsSound;
    Salvage& m_result;
    std::int64_t m_end;
    FieldReader m_fields;
};

}  // namespace

void salvageRecords(InputFile& source, const SalvagedTimes& times, Salvage& result, const Progress& progress)
{
    RecordsSalvage(source, times, result).walk(progress);
}

}  // namespace Recording2::Inspection
