// The journal of a recording that is being written: the bytes of FILE.tmp.journal (doc/format.md).
#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace Recording2::Format::Journal {

constexpr std::string_view Magic = "REC2JRNL";
constexpr std::uint32_t Version = 1;

// One page of state, the tail of the recording, the latest record entries, and from there on all the others.
constexpr std::size_t PageBytes = 4096;
constexpr std::size_t TailBytes = std::size_t{260} * 1024;
constexpr std::size_t EntryBytes = 16;
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
constexpr std::size_t StopTimeOffset = 128;  // one for odd and one for even record numbers: milliseconds, check
constexpr std::size_t StopTimeBytes = 16;
constexpr std::size_t TypesOffset = 192;     // begin, end, check of the bytes between, check of these three
constexpr std::size_t HeadersOffset = 1024;  // two, written in turn: check, number of the writing, length, bytes
constexpr std::size_t HeaderSlotBytes = 1024;
constexpr std::size_t HeaderSlotHeadBytes = 24;

/// Numbers stand with their least significant byte first: as they are in the memory of nearly every machine.
template <typename Unsigned>
Unsigned littleEndian(Unsigned value)
{
    if constexpr (std::endian::native == std::endian::little) {
        return value;
    } else {
        Unsigned swapped = 0;
        for (std::size_t i = 0; i < sizeof value; ++i) {
            swapped = static_cast<Unsigned>(swapped << 8U | (value >> (8 * i) & 0xffU));
        }
        return swapped;
    }
}
template <typename Unsigned>
Unsigned getInt(const char* from)
{
    Unsigned value = 0;
    std::memcpy(&value, from, sizeof value);
    return littleEndian(value);
}
template <typename Unsigned>
char* putInt(char* out, Unsigned value)
{
    value = littleEndian(value);
    std::memcpy(out, &value, sizeof value);
    return out + sizeof value;
}
inline std::uint64_t getInt64(const char* from)
{
    return getInt<std::uint64_t>(from);
}
inline std::uint32_t getInt32(const char* from)
{
    return getInt<std::uint32_t>(from);
}
inline char* putInt64(char* out, std::uint64_t value)
{
    return putInt(out, value);
}
inline char* putInt32(char* out, std::uint32_t value)
{
    return putInt(out, value);
}
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

/// Tells damaged or foreign bytes from those that were written: not against intent. The salt is another one in every
/// journal, so that what an earlier file left on the device is foreign.
class Check {
public:
    explicit Check(std::uint64_t salt) : m_state(salt) {}

    static constexpr std::uint64_t Factor = 0x9e3779b97f4a7c15U;

    Check& add(std::uint64_t value)
    {
        m_state = (m_state ^ value) * Factor;
        m_state ^= m_state >> 32U;
        return *this;
    }
    Check& add(const char* bytes, std::size_t size)
    {
        if (size < WordBytes) {
            return add(few(bytes, size));
        }
        const char* const last = bytes + size - WordBytes;
        for (; bytes < last; bytes += WordBytes) {
            add(getInt64(bytes));
        }
        return add(getInt64(last));
    }
    /// A number and the length, all of short bytes, and of longer ones 8 of every 512 and the last: devices lose
    /// sectors of at least 512 bytes.
    Check& addSample(std::uint32_t number, const char* bytes, std::size_t size)
    {
        constexpr std::size_t Stride = 512;
        constexpr std::size_t Short = 64;
        add(std::uint64_t{number} << 32U ^ size);
        if (size <= Short) {
            return add(bytes, size);
        }
        for (std::size_t i = 0; i + WordBytes <= size; i += Stride) {
            add(getInt64(bytes + i));
        }
        return add(getInt64(bytes + size - WordBytes));
    }
    [[nodiscard]] std::uint64_t value() const { return m_state; }
    [[nodiscard]] std::uint32_t value16() const { return m_state >> 13U & 0xffffU; }

private:
    static constexpr std::size_t WordBytes = sizeof(std::uint64_t);

    // Every byte of fewer than a word has its part; some have two.
    static std::uint64_t few(const char* bytes, std::size_t size)
    {
        constexpr std::size_t HalfWord = sizeof(std::uint32_t);
        const auto byte = [&](std::size_t i) { return std::uint64_t{static_cast<unsigned char>(bytes[i])}; };
        if (size >= HalfWord) {
            return std::uint64_t{getInt32(bytes)} << 32U | getInt32(bytes + size - HalfWord);
        }
        return size == 0 ? 0 : byte(0) | byte(size / 2) << 8U | byte(size - 1) << 16U;
    }

    std::uint64_t m_state;
};

/// One accepted record: when, where, and whether it is in the channel range table.
struct Entry {
    std::uint64_t timeMs = 0;  ///< since the start of the recording
    std::int32_t position = 0;
    bool channelRange = false;
    std::uint32_t check = 0;  ///< 0: no entry stands here
};

/// The position, with the highest bit set where the record is in the channel range table.
[[nodiscard]] inline std::uint32_t placeOf(const Entry& entry)
{
    constexpr std::uint32_t ChannelRangeBit = 0x80000000U;
    return static_cast<std::uint32_t>(entry.position) | (entry.channelRange ? ChannelRangeBit : 0U);
}

/// Of the entry with that number, in the upper half, and of it and the record it names, in the lower. Never 0.
struct EntryCheck {
    EntryCheck(std::uint64_t salt, std::uint64_t number, const Entry& entry)
        : m_check(Check(salt + number).add(entry.timeMs ^ std::uint64_t{placeOf(entry)} << 32U))
    {
    }
    [[nodiscard]] std::uint32_t ofEntry() const { return m_check.value16() << 16U; }
    [[nodiscard]] std::uint32_t with(std::int32_t code, std::string_view data) const
    {
        Check all = m_check;
        all.addSample(static_cast<std::uint32_t>(code), data.data(), data.size());
        return ofEntry() | all.value16() | 1U;
    }

private:
    Check m_check;
};
/// Whether the entry is as it was written, whatever became of the record.
[[nodiscard]] inline bool isSound(std::uint64_t salt, std::uint64_t number, const Entry& entry)
{
    constexpr std::uint32_t UpperHalf = 0xffff0000U;
    return entry.check != 0 && (entry.check & UpperHalf) == EntryCheck(salt, number, entry).ofEntry();
}

/// Writes what stands in front of the check, which has to come last.
inline void putEntryBody(char* out, const Entry& entry)
{
    putInt32(putInt64(out, entry.timeMs), placeOf(entry));
}
constexpr std::size_t EntryCheckOffset = 12;

[[nodiscard]] Entry getEntry(const char* from);

/// A number below 2^40 that is changed by a single store together with its check.
inline std::uint64_t seal(std::uint64_t salt, std::size_t offset, std::uint64_t number)
{
    constexpr std::uint64_t CheckMask = 0xffffffU;
    return number << 24U | (Check(salt + offset).add(number).value() & CheckMask);
}
[[nodiscard]] std::optional<std::uint64_t> unseal(std::uint64_t salt, std::size_t offset, std::uint64_t sealed);

/// What never changes after the journal was made.
struct Identity {
    std::uint64_t salt = 0;
    std::uint32_t mode = 0;  ///< as the recorder was configured, for people
};
void putIdentity(char* page, const Identity& identity);
[[nodiscard]] std::optional<Identity> getIdentity(const char* page);

/// Tells whether a stop time is that of the record with a number. The page's identity stands in the same sector.
[[nodiscard]] inline std::uint64_t stopTimeCheck(std::uint64_t salt, std::uint64_t number, std::uint64_t milliseconds)
{
    return (salt + number) ^ milliseconds * Check::Factor;
}
inline void putStopTime(char* page, std::uint64_t salt, std::uint64_t number, std::uint64_t milliseconds)
{
    char* const slot = page + StopTimeOffset + number % 2 * StopTimeBytes;
    putInt64(putInt64(slot, milliseconds), stopTimeCheck(salt, number, milliseconds));
}
/// The stop time of the recording once the record with that number was accepted.
[[nodiscard]] std::optional<std::uint64_t> getStopTime(const char* page, std::uint64_t salt, std::uint64_t number);

/// Where the type table stands, and the check of its bytes.
struct Types {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::uint64_t check = 0;
};
void putTypes(char* page, std::uint64_t salt, const Types& types);
[[nodiscard]] std::optional<Types> getTypes(const char* page, std::uint64_t salt);

/// The header record as closing would write it, but for what becomes known only then. @param writing 1, 2, 3, ...
void putHeader(char* page, std::uint64_t salt, std::uint64_t writing, std::string_view record);
/// That of the last writing which is whole.
[[nodiscard]] std::optional<std::string> getHeader(const char* page, std::uint64_t salt);

}  // namespace Recording2::Format::Journal
