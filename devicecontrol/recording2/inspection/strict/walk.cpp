// From record to record, each beside its entry of the time table, on after damage.
#include <algorithm>

#include "../../file/files.h"
#include "../../format/layout.h"
#include "../filename.h"
#include "../inspection.h"
#include "../scan.h"
#include "fieldreader.h"
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
    /// The first position after one that the table names; 0 when there is none.
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

}  // namespace

struct RecordReader::Private {
    Private(const std::string& path, const Summary& summary)
        : source(native(path), InputFile::Size::AtOpening),
          fields(source, summary.header.positions.firstRecord, recordsEnd(summary.header, summary.fileSize)),
          named(summary.times),
          begin(summary.header.positions.firstRecord)
    {
    }

    bool next(Record& record)
    {
        while (fields.left() > 0) {
            if (readRecord(record)) {
                return true;
            }
            if (!resume(record.position)) {
                break;
            }
        }
        compareWithTimeTable();
        return false;
    }

    bool readRecord(Record& record)
    {
        record.position = fields.position();
        if (!fields.record(record.code, record.data)) {
            findings.push_back({record.position, fields.recordProblem()});
            return false;
        }
        const TimeEntry* entry = named.at(record.position);
        record.timeMs = entry != nullptr ? entry->timeMs : 0;
        if (entry == nullptr && unnamed++ == 0) {
            firstUnnamed = record.position;
        }
        return true;
    }

    /// Goes on at the next record that the time table names. @return false when there is none
    bool resume(std::int64_t position)
    {
        const std::int64_t next = named.behind(position);
        if (next == 0) {
            return false;
        }
        fields.seek(next);
        return true;
    }

    void compareWithTimeTable()
    {
        if (compared) {
            return;
        }
        compared = true;
        if (unnamed > 0) {
            findings.push_back({firstUnnamed, std::to_string(unnamed) + " of the records are not in the time table, "
                                                                        "so their times are lost."});
        }
        if (named.missed() > 0) {
            findings.push_back({begin, std::to_string(named.missed()) +
                                           " entries of the time table name a position at which no record begins."});
        }
    }

    InputFile source;
    FieldReader fields;
    NamedRecords named;
    std::int64_t begin;
    std::vector<Finding> findings;
    std::int64_t unnamed = 0;
    std::int64_t firstUnnamed = 0;
    bool compared = false;
};

RecordReader::RecordReader(const std::string& path, const Summary& summary)
{
    if (summary.readability != Readability::Ok || recordsEnd(summary.header, summary.fileSize) == 0) {
        return;
    }
    d = std::make_unique<Private>(path, summary);
    if (!d->source.good()) {
        d->findings.push_back({0, "The file cannot be opened any more."});
        d->fields.seek(d->fields.bound());
        d->compared = true;
    }
}

RecordReader::RecordReader(RecordReader&& other) noexcept = default;
RecordReader& RecordReader::operator=(RecordReader&& other) noexcept = default;
RecordReader::~RecordReader() = default;

bool RecordReader::next(Record& record)
{
    return d != nullptr && d->next(record);
}

std::int64_t RecordReader::bytesRead() const
{
    return d == nullptr ? 0 : d->fields.position() - d->begin;
}

std::int64_t RecordReader::bytesInAll() const
{
    return d == nullptr ? 0 : d->fields.bound() - d->begin;
}

const std::vector<Finding>& RecordReader::findings() const
{
    static const std::vector<Finding> none;
    // What is returned is never null; the analyzer loses the reader's parts on its way through a rescue.
    return d == nullptr ? none : d->findings;  // NOLINT(clang-analyzer-core.uninitialized.UndefReturn)
}

std::vector<Finding> walkRecords(const std::string& path, const Summary& summary,
                                 const std::function<bool(const Record&)>& visit, const Progress& progress)
{
    constexpr std::int64_t WalkedBytes = std::int64_t{1} << 20;
    std::int64_t nextProgress = WalkedBytes;
    RecordReader reader(path, summary);
    Record record;
    while (reader.next(record) && visit(record)) {
        if (progress && reader.bytesRead() >= nextProgress) {
            progress(reader.bytesRead(), reader.bytesInAll());
            nextProgress = reader.bytesRead() + WalkedBytes;
        }
    }
    return reader.findings();
}

RecordScan scanRecords(const std::string& path, const Summary& summary, const std::function<bool(std::int32_t)>& wanted,
                       const std::function<void(std::int32_t, const std::string&)>& visit)
{
    RecordScan scan;
    const std::int64_t end = recordsEnd(summary.header, summary.fileSize);
    InputFile source(native(path), InputFile::Size::AtOpening);
    Format::Cursor cursor(source);
    cursor.limitNumbers(Format::MaxNumberBytes);
    std::int64_t position = end == 0 ? 0 : summary.header.positions.firstRecord;
    std::string data;
    while (position < end) {
        Format::RecordHead head;
        cursor.seek(position);
        Format::readRecordHead(cursor, head);
        position = cursor.position() + head.dataLength;
        if (head.dataLength <= 0 || cursor.atEnd() || position > end) {
            break;
        }
        if (wanted(head.code)) {
            cursor.readBytes(data, head.dataLength);
            visit(head.code, data);
        }
        ++scan.records;
        scan.whole = position == end;
    }
    scan.whole = scan.whole || end == 0;
    return scan;
}

}  // namespace Recording2::Inspection
