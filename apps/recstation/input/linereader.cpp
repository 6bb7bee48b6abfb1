// Cutting lines out of a buffer; one that is too long is dropped, but counted.
#include "input/linereader.h"

#include <algorithm>
#include <utility>

namespace RecStation {

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

LineReader::LineReader(ByteInput input, std::size_t longestLine)
    : m_input(std::move(input)), m_longestLine(longestLine), m_buffer(std::size_t{64} * 1024)
{
}

bool LineReader::fill()
{
    m_position = 0;
    m_filled = m_input(m_buffer.data(), m_buffer.size());
    return m_filled > 0;
}

// Takes the bytes up to a position of the buffer into the line, as far as the line may grow.
void LineReader::keep(std::size_t end)
{
    const std::size_t count = end - m_position;
    if (m_tooLong || m_line.size() + count > m_longestLine) {
        m_tooLong = true;
        m_line.clear();
        m_line.shrink_to_fit();
    } else {
        m_line.append(m_buffer.data() + m_position, count);
    }
    m_position = end;
}

LineReader::Result LineReader::next()
{
    if (!m_problem.empty()) {
        return Result::End;
    }
    try {
        return readLine();
    } catch (const DamagedInput& error) {
        m_problem = error.what();
        ++m_number;
        return Result::Damaged;
    }
}

LineReader::Result LineReader::readLine()
{
    m_line.clear();
    m_tooLong = false;
    m_terminated = false;
    bool any = false;
    while (m_position < m_filled || fill()) {
        any = true;
        const auto begin = m_buffer.begin();
        const auto unread = begin + static_cast<std::ptrdiff_t>(m_position);
        const auto end = begin + static_cast<std::ptrdiff_t>(m_filled);
        const auto found = std::find(unread, end, '\n');
        keep(static_cast<std::size_t>(found - begin));
        if (found != end) {
            ++m_position;
            m_terminated = true;
            break;
        }
    }
    if (!any) {
        return Result::End;
    }
    if (m_number == 0 && m_line.starts_with(ByteOrderMark)) {
        m_line.erase(0, ByteOrderMark.size());
    }
    ++m_number;
    return m_tooLong ? Result::TooLong : Result::Line;
}

}  // namespace RecStation
