// The blocks of a recording file: header area, type table, records, time table, channel range table.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "cursor.h"
#include "encode.h"

namespace Recording2::Format {

/// Bytes reserved for the header record at the start of a file.
constexpr std::int32_t HeaderAreaBytes = 500;
/// Positions are 32-bit signed numbers.
constexpr std::int64_t LastPosition = std::numeric_limits<std::int32_t>::max();
/// The oldest major version that can be read.
constexpr std::int16_t OldestMajorVersion = 2;

/// Where the blocks begin; 0 for one that is absent.
struct Positions {
    std::int32_t typeTable = 0;
    std::int32_t firstRecord = 0;
    std::int32_t timeTable = 0;
    std::int32_t channelRangeTable = 0;
    std::int32_t bookmarkTable = 0;
};

/// The header record as it stands in the file: the one header of everything inside, CHeaderData is its face outside.
struct HeaderRecord {
    std::int16_t majorVersion = 0;
    std::int16_t minorVersion = 0;
    float startFrequencyHz = 0;
    float stopFrequencyHz = 0;
    float stepWidthHz = 0;
    std::int32_t minLevel = 0;
    std::int32_t maxLevel = 0;
    std::uint64_t startMs = 0;  ///< since 1970 UTC
    std::uint64_t stopMs = 0;   ///< since 1970 UTC
    std::string jobId;          ///< texts in Latin-1
    std::string deviceName;
    std::string deviceType;
    Positions positions;
    bool automatic = false;
};

/// The placeholder of the header area: zeros and a final separator.
[[nodiscard]] std::string headerArea();
/// The same with a record in it, which may be longer than the area.
[[nodiscard]] std::string headerArea(const HeaderRecord& header);
/// Cuts the texts at their first NUL, after which none is written although its length would count the rest.
void endTextsAtNul(HeaderRecord& header);
/// The same, and cuts the longest of them until the record fits into its area with the longest numbers in all of its
/// other fields.
void fitTexts(HeaderRecord& header);
/// Appends the header record. Its texts are written up to their first NUL but with their whole length.
void appendHeader(std::string& out, const HeaderRecord& header);

/// Whether a header could be read. OldFormat: reading ended after the minor version.
enum class HeaderStatus : std::uint8_t { Ok, OldFormat };
/// Reads the header record here. Damaged fields keep what the target holds, and so do texts whose length is below 1.
HeaderStatus readHeader(Cursor& cursor, HeaderRecord& target);

/// Appends one entry of the type table.
void appendTypeEntry(std::string& out, std::int32_t typeNumber, std::int32_t valueType, std::string_view keyword,
                     std::string_view valuePath);

struct TypeEntryRecord {
    std::int32_t typeNumber = 0;
    std::int32_t valueType = 0;
    std::string keyword;    ///< Latin-1
    std::string valuePath;  ///< Latin-1

    friend bool operator==(const TypeEntryRecord&, const TypeEntryRecord&) = default;
};
/// The block of the type table.
template <typename Entries>
[[nodiscard]] std::string typeTable(const Entries& entries)
{
    std::string block;
    appendNumber(block, static_cast<std::int32_t>(entries.size()));
    for (const auto& entry : entries) {
        appendTypeEntry(block, entry.typeNumber, entry.valueType, entry.keyword, entry.valuePath);
    }
    return block;
}
void readTypeEntry(Cursor& cursor, TypeEntryRecord& target);

/// Room that the head of a record needs: code and data length.
constexpr std::size_t MaxRecordHeadBytes = 2 * MaxNumberBytes;
/// Writes the head of a record; the data follows. @return the end of what was written
inline char* putRecordHead(char* out, std::int32_t code, std::uint32_t dataLength)
{
    return putNumber(putNumber(out, code), dataLength);
}
struct RecordHead {
    std::int32_t code = 0;
    std::int32_t dataLength = 0;
};
inline void readRecordHead(Cursor& cursor, RecordHead& target)
{
    cursor.readNumber(target.code);
    cursor.readNumber(target.dataLength);
}

/// What an entry of the time table takes at most: a time, ten digits of a position, a separator.
constexpr std::int64_t WidestTimeEntryBytes = std::int64_t{TimeBytes} + 10 + 1;
/// Room in which an entry of the time table is written.
constexpr std::size_t MaxTimeEntryBytes = TimeBytes + MaxNumberBytes;
inline char* putTimeEntry(char* out, std::uint64_t milliseconds, std::int32_t position)
{
    return putNumber(putTime(out, milliseconds), position);
}
struct TimeEntryRecord {
    std::uint64_t timeMs = 0;  ///< since the start of the recording
    std::int32_t position = 0;

    friend bool operator==(const TimeEntryRecord&, const TimeEntryRecord&) = default;
};

/// Reads the entries from here to a bound, which the last one may pass, or to the end of the file. There a last round
/// reads nothing new and gives its pair again.
/// @param take called with time and position of each
template <typename Take>
void readTimeEntries(Cursor& cursor, std::int64_t bound, Take take)
{
    constexpr std::size_t LookedAt = TimeBytes + ShortNumber::LookedAt;
    TimeEntryRecord entry;
    while (!cursor.atEnd() && cursor.position() < bound) {
        // Nearly all entries lie whole in the buffer.
        const std::span<const char> bytes = cursor.buffered();
        const auto size = static_cast<std::size_t>(std::min(std::ssize(bytes), bound - cursor.position()));
        std::size_t next = 0;
        while (next + LookedAt <= size) {
            const ShortNumber position(bytes.data() + next + TimeBytes);
            if (position.digits == 0) {
                break;
            }
            entry = {getInt64(bytes.data() + next), static_cast<std::int32_t>(position.value)};
            take(entry.timeMs, entry.position);
            next += TimeBytes + position.digits + 1;
        }
        cursor.skip(next);
        if (cursor.position() < bound) {
            cursor.readTime(entry.timeMs);  // what is damaged keeps what the entry before had
            cursor.readNumber(entry.position);
            take(entry.timeMs, entry.position);
        }
    }
}

}  // namespace Recording2::Format
