// The journal beside a recording that is being written: what a crash would take away with this process's memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include <system/nativefile.h>
#include "../format/journal.h"

namespace Recording2 {

/// What a recording outlives. The numbers stand in the journal.
enum class JournalMode : std::uint8_t {
    Off = 0,      ///< nothing: there is no journal
    Process = 1,  ///< the end of this process, however it ends
    Power = 2,    ///< that of the computer too, but for the last second
};

/// Lives in memory that is the journal file's: keeping it costs no call of the system but one in 4096 records. It lends
/// the buffer of the recording's last bytes, so that they outlive the process as well. Whatever fails leaves the
/// journal as it was, and it can be tried again.
class Journal {
public:
    /// "NAME.tmp.journal"
    [[nodiscard]] static std::string pathFor(const std::string& recording) { return recording + ".journal"; }

    /// Makes a journal, and locks it until it is removed. An old one is never replaced.
    /// @return null and an error when it cannot be made
    static std::unique_ptr<Journal> create(const std::filesystem::path& path, JournalMode mode,
                                           System::FileMode fileMode, System::Error& error);
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;
    ~Journal() = default;  ///< leaves the file where it is

    /// The buffer for the bytes that are not yet handed to the system: Format::Journal::TailBytes.
    [[nodiscard]] char* tail() { return page() + Format::Journal::TailOffset; }
    /// Says which position of the recording the buffer's first byte has: those in front are the system's now.
    void tailStartsAt(std::int64_t position)
    {
        using namespace Format::Journal;
        store64(page() + TailStartOffset, seal(m_nonce, TailStartOffset, static_cast<std::uint64_t>(position)));
    }

    /// Sees to it that the next record can be accepted.
    System::Error makeRoom() { return m_latest < Format::Journal::LatestEntries ? 0 : handOver(); }
    /// Accepts a record whose bytes are all with the system or in the buffer. makeRoom comes first.
    ///
    /// The process may end between any two stores. The checksum, stored last, makes an entry one: until then the
    /// journal tells the state without the record. Slots are used again after each handing over. So the next one is
    /// emptied first, which ends the reading there, and the checksum covers how many records came before this one: what
    /// an earlier round left in the slot is no entry of this round.
    void accept(std::uint64_t timeMs, std::int32_t position, bool channelRange, std::int32_t code,
                std::string_view data)
    {
        using namespace Format::Journal;
        const std::uint64_t number = m_handed + m_latest;
        putStopTime(page(), m_nonce, number, m_stopMs);
        char* const slot = latest(m_latest);
        if (m_latest + 1 < LatestEntries) {
            store32(slot + EntryBytes + EntryChecksumOffset, 0);  // what stood there before is no entry any more
        }
        putEntry(slot, m_nonce, number,
                 {timeMs, position, channelRange, true, recordChecksum(m_nonce, number, code, data)});
        ++m_latest;
    }
    /// The stop time of the header once the next record is accepted.
    void setStopTime(std::uint64_t milliseconds) { m_stopMs = milliseconds; }
    void setTypes(std::int64_t begin, std::string_view block);
    void setHeader(std::string_view record);

    /// Makes the device keep the journal. What of the recording is not in the buffer must be there already.
    System::Error fsync();
    /// Gives back the space that is kept for the closing tables.
    System::Error giveBackReserve();
    /// Unless another file has its name meanwhile. The buffer is gone then.
    System::Error remove();

private:
    Journal() = default;
    System::Error make(JournalMode mode);
    System::Error handOver();
    System::Error allocateFor(std::uint64_t entries);
    [[nodiscard]] char* page() const { return m_mapping.data(); }
    [[nodiscard]] char* latest(std::size_t slot) const
    {
        return page() + Format::Journal::LatestOffset + slot * Format::Journal::EntryBytes;
    }

    std::filesystem::path m_path;
    System::NativeFile m_file;
    System::Mapping m_mapping;
    std::uint64_t m_nonce = 0;
    std::uint64_t m_handed = 0;  // entries written after the mapping
    std::size_t m_latest = 0;    // entries after them, in the mapping
    std::uint64_t m_capacity = 0;
    std::uint64_t m_stopMs = 0;
    std::uint64_t m_headers = 0;
};

}  // namespace Recording2
