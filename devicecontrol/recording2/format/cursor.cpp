// Numbers, times and strings taken from the buffered bytes, damaged ones as replay takes them.
#include "cursor.h"

#include <algorithm>
#include <cstring>
#include <locale>
#include <sstream>

namespace Recording2::Format {

namespace {

constexpr std::size_t FirstLoad = std::size_t{8} * 1024;   // after a jump
constexpr std::size_t MostKept = std::size_t{128} * 1024;  // of the buffer over a jump
constexpr std::size_t MostBack = std::size_t{64} * 1024;   // loaded around a step back

bool isDigit(int byte)
{
    return byte >= '0' && byte <= '9';
}

bool isWhiteSpace(int byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

}  // namespace

Cursor::Cursor(ByteSource& source, std::size_t bufferBytes)
    : m_source(source), m_capacity(bufferBytes), m_nextLoad(std::min(FirstLoad, bufferBytes))
{
    makeRoom(m_nextLoad);
}

// What the buffer held is gone.
void Cursor::makeRoom(std::size_t bytes)
{
    m_pages = std::make_unique_for_overwrite<Page[]>((bytes + sizeof(Page) - 1) / sizeof(Page));
    m_bytes = m_pages[0].bytes;
    m_room = bytes;
}

void Cursor::load(std::int64_t begin, std::size_t size)
{
    if (size > m_room) {
        makeRoom(size);
    }
    m_bufferStart = begin;
    m_limit = m_source.readAt(begin, m_bytes, size);
}

bool Cursor::fill()
{
    const std::int64_t here = position();
    const bool byPages = m_capacity >= 2 * sizeof(Page);
    const auto intoPage = static_cast<std::size_t>(byPages ? here % std::int64_t{sizeof(Page)} : 0);
    load(here - static_cast<std::int64_t>(intoPage), m_nextLoad);
    if (m_limit <= intoPage) {
        forget(here);
        return false;
    }
    m_next = intoPage;
    m_nextLoad = std::min(2 * m_nextLoad, m_capacity);
    return true;
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
    const auto back = static_cast<std::int64_t>(std::min(m_capacity, MostBack) / 2);
    if (offset < 0 && offset >= -back) {  // stepping back goes on stepping back: load what lies in front as well
        load(std::max<std::int64_t>(0, position - back), static_cast<std::size_t>(2 * back));
        m_next = static_cast<std::size_t>(position - m_bufferStart);
        if (m_next <= m_limit) {
            return;
        }
    }
    forget(position);
}

void Cursor::forget(std::int64_t position)
{
    m_bufferStart = position;
    m_next = 0;
    m_limit = 0;
    m_nextLoad = std::min(FirstLoad, m_capacity);
    if (m_room > MostKept) {
        makeRoom(m_nextLoad);
    }
}

std::int64_t Cursor::remaining()
{
    return std::max<std::int64_t>(0, m_source.size() - position());
}

void Cursor::invalidate()
{
    forget(position());
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

FieldStatus Cursor::readNumber(float& target)
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
        target = getInt64(bytes);
    }
    skipSeparator();
    return count == Size ? FieldStatus::Ok : FieldStatus::EndOfFile;
}

FieldStatus Cursor::readBytes(std::string& target, std::int64_t length)
{
    if (m_end) {
        target.clear();
        return FieldStatus::EndOfFile;
    }
    if (length <= static_cast<std::int64_t>(m_limit - m_next)) {
        target.assign(m_bytes + m_next, static_cast<std::size_t>(length));
        m_next += static_cast<std::size_t>(length);
        return FieldStatus::Ok;
    }
    // What the buffer could hold needs no look at how much there is.
    const bool plausible = length <= static_cast<std::int64_t>(m_capacity);
    target.resize(static_cast<std::size_t>(plausible ? length : std::min(length, remaining())));
    std::size_t count = 0;
    do {
        const std::size_t part = std::min(target.size() - count, m_limit - m_next);
        std::memcpy(target.data() + count, m_bytes + m_next, part);
        m_next += part;
        count += part;
    } while (count < target.size() && fill());
    target.resize(count);
    m_end = static_cast<std::int64_t>(count) < length;
    return m_end ? FieldStatus::EndOfFile : FieldStatus::Ok;
}

}  // namespace Recording2::Format
