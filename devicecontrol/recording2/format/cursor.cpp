// Numbers, times and strings taken from the buffered bytes, damaged ones as replay takes them.
#include "cursor.h"

#include <algorithm>
#include <locale>
#include <sstream>

namespace Recording2::Format {

namespace {

bool isDigit(int byte)
{
    return byte >= '0' && byte <= '9';
}

bool isWhiteSpace(int byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

}  // namespace

Cursor::Cursor(ByteSource& source, std::size_t bufferBytes) : m_source(source), m_buffer(bufferBytes)
{
}

bool Cursor::fill()
{
    m_bufferStart = position();
    m_next = 0;
    m_limit = m_source.readAt(m_bufferStart, m_buffer.data(), m_buffer.size());
    return m_limit > 0;
}

void Cursor::seek(std::int64_t position)
{
    m_end = false;
    if (position < 0) {
        return;
    }
    const std::int64_t offset = position - m_bufferStart;
    if (offset >= 0 && offset <= static_cast<std::int64_t>(m_limit)) {
        m_next = static_cast<std::size_t>(offset);
        return;
    }
    if (offset < 0) {  // stepping back goes on stepping back: load what lies in front as well
        const auto half = static_cast<std::int64_t>(m_buffer.size() / 2);
        m_bufferStart = std::max<std::int64_t>(0, position - half);
        m_limit = m_source.readAt(m_bufferStart, m_buffer.data(), m_buffer.size());
        m_next = static_cast<std::size_t>(position - m_bufferStart);
        if (m_next <= m_limit) {
            return;
        }
    }
    m_bufferStart = position;
    m_next = 0;
    m_limit = 0;
}

std::int64_t Cursor::remaining()
{
    return std::max<std::int64_t>(0, m_source.size() - position());
}

void Cursor::invalidate()
{
    m_bufferStart = position();
    m_next = 0;
    m_limit = 0;
}

void Cursor::skipWhiteSpace()
{
    for (std::size_t count = 0; count < m_longestNumber && isWhiteSpace(peek()); ++count) {
        ++m_next;
    }
}

FieldStatus Cursor::extractInteger(std::int64_t low, std::int64_t high, std::int64_t& value)
{
    if (m_end) {
        return FieldStatus::EndOfFile;
    }
    int byte = peek();
    if (!isDigit(byte)) {
        skipWhiteSpace();
        byte = peek();
    }
    if (byte < 0) {
        return FieldStatus::EndOfFile;
    }
    const bool negative = byte == '-';
    if (negative || byte == '+') {
        ++m_next;
    }
    const std::uint64_t limit =
        negative ? std::uint64_t{0} - static_cast<std::uint64_t>(low) : static_cast<std::uint64_t>(high);
    std::uint64_t magnitude = 0;
    const FieldStatus status = extractMagnitude(limit, magnitude);
    if (status == FieldStatus::Ok) {
        value = static_cast<std::int64_t>(negative ? std::uint64_t{0} - magnitude : magnitude);
    }
    return status;
}

FieldStatus Cursor::extractMagnitude(std::uint64_t limit, std::uint64_t& magnitude)
{
    int byte = peek();
    if (!isDigit(byte)) {
        return byte < 0 ? FieldStatus::EndOfFile : FieldStatus::NotANumber;
    }
    bool fits = true;
    std::size_t count = 0;
    for (; isDigit(byte) && count < m_longestNumber; byte = peek()) {  // one that does not fit is passed over
        const auto digit = static_cast<std::uint64_t>(byte - '0');
        fits = fits && magnitude <= (limit - digit) / 10;
        magnitude = magnitude * 10 + digit;
        ++m_next;
        ++count;
    }
    return fits ? FieldStatus::Ok : FieldStatus::OutOfRange;
}

FieldStatus Cursor::readFloat(float& target)
{
    if (m_end) {
        skipSeparator();
        return FieldStatus::EndOfFile;
    }
    std::string text;
    collectFloat(text);
    FieldStatus status = text.empty() && peek() < 0 ? FieldStatus::EndOfFile : FieldStatus::NotANumber;
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    float value = 0;
    if (stream >> value && stream.peek() == std::char_traits<char>::eof()) {
        target = value;
        status = FieldStatus::Ok;
    }
    skipSeparator();
    return status;
}

// Takes what a stream takes as a floating-point number: sign, digits with one point, an exponent with its own sign.
void Cursor::collectFloat(std::string& text)
{
    constexpr std::size_t LongestText = 512;  // digits beyond it are passed over and make the field damaged
    skipWhiteSpace();
    char last = '\0';
    bool mantissa = false;
    bool point = false;
    bool exponent = false;
    std::size_t count = 0;
    for (int byte = peek(); byte >= 0 && count < m_longestNumber; byte = peek()) {
        const bool sign = (byte == '+' || byte == '-') && (text.empty() || last == 'e' || last == 'E');
        const bool newPoint = byte == '.' && !point && !exponent;
        const bool newExponent = (byte == 'e' || byte == 'E') && !exponent && mantissa;
        if (!isDigit(byte) && !sign && !newPoint && !newExponent) {
            return;
        }
        mantissa = mantissa || isDigit(byte);
        point = point || newPoint;
        exponent = exponent || newExponent;
        if (count++ < LongestText) {
            text.push_back(static_cast<char>(byte));
        } else {
            text.front() = '#';  // no number any more
        }
        last = static_cast<char>(byte);
        ++m_next;
    }
}

FieldStatus Cursor::readTimeAtEdge(std::uint64_t& target)
{
    constexpr std::size_t Size = 8;
    char bytes[Size];
    std::size_t count = 0;
    while (!m_end && count < Size) {
        const int byte = peek();
        if (byte < 0) {
            break;
        }
        bytes[count++] = static_cast<char>(byte);
        ++m_next;
    }
    if (count == Size) {
        target = InInt64(bytes);
    }
    skipSeparator();
    return count == Size ? FieldStatus::Ok : FieldStatus::EndOfFile;
}

FieldStatus Cursor::readBytes(std::string& target, std::int64_t length)
{
    target.clear();
    if (!m_end && static_cast<std::int64_t>(m_limit - m_next) < length) {
        target.reserve(static_cast<std::size_t>(std::min(length, remaining())));
    }
    while (!m_end && length > 0) {
        m_end = peek() < 0;
        const auto part = std::min<std::int64_t>(length, static_cast<std::int64_t>(m_limit - m_next));
        target.append(m_buffer.data() + m_next, static_cast<std::size_t>(part));
        m_next += static_cast<std::size_t>(part);
        length -= part;
    }
    return length == 0 ? FieldStatus::Ok : FieldStatus::EndOfFile;
}

}  // namespace Recording2::Format
