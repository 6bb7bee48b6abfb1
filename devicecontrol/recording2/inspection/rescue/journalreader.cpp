// Header, types, entries and tail of a left journal, each believed only with its checksum.
#include "journalreader.h"

#include <algorithm>
#include <array>
#include <limits>

#include "../../file/files.h"
#include "../filename.h"
#include "../strict/blocktext.h"

namespace Recording2::Inspection {

namespace {

using namespace Format::Journal;

class JournalReader {
public:
    explicit JournalReader(InputFile& file) : m_file(file), m_mapped(EntriesOffset, '\0')
    {
        m_read = m_file.readAt(0, m_mapped.data(), m_mapped.size());
        m_cut = m_read < m_mapped.size();
    }

    std::optional<JournalContent> read()
    {
        const auto identity = getIdentity(m_mapped.data());
        if (!identity) {
            return std::nullopt;
        }
        m_content.identity = *identity;
        m_entryBytes = entryBytes(*identity);
        m_content.types = getTypes(m_mapped.data(), *identity);
        if (const auto header = getHeader(m_mapped.data(), *identity)) {
            m_content.header = parseHeader(*header);
        }
        readTail();
        readEntries();
        return std::move(m_content);
    }

private:
    void readTail()
    {
        m_content.tailStart = getTailStart(m_mapped.data(), m_content.identity);
        if (m_content.tailStart) {
            // Of a journal that was cut only what is there: zeros after it would be taken for bytes of a record.
            m_content.tail =
                m_mapped.substr(TailOffset, std::min(TailBytes, std::max(m_read, TailOffset) - TailOffset));
        }
    }

    void readEntries()
    {
        const std::optional<std::uint64_t> handed = getHanded(m_mapped.data(), m_content.identity);
        readHandedOver(handed);
        const bool closedEnd = readLatest(m_content.entries.size());
        std::vector<Entry>& all = m_content.entries;
        while (!all.empty() && !all.back().sound) {
            all.pop_back();
            m_damaged = true;
        }
        if (!all.empty()) {
            m_content.stopMs = getStopTime(m_mapped.data(), m_content.identity, all.size() - 1);
        }
        // The stop time has the number of the last record: without it there may have been more.
        const bool isLast = all.empty() || m_content.stopMs;
        m_content.complete = handed.has_value() && closedEnd && isLast && !m_damaged && !m_cut;
    }

    /// Those after the mapping. Without their number they end at the first that is none.
    void readHandedOver(std::optional<std::uint64_t> count)
    {
        constexpr std::size_t AtOnce = 4096;
        const auto behind = std::max<std::int64_t>(0, m_file.size() - static_cast<std::int64_t>(EntriesOffset));
        const std::uint64_t there = static_cast<std::uint64_t>(behind) / m_entryBytes;
        m_cut = m_cut || (count && *count >= there);  // there is always room for more
        const std::uint64_t end = std::min(count.value_or(there), there);
        std::string piece;
        for (std::uint64_t number = 0; number < end; ++number) {
            const std::size_t within = number % AtOnce;
            if (within == 0) {
                piece.assign(AtOnce * m_entryBytes, '\0');
                m_file.readAt(static_cast<std::int64_t>(EntriesOffset + number * m_entryBytes), piece.data(),
                              piece.size());
            }
            const bool sound = take(piece.data() + within * m_entryBytes);
            if (!sound && !count) {
                m_content.entries.pop_back();
                break;
            }
        }
    }

    /// Those in the mapping, of which the first has a number. @return whether after the last there is nothing, as the
    /// recorder leaves it
    bool readLatest(std::uint64_t first)
    {
        const auto slot = [&](std::size_t i) { return m_mapped.data() + LatestOffset + i * m_entryBytes; };
        std::size_t count = LatestEntries;
        while (count > 0 && !belongs(getEntry(slot(count - 1), m_content.identity, first + count - 1))) {
            --count;  // nothing, or what was handed over before: that lies before the last record read
        }
        for (std::size_t i = 0; i < count; ++i) {
            take(slot(i));
        }
        return count == LatestEntries || isNone(slot(count), m_content.identity);
    }

    [[nodiscard]] bool belongs(const Entry& entry) const
    {
        return entry.sound && entry.position > m_lastPosition && (m_none || entry.timeMs > m_lastTime);
    }
    bool take(const char* bytes)
    {
        Entry entry = getEntry(bytes, m_content.identity, m_content.entries.size());
        const bool sound = belongs(entry);
        if (sound) {
            m_none = false;
            m_lastPosition = entry.position;
            m_lastTime = entry.timeMs;
        } else {
            entry = Entry();
            m_damaged = true;
        }
        m_content.entries.push_back(entry);
        return sound;
    }

    InputFile& m_file;
    std::string m_mapped;
    JournalContent m_content;
    std::size_t m_entryBytes = EntryBytes;
    std::int32_t m_lastPosition = Format::HeaderAreaBytes - 1;
    std::uint64_t m_lastTime = 0;
    bool m_none = true;
    bool m_damaged = false;
    std::size_t m_read = 0;
    bool m_cut = false;
};

}  // namespace

std::optional<JournalContent> readJournal(const std::string& path)
{
    InputFile file(native(path), InputFile::Size::AtOpening);
    if (!file.good()) {
        return std::nullopt;
    }
    return JournalReader(file).read();
}

std::optional<std::int64_t> lastPosition(const std::string& path)
{
    InputFile file(native(path), InputFile::Size::AtOpening);
    std::string page(PageBytes, '\0');
    if (!file.good() || file.readAt(0, page.data(), page.size()) < page.size()) {
        return std::nullopt;
    }
    const auto identity = getIdentity(page.data());
    const auto handed = identity ? getHanded(page.data(), *identity) : std::nullopt;
    std::string latest(handed ? LatestEntries * entryBytes(*identity) : 0, '\0');
    if (file.readAt(static_cast<std::int64_t>(LatestOffset), latest.data(), latest.size()) < latest.size()) {
        return std::nullopt;
    }
    std::optional<std::int64_t> last;
    for (std::size_t i = 0; handed && i < LatestEntries; ++i) {
        const Entry entry = getEntry(latest.data() + i * entryBytes(*identity), *identity, *handed + i);
        if (!entry.sound) {
            break;
        }
        last = entry.position;
    }
    return last;
}

UnclosedBytes::UnclosedBytes(Format::ByteSource& file, const JournalContent& journal)
    : m_file(file),
      m_journal(journal),
      m_tailStart(journal.tailStart.value_or(std::numeric_limits<std::int64_t>::max())),
      m_size(journal.tailStart ? m_tailStart + static_cast<std::int64_t>(journal.tail.size()) : file.size())
{
}

// What is missing between the end of the file and the tail is the end of whatever begins before it.
std::size_t UnclosedBytes::readAt(std::int64_t offset, char* out, std::size_t size)
{
    std::size_t read = 0;
    if (offset < m_tailStart) {
        const std::int64_t room = m_tailStart - offset;
        const std::size_t wanted = room < static_cast<std::int64_t>(size) ? static_cast<std::size_t>(room) : size;
        read = m_file.readAt(offset, out, wanted);
        if (read < wanted) {
            return read;
        }
    }
    if (read < size && offset + static_cast<std::int64_t>(read) >= m_tailStart) {
        const auto within = static_cast<std::size_t>(offset + static_cast<std::int64_t>(read) - m_tailStart);
        if (within < m_journal.tail.size()) {
            read += m_journal.tail.copy(out + read, size - read, within);
        }
    }
    return read;
}

}  // namespace Recording2::Inspection
