#include <algorithm>

#include "../format/layout.h"
#include "fieldreader.h"
#include "inspection.h"
#include "tables.h"

namespace Recording2::Inspection {

namespace {

/// The time table in order of positions, and how far the walk has come in it.
class NamedRecords {
public:
    explicit NamedRecords(const std::vector<TimeEntry>& times) : m_times(times) {}

    /// The entry of exactly this position, null without one. Positions are asked for in ascending order.
    const TimeEntry* at(std::int64_t position)
    {
        while (m_next < m_times.size() && m_times[m_next].position < position) {
            ++m_next;
            ++m_passed;
        }
        if (m_next == m_times.size() || m_times[m_next].position != position) {
            return nullptr;
        }
        return &m_times[m_next++];
    }
    /// The first position behind one that the table names; 0 when there is none.
    [[nodiscard]] std::int64_t behind(std::int64_t position) const
    {
        const auto entry =
            std::upper_bound(m_times.begin() + static_cast<std::ptrdiff_t>(m_next), m_times.end(), position,
                             [](std::int64_t p, const TimeEntry& e) { return p < e.position; });
        return entry == m_times.end() ? 0 : entry->position;
    }
    /// Entries at which no record began.
    [[nodiscard]] std::size_t missed() const { return m_passed + (m_times.size() - m_next); }

private:
    const std::vector<TimeEntry>& m_times;  // ascending by position: entries out of order are not in a summary
    std::size_t m_next = 0;
    std::size_t m_passed = 0;
};

class Walk {
public:
    Walk(FileSource& source, const Summary& summary)
        : m_fields(source, summary.header.firstRecordPosition, recordsEnd(summary)),
          m_named(summary.times),
          m_begin(summary.header.firstRecordPosition)
    {
    }

    std::vector<Finding> run(const std::function<bool(const Record&)>& visit,
                             const std::function<void(std::int64_t, std::int64_t)>& progress)
    {
        constexpr std::int64_t ProgressBytes = std::int64_t{1} << 20;
        std::int64_t nextProgress = m_begin + ProgressBytes;
        Record record;
        while (m_fields.left() > 0) {
            if (!readRecord(record)) {
                if (!resume(record.position)) {
                    break;
                }
                continue;
            }
            if (!visit(record)) {
                return std::move(m_findings);
            }
            if (progress && m_fields.position() >= nextProgress) {
                progress(m_fields.position() - m_begin, m_fields.bound() - m_begin);
                nextProgress = m_fields.position() + ProgressBytes;
            }
        }
        compareWithTimeTable();
        return std::move(m_findings);
    }

private:
    bool readRecord(Record& record)
    {
        record.position = m_fields.position();
        std::int32_t length = 0;
        if (!m_fields.number(record.code)) {
            return damaged(record.position, "The command code");
        }
        if (!m_fields.number(length)) {
            return damaged(record.position, "The data length");
        }
        if (length == 0) {
            m_findings.push_back({record.position, "A record has no data."});
            return false;
        }
        if (!m_fields.bytes(record.data, length)) {
            return damaged(record.position, "The data");
        }
        const TimeEntry* named = m_named.at(record.position);
        record.timeMs = named != nullptr ? named->timeMs : 0;
        if (named == nullptr && m_unnamed++ == 0) {
            m_firstUnnamed = record.position;
        }
        return true;
    }

    bool damaged(std::int64_t offset, const char* field)
    {
        m_findings.push_back({offset, std::string(field) + " of a record " + m_fields.problem() + "."});
        return false;
    }

    /// Goes on at the next record that the time table names. @return false when there is none
    bool resume(std::int64_t position)
    {
        const std::int64_t next = m_named.behind(position);
        if (next == 0) {
            return false;
        }
        m_fields.seek(next);
        return true;
    }

    void compareWithTimeTable()
    {
        if (m_unnamed > 0) {
            m_findings.push_back({m_firstUnnamed, std::to_string(m_unnamed) +
                                                      " of the records are not in the time table, "
                                                      "so their times are lost."});
        }
        if (m_named.missed() > 0) {
            m_findings.push_back(
                {m_begin, std::to_string(m_named.missed()) +
                              " entries of the time table name a position at which no record begins."});
        }
    }

    FieldReader m_fields;
    NamedRecords m_named;
    std::int64_t m_begin;
    std::vector<Finding> m_findings;
    std::int64_t m_unnamed = 0;
    std::int64_t m_firstUnnamed = 0;
};

}  // namespace

std::vector<Finding> walkRecords(const std::string& path, const Summary& summary,
                                 const std::function<bool(const Record&)>& visit,
                                 const std::function<void(std::int64_t, std::int64_t)>& progress)
{
    if (summary.readability != Readability::Ok || recordsEnd(summary) == 0) {
        return {};
    }
    FileSource source(path);
    if (!source.good()) {
        return {{0, "The file cannot be opened any more."}};
    }
    return Walk(source, summary).run(visit, progress);
}

}  // namespace Recording2::Inspection
