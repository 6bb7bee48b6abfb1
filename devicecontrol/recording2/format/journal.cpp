// Checks and slots of the journal's first page, stored in an order that survives kills.
#include "journal.h"

#include <atomic>

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

std::uint64_t headerCheck(std::uint64_t salt, std::uint64_t writing, std::string_view record)
{
    return Check(salt + writing).add(record.size()).add(record.data(), record.size()).value() | 1U;
}

struct HeaderSlot {
    std::uint64_t writing = 0;
    std::string_view record;
};

std::optional<HeaderSlot> getHeaderSlot(const char* slot, std::uint64_t salt)
{
    const std::uint64_t check = getInt64(slot);
    const HeaderSlot found{getInt64(slot + WordBytes), {}};
    const std::uint64_t length = getInt64(slot + 2 * WordBytes);
    if (check == 0 || length > HeaderSlotBytes - HeaderSlotHeadBytes) {
        return std::nullopt;
    }
    const std::string_view record(slot + HeaderSlotHeadBytes, static_cast<std::size_t>(length));
    if (headerCheck(salt, found.writing, record) != check) {
        return std::nullopt;
    }
    return HeaderSlot{found.writing, record};
}

}  // namespace

Entry getEntry(const char* from)
{
    constexpr std::uint32_t PositionMask = 0x7fffffffU;
    const std::uint32_t place = getInt32(from + WordBytes);
    return {getInt64(from), static_cast<std::int32_t>(place & PositionMask), place > PositionMask,
            getInt32(from + EntryCheckOffset)};
}

std::optional<std::uint64_t> unseal(std::uint64_t salt, std::size_t offset, std::uint64_t sealed)
{
    const std::uint64_t number = sealed >> 24U;
    return seal(salt, offset, number) == sealed ? std::optional<std::uint64_t>(number) : std::nullopt;
}

void putIdentity(char* page, const Identity& identity)
{
    char* out = std::copy(Magic.begin(), Magic.end(), page);
    out = putInt32(putInt32(out, Version), identity.mode);
    out = putInt64(out, identity.salt);
    putInt64(out, Check(identity.salt).add(page, IdentityBytes).value());
}

std::optional<Identity> getIdentity(const char* page)
{
    const Identity identity{getInt64(page + 2 * WordBytes), getInt32(page + WordBytes + sizeof(std::uint32_t))};
    const bool known = std::string_view(page, Magic.size()) == Magic && getInt32(page + WordBytes) == Version;
    if (!known || getInt64(page + IdentityBytes) != Check(identity.salt).add(page, IdentityBytes).value()) {
        return std::nullopt;
    }
    return identity;
}

std::optional<std::uint64_t> getStopTime(const char* page, std::uint64_t salt, std::uint64_t number)
{
    const char* const slot = page + StopTimeOffset + number % 2 * StopTimeBytes;
    const std::uint64_t milliseconds = getInt64(slot);
    if (getInt64(slot + WordBytes) != stopTimeCheck(salt, number, milliseconds)) {
        return std::nullopt;
    }
    return milliseconds;
}

void putTypes(char* page, std::uint64_t salt, const Types& types)
{
    char* const out = page + TypesOffset;
    char* const end = putInt64(putInt64(putInt64(out, types.begin), types.end), types.check);
    inOrder();
    putInt64(end, Check(salt).add(out, 3 * WordBytes).value());
}

std::optional<Types> getTypes(const char* page, std::uint64_t salt)
{
    const char* const from = page + TypesOffset;
    if (getInt64(from + 3 * WordBytes) != Check(salt).add(from, 3 * WordBytes).value()) {
        return std::nullopt;
    }
    return Types{getInt64(from), getInt64(from + WordBytes), getInt64(from + 2 * WordBytes)};
}

void putHeader(char* page, std::uint64_t salt, std::uint64_t writing, std::string_view record)
{
    char* const slot = headerSlot(page, writing);
    record = record.substr(0, HeaderSlotBytes - HeaderSlotHeadBytes);
    putInt64(slot, 0);
    inOrder();
    char* const out = putInt64(putInt64(slot + WordBytes, writing), record.size());
    std::copy(record.begin(), record.end(), out);
    inOrder();
    putInt64(slot, headerCheck(salt, writing, record));
}

std::optional<std::string> getHeader(const char* page, std::uint64_t salt)
{
    std::optional<HeaderSlot> latest;
    for (std::uint64_t parity = 0; parity < 2; ++parity) {
        const auto found = getHeaderSlot(page + HeadersOffset + parity * HeaderSlotBytes, salt);
        if (found && (!latest || found->writing > latest->writing)) {
            latest = found;
        }
    }
    return latest ? std::optional<std::string>(latest->record) : std::nullopt;
}

}  // namespace Recording2::Format::Journal
