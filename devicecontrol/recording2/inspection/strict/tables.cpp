// Where each table ends, and its entries read one by one until they are damaged.
#include "tables.h"

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <set>
#include <utility>

#include "../../format/layout.h"
#include "fieldreader.h"

namespace Recording2::Inspection {

namespace {

/// The first of the positions that lies after the block, or the end of the file.
std::int64_t endOf(std::int32_t block, std::initializer_list<std::int32_t> others, std::int64_t fileSize)
{
    if (block < Format::HeaderAreaBytes || block >= fileSize) {
        return 0;
    }
    std::int64_t end = fileSize;
    for (const std::int32_t other : others) {
        if (other > block) {
            end = std::min<std::int64_t>(end, other);
        }
    }
    return end;
}

std::string sentence(const char* field, const FieldReader& fields)
{
    return std::string(field) + " " + fields.problem() + ".";
}

/// Damage that may show up many times in one table: told once, with its count.
class Repeated {
public:
    void add(std::int64_t offset) { m_first = m_count++ == 0 ? offset : m_first; }
    void report(const char* one, const char* many, std::vector<Finding>& findings) const
    {
        if (m_count == 1) {
            findings.push_back({m_first, one});
        } else if (m_count > 1) {
            findings.push_back({m_first, std::to_string(m_count) + many});
        }
    }

private:
    std::int64_t m_first = 0;
    std::int64_t m_count = 0;
};

/// The time table as it is read: whether an entry carries on from the one before, and whether the last record is
/// reached, after which a file may hold anything.
class TimeTable {
public:
    TimeTable(Format::ByteSource& source, Summary& summary) : m_source(source), m_summary(summary) {}

    void read()
    {
        FieldReader fields(m_source, m_summary.header.positions.timeTable,
                           timeTableEnd(m_summary.header, m_summary.fileSize));
        bool sound = true;
        bool complete = false;
        while (sound && !complete && fields.left() > 0) {
            const std::int64_t offset = fields.position();
            TimeEntry entry;
            sound = fields.time(entry.timeMs) && fields.number(entry.position);
            if (sound && follows(entry)) {
                m_summary.times.push_back(entry);
                m_end = fields.position();
            } else {
                complete = isComplete();
                if (!complete && sound) {
                    m_strange.add(offset);
                } else if (!complete) {
                    addFinding(offset, sentence("An entry of the time table", fields));
                }
            }
        }
        report(sound, fields.position());
    }

private:
    [[nodiscard]] bool follows(const TimeEntry& entry) const
    {
        const Header& header = m_summary.header;
        if (entry.position < header.positions.firstRecord || entry.position >= header.positions.timeTable) {
            return false;
        }
        return m_summary.times.empty() ||
               (entry.timeMs > m_summary.times.back().timeMs && entry.position > m_summary.times.back().position);
    }

    /// Looked up once for each last entry: any number of strange ones may follow it.
    [[nodiscard]] bool isComplete()
    {
        if (m_lookedAt != m_summary.times.size()) {
            const std::int32_t end = m_summary.header.positions.timeTable;
            m_lookedAt = m_summary.times.size();
            FieldReader records(m_source, 0, end, Format::MaxRecordHeadBytes);
            m_complete = records.endOfRecord(m_summary.times.back().position) == end;
        }
        return m_complete;
    }

    void addFinding(std::int64_t offset, std::string text) { m_summary.findings.push_back({offset, std::move(text)}); }

    void report(bool sound, std::int64_t end)
    {
        m_strange.report("An entry of the time table is out of order or outside the records.",
                         " entries of the time table are out of order or outside the records.", m_summary.findings);
        if (isComplete()) {
            m_summary.ends.times = m_end;
        } else if (sound) {
            addFinding(end, "The time table ends before the last record.");
        }
        if (!m_summary.times.empty() && m_summary.times.front().position != m_summary.header.positions.firstRecord) {
            addFinding(m_summary.header.positions.timeTable, "The time table does not begin with the first record.");
        }
    }

    Format::ByteSource& m_source;
    Summary& m_summary;
    Repeated m_strange;
    std::int64_t m_end = 0;      // of the last entry that carries on
    std::size_t m_lookedAt = 0;  // the number of entries when it was looked whether the table is complete
    bool m_complete = false;
};

}  // namespace

std::int64_t recordsEnd(const Header& header, std::int64_t fileSize)
{
    const auto others = {header.positions.timeTable, header.positions.channelRangeTable,
                         header.positions.bookmarkTable};
    return endOf(header.positions.firstRecord, others, fileSize);
}

std::int64_t timeTableEnd(const Header& header, std::int64_t fileSize)
{
    return endOf(header.positions.timeTable, {header.positions.channelRangeTable, header.positions.bookmarkTable},
                 fileSize);
}

bool readTypeEntry(FieldReader& fields, TypeEntry& entry)
{
    return fields.number(entry.typeNumber) && fields.number(entry.valueType) && fields.text(entry.keyword) &&
           fields.text(entry.valuePath);
}

bool readBookmark(FieldReader& fields, Bookmark& bookmark)
{
    std::int64_t length = 0;
    return fields.time(bookmark.timeMs) && fields.number(length) && fields.bytes(bookmark.text, length);
}

void readTypeTable(Format::ByteSource& source, Summary& summary)
{
    const Format::Positions& positions = summary.header.positions;
    const std::int64_t end = endOf(positions.typeTable, {positions.firstRecord, positions.timeTable}, summary.fileSize);
    if (end == 0) {
        return;
    }
    FieldReader fields(source, positions.typeTable, end);
    std::int64_t offset = fields.position();
    std::int32_t count = 0;
    if (!fields.number(count) || count < 0) {
        summary.findings.push_back({offset, "The number of types is damaged."});
        return;
    }
    constexpr std::int32_t MostTold = 20;  // entries whose number is taken; those after are only counted
    std::set<std::int32_t> numbers;
    std::int32_t taken = 0;
    for (std::int32_t i = 0; i < count; ++i) {
        offset = fields.position();
        TypeEntry entry;
        if (!readTypeEntry(fields, entry)) {
            const std::string which = std::to_string(i + 1) + " of " + std::to_string(count);
            summary.findings.push_back({offset, sentence(("Type entry " + which).c_str(), fields)});
            return;
        }
        if (numbers.insert(entry.typeNumber).second) {
            summary.types.push_back(std::move(entry));
        } else if (taken++ < MostTold) {
            summary.findings.push_back(
                {offset, "The type number " + std::to_string(entry.typeNumber) + " stands twice in the type table."});
            summary.types.push_back(std::move(entry));
        }
    }
    if (taken > MostTold) {
        summary.findings.push_back({positions.typeTable, std::to_string(taken - MostTold) +
                                                             " more entries of the type table have a "
                                                             "number that is taken."});
    }
    summary.ends.types = fields.position();
}

void readTimeTable(Format::ByteSource& source, Summary& summary)
{
    if (timeTableEnd(summary.header, summary.fileSize) != 0) {
        TimeTable(source, summary).read();
    }
}

void readChannelRangeTable(Format::ByteSource& source, Summary& summary)
{
    const Format::Positions& positions = summary.header.positions;
    const std::int64_t end = endOf(positions.channelRangeTable, {positions.bookmarkTable}, summary.fileSize);
    if (end == 0) {
        return;
    }
    FieldReader fields(source, positions.channelRangeTable, end);
    Repeated disorder;
    bool sound = true;
    std::int64_t lastEnd = fields.position();
    while (fields.left() > 0) {
        const std::int64_t offset = fields.position();
        std::uint64_t time = 0;
        // A time that is 0 or negative as a signed number ends the table: clearing leaves zeros without separators.
        constexpr std::int64_t TimeValueBytes = 8;
        if (fields.holdsOnly(offset, std::min(offset + TimeValueBytes, end), '\0')) {
            break;
        }
        if (!fields.time(time)) {
            summary.findings.push_back({offset, sentence("An entry of the channel range table", fields)});
            sound = false;
            break;
        }
        if (time > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            break;
        }
        if (!summary.channelRangeTimes.empty() && time <= summary.channelRangeTimes.back()) {
            disorder.add(offset);
        }
        summary.channelRangeTimes.push_back(time);
        lastEnd = fields.position();
    }
    summary.ends.channelRanges = sound ? lastEnd : 0;
    disorder.report("A time in the channel range table is out of order.",
                    " times in the channel range table are out of order.", summary.findings);
}

void readBookmarkTable(Format::ByteSource& source, Summary& summary)
{
    const Format::Positions& positions = summary.header.positions;
    // Channel ranges that were added to a file with bookmarks stand after these.
    const std::int64_t end = endOf(positions.bookmarkTable, {positions.channelRangeTable}, summary.fileSize);
    if (end == 0) {
        return;
    }
    FieldReader fields(source, positions.bookmarkTable, end);
    Repeated disorder;
    bool sound = true;
    // A shorter table that took the place of a longer one is followed by the characters "0" to the end.
    while (fields.left() > 0 && !fields.holdsOnly(fields.position(), end, '0')) {
        const std::int64_t offset = fields.position();
        Bookmark bookmark;
        if (!readBookmark(fields, bookmark)) {
            summary.findings.push_back({offset, sentence("A bookmark", fields)});
            sound = false;
            break;
        }
        const std::uint64_t previous = summary.bookmarks.empty() ? 0 : summary.bookmarks.back().timeMs;
        if (bookmark.timeMs <= previous) {
            disorder.add(offset);
        }
        if (!bookmark.text.empty()) {  // a bookmark without text is written but never read
            summary.bookmarks.push_back(std::move(bookmark));
        }
    }
    summary.ends.bookmarks = sound ? end : 0;
    disorder.report("A bookmark has no time or is out of order.", " bookmarks have no time or are out of order.",
                    summary.findings);
}

}  // namespace Recording2::Inspection
