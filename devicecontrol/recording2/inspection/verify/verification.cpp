// The checks of header, gaps, types, channel ranges and time span, and their remarks.
#include "verification.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <utility>

#include "../../format/layout.h"
#include "../strict/fieldreader.h"
#include "../strict/tables.h"

namespace Recording2::Inspection {

namespace {

// The fields of the header by number, counted from 0.
constexpr std::size_t MinorVersionField = 1;
constexpr std::size_t StopFrequencyField = 3;
constexpr std::size_t StepWidthField = 4;
constexpr std::size_t MaxLevelField = 6;
constexpr std::size_t StartField = 7;
constexpr std::size_t StopField = 8;
constexpr std::size_t FieldCount = 18;

/// Remarks in the order in which they are made.
class Remarks {
public:
    explicit Remarks(std::vector<Remark>& all) : m_all(all) {}

    void damage(std::int64_t offset, std::string text) { m_all.push_back({offset, Severity::Damage, std::move(text)}); }
    void note(std::int64_t offset, std::string text) { m_all.push_back({offset, Severity::Note, std::move(text)}); }
    void damage(const std::vector<Finding>& findings)
    {
        for (const Finding& finding : findings) {
            damage(finding.offset, finding.text);
        }
    }

private:
    std::vector<Remark>& m_all;
};

std::string count(std::uint64_t number, const char* one, const char* many)
{
    return std::to_string(number) + ' ' + (number == 1 ? one : many);
}

/// Whether what the fields of the header say can be.
class HeaderCheck {
public:
    HeaderCheck(const Summary& summary, Remarks& remarks)
        : m_header(summary.header), m_fields(summary.headerFields), m_end(summary.ends.header), m_remarks(remarks)
    {
    }

    void values()
    {
        const Header& h = m_header;
        if (h.minorVersion < 0) {
            m_remarks.damage(offset(MinorVersionField), "The minor version is negative.");
        } else if (h.majorVersion != Format::OldestMajorVersion || h.minorVersion != 0) {
            m_remarks.note(0, "The version is " + std::to_string(h.majorVersion) + '.' +
                                  std::to_string(h.minorVersion) + "; recorders write 2.0.");
        }
        note(h.startFrequencyHz > h.stopFrequencyHz, StopFrequencyField,
             "The stop frequency lies below the start frequency.");
        note(h.stepWidthHz < 0, StepWidthField, "The step width is negative.");
        note(h.minLevel > h.maxLevel, MaxLevelField, "The maximum level lies below the minimum level.");
        clock();
    }

    /// Behind the header record the area is as it was reserved.
    void filling(FileSource& source)
    {
        std::array<char, Format::HeaderAreaBytes> area{};
        if (m_fields.size() < FieldCount || m_end > Format::HeaderAreaBytes ||
            source.readAt(0, area.data(), area.size()) != area.size()) {
            return;
        }
        const std::string reserved = Format::headerArea();
        const auto* const differs = std::mismatch(area.begin() + m_end, area.end(), reserved.begin() + m_end).first;
        if (differs != area.end()) {
            m_remarks.damage(differs - area.begin(),
                             "The header area is not filled with 0 and a final # behind the header record.");
        }
    }

private:
    [[nodiscard]] std::int64_t offset(std::size_t field) const { return field < m_fields.size() ? m_fields[field] : 0; }
    void note(bool isSo, std::size_t field, const char* text)
    {
        if (isSo && field < m_fields.size()) {
            m_remarks.note(offset(field), text);
        }
    }
    void clock()
    {
        // A time stamp counts microseconds.
        constexpr std::uint64_t Latest = std::numeric_limits<std::uint64_t>::max() / 1000;
        if (m_fields.size() <= StopField) {
            return;
        }
        note(m_header.startMs == 0, StartField, "The header does not tell when the recording started.");
        note(m_header.stopMs == 0, StopField, "The header does not tell when the recording stopped.");
        for (const auto& [time, field] : {std::pair(m_header.startMs, StartField), {m_header.stopMs, StopField}}) {
            if (time > Latest) {
                m_remarks.damage(offset(field), "The start or stop time is later than any clock.");
            }
        }
        if (m_header.stopMs != 0 && m_header.stopMs < m_header.startMs) {
            m_remarks.damage(offset(StopField), "The recording stopped before it started.");
        }
    }

    const Header& m_header;
    const std::vector<std::int64_t>& m_fields;  // offsets
    std::int32_t m_end;
    Remarks& m_remarks;
};

/// Whether the blocks stand one behind the other, and what stands where no block is.
class GapCheck {
public:
    GapCheck(FileSource& source, const Summary& summary, Remarks& remarks)
        : m_source(source), m_summary(summary), m_remarks(remarks)
    {
    }

    void run()
    {
        for (const Block& block : blocks()) {
            if (m_end != 0 && block.begin > m_end) {
                between(block);
            }
            m_end = block.end;
            m_last = block.kind;
        }
        if (m_end != 0 && m_end < m_summary.fileSize) {
            behindAll();
        }
        const Header& h = m_summary.header;
        if (h.positions.bookmarkTable != 0 && h.positions.bookmarkTable == h.positions.channelRangeTable) {
            m_remarks.damage(offsetInFile(h.positions.bookmarkTable),
                             "The channel range table and the bookmark table begin at the same place.");
        }
    }

private:
    enum class Kind : std::uint8_t { Header, Types, Records, Times, ChannelRanges, Bookmarks };
    struct Block {
        Kind kind = Kind::Header;
        std::int64_t begin = 0;
        std::int64_t end = 0;  // 0 when it is not known
    };

    /// The blocks that lie within the file, in their order.
    [[nodiscard]] std::vector<Block> blocks() const
    {
        const Header& h = m_summary.header;
        const TableEnds& ends = m_summary.ends;
        std::vector<Block> all = {{Kind::Types, h.positions.typeTable, ends.types},
                                  {Kind::Records, h.positions.firstRecord, recordsEnd(m_summary)},
                                  {Kind::Times, h.positions.timeTable, ends.times},
                                  {Kind::ChannelRanges, h.positions.channelRangeTable, ends.channelRanges},
                                  {Kind::Bookmarks, h.positions.bookmarkTable, ends.bookmarks}};
        const auto outside = [&](const Block& block) {
            return block.begin < Format::HeaderAreaBytes || block.begin >= m_summary.fileSize;
        };
        all.erase(std::remove_if(all.begin(), all.end(), outside), all.end());
        std::stable_sort(all.begin(), all.end(), [](const Block& a, const Block& b) { return a.begin < b.begin; });
        return all;
    }

    void between(const Block& next)
    {
        const bool inFrontOfRecords = m_last == Kind::Header || m_last == Kind::Types;
        if (isLeftByClearing(next.begin)) {
            return;
        }
        if (inFrontOfRecords && next.kind == Kind::Records && holdsTypeTables(next.begin)) {
            m_remarks.note(m_end, "A further type table stands in front of the records; readers do not find it.");
            return;
        }
        m_remarks.damage(m_end, count(static_cast<std::uint64_t>(next.begin - m_end), "byte belongs", "bytes belong") +
                                    " to no table: a position or a table is wrong.");
    }

    void behindAll()
    {
        if (isLeftByClearing(m_summary.fileSize)) {
            return;
        }
        const auto bytes = static_cast<std::uint64_t>(m_summary.fileSize - m_end);
        if (m_last == Kind::ChannelRanges) {
            m_remarks.damage(m_end, "The channel range table ends with a time that is 0 or negative, but " +
                                        count(bytes, "byte follows.", "bytes follow."));
        } else {
            m_remarks.note(m_end, count(bytes, "byte stands", "bytes stand") + " behind all tables.");
        }
    }

    /// Clearing the channel ranges leaves bytes of 0, and up to 7 of them behind the end of the file.
    [[nodiscard]] bool isLeftByClearing(std::int64_t end)
    {
        return m_last == Kind::ChannelRanges && FieldReader(m_source, m_end, end).holdsOnly(m_end, end, '\0');
    }

    [[nodiscard]] bool holdsTypeTables(std::int64_t end)
    {
        FieldReader fields(m_source, m_end, end);
        while (fields.left() > 0) {
            std::int32_t entries = 0;
            if (!fields.number(entries) || entries < 0) {
                return false;
            }
            TypeEntry entry;
            for (std::int32_t i = 0; i < entries; ++i) {
                if (!fields.number(entry.typeNumber) || !fields.number(entry.valueType) ||
                    !fields.text(entry.keyword) || !fields.text(entry.valuePath)) {
                    return false;
                }
            }
        }
        return true;
    }

    [[nodiscard]] std::int64_t offsetInFile(std::int64_t position) const
    {
        return std::clamp<std::int64_t>(position, 0, m_summary.fileSize);
    }

    FileSource& m_source;
    const Summary& m_summary;
    Remarks& m_remarks;
    Kind m_last = Kind::Header;
    std::int64_t m_end = Format::HeaderAreaBytes;
};

/// Records whose type has no name in the type table. How many types are told is bounded, however many a file has.
class UnnamedTypes {
public:
    explicit UnnamedTypes(const std::vector<TypeEntry>& types)
    {
        for (const TypeEntry& type : types) {
            m_named[type.typeNumber] = true;
        }
    }

    void visit(const Record& record)
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

    void report(Remarks& remarks) const
    {
        for (const auto& [code, found] : m_unnamed) {
            remarks.note(found.first, count(found.records, "record is", "records are") + " of type " +
                                          std::to_string(code) + ", which the type table does not name.");
        }
        if (m_others.records > 0) {
            remarks.note(m_others.first, count(m_others.records, "record is", "records are") +
                                             " of still other types that the type table does not name.");
        }
    }

private:
    struct Found {
        std::int64_t first = 0;
        std::uint64_t records = 0;
    };
    std::map<std::int32_t, bool> m_named;
    std::map<std::int32_t, Found> m_unnamed;
    Found m_others;
};

/// Whether the channel range table names records that carry a channel range. As in replay, the range may stand in any
/// of the records at the milliseconds that follow without a gap, and 11 ms is taken for 10 ms.
class RangeCheck {
public:
    explicit RangeCheck(const Summary& summary)
        : m_position(summary.header.positions.channelRangeTable), m_ranges(summary.channelRangeTimes)
    {
        std::sort(m_ranges.begin(), m_ranges.end());
    }

    void visit(const Record& record)
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

    void report(Remarks& remarks)
    {
        closeOpen();
        for (; m_next < m_ranges.size(); ++m_next) {
            m_withoutRecord.add(m_next);
        }
        if (m_withoutRecord.count > 0) {
            remarks.damage(offset(m_withoutRecord), count(m_withoutRecord.count, "time", "times") +
                                                        " in the channel range table at which there is no record.");
        }
        if (m_withoutRange.count > 0) {
            remarks.note(offset(m_withoutRange),
                         count(m_withoutRange.count, "time", "times") +
                             " in the channel range table at which no record carries a channel range.");
        }
    }

private:
    struct Some {
        std::size_t first = 0;  // the index of a range
        std::uint64_t count = 0;

        void add(std::size_t index) { first = count++ == 0 ? index : first; }
    };

    void closeOpen()
    {
        if (m_open.count > 0) {
            m_withoutRange.first = m_withoutRange.count == 0 ? m_open.first : m_withoutRange.first;
            m_withoutRange.count += m_open.count;
        }
        m_open = {};
    }
    [[nodiscard]] std::int64_t offset(const Some& some) const
    {
        return m_position + static_cast<std::int64_t>(some.first * Format::TimeBytes);
    }

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

void checkTypes(const Summary& summary, Remarks& remarks)
{
    const auto nameless = std::count_if(summary.types.begin(), summary.types.end(),
                                        [](const TypeEntry& type) { return type.keyword.empty(); });
    if (nameless > 0) {
        remarks.note(summary.header.positions.typeTable,
                     count(static_cast<std::uint64_t>(nameless), "type has", "types have") + " no keyword.");
    }
    if (summary.header.positions.typeTable == 0 && summary.header.positions.firstRecord != 0) {
        remarks.note(summary.header.positions.firstRecord, "There are records but no type table.");
    }
}

/// Nothing keeps records and bookmarks within the time from start to stop, but a recorder's lie there, apart from
/// records that were moved to a free millisecond.
void checkSpan(const Summary& summary, Remarks& remarks)
{
    constexpr std::uint64_t Moved = 1000;
    const Header& h = summary.header;
    const std::uint64_t last = summary.times.empty() ? 0 : summary.times.back().timeMs;
    const std::uint64_t length = h.stopMs - std::min(h.startMs, h.stopMs);
    if (h.stopMs != 0 && last > length && last - length > Moved) {
        remarks.note(h.positions.timeTable, "The last record is " + std::to_string(last - length) +
                                                " ms later than the end of the recording.");
    }
    const std::uint64_t end = std::max(last, length);
    const auto behind = std::count_if(summary.bookmarks.begin(), summary.bookmarks.end(),
                                      [&](const Bookmark& bookmark) { return bookmark.timeMs > end; });
    if (behind > 0) {
        remarks.note(h.positions.bookmarkTable,
                     count(static_cast<std::uint64_t>(behind), "bookmark is", "bookmarks are") +
                         " later than the end of the recording.");
    }
}

void checkTables(const std::string& path, const Summary& summary, Remarks& remarks)
{
    FileSource source(path);
    if (!source.good()) {
        remarks.damage(0, "The file cannot be opened any more.");
        return;
    }
    remarks.damage(summary.findings);
    HeaderCheck header(summary, remarks);
    header.values();
    header.filling(source);
    GapCheck(source, summary, remarks).run();
    checkTypes(summary, remarks);
    checkSpan(summary, remarks);
}

}  // namespace

std::size_t Verification::count(Severity severity) const
{
    return static_cast<std::size_t>(std::count_if(remarks.begin(), remarks.end(),
                                                  [&](const Remark& remark) { return remark.severity == severity; }));
}

Verification verify(const std::string& path, const std::function<void(std::int64_t, std::int64_t)>& progress)
{
    const Summary summary = inspect(path);
    Verification result;
    result.readability = summary.readability;
    result.problem = summary.problem;
    result.fileSize = summary.fileSize;
    if (summary.readability != Readability::Ok) {
        return result;
    }
    Remarks remarks(result.remarks);
    checkTables(path, summary, remarks);
    UnnamedTypes types(summary.types);
    RangeCheck ranges(summary);
    remarks.damage(walkRecords(
        path, summary,
        [&](const Record& record) {
            ++result.records;
            types.visit(record);
            ranges.visit(record);
            return true;
        },
        progress));
    types.report(remarks);
    ranges.report(remarks);
    std::stable_sort(result.remarks.begin(), result.remarks.end(),
                     [](const Remark& a, const Remark& b) { return a.offset < b.offset; });
    return result;
}

}  // namespace Recording2::Inspection
