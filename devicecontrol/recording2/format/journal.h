// The journal of a recording that is being written: the bytes of FILE.tmp.journal (doc/format.md).
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "encode.h"

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
constexpr std::size_t EntriesOffset = LatestOffset + LatestEntries * EntryBytes;

// Inside the state page.
constexpr std::size_t TailStartOffset = 64;  // sealed number: position of the tail's first byte in the recording
constexpr std::size_t HandedOffset = 72;     // sealed number: entries that stand from EntriesOffset on
constexpr std::size_t StopTimeOffset = 128;  // one for odd and one for even record numbers: milliseconds, check
constexpr std::size_t StopTimeBytes = 16;
constexpr std::size_t TypesOffset = 192;     // begin, end, check of the bytes between, check of these three
constexpr std::size_t HeadersOffset = 1024;  // two, written in turn: check, number of the writing, length, bytes
constexpr std::size_t HeaderSlotBytes = 1024;
constexpr std::size_t HeaderSlotHeadBytes = 24;

inline std::uint64_t getInt64(const char* from)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i) {
        value |= std::uint64_t{static_cast<unsigned char>(from[i])} << (8 * i);
    }
    return value;
}

inline char* putInt32(char* out, std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8) {
        *out++ = static_cast<char>(value >> shift & 0xffU);
    }
    return out;
}

inline std::uint32_t getInt32(const char* from)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i) {
        value |= std::uint32_t{static_cast<unsigned char>(from[i])} << (8 * i);
    }
    return value;
}

/// One store that no earlier one is put behind and of which no part can be missing. @param to a multiple of the size
inline void store64(char* to, std::uint64_t value)
{
    std::uint64_t bytes = 0;
    OutInt64(reinterpret_cast<char*>(&bytes), value);
    std::atomic_ref<std::uint64_t>(*reinterpret_cast<std::uint64_t*>(to)).store(bytes, std::memory_order_release);
}
inline void store32(char* to, std::uint32_t value)
{
    std::uint32_t bytes = 0;
    putInt32(reinterpret_cast<char*>(&bytes), value);
    std::atomic_ref<std::uint32_t>(*reinterpret_cast<std::uint32_t*>(to)).store(bytes, std::memory_order_release);
}

/// Tells damaged or foreign bytes from those that were written: not against intent. The salt is another one in every
/// journal, so that what an earlier file left on the device is foreign.
class Check {
public:
    explicit Check(std::uint64_t salt) : m_state(salt) {}

    Check& add(std::uint64_t value)
    {
        m_state = (m_state ^ value) * 0x9e3779b97f4a7c15U;
        m_state ^= m_state >> 32U;
        return *this;
    }
    Check& add(const char* bytes, std::size_t size)
    {
        for (; size >= WordBytes; bytes += WordBytes, size -= WordBytes) {
            add(getInt64(bytes));
        }
        return addRest(bytes, size);
    }
    /// The length, all of short bytes, and of longer ones 8 of every 512 and the last: devices lose sectors of at
    /// least 512 bytes.
    Check& addSample(const char* bytes, std::size_t size)
    {
        constexpr std::size_t Stride = 512;
        constexpr std::size_t Short = 64;
        add(size);
        if (size <= Short) {
            return add(bytes, size);
        }
        for (std::size_t i = 0; i + WordBytes <= size; i += Stride) {
            add(getInt64(bytes + i));
        }
        return add(getInt64(bytes + size - WordBytes));
    }
    [[nodiscard]] std::uint64_t value() const { return m_state; }
    /// Never 0.
    [[nodiscard]] std::uint32_t value32() const
    {
        return static_cast<std::uint32_t>(m_state ^ m_state >> 29U) | 1U;
    }

private:
    static constexpr std::size_t WordBytes = sizeof(std::uint64_t);

    Check& addRest(const char* bytes, std::size_t size)
    {
        if (size == 0) {
            return *this;
        }
        std::uint64_t last = 0;
        for (std::size_t i = 0; i < size; ++i) {
            last |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
        }
        return add(last);
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

/// Of the entry with that number and of the record it names.
inline std::uint32_t entryCheck(std::uint64_t salt, std::uint64_t number, const Entry& entry, std::int32_t code,
                                std::string_view data)
{
    const std::uint64_t place =
        std::uint64_t{static_cast<std::uint32_t>(entry.position)} << 1U | (entry.channelRange ? 1U : 0U);
    return Check(salt + number)
        .add(entry.timeMs)
        .add(place << 32U ^ static_cast<std::uint32_t>(code))
        .addSample(data.data(), data.size())
        .value32();
}

/// Writes what stands in front of the check, which has to come last.
inline void putEntryBody(char* out, const Entry& entry)
{
    constexpr std::uint32_t ChannelRangeBit = 0x80000000U;
    putInt32(OutInt64(out, entry.timeMs),
             static_cast<std::uint32_t>(entry.position) | (entry.channelRange ? ChannelRangeBit : 0U));
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

inline void putStopTime(char* page, std::uint64_t salt, std::uint64_t number, std::uint64_t milliseconds)
{
    char* const slot = page + StopTimeOffset + number % 2 * StopTimeBytes;
    OutInt64(OutInt64(slot, milliseconds), Check(salt + number).add(milliseconds).value());
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
