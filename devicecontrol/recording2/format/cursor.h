// Reading the elementary fields of a recording through a bounded, buffered cursor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "bytesource.h"

namespace Recording2::Format {

/// How reading one field went. Only Ok sets the target; every other result leaves it as it was.
enum class FieldStatus : std::uint8_t {
    Ok,
    NotANumber,  ///< no digits where a number should stand
    OutOfRange,  ///< a number that its field cannot hold
    EndOfFile,   ///< the file ended before or within the field
};

/// Reads 8 bytes, the least significant first.
[[nodiscard]] inline std::uint64_t InInt64(const char* bytes)
{
    std::uint64_t value = 0;
    for (int i = 7; i >= 0; --i) {
        value = value << 8U | static_cast<unsigned char>(bytes[i]);
    }
    return value;
}

/// A position in a byte source, read field by field.
///
/// Fields are read as a text stream in the classic locale reads them: white space in front of a number is passed over,
/// a sign is taken, and after every field exactly one byte, the separator, is skipped whatever it is. Reading past the
/// last byte sets the end mark; while it is set, fields read nothing. Only skipping a separator behind a field clears
/// and decides the mark anew, so a damaged field never stops the reading of the next.
class Cursor {
public:
    /// @param source must outlive the cursor
    explicit Cursor(ByteSource& source, std::size_t bufferBytes = std::size_t{64} * 1024);

    [[nodiscard]] std::int64_t position() const { return m_bufferStart + static_cast<std::int64_t>(m_next); }
    /// Goes to a position and clears the end mark. A negative position leaves the cursor where it is.
    void seek(std::int64_t position);
    [[nodiscard]] bool atEnd() const { return m_end; }
    void clearEnd() { m_end = false; }
    /// Bytes between here and the end of the source.
    [[nodiscard]] std::int64_t remaining();
    /// Forgets buffered bytes, because the source's bytes changed.
    void invalidate();
    /// Lets a number or the white space in front of it end after so many bytes, and be damaged then. Without a limit
    /// each ends where the file does. For readers that come back to a place again and again.
    void limitNumbers(std::size_t bytes) { m_longestNumber = bytes; }

    FieldStatus readNumber(std::int16_t& target) { return readInteger(target); }
    FieldStatus readNumber(std::int32_t& target) { return readInteger(target); }
    FieldStatus readNumber(std::int64_t& target) { return readInteger(target); }
    FieldStatus readFloat(float& target);
    FieldStatus readTime(std::uint64_t& target)
    {
        constexpr std::size_t Size = 8;
        if (m_end || m_limit - m_next <= Size) {
            return readTimeAtEdge(target);
        }
        target = InInt64(m_buffer.data() + m_next);
        m_next += Size + 1;
        return FieldStatus::Ok;
    }
    /// Reads length bytes; no separator follows. With fewer bytes left it takes those that are there and sets the end
    /// mark, so memory is bounded by the source. @param length must be above 0
    FieldStatus readBytes(std::string& target, std::int64_t length);

private:
    template <typename Integer>
    FieldStatus readInteger(Integer& target);
    template <typename Integer>
    bool readBufferedDigits(Integer& target);
    FieldStatus readTimeAtEdge(std::uint64_t& target);  // of the buffer or of the file
    FieldStatus extractInteger(std::int64_t low, std::int64_t high, std::int64_t& value);
    FieldStatus extractMagnitude(std::uint64_t limit, std::uint64_t& magnitude);
    void collectFloat(std::string& text);

    bool fill();            // loads the buffer at the position; false at the end
    int peek();             // the byte here, -1 at the end
    void skipWhiteSpace();  // as far as a number may go
    void skipSeparator();   // one byte, and the end mark anew

    ByteSource& m_source;
    std::vector<char> m_buffer;
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
    return static_cast<unsigned char>(m_buffer[m_next]);
}

inline void Cursor::skipSeparator()
{
    m_end = peek() < 0;
    if (!m_end) {
        ++m_next;
    }
}

// What nearly all numbers are: a few digits, and the separator in the buffer too. Nothing is read otherwise.
template <typename Integer>
bool Cursor::readBufferedDigits(Integer& target)
{
    constexpr std::size_t MostDigits = 9;  // which 32 bits hold
    if (m_end || m_limit - m_next <= MostDigits) {
        return false;
    }
    const char* const digits = m_buffer.data() + m_next;
    std::size_t count = 0;
    std::uint32_t value = 0;
    for (auto digit = static_cast<unsigned char>(digits[0] - '0'); digit <= 9 && count < MostDigits;
         digit = static_cast<unsigned char>(digits[count] - '0')) {
        value = value * 10 + digit;
        ++count;
    }
    const bool ended = digits[count] < '0' || digits[count] > '9';
    if (count == 0 || !ended || value > std::uint64_t{std::numeric_limits<Integer>::max()}) {
        return false;
    }
    target = static_cast<Integer>(value);
    m_next += count + 1;
    return true;
}

template <typename Integer>
FieldStatus Cursor::readInteger(Integer& target)
{
    if (readBufferedDigits(target)) {
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
