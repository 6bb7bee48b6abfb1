// The journal of a recording that is being written: the bytes of FILE.tmp.journal (doc/format.md).
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "checksum.h"
#include "littleendian.h"

namespace Recording2::Format::Journal {

constexpr std::string_view Magic = "REC2JRNL";
constexpr std::uint32_t Version = 2;
constexpr std::uint32_t SampledVersion = 1;  // its checksums cover a part of long records only; it is still read

// One page of state, the tail of the recording, the latest record entries, and from there on all the others.
constexpr std::size_t PageBytes = 4096;
constexpr std::size_t TailBytes = std::size_t{260} * 1024;
constexpr std::size_t EntryBytes = 24;
constexpr std::size_t LatestEntries = 4096;
constexpr std::size_t TailOffset = PageBytes;
constexpr std::size_t LatestOffset = TailOffset + TailBytes;
// A multiple of what is handed over at a time: file systems with large pages take that much faster.
constexpr std::size_t EntriesOffset = std::size_t{384} * 1024;
static_assert(EntriesOffset >= LatestOffset + LatestEntries * EntryBytes &&
              EntriesOffset % (LatestEntries * EntryBytes) == 0);

// Inside the state page.
constexpr std::size_t TailStartOffset = 64;  // sealed number: position of the tail's first byte in the recording
constexpr std::size_t HandedOffset = 72;     // sealed number: entries that stand from EntriesOffset on
constexpr std::size_t StopTimeOffset = 128;  // one for odd and one for even record numbers: milliseconds, checksum
constexpr std::size_t StopTimeBytes = 16;
constexpr std::size_t TypesOffset = 192;     // begin, end, checksum of the bytes between, checksum of these three
constexpr std::size_t HeadersOffset = 1024;  // two, written in turn: checksum, number of the writing, length, bytes
constexpr std::size_t HeaderSlotBytes = 1024;
constexpr std::size_t HeaderSlotHeadBytes = 24;

/// One store that no earlier one is put behind and of which no part can be missing. @param to a multiple of the size
template <typename Unsigned>
void store(char* to, Unsigned value)
{
    std::atomic_ref<Unsigned>(*reinterpret_cast<Unsigned*>(to)).store(littleEndian(value), std::memory_order_release);
}
inline void store64(char* to, std::uint64_t value)
{
    store(to, value);
}
inline void store32(char* to, std::uint32_t value)
{
    store(to, value);
}

/// What never changes after the journal was made. Every checksum begins with the nonce, which is another one in every
/// journal: what an earlier file left on the device is foreign.
struct Identity {
    std::uint64_t nonce = 0;
    std::uint32_t mode = 0;  ///< as the recorder was configured, for people
    std::uint32_t version = Version;
};
void putIdentity(char* page, const Identity& identity);
/// @return nothing also for a version that is not known
[[nodiscard]] std::optional<Identity> getIdentity(const char* page);

/// One accepted record: when, where, and whether it is in the channel range table.
struct Entry {
    std::uint64_t timeMs = 0;  ///< since the start of the recording
    std::int32_t position = 0;
    bool channelRange = false;
    bool sound = false;                ///< as it was written, whatever became of the record
    std::uint64_t recordChecksum = 0;  ///< of the record's code and data
};

// Inside an entry: time, checksum of the record, place, checksum of the entry.
constexpr std::size_t EntryRecordOffset = 8;
constexpr std::size_t EntryPlaceOffset = 16;
constexpr std::size_t EntryChecksumOffset = 20;

/// The position, with the highest bit set where the record is in the channel range table.
[[nodiscard]] inline std::uint32_t placeOf(std::int32_t position, bool channelRange)
{
    constexpr std::uint32_t ChannelRangeBit = 0x80000000U;
    return static_cast<std::uint32_t>(position) | (channelRange ? ChannelRangeBit : 0U);
}
// Flattened: of the checksum of a few bytes, calls would be the greater part.
[[nodiscard]] [[gnu::flatten]] inline std::uint64_t recordChecksum(std::uint64_t nonce, std::uint64_t number,
                                                                   std::int32_t code, std::string_view data)
{
    return checksum((nonce + number) ^ std::uint64_t{static_cast<std::uint32_t>(code)} << 32U, data);
}
/// Never 0: there is no entry where that stands.
[[nodiscard]] [[gnu::flatten]] inline std::uint32_t entryChecksum(std::uint64_t nonce, std::uint64_t number,
                                                                  std::uint64_t timeMs, std::uint32_t place,
                                                                  std::uint64_t recordChecksum)
{
    char words[2 * sizeof(std::uint64_t)];
    putInt64(putInt64(words, timeMs), place);
    const auto sum = static_cast<std::uint32_t>(checksum((nonce + number) ^ recordChecksum, {words, sizeof words}));
    return sum == 0 ? 1 : sum;
}
/// The checksum is stored last, at once: it is what makes these bytes an entry.
inline void putEntry(char* out, std::uint64_t nonce, std::uint64_t number, const Entry& entry)
{
    const std::uint32_t place = placeOf(entry.position, entry.channelRange);
    putInt64(putInt64(out, entry.timeMs), entry.recordChecksum);
    putInt32(out + EntryPlaceOffset, place);
    store32(out + EntryChecksumOffset, entryChecksum(nonce, number, entry.timeMs, place, entry.recordChecksum));
}

/// How many bytes an entry has in a journal.
[[nodiscard]] std::size_t entryBytes(const Identity& identity);
[[nodiscard]] Entry getEntry(const char* from, const Identity& identity, std::uint64_t number);
/// Whether nothing stands there, as the recorder leaves it behind the last entry.
[[nodiscard]] bool isNone(const char* from, const Identity& identity);
/// Whether a record is the one that the sound entry with that number was made for.
[[nodiscard]] bool isRecordOf(const Entry& entry, const Identity& identity, std::uint64_t number, std::int32_t code,
                              std::string_view data);

/// A number below 2^40 that is changed by a single store together with its checksum.
[[nodiscard]] std::uint64_t seal(std::uint64_t nonce, std::size_t offset, std::uint64_t number);
[[nodiscard]] std::optional<std::uint64_t> unseal(const Identity& identity, std::size_t offset, std::uint64_t sealed);
[[nodiscard]] std::optional<std::uint64_t> getHanded(const char* page, const Identity& identity);
/// Nothing also for what is no position in a recording.
[[nodiscard]] std::optional<std::int64_t> getTailStart(const char* page, const Identity& identity);

/// Tells whether a stop time is that of the record with a number. The page's identity stands in the same sector.
[[nodiscard]] inline std::uint64_t stopTimeChecksum(std::uint64_t nonce, std::uint64_t number,
                                                    std::uint64_t milliseconds)
{
    return (nonce + number) ^ milliseconds;
}
inline void putStopTime(char* page, std::uint64_t nonce, std::uint64_t number, std::uint64_t milliseconds)
{
    char* const slot = page + StopTimeOffset + number % 2 * StopTimeBytes;
    putInt64(putInt64(slot, milliseconds), stopTimeChecksum(nonce, number, milliseconds));
}
/// The stop time of the recording once the record with that number was accepted.
[[nodiscard]] std::optional<std::uint64_t> getStopTime(const char* page, const Identity& identity,
                                                       std::uint64_t number);

/// Where the type table stands, and the checksum of its bytes.
struct Types {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::uint64_t checksum = 0;
};
void putTypes(char* page, std::uint64_t nonce, std::uint64_t begin, std::string_view block);
[[nodiscard]] std::optional<Types> getTypes(const char* page, const Identity& identity);
/// Whether the bytes of a type table are those that were written.
[[nodiscard]] bool areTypesOf(const Types& types, const Identity& identity, std::string_view block);

/// The header record as closing would write it, but for what becomes known only then. @param writing 1, 2, 3, ...
void putHeader(char* page, std::uint64_t nonce, std::uint64_t writing, std::string_view record);
/// That of the last writing which is whole.
[[nodiscard]] std::optional<std::string> getHeader(const char* page, const Identity& identity);

}  // namespace Recording2::Format::Journal
