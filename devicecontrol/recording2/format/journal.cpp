// Checksums and slots of the journal's first page, stored in an order that survives kills.
#include "journal.h"

#include <algorithm>
#include <atomic>

#include "layout.h"
#include "sampledjournal.h"

namespace Recording2::Format::Journal {

namespace {

constexpr std::size_t IdentityBytes = 24;
constexpr std::size_t WordBytes = sizeof(std::uint64_t);

// Whoever finds the journal after this process was killed sees the stores in the order of the program.
void inOrder()
{
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

char* headerSlot(char* page, std::uint64_t writing)
{
    return page + HeadersOffset + writing % 2 * HeaderSlotBytes;
}

bool isSampled(const Identity& identity)
{
    return identity.version == SampledVersion;
}

/// Of a few bytes of the page. @param number what stands there once only: its offset, the number of a record
std::uint64_t checksumOf(const Identity& identity, std::uint64_t number, std::string_view bytes)
{
    return isSampled(identity) ? Sampled::checksum(identity.nonce + number, bytes)
                               : checksum(identity.nonce + number, bytes);
}

std::uint64_t headerChecksum(const Identity& identity, std::uint64_t writing, std::string_view record)
{
    const std::uint64_t seed = identity.nonce + writing;
    return (isSampled(identity) ? Sampled::checksumOfHeader(seed, record) : checksum(seed, record)) | 1U;
}

std::uint64_t typesChecksum(const Identity& identity, std::string_view block)
{
    return isSampled(identity) ? Sampled::checksumOfTypes(identity.nonce, block) : checksum(identity.nonce, block);
}

std::uint64_t sealed(const Identity& identity, std::size_t offset, std::uint64_t number)
{
    constexpr std::uint64_t ChecksumMask = 0xffffffU;
    char word[WordBytes];
    putInt64(word, number);
    const std::uint64_t own = isSampled(identity) ? Sampled::checksumOfNumber(identity.nonce + offset, number)
                                                  : checksum(identity.nonce + offset, {word, sizeof word});
    return number << 24U | (own & ChecksumMask);
}

struct HeaderSlot {
    std::uint64_t writing = 0;
    std::string_view record;
};

std::optional<HeaderSlot> getHeaderSlot(const char* slot, const Identity& identity)
{
    const std::uint64_t stored = getInt64(slot);
    const HeaderSlot found{getInt64(slot + WordBytes), {}};
    const std::uint64_t length = getInt64(slot + 2 * WordBytes);
    if (stored == 0 || length > HeaderSlotBytes - HeaderSlotHeadBytes) {
        return std::nullopt;
    }
    const std::string_view record(slot + HeaderSlotHeadBytes, static_cast<std::size_t>(length));
    if (headerChecksum(identity, found.writing, record) != stored) {
        return std::nullopt;
    }
    return HeaderSlot{found.writing, record};
}

}  // namespace

void putIdentity(char* page, const Identity& identity)
{
    char* out = std::copy(Magic.begin(), Magic.end(), page);
    out = putInt32(putInt32(out, identity.version), identity.mode);
    out = putInt64(out, identity.nonce);
    putInt64(out, checksumOf(identity, 0, {page, IdentityBytes}));
}

std::optional<Identity> getIdentity(const char* page)
{
    const std::uint32_t version = getInt32(page + WordBytes);
    const Identity identity{getInt64(page + 2 * WordBytes), getInt32(page + WordBytes + sizeof version), version};
    const bool known =
        std::string_view(page, Magic.size()) == Magic && (version == Version || version == SampledVersion);
    if (!known || getInt64(page + IdentityBytes) != checksumOf(identity, 0, {page, IdentityBytes})) {
        return std::nullopt;
    }
    return identity;
}

std::size_t entryBytes(const Identity& identity)
{
    return isSampled(identity) ? Sampled::EntryBytes : EntryBytes;
}

Entry getEntry(const char* from, const Identity& identity, std::uint64_t number)
{
    constexpr std::uint32_t PositionMask = 0x7fffffffU;
    const bool sampled = isSampled(identity);
    const std::uint32_t place = getInt32(from + (sampled ? Sampled::EntryPlaceOffset : EntryPlaceOffset));
    const std::uint32_t stored = getInt32(from + (sampled ? Sampled::EntryChecksumOffset : EntryChecksumOffset));
    Entry entry{getInt64(from), static_cast<std::int32_t>(place & PositionMask), place > PositionMask, false, stored};
    if (sampled) {
        entry.sound = Sampled::isSound(stored, identity.nonce + number, entry.timeMs, place);
    } else {
        entry.recordChecksum = getInt64(from + EntryRecordOffset);
        entry.sound = stored == entryChecksum(identity.nonce, number, entry.timeMs, place, entry.recordChecksum);
    }
    return entry;
}

bool isNone(const char* from, const Identity& identity)
{
    return getInt32(from + (isSampled(identity) ? Sampled::EntryChecksumOffset : EntryChecksumOffset)) == 0;
}

bool isRecordOf(const Entry& entry, const Identity& identity, std::uint64_t number, std::int32_t code,
                std::string_view data)
{
    return entry.recordChecksum == (isSampled(identity)
                                        ? Sampled::checksumOfRecord(identity.nonce + number, entry, code, data)
                                        : recordChecksum(identity.nonce, number, code, data));
}

std::uint64_t seal(std::uint64_t nonce, std::size_t offset, std::uint64_t number)
{
    return sealed({nonce}, offset, number);
}

std::optional<std::uint64_t> unseal(const Identity& identity, std::size_t offset, std::uint64_t sealedNumber)
{
    const std::uint64_t number = sealedNumber >> 24U;
    return sealed(identity, offset, number) == sealedNumber ? std::optional<std::uint64_t>(number) : std::nullopt;
}

std::optional<std::uint64_t> getHanded(const char* page, const Identity& identity)
{
    return unseal(identity, HandedOffset, getInt64(page + HandedOffset));
}

std::optional<std::int64_t> getTailStart(const char* page, const Identity& identity)
{
    const auto start = unseal(identity, TailStartOffset, getInt64(page + TailStartOffset));
    const bool isPosition = start && *start <= std::uint64_t{LastPosition};
    return isPosition ? std::optional(static_cast<std::int64_t>(*start)) : std::nullopt;
}

std::optional<std::uint64_t> getStopTime(const char* page, const Identity& identity, std::uint64_t number)
{
    const char* const slot = page + StopTimeOffset + number % 2 * StopTimeBytes;
    const std::uint64_t milliseconds = getInt64(slot);
    const std::uint64_t expected = isSampled(identity)
                                       ? Sampled::checksumOfStopTime(identity.nonce + number, milliseconds)
                                       : stopTimeChecksum(identity.nonce, number, milliseconds);
    return getInt64(slot + WordBytes) == expected ? std::optional<std::uint64_t>(milliseconds) : std::nullopt;
}

void putTypes(char* page, std::uint64_t nonce, std::uint64_t begin, std::string_view block)
{
    const Identity identity{nonce};
    char* const out = page + TypesOffset;
    char* const end = putInt64(putInt64(putInt64(out, begin), begin + block.size()), typesChecksum(identity, block));
    inOrder();
    putInt64(end, checksumOf(identity, 0, {out, 3 * WordBytes}));
}

std::optional<Types> getTypes(const char* page, const Identity& identity)
{
    const char* const from = page + TypesOffset;
    if (getInt64(from + 3 * WordBytes) != checksumOf(identity, 0, {from, 3 * WordBytes})) {
        return std::nullopt;
    }
    return Types{getInt64(from), getInt64(from + WordBytes), getInt64(from + 2 * WordBytes)};
}

bool areTypesOf(const Types& types, const Identity& identity, std::string_view block)
{
    return types.end - types.begin == block.size() && typesChecksum(identity, block) == types.checksum;
}

void putHeader(char* page, std::uint64_t nonce, std::uint64_t writing, std::string_view record)
{
    char* const slot = headerSlot(page, writing);
    record = record.substr(0, HeaderSlotBytes - HeaderSlotHeadBytes);
    putInt64(slot, 0);
    inOrder();
    char* const out = putInt64(putInt64(slot + WordBytes, writing), record.size());
    std::copy(record.begin(), record.end(), out);
    inOrder();
    putInt64(slot, headerChecksum({nonce}, writing, record));
}

std::optional<std::string> getHeader(const char* page, const Identity& identity)
{
    std::optional<HeaderSlot> latest;
    for (std::uint64_t parity = 0; parity < 2; ++parity) {
        const auto found = getHeaderSlot(page + HeadersOffset + parity * HeaderSlotBytes, identity);
        if (found && (!latest || found->writing > latest->writing)) {
            latest = found;
        }
    }
    return latest ? std::optional<std::string>(latest->record) : std::nullopt;
}

}  // namespace Recording2::Format::Journal
