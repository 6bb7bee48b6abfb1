// Entries by number, records by their checksums; what does not fit is looked at again once the state was read anew.
#include "growingjournal.h"

#include <algorithm>

#include "../strict/blocktext.h"

namespace Recording2::Inspection {

using namespace Format::Journal;

bool GrowingJournal::refresh()
{
    m_page.resize(PageBytes);
    if (m_file.readAt(0, m_page.data(), PageBytes) < PageBytes) {
        return false;
    }
    const auto identity = getIdentity(m_page.data());
    if (!identity) {
        return false;
    }
    m_identity = *identity;
    m_handed = getHanded(m_page.data(), m_identity).value_or(m_handed);
    m_tailStart = getTailStart(m_page.data(), m_identity).value_or(m_tailStart);
    takeHeader();
    takeTypes();
    return true;
}

void GrowingJournal::takeHeader()
{
    const auto text = getHeader(m_page.data(), m_identity);
    if (text && *text != m_headerText) {
        m_header = parseHeader(*text).value_or(m_header);
        m_headerText = *text;
    }
    const auto stopMs = m_number == 0 ? std::nullopt : getStopTime(m_page.data(), m_identity, m_number - 1);
    m_header.stopMs = stopMs.value_or(m_header.stopMs);
}

void GrowingJournal::takeTypes()
{
    constexpr std::uint64_t MostBytes = std::uint64_t{1} << 20U;
    const auto types = m_types.empty() ? getTypes(m_page.data(), m_identity) : std::nullopt;
    if (!types || types->end < types->begin || types->end - types->begin > MostBytes) {
        return;
    }
    std::string block(static_cast<std::size_t>(types->end - types->begin), '\0');
    block.resize(readAt(static_cast<std::int64_t>(types->begin), block.data(), block.size()));
    if (areTypesOf(*types, m_identity, block)) {
        m_types = parseTypes(block).entries;
    }
}

bool GrowingJournal::next(Record& record, bool isLast)
{
    while (!m_page.empty()) {
        Entry entry;
        const Found found = find(m_number, entry);
        if (found == Found::Nothing) {
            m_window.beginSmall();
            return false;
        }
        if (found == Found::Entry && readRecord(entry, record)) {
            ++m_number;
            return true;
        }
        if (found == Found::Entry && !isLast && !isInFile(m_number)) {
            return false;
        }
        leaveOut();
    }
    return false;
}

void GrowingJournal::leaveOut()
{
    ++m_number;
    ++m_unreadable;
}

// The recorder may hand entries over between a look at the state and one at the slots. What is none in both looks of
// the same state is none.
GrowingJournal::Found GrowingJournal::find(std::uint64_t number, Entry& entry)
{
    constexpr int MostLooks = 4;
    for (int look = 0; look < MostLooks; ++look) {
        if (isBuffered(number)) {
            const std::size_t within = static_cast<std::size_t>(number - m_firstEntry) * entryBytes(m_identity);
            entry = getEntry(m_entries.data() + within, m_identity, number);
            if (entry.sound) {
                return Found::Entry;
            }
        }
        const std::uint64_t handed = m_handed;
        if (!refresh()) {
            break;
        }
        if (look > 0 && handed == m_handed) {
            return number < m_handed ? Found::Damage : Found::Nothing;
        }
        if (!loadEntries(number)) {
            break;
        }
    }
    return Found::Nothing;
}

bool GrowingJournal::isBuffered(std::uint64_t number) const
{
    return number >= m_firstEntry && number - m_firstEntry < m_entries.size() / entryBytes(m_identity);
}

bool GrowingJournal::loadEntries(std::uint64_t number)
{
    constexpr std::size_t FewEntries = 32;
    const std::size_t bytes = entryBytes(m_identity);
    const bool goesOn = !m_entries.empty() && number == m_firstEntry + m_entries.size() / bytes;
    m_atOnce = goesOn ? std::min(2 * m_atOnce, LatestEntries) : FewEntries;
    const bool isHanded = number < m_handed;
    const std::uint64_t end = isHanded ? m_handed : m_handed + LatestEntries;
    m_firstEntry = number;
    m_entries.clear();
    if (number >= end) {
        return false;  // the next one is written when these are handed over
    }
    const std::uint64_t offset = isHanded ? EntriesOffset + number * bytes : LatestOffset + (number - m_handed) * bytes;
    m_entries.resize(static_cast<std::size_t>(std::min<std::uint64_t>(m_atOnce, end - number)) * bytes);
    m_entries.resize(m_file.readAt(static_cast<std::int64_t>(offset), m_entries.data(), m_entries.size()));
    return isBuffered(number);
}

// Bytes of the tail are another place's once it was handed over.
bool GrowingJournal::readRecord(const Entry& entry, Record& record)
{
    constexpr int MostLooks = 4;
    for (int look = 0; look <= MostLooks; ++look) {
        const auto bytes = m_window.at(entry.position);
        if (bytes && isRecordOf(entry, m_identity, m_number, bytes->code, bytes->data)) {
            record.position = entry.position;
            record.timeMs = entry.timeMs;
            record.code = bytes->code;
            record.data = bytes->data;
            return true;
        }
        if (look == MostLooks || (look > 0 && !refresh())) {
            break;
        }
        m_window.load(*this, entry.position);
    }
    return false;
}

/// Whether all of a record was handed over: what it is now, it stays.
bool GrowingJournal::isInFile(std::uint64_t number)
{
    Entry behind;
    return find(number + 1, behind) == Found::Entry && behind.position <= m_tailStart;
}

std::size_t GrowingJournal::readAt(std::int64_t offset, char* out, std::size_t size)
{
    std::size_t read = 0;
    if (offset < m_tailStart) {
        const auto inFile = static_cast<std::size_t>(std::min<std::int64_t>(m_tailStart - offset, INT64_C(1) << 31));
        const std::size_t wanted = std::min(size, inFile);
        read = m_recording.readAt(offset, out, wanted);
        if (read < wanted) {
            return read;
        }
    }
    const auto within = static_cast<std::size_t>(offset + static_cast<std::int64_t>(read) - m_tailStart);
    if (read < size && within < TailBytes) {
        const std::size_t wanted = std::min(size - read, TailBytes - within);
        read += m_file.readAt(static_cast<std::int64_t>(TailOffset + within), out + read, wanted);
    }
    return read;
}

std::int64_t GrowingJournal::size()
{
    return m_tailStart + static_cast<std::int64_t>(TailBytes);
}

}  // namespace Recording2::Inspection
