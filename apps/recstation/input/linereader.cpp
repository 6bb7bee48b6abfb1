// Cutting lines out of a buffer; one that is too long is dropped, but counted.
#include "input/linereader.h"

#include <algorithm>
#include <string_view>

#include "input/badlines.h"
#include "input/fields.h"

namespace RecStation {

bool LineReader::fill()
{
    m_position = 0;
    m_filled = m_input(m_buffer.data(), m_buffer.size());
    return m_filled > 0;
}

// Takes the bytes up to a position of the buffer into the line, as far as the line may grow.
void LineReader::keep(std::size_t end)
{
    constexpr std::size_t MiB = 1'048'576;
    const std::size_t count = end - m_position;
    if (m_line.size() + count > m_longestLine) {
        m_problem = "it is longer than " + (m_longestLine % MiB == 0 ? std::to_string(m_longestLine / MiB) + " MiB"
                                                                     : std::to_string(m_longestLine) + " bytes");
    }
    if (m_problem.empty()) {
        m_line.append(m_buffer.data() + m_position, count);
    } else {
        m_line.clear();
        m_line.shrink_to_fit();
    }
    m_position = end;
}

bool LineReader::next()
{
    if (m_damaged) {
        return false;
    }
    m_problem.clear();
    try {
        return readLine();
    } catch (const DamagedInput& error) {
        m_problem = error.what();
        m_damaged = true;
        ++m_number;
        return true;
    }
}

const std::string& LineReader::line() const
{
    if (!m_problem.empty()) {
        throw LineError(m_problem);
    }
    return m_line;
}

bool LineReader::readLine()
{
    m_line.clear();
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
    if (m_number == 0 && m_line.starts_with(ByteOrderMark)) {
        m_line.erase(0, ByteOrderMark.size());
    }
    m_number += any ? 1U : 0U;
    return any;
}

}  // namespace RecStation
