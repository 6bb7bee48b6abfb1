// The search for header, blocks, times, records and bookmarks among damaged or shifted bytes.
#include "salvage.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <map>
#include <utility>

#include "../../format/encode.h"
#include "../../format/layout.h"
#include "../fieldreader.h"
#include "../tables.h"

namespace Recording2::Inspection {

namespace {

constexpr std::size_t TailFields = 6;  // five positions and the flag end the header

/// The header. A damaged number ends at its separator, a damaged time behind its nine bytes; behind a damaged text only
/// the end of the header is found again.
class HeaderSalvage {
public:
    HeaderSalvage(FileSource& source, Salvage& result)
        : m_fields(source, 0, source.size()), m_source(source), m_result(result), m_header(result.header)
    {
    }

    void read()
    {
        number("the major version", m_header.majorVersion);
        number("the minor version", m_header.minorVersion);
        field("the start frequency", [&] { return m_fields.real(m_header.startFrequencyHz); });
        field("the stop frequency", [&] { return m_fields.real(m_header.stopFrequencyHz); });
        field("the step width", [&] { return m_fields.real(m_header.stepWidthHz); });
        number("the minimum level", m_header.minLevel);
        number("the maximum level", m_header.maxLevel);
        time("the start time", m_header.startMs);
        time("the stop time", m_header.stopMs);
        text("the job id", m_header.jobId);
        text("the device name", m_header.deviceName);
        text("the device type", m_header.deviceType);
        std::array<std::int32_t, TailFields> tail{};
        findFilling();
        m_positionsKnown = !m_lost && readTail(tail);
        if (m_positionsKnown && !m_record.empty() &&
            m_fields.position() != static_cast<std::int64_t>(m_record.size())) {
            loseTexts();  // their lengths do not lead to the end of the record
            m_positionsKnown = false;
        }
        m_positionsKnown = m_positionsKnown || findTail(tail);
        if (!m_positionsKnown) {
            m_result.lostHeaderFields.emplace_back("the positions of the tables");
            tail = {};
        }
        take(tail);
    }
    /// How far everything behind the header area stands from where it should be, because bytes were inserted or lost.
    [[nodiscard]] std::int32_t shift() const { return m_shift; }
    [[nodiscard]] bool positionsKnown() const { return m_positionsKnown; }

private:
    template <typename Read>
    void field(const char* name, Read read)
    {
        const std::int64_t begin = m_fields.position();
        if (m_lost) {
            m_result.lostHeaderFields.emplace_back(name);
        } else if (!read()) {
            m_result.lostHeaderFields.emplace_back(name);
            skipNumber(begin);
        }
    }
    void number(const char* name, std::int32_t& target)
    {
        field(name, [&] { return m_fields.number(target); });
    }
    void time(const char* name, std::uint64_t& target)
    {
        const std::int64_t begin = m_fields.position();
        if (m_lost || !m_fields.time(target)) {
            m_result.lostHeaderFields.emplace_back(name);
            m_fields.seek(begin + static_cast<std::int64_t>(Format::TimeBytes));
        }
    }
    void text(const char* name, std::string& target)
    {
        if (m_lost || !m_fields.text(target) || m_fields.position() > Format::HeaderAreaBytes) {
            m_lost = true;
            target.clear();
            m_result.lostHeaderFields.emplace_back(name);
        }
    }
    void loseTexts()
    {
        for (std::string* text : {&m_header.jobId, &m_header.deviceName, &m_header.deviceType}) {
            text->clear();
        }
        m_result.lostHeaderFields.insert(m_result.lostHeaderFields.end(),
                                         {"the job id", "the device name", "the device type"});
    }
    void skipNumber(std::int64_t begin)
    {
        for (std::int64_t at = begin; at < begin + static_cast<std::int64_t>(Format::MaxNumberBytes); ++at) {
            if (m_fields.holdsOnly(at, at + 1, Format::Separator)) {
                m_fields.seek(at + 1);
                return;
            }
        }
        m_lost = true;
    }

    bool readTail(std::array<std::int32_t, TailFields>& tail)
    {
        return std::all_of(tail.begin(), tail.end(), [&](std::int32_t& value) { return m_fields.number(value); });
    }

    /// The zeros behind the header record and the separator that ends the area. Where the separator is tells by how
    /// much the file was shifted.
    void findFilling()
    {
        constexpr std::size_t Most = 100;  // bytes of shift
        std::string area(Format::HeaderAreaBytes + Most, '\0');
        area.resize(m_source.readAt(0, area.data(), area.size()));
        const std::size_t zeros = area.find("#00000000");
        constexpr std::size_t Expected = Format::HeaderAreaBytes - 1;
        const auto distance = [](std::size_t at) { return at > Expected ? at - Expected : Expected - at; };
        std::size_t end = 0;  // the separator behind zeros that is nearest to its place
        for (std::size_t at = area.find("000#"); at != std::string::npos; at = area.find("000#", at + 1)) {
            constexpr std::size_t Zeros = 3;
            end = distance(at + Zeros) < distance(end) ? at + Zeros : end;
        }
        if (zeros == std::string::npos || distance(end) >= Most) {
            return;
        }
        m_record = area.substr(0, zeros + 1);
        // With the separator in its place it is the filling that is damaged.
        const bool inPlace = area[Format::HeaderAreaBytes - 1] == Format::Separator;
        m_shift = inPlace ? 0 : static_cast<std::int32_t>(end) - (Format::HeaderAreaBytes - 1);
    }
    void take(const std::array<std::int32_t, TailFields>& tail)
    {
        const auto moved = [&](std::int32_t position) {
            const bool isOne = position > 0 && position <= Format::LastPosition - std::abs(m_shift);
            return isOne ? position + m_shift : position;
        };
        m_header.typeTablePosition = moved(tail[0]);
        m_header.firstRecordPosition = moved(tail[1]);
        m_header.timeTablePosition = moved(tail[2]);
        m_header.channelRangeTablePosition = moved(tail[3]);
        m_header.bookmarkTablePosition = moved(tail[4]);
        m_header.automatic = tail[5] >= 1;
    }

    /// The last fields in front of the filling. The text in front of them ends without a mark: of the digits there, the
    /// position that recorders write is taken.
    bool findTail(std::array<std::int32_t, TailFields>& tail)
    {
        const std::string& record = m_record;
        std::size_t begin = record.empty() ? std::string::npos : record.size() - 1;  // a separator
        for (std::size_t i = 1; i < TailFields && begin != std::string::npos; ++i) {
            begin = begin == 0 ? std::string::npos : record.find_last_of(Format::Separator, begin - 1);
        }
        if (begin == std::string::npos || begin == 0) {
            return false;
        }
        // Here begin is the separator behind the type table's position.
        const std::string recorders = std::to_string(Format::HeaderAreaBytes);
        const bool usual =
            begin >= recorders.size() && record.compare(begin - recorders.size(), recorders.size(), recorders) == 0;
        m_fields.seek(static_cast<std::int64_t>(begin - (usual ? recorders.size() : 1)));
        return readTail(tail);
    }

    FieldReader m_fields;
    FileSource& m_source;
    Salvage& m_result;
    Header& m_header;
    bool m_lost = false;  // where the next field begins
    bool m_positionsKnown = false;
    std::string m_record;  // with the last separator; empty when its end was not found
    std::int32_t m_shift = 0;
};

/// The record at a position: where it ends, 0 when there is none.
std::int64_t endOfRecord(FieldReader& fields, std::int64_t position)
{
    fields.seek(position);
    std::int32_t code = 0;
    std::int32_t length = 0;
    const bool sound = fields.number(code) && fields.number(length) && length > 0 && length <= fields.left();
    return sound ? fields.position() + length : 0;
}

/// Finds where the blocks are, by the header and by what stands there.
class BlockSearch {
public:
    /// @param shift by which the positions in the file's tables are wrong
    BlockSearch(FileSource& source, std::int32_t shift, Salvage& result)
        : m_source(source), m_header(result.header), m_result(result), m_shift(shift)
    {
    }

    void run()
    {
        const Header& said = m_header;
        m_result.cutOff = std::max({said.typeTablePosition, said.firstRecordPosition, said.timeTablePosition,
                                    said.channelRangeTablePosition, said.bookmarkTablePosition}) >= size();
        readTypes();
        findRecords();
        findTimes();
        Header& h = m_header;
        for (std::int32_t* position : {&h.channelRangeTablePosition, &h.bookmarkTablePosition}) {
            const bool possible = *position > std::max(h.timeTablePosition, Format::HeaderAreaBytes - 1);
            if (*position != 0 && (!possible || *position >= m_source.size())) {
                *position = Nowhere;
            }
        }
    }

    /// The same, with what was found behind the header.
    [[nodiscard]] std::int32_t shift() const { return m_shift; }

    static constexpr std::int32_t Nowhere = -1;  // there is such a table, but not where it should be

private:
    [[nodiscard]] bool isInFile(std::int64_t position) const
    {
        return position >= Format::HeaderAreaBytes && position < size();
    }
    [[nodiscard]] std::int64_t size() const { return m_source.size(); }

    bool readTypesAt(std::int64_t position)
    {
        Summary types;
        types.fileSize = size();
        types.header.typeTablePosition = static_cast<std::int32_t>(position);
        types.header.firstRecordPosition = m_header.firstRecordPosition;
        readTypeTable(m_source, types);
        m_typesEnd = types.ends.types;
        m_result.types = std::move(types.types);
        m_result.typesLost = !types.findings.empty() || m_typesEnd == 0;
        return m_typesEnd != 0;
    }

    void readTypes()
    {
        if (m_header.typeTablePosition == 0 && m_header.firstRecordPosition == Format::HeaderAreaBytes) {
            return;  // a recording without types
        }
        const bool said = isInFile(m_header.typeTablePosition) && readTypesAt(m_header.typeTablePosition);
        if (!said && !(m_header.typeTablePosition == 0 && m_result.lostHeaderFields.empty())) {
            std::vector<TypeEntry> some = std::move(m_result.types);
            if (!readTypesAt(Format::HeaderAreaBytes) && m_result.types.size() < some.size()) {
                m_result.types = std::move(some);
            }
        }
    }

    [[nodiscard]] bool isRecord(std::int64_t position)
    {
        FieldReader fields(m_source, position, size(), Format::MaxRecordHeadBytes);
        return isInFile(position) && endOfRecord(fields, position) != 0;
    }

    void findRecords()
    {
        const bool wereSome =
            m_header.firstRecordPosition != 0 || m_header.timeTablePosition != 0 || !m_result.lostHeaderFields.empty();
        if (!wereSome || isRecord(m_header.firstRecordPosition)) {
            return;
        }
        if (followShift()) {
            return;
        }
        for (const std::int64_t position : {m_typesEnd, firstOfTimes(m_header.timeTablePosition)}) {
            if (isRecord(position)) {
                m_header.firstRecordPosition = static_cast<std::int32_t>(position);
                return;
            }
        }
        if (!isInFile(m_header.firstRecordPosition)) {
            // Damage begins with the first record: the walk finds the next.
            m_header.firstRecordPosition =
                static_cast<std::int32_t>(m_typesEnd != 0 ? m_typesEnd : firstOfTimes(m_header.timeTablePosition));
        }
    }

    /// Whether everything from the records on stands a little before or behind its place, because bytes of the types
    /// were lost or inserted.
    bool followShift()
    {
        constexpr std::int32_t Most = 100;
        const std::int32_t first = m_header.firstRecordPosition;
        const std::int32_t times = m_header.timeTablePosition;
        if (!isInFile(first) || times <= first || times > Format::LastPosition - Most) {
            return false;
        }
        for (std::int32_t shift = -Most; shift <= Most; ++shift) {
            if (shift != 0 && firstOfTimes(times + shift) == first && isRecord(first + shift)) {
                m_header.firstRecordPosition = first + shift;
                m_header.timeTablePosition = times + shift;
                moveBy(shift);
                return true;
            }
        }
        return false;
    }

    /// The position that an entry of a time table names, 0 when there is no entry.
    [[nodiscard]] std::int64_t firstOfTimes(std::int64_t position)
    {
        if (!isInFile(position)) {
            return 0;
        }
        FieldReader fields(m_source, position, size(), Format::MaxTimeEntryBytes);
        std::uint64_t time = 0;
        std::int32_t record = 0;
        const bool sound = fields.time(time) && fields.number(record);
        return sound && record >= Format::HeaderAreaBytes && record < position ? record + m_shift : 0;
    }

    void findTimes()
    {
        const std::int64_t first = m_header.firstRecordPosition;
        if (!isInFile(first)) {
            m_header.timeTablePosition = 0;
            return;
        }
        const std::int64_t said = m_header.timeTablePosition;
        if (said > first && isInFile(said) && firstOfTimes(said) != 0) {
            return;
        }
        const std::int64_t end = chainEnd(first);
        if (end == said) {
            return;
        }
        constexpr std::int64_t MostShift = 4096;
        const std::int64_t named = firstOfTimes(end);
        std::int64_t found = end;
        if (named != 0 && std::abs(first - named) <= MostShift) {
            moveBy(static_cast<std::int32_t>(first - named));
        } else {
            found = search(first);
        }
        m_header.timeTablePosition = static_cast<std::int32_t>(found);
    }

    /// Bytes were inserted or lost between the header and the records.
    void moveBy(std::int32_t shift)
    {
        m_shift += shift;
        for (std::int32_t* position : {&m_header.channelRangeTablePosition, &m_header.bookmarkTablePosition}) {
            if (isInFile(*position)) {
                *position += shift;
            }
        }
    }

    std::int64_t chainEnd(std::int64_t first)
    {
        FieldReader fields(m_source, first, size());
        std::int64_t position = first;
        for (std::int64_t end = first; end != 0 && end < size(); end = endOfRecord(fields, position)) {
            position = end;
        }
        return position;
    }

    /// The first place at which an entry names the first record and the next entry another one.
    std::int64_t search(std::int64_t first)
    {
        constexpr std::size_t TimeValueBytes = 8;
        const std::string named = Format::Separator + std::to_string(first - m_shift) + Format::Separator;
        constexpr std::size_t WindowBytes = std::size_t{1} << 20U;
        std::string window(WindowBytes, '\0');
        for (std::int64_t at = first; at < size();
             at += static_cast<std::int64_t>(WindowBytes - Format::MaxTimeEntryBytes)) {
            const std::size_t got = m_source.readAt(at, window.data(), window.size());
            const std::string_view bytes(window.data(), got);
            for (std::size_t i = bytes.find(named); i != std::string_view::npos; i = bytes.find(named, i + 1)) {
                const std::int64_t entry = at + static_cast<std::int64_t>(i - std::min(i, TimeValueBytes));
                const std::int64_t next = at + static_cast<std::int64_t>(i + named.size());
                if (i >= TimeValueBytes && firstOfTimes(entry) == first &&
                    (firstOfTimes(next) > first || next == size())) {
                    return entry;
                }
            }
            if (got < window.size()) {
                break;
            }
        }
        return 0;
    }

    FileSource& m_source;
    Header& m_header;
    Salvage& m_result;
    std::int32_t m_shift;
    std::int64_t m_typesEnd = 0;
};

/// What the time table names, ascending by position.
class TimesSalvage {
public:
    TimesSalvage(FileSource& source, const Header& header, std::int32_t shift)
        : m_source(source), m_header(header), m_shift(shift)
    {
    }

    void read()
    {
        if (m_header.timeTablePosition == 0) {
            return;
        }
        std::int64_t end = m_source.size();
        for (const std::int32_t table : {m_header.channelRangeTablePosition, m_header.bookmarkTablePosition}) {
            end = table > m_header.timeTablePosition ? std::min<std::int64_t>(end, table) : end;
        }
        FieldReader fields(m_source, m_header.timeTablePosition, end);
        FieldReader records(m_source, m_header.firstRecordPosition, m_header.timeTablePosition,
                            Format::MaxRecordHeadBytes);
        std::int64_t at = m_header.timeTablePosition;
        while (at < end && !m_complete) {
            TimeEntry entry;
            if (readEntry(fields, at, entry)) {
                at = fields.position();
                m_end = at;
                // Where the table is sound the last entry is at its end; only there is looked whether it is the last.
                m_entries.push_back(entry);
                m_complete = at < end && nextIsNone(fields, at) &&
                             endOfRecord(records, entry.position) == m_header.timeTablePosition;
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
    /// Whether every byte of the table belongs to an entry.
    [[nodiscard]] bool isSound() const { return m_sound && !m_entries.empty(); }
    [[nodiscard]] const std::vector<TimeEntry>& entries() const { return m_entries; }
    [[nodiscard]] std::int64_t end() const { return m_end; }  ///< behind the last entry

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
        return entry.position >= m_header.firstRecordPosition && entry.position < m_header.timeTablePosition;
    }
    bool nextIsNone(FieldReader& fields, std::int64_t at)
    {
        TimeEntry next;
        return !readEntry(fields, at, next);
    }

    FileSource& m_source;
    const Header& m_header;
    std::int32_t m_shift;
    std::vector<TimeEntry> m_entries;
    std::int64_t m_end = 0;
    bool m_sound = true;
    bool m_complete = false;
};

/// The records that are whole, and the bytes that are not.
class RecordsSalvage {
public:
    RecordsSalvage(FileSource& source, const TimesSalvage& times, Salvage& result)
        : m_times(times.entries()),
          m_tableIsSound(times.isSound()),
          m_result(result),
          m_end(endOfRecords(source, result.header)),
          m_fields(source, result.header.firstRecordPosition, m_end)
    {
    }

    void walk(const std::function<void(std::int64_t, std::int64_t)>& progress)
    {
        constexpr std::int64_t ProgressStep = std::int64_t{1} << 20U;
        const std::int64_t begin = m_result.header.firstRecordPosition;
        std::int64_t nextProgress = begin + ProgressStep;
        std::int64_t position = begin;
        while (position < m_end) {
            const std::int64_t end = endOfRecord(m_fields, position);
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
    static std::int64_t endOfRecords(FileSource& source, const Header& header)
    {
        std::int64_t end = source.size();
        for (const std::int32_t table :
             {header.timeTablePosition, header.channelRangeTablePosition, header.bookmarkTablePosition}) {
            end = table > header.firstRecordPosition ? std::min<std::int64_t>(end, table) : end;
        }
        return end;
    }

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
        return !m_tableIsSound || next == m_end || endOfRecord(m_fields, end) != 0;
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

/// The tables behind the times.
class NotesSalvage {
public:
    NotesSalvage(FileSource& source, bool positionsKnown, std::int64_t timesEnd, Salvage& result)
        : m_source(source), m_positionsKnown(positionsKnown), m_timesEnd(timesEnd), m_result(result)
    {
    }

    void read()
    {
        const Header& h = m_result.header;
        if (m_positionsKnown) {
            readRanges(h.channelRangeTablePosition);
            readBookmarks(h.bookmarkTablePosition);
            return;
        }
        m_result.channelRangesLost = true;
        if (m_timesEnd != 0 && m_timesEnd < m_source.size()) {
            readRanges(static_cast<std::int32_t>(m_timesEnd));
            m_result.channelRangesLost = m_result.channelRangeTimes.empty();
            readBookmarks(static_cast<std::int32_t>(m_rangesEnd));
        }
    }

private:
    [[nodiscard]] bool isTimeOfRecord(std::uint64_t time)
    {
        const auto& records = m_result.records;
        if (m_recordTimes.empty()) {
            for (const SalvagedRecord& record : records) {
                if (record.timeMs) {
                    m_recordTimes.push_back(*record.timeMs);
                }
            }
        }
        return std::binary_search(m_recordTimes.begin(), m_recordTimes.end(), time);
    }

    void readRanges(std::int32_t position)
    {
        if (position == 0) {
            return;
        }
        if (position == BlockSearch::Nowhere) {
            m_result.channelRangesLost = true;
            return;
        }
        const std::int32_t bookmarks = m_result.header.bookmarkTablePosition;
        const std::int64_t end = bookmarks > position ? bookmarks : m_source.size();
        constexpr std::int64_t TimeValueBytes = 8;
        FieldReader fields(m_source, position, end);
        std::vector<std::uint64_t>& times = m_result.channelRangeTimes;
        m_rangesEnd = position;
        for (std::int64_t at = position; at < end;) {
            std::uint64_t time = 0;
            if (fields.holdsOnly(at, std::min(at + TimeValueBytes, end), '\0')) {
                break;
            }
            fields.seek(at);
            const bool sound = fields.time(time) && isTimeOfRecord(time) && (times.empty() || time > times.back());
            if (sound) {
                times.push_back(time);
                m_rangesEnd = fields.position();
            } else if (!m_positionsKnown) {
                break;  // what follows are bookmarks
            } else {
                m_result.channelRangesLost = true;
            }
            at = sound ? fields.position() : at + 1;
        }
    }

    void readBookmarks(std::int32_t position)
    {
        if (position == 0) {
            return;
        }
        if (position == BlockSearch::Nowhere) {
            m_result.bookmarksLost = true;
            return;
        }
        // A range table that was added later stands behind the bookmarks.
        const std::int32_t ranges = m_result.header.channelRangeTablePosition;
        const std::int64_t end = m_positionsKnown && ranges > position ? ranges : m_source.size();
        std::map<std::uint64_t, std::string> all;  // in order, whatever the order in the file
        std::int64_t at = position;
        while (at < end) {
            const std::int64_t stopped = readBookmarksFrom(at, end, all);
            if (stopped == end) {
                break;
            }
            m_result.bookmarksLost = true;
            at = findBookmarks(stopped + 1, end);
        }
        for (auto& [time, text] : all) {
            m_result.bookmarks.push_back({time, std::move(text)});
        }
    }

    /// @return where the first damaged one begins, or the end
    std::int64_t readBookmarksFrom(std::int64_t at, std::int64_t end, std::map<std::uint64_t, std::string>& all)
    {
        FieldReader fields(m_source, at, end);
        while (fields.left() > 0 && !fields.holdsOnly(fields.position(), end, '0')) {
            at = fields.position();
            Bookmark bookmark;
            std::int64_t length = 0;
            if (!fields.time(bookmark.timeMs) || !fields.number(length) || !fields.bytes(bookmark.text, length)) {
                return at;
            }
            const bool kept =
                length == 0 || (bookmark.timeMs != 0 && all.emplace(bookmark.timeMs, bookmark.text).second);
            if (!kept) {
                m_result.bookmarksLost = true;
                ++m_result.lostBookmarks;
            }
        }
        return end;
    }

    /// The first place behind damage from which on bookmarks can be read to the end.
    std::int64_t findBookmarks(std::int64_t from, std::int64_t end)
    {
        constexpr std::int64_t MostBytes = std::int64_t{64} * 1024;
        constexpr std::int64_t TimeValueBytes = 8;
        constexpr std::int64_t FewestBytes = 11;     // of a bookmark with a text
        constexpr std::int64_t WrongWays = 1 << 18;  // bookmarks, in all, behind places that prove wrong
        std::int64_t most = WrongWays + (end - from) / FewestBytes;
        FieldReader fields(m_source, from, end);
        for (std::int64_t at = from; at < std::min(end, from + MostBytes) && most > 0; ++at) {
            if (fields.holdsOnly(at + TimeValueBytes, at + TimeValueBytes + 1, Format::Separator) &&
                endsWell(at, end, most)) {
                return at;
            }
        }
        return end;
    }
    /// @param most the bookmarks that may still be looked at
    bool endsWell(std::int64_t at, std::int64_t end, std::int64_t& most)
    {
        constexpr std::size_t BufferBytes = 256;
        FieldReader fields(m_source, at, end, BufferBytes);
        std::uint64_t previous = 0;
        while (fields.left() > 0 && !fields.holdsOnly(fields.position(), end, '0')) {
            std::uint64_t time = 0;
            std::int64_t length = 0;
            if (most-- <= 0 || !fields.time(time) || !fields.number(length) || length <= 0 || length > fields.left() ||
                time <= previous) {
                return false;
            }
            previous = time;
            fields.seek(fields.position() + length);
        }
        return true;
    }

    FileSource& m_source;
    bool m_positionsKnown;
    std::int64_t m_timesEnd;
    Salvage& m_result;
    std::int64_t m_rangesEnd = 0;
    std::vector<std::uint64_t> m_recordTimes;
};

void salvageBlocks(FileSource& source, bool positionsKnown, std::int32_t shift, Salvage& result,
                   const std::function<void(std::int64_t, std::int64_t)>& progress)
{
    BlockSearch blocks(source, shift, result);
    blocks.run();
    TimesSalvage times(source, result.header, blocks.shift());
    times.read();
    if (result.header.firstRecordPosition >= Format::HeaderAreaBytes) {
        RecordsSalvage(source, times, result).walk(progress);
    }
    NotesSalvage(source, positionsKnown, times.end(), result).read();
}

}  // namespace

Salvage salvageUnclosed(const std::string& path, const std::function<void(std::int64_t, std::int64_t)>& progress)
{
    Salvage result = salvage(path, progress);
    if (result.readability != Readability::NeverClosed) {
        return result;
    }
    result = Salvage();
    FileSource source(path);
    if (source.good()) {
        result.lostHeaderFields.emplace_back("all");  // so that every block is looked for
        salvageBlocks(source, false, 0, result, progress);
        result.channelRangesLost = result.channelRangesLost && !result.records.empty();
    } else {
        result.readability = Readability::Unreadable;
        result.problem = "The file cannot be opened any more.";
    }
    return result;
}

Salvage salvage(const std::string& path, const std::function<void(std::int64_t, std::int64_t)>& progress)
{
    Salvage result;
    {
        const Summary summary = inspect(path);
        result.readability = summary.readability;
        result.problem = summary.problem;
    }
    if (result.readability != Readability::Ok) {
        return result;
    }
    FileSource source(path);
    if (!source.good()) {
        result.readability = Readability::Unreadable;
        result.problem = "The file cannot be opened any more.";
        return result;
    }
    HeaderSalvage header(source, result);
    header.read();
    salvageBlocks(source, header.positionsKnown(), header.shift(), result, progress);
    return result;
}

struct SalvageReader::Private {
    explicit Private(const std::string& path) : source(path), fields(source, 0, source.size()) {}

    FileSource source;
    FieldReader fields;
};

SalvageReader::SalvageReader(const std::string& path) : d(std::make_unique<Private>(path))
{
}

SalvageReader::~SalvageReader() = default;

bool SalvageReader::read(std::int64_t position, Record& record)
{
    if (!d->source.good()) {
        return false;
    }
    if (d->fields.position() != position) {
        d->fields.seek(position);
    }
    record.position = position;
    std::int32_t length = 0;
    return d->fields.number(record.code) && d->fields.number(length) && length > 0 &&
           d->fields.bytes(record.data, length);
}

}  // namespace Recording2::Inspection
