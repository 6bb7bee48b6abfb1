// Cutting lines out of bytes as they come.
#include "live/lines.h"

namespace RecStation {

void LineSplitter::put(std::string_view bytes)
{
    if (m_dropping) {
        const std::size_t feed = bytes.find('\n');
        m_dropping = feed == std::string_view::npos;
        bytes.remove_prefix(m_dropping ? bytes.size() : feed + 1);
    }
    m_bytes.erase(0, m_taken);
    m_taken = 0;
    m_bytes += bytes;
}

std::optional<std::string_view> LineSplitter::next()
{
    for (;;) {
        const std::size_t feed = m_bytes.find('\n', m_taken);
        if (feed == std::string::npos) {
            break;
        }
        std::string_view line = std::string_view(m_bytes).substr(m_taken, feed - m_taken);
        m_taken = feed + 1;
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.size() <= m_longest) {
            return line;
        }
        ++m_tooLong;
    }
    // Of a line that has no end yet no more is kept than a line may have.
    if (m_bytes.size() - m_taken > m_longest + 1) {
        ++m_tooLong;
        m_dropping = true;
        m_taken = m_bytes.size();
    }
    return std::nullopt;
}

void LineSplitter::clear()
{
    m_bytes.clear();
    m_taken = 0;
    m_dropping = false;
}

void LineConnection::open(const Address& address)
{
    m_lines.clear();
    m_connection.open(address);
}

std::optional<std::string_view> LineConnection::next(Deadline deadline)
{
    constexpr std::size_t AtATime = std::size_t{64} * 1024;
    for (;;) {
        if (const auto line = m_lines.next()) {
            return line;
        }
        m_buffer.resize(AtATime);
        const std::size_t count = m_connection.read(m_buffer.data(), m_buffer.size(), deadline);
        if (count == 0) {
            return std::nullopt;
        }
        m_lines.put({m_buffer.data(), count});
    }
}

}  // namespace RecStation
