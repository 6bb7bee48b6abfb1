// What is wrong with a field, in words, and the check of its separator.
#include "fieldreader.h"

#include "../../format/encode.h"

namespace Recording2::Inspection {

using Format::FieldStatus;

FieldReader::FieldReader(Format::ByteSource& source, std::int64_t position, std::int64_t bound, std::size_t bufferBytes)
    : m_source(source), m_cursor(source, bufferBytes), m_bound(bound)
{
    // Nobody writes a longer number. Damaged tables may lead into a run of digits or spaces from many places.
    constexpr std::size_t LongestNumber = 64;
    m_cursor.limitNumbers(LongestNumber);
    m_cursor.seek(position);
}

bool FieldReader::time(std::uint64_t& target)
{
    std::uint64_t value = 0;
    return accept(m_cursor.readTime(value)) && take(target, value);
}

bool FieldReader::text(std::string& target)
{
    std::int32_t length = 0;
    return number(length) && bytes(target, length);
}

bool FieldReader::bytes(std::string& target, std::int64_t length)
{
    if (length < 0) {
        return fail("has a negative length");
    }
    if (length > left()) {
        return fail("is longer than the bytes that are left for it");
    }
    target.clear();
    if (length > 0 && m_cursor.readBytes(target, length) != FieldStatus::Ok) {
        return fail("could not be read");
    }
    return true;
}

bool FieldReader::recordHead(std::int32_t& code, std::int32_t& length)
{
    m_part = "The command code";
    if (!number(code)) {
        return false;
    }
    m_part = "The data length";
    if (!number(length)) {
        return false;
    }
    m_part = length == 0 ? nullptr : "The data";
    return length != 0;
}

bool FieldReader::record(std::int32_t& code, std::string& data)
{
    std::int32_t length = 0;
    return recordHead(code, length) && bytes(data, length);
}

std::int64_t FieldReader::endOfRecord(std::int64_t position)
{
    seek(position);
    std::int32_t code = 0;
    std::int32_t length = 0;
    return recordHead(code, length) && length > 0 && length <= left() ? this->position() + length : 0;
}

std::string FieldReader::recordProblem() const
{
    return m_part == nullptr ? "A record has no data." : std::string(m_part) + " of a record " + m_problem + ".";
}

bool FieldReader::accept(FieldStatus status)
{
    switch (status) {
        case FieldStatus::NotANumber:
            return fail("is not a number");
        case FieldStatus::OutOfRange:
            return fail("is out of range");
        case FieldStatus::EndOfFile:
            return fail("is cut off by the end of the file");
        case FieldStatus::Ok:
            break;
    }
    if (position() > m_bound) {
        return fail("runs into what stands behind it");
    }
    // At the end of the file nothing was skipped, so the byte here is the field's own last one.
    return m_cursor.atEnd() || byteAt(position() - 1) != Format::Separator ? fail("is not followed by its separator")
                                                                           : true;
}

bool FieldReader::fail(const char* problem)
{
    m_problem = problem;
    return false;
}

int FieldReader::byteAt(std::int64_t offset)
{
    if (offset < m_windowStart || offset >= m_windowStart + m_windowSize) {
        m_windowStart = offset;
        m_windowSize = static_cast<std::int64_t>(m_source.readAt(offset, m_window.data(), m_window.size()));
    }
    return m_windowSize > 0 ? m_window[static_cast<std::size_t>(offset - m_windowStart)] : -1;
}

bool FieldReader::holdsOnly(std::int64_t offset, std::int64_t end, char byte)
{
    while (offset < end && byteAt(offset) == byte) {
        ++offset;
    }
    return offset >= end;
}

}  // namespace Recording2::Inspection
