// Making the journal's file, keeping room for entries and closing, handing entries over.
#include "journal.h"

#include <random>
#include <system_error>

#include <system/lockfile.h>
#include "../format/layout.h"

namespace Recording2 {

namespace {

using namespace Format::Journal;

std::uint64_t newNonce()
{
    std::random_device device;
    const std::uint64_t high = device();
    return high << 32U | device() | 1U;
}

std::int64_t entryPosition(std::uint64_t number)
{
    return static_cast<std::int64_t>(EntriesOffset + number * EntryBytes);
}

// What closing writes after the records: their last bytes, and of each record its time, perhaps twice.
std::int64_t reserveFor(std::uint64_t entries)
{
    constexpr std::int64_t RoundingAndNames = std::int64_t{64} * 1024;
    return static_cast<std::int64_t>(TailBytes) + RoundingAndNames +
           static_cast<std::int64_t>(entries) * (Format::WidestTimeEntryBytes + std::int64_t{Format::TimeBytes});
}

}  // namespace

std::unique_ptr<Journal> Journal::create(const std::filesystem::path& path, JournalMode mode, System::FileMode fileMode,
                                         System::Error& error)
{
    std::unique_ptr<Journal> journal(new Journal);
    journal->m_path = path;
    error = journal->m_file.open(journal->m_path, System::Access::New, fileMode);
    if (error != 0) {
        return nullptr;
    }
    error = System::lockPatiently(journal->m_file) == System::LockHeld ? System::LockHeld : journal->make(mode);
    if (error != 0) {
        journal->remove();
        return nullptr;
    }
    return journal;
}

System::Error Journal::make(JournalMode mode)
{
    System::Error error = allocateFor(2 * LatestEntries);
    if (error == 0) {
        // What is in memory before it is mapped costs a tenth: each page would be looked for on the device by itself.
        const std::string zeros(EntriesOffset, '\0');
        std::size_t written = 0;
        error = m_file.writeAt(0, zeros.data(), zeros.size(), written);
    }
    if (error == 0) {
        error = m_mapping.map(m_file, EntriesOffset);
    }
    if (error != 0) {
        return error;
    }
    m_nonce = newNonce();
    store64(page() + HandedOffset, seal(m_nonce, HandedOffset, 0));
    tailStartsAt(0);
    putIdentity(page(), {m_nonce, static_cast<std::uint32_t>(mode)});
    return 0;
}

// There is always room for all entries in the mapping after those that were handed over, with the reserve after it.
System::Error Journal::allocateFor(std::uint64_t entries)
{
    const std::int64_t from = m_file.size();
    const std::int64_t to = entryPosition(entries) + reserveFor(entries);
    const System::Error error = to > from ? m_file.allocate(from, to - from) : 0;
    m_capacity = error == 0 ? entries : m_capacity;
    return error;
}

System::Error Journal::handOver()
{
    constexpr std::uint64_t Step = 65536;
    System::Error error = 0;
    if (m_handed + m_latest + LatestEntries > m_capacity) {
        error = allocateFor(m_capacity + Step);
    }
    std::size_t written = 0;
    if (error == 0) {
        error = m_file.writeAt(entryPosition(m_handed), latest(0), m_latest * EntryBytes, written);
    }
    if (error != 0) {
        return error;
    }
    m_handed += m_latest;
    m_latest = 0;
    store32(latest(0) + EntryChecksumOffset, 0);
    store64(page() + HandedOffset, seal(m_nonce, HandedOffset, m_handed));
    return 0;
}

void Journal::setTypes(std::int64_t begin, std::string_view block)
{
    putTypes(page(), m_nonce, static_cast<std::uint64_t>(begin), block);
}

void Journal::setHeader(std::string_view record)
{
    putHeader(page(), m_nonce, ++m_headers, record);
}

// The entries in the mapping move too: it is used again at once, and the device may keep a later state of it only.
System::Error Journal::fsync()
{
    System::Error error = m_latest == 0 ? 0 : handOver();
    if (error == 0) {
        error = m_mapping.fsync();
    }
    return error == 0 ? m_file.fsync() : error;
}

System::Error Journal::giveBackReserve()
{
    return m_file.setSize(entryPosition(m_capacity));
}

System::Error Journal::remove()
{
    const bool named = m_file.isAt(m_path);
    m_mapping.unmap();
    m_file.close();
    if (named) {
        return System::removeFile(m_path);
    }
    std::error_code none;
    return std::filesystem::exists(std::filesystem::symlink_status(m_path, none)) ? System::NameTaken : 0;
}

}  // namespace Recording2
