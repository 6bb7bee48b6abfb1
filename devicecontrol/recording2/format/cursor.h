// Reading the elementary fields of a recording through a bounded, buffered cursor.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>

#include "bytesource.h"
#include "littleendian.h"

namespace Recording2::Format {

/// How reading one field went. Of a number or time only Ok sets the target; every other result leaves it as it was.
enum class FieldStatus : std::uint8_t {
    Ok,
    NotANumber,  ///< no digits where a number should stand
    OutOfRange,  ///< a number that its field cannot hold
    EndOfFile,   ///< the file ended before or within the field
};

/// What nearly all numbers are: up to nine digits, and then something else.
struct ShortNumber {
    static constexpr std::size_t LookedAt = 10;  ///< bytes that must be there

    explicit ShortNumber(const char* text);

    std::uint32_t digits = 0;  ///< how many; 0 for what is no such number
    std::uint32_t value = 0;
};

// Eight digits at once, as one number of eight bytes.
inline ShortNumber::ShortNumber(const char* text)
{
    constexpr std::uint64_t Zeros = 0x3030303030303030U;
    constexpr std::uint64_t ToHighBit = 0x7676767676767676U;  // lifts all but 0 to 9 there
    constexpr std::uint64_t HighBits = 0x8080808080808080U;
    const auto valueOf = [](std::uint64_t eight) {
        constexpr std::uint64_t EveryFourth = 0x000000FF000000FFU;
        constexpr std::uint64_t FirstAndThird = (std::uint64_t{1'000'000} << 32U) + 100U;
        constexpr std::uint64_t SecondAndFourth = (std::uint64_t{10'000} << 32U) + 1U;
        eight = eight * 10 + (eight >> 8U);  // pairs, in every second byte
        eight = (eight & EveryFourth) * FirstAndThird + ((eight >> 16U) & EveryFourth) * SecondAndFourth;
        return static_cast<std::uint32_t>(eight >> 32U);
    };
    const std::uint64_t eight = getInt64(text) ^ Zeros;
    const std::uint64_t others = ((eight + ToHighBit) | eight) & HighBits;  // right up to the first of them
    if (others != 0) {
        digits = static_cast<std::uint32_t>(std::countr_zero(others)) / 8U;
        value = digits == 0 ? 0 : valueOf(eight << 8U * (8U - digits));  // as if zeros stood in front
        return;
    }
    value = valueOf(eight);
    const auto digitAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i] - '0'); };
    if (digitAt(8) > 9) {
        digits = 8;
    } else if (digitAt(9) > 9) {
        digits = 9;
        value = value * 10 + digitAt(8);
    }
}

/// A position in a byte source, read field by field.
///
/// Fields are read as a text stream in the classic locale reads them: white space before a number is passed over,
/// a sign is taken, and after every field exactly one byte, the separator, is skipped whatever it is. Reading past the
/// last byte sets the end mark; while it is set, fields read nothing. Only skipping a separator behind a field clears
/// and decides the mark anew, so a damaged field never stops the reading of the next.
class Cursor {
public:
    /// @param source must outlive the cursor
    /// @param bufferBytes are loaded at once at most, after much was read in order: the system copies large pieces
    /// nearly twice as fast as those of an eighth of this
    explicit Cursor(ByteSource& source, std::size_t bufferBytes = std::size_t{1024} * 1024);

    [[nodiscard]] std::int64_t position() const { return m_bufferStart + static_cast<std::int64_t>(m_next); }
    /// Goes to a position and clears the end mark. A negative position leaves the cursor where it is.
    void seek(std::int64_t position);
    [[nodiscard]] bool atEnd() const { return m_end; }
    /// Bytes between here and the end of the source.
    [[nodiscard]] std::int64_t remaining();
    /// Forgets buffered bytes, because the source's bytes changed.
    void invalidate();
    /// Lets a number or the white space before it end after so many bytes, and be damaged then. Without a limit
    /// each ends where the file does. For readers that come back to a place again and again.
    void limitNumbers(std::size_t bytes) { m_longestNumber = bytes; }

    FieldStatus readNumber(std::int16_t& target) { return readInteger(target); }
    FieldStatus readNumber(std::int32_t& target) { return readInteger(target); }
    FieldStatus readNumber(std::int64_t& target) { return readInteger(target); }
    FieldStatus readNumber(float& target);
    FieldStatus readTime(std::uint64_t& target)
    {
        constexpr std::size_t Size = 8;
        if (m_end || m_limit - m_next <= Size) {
            return readTimeAtEdge(target);
        }
        target = getInt64(m_bytes + m_next);
        m_next += Size + 1;
        return FieldStatus::Ok;
    }
    /// What is here in memory; nothing behind the end mark. skip goes on behind some of it.
    [[nodiscard]] std::span<const char> buffered() const { return {m_bytes + m_next, m_end ? 0 : m_limit - m_next}; }
    void skip(std::size_t bytes) { m_next += bytes; }
    /// Reads length bytes; no separator follows. With fewer bytes left it takes those that are there and sets the end
    /// mark, so memory is bounded by the source. @param length must be above 0
    FieldStatus readBytes(std::string& target, std::int64_t length);

private:
    template <typename Integer>
    FieldStatus readInteger(Integer& target);
    template <typename Integer>
    bool readShortNumber(Integer& target);
    FieldStatus readTimeAtEdge(std::uint64_t& target);  // of the buffer or of the file
    FieldStatus extractInteger(std::int64_t low, std::int64_t high, std::int64_t& value);
    FieldStatus extractMagnitude(std::uint64_t limit, std::uint64_t& magnitude);
    void collectFloat(std::string& text);
    void forget(std::int64_t position);
    void makeRoom(std::size_t bytes);
    void load(std::int64_t begin, std::size_t size);

    bool fill();            // loads the buffer at the position; false at the end
    int peek();             // the byte here, -1 at the end
    void skipWhiteSpace();  // as far as a number may go
    void skipSeparator();   // one byte, and the end mark anew

    ByteSource& m_source;
    struct alignas(4096) Page {
        char bytes[4096];
    };
    // Pages of the file go to pages of memory: some processors copy much slower where the places in them differ by a
    // few bytes.
    std::unique_ptr<Page[]> m_pages;
    char* m_bytes = nullptr;  // of the pages: the buffer
    std::size_t m_room = 0;   // in it: as much as was loaded at once
    std::size_t m_capacity;   // as much at most
    std::size_t m_nextLoad;   // little after a jump, more with every further one
    std::size_t m_next = 0;   // within the buffer
    std::size_t m_limit = 0;  // bytes in the buffer
    std::int64_t m_bufferStart = 0;
    std::size_t m_longestNumber = std::numeric_limits<std::size_t>::max();
    bool m_end = false;
};

inline int Cursor::peek()
{
    if (m_next == m_limit && !fill()) {
        return -1;
    }
    return static_cast<unsigned char>(m_bytes[m_next]);
}

inline void Cursor::skipSeparator()
{
    m_end = peek() < 0;
    if (!m_end) {
        ++m_next;
    }
}

// Nothing is read where the number is no short one, or its bytes are not all in the buffer.
template <typename Integer>
bool Cursor::readShortNumber(Integer& target)
{
    if (m_end || m_limit - m_next < ShortNumber::LookedAt) {
        return false;
    }
    const ShortNumber number(m_bytes + m_next);
    if (number.digits == 0 || number.value > std::uint64_t{std::numeric_limits<Integer>::max()}) {
        return false;
    }
    target = static_cast<Integer>(number.value);
    m_next += number.digits + 1;
    return true;
}

template <typename Integer>
FieldStatus Cursor::readInteger(Integer& target)
{
    if (readShortNumber(target)) {
        return FieldStatus::Ok;
    }
    std::int64_t value = 0;
    const FieldStatus status =
        extractInteger(std::numeric_limits<Integer>::min(), std::numeric_limits<Integer>::max(), value);
    if (status == FieldStatus::Ok) {
        target = static_cast<Integer>(value);
    }
    skipSeparator();
    return status;
}

}  // namespace Recording2::Format
