// Channel ranges and bookmarks of a damaged file.
#include "salvageparts.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "../../format/encode.h"
#include "../strict/tables.h"

namespace Recording2::Inspection {

namespace {

/// The tables after the times.
class NotesSalvage {
public:
    NotesSalvage(InputFile& source, bool positionsKnown, std::int64_t timesEnd, Salvage& result)
        : m_source(source), m_positionsKnown(positionsKnown), m_timesEnd(timesEnd), m_result(result)
    {
    }

    void read()
    {
        const Header& h = m_result.header;
        if (m_positionsKnown) {
            readRanges(h.positions.channelRangeTable);
            readBookmarks(h.positions.bookmarkTable);
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
        if (position == NowhereInFile) {
            m_result.channelRangesLost = true;
            return;
        }
        const std::int32_t bookmarks = m_result.header.positions.bookmarkTable;
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
        if (position == NowhereInFile) {
            m_result.bookmarksLost = true;
            return;
        }
        // A range table that was added later stands after the bookmarks.
        const std::int32_t ranges = m_result.header.positions.channelRangeTable;
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
            if (!readBookmark(fields, bookmark)) {
                return at;
            }
            const bool kept =
                bookmark.text.empty() || (bookmark.timeMs != 0 && all.emplace(bookmark.timeMs, bookmark.text).second);
            if (!kept) {
                m_result.bookmarksLost = true;
                ++m_result.lostBookmarks;
            }
        }
        return end;
    }

    /// The first place after damage from which on bookmarks can be read to the end.
    std::int64_t findBookmarks(std::int64_t from, std::int64_t end)
    {
        constexpr std::int64_t MostBytes = std::int64_t{64} * 1024;
        constexpr std::int64_t TimeValueBytes = 8;
        constexpr std::int64_t FewestBytes = 11;     // of a bookmark with a text
        constexpr std::int64_t WrongWays = 1 << 18;  // bookmarks, in all, after places that prove wrong
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

    InputFile& m_source;
    bool m_positionsKnown;
    std::int64_t m_timesEnd;
    Salvage& m_result;
    std::int64_t m_rangesEnd = 0;
    std::vector<std::uint64_t> m_recordTimes;
};

}  // namespace

void salvageNotes(InputFile& source, bool positionsKnown, std::int64_t timesEnd, Salvage& result)
{
    NotesSalvage(source, positionsKnown, timesEnd, result).read();
}

}  // namespace Recording2::Inspection
