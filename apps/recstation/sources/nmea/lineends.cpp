// Looking one byte ahead, across buffers.
#include "sources/nmea/lineends.h"

#include <memory>
#include <utility>

namespace RecStation {

namespace {

class LineEnds {
public:
    explicit LineEnds(ByteInput input) : m_input(std::move(input)) {}

    std::size_t read(char* buffer, std::size_t size);

private:
    ByteInput m_input;
    bool m_waits = false;  // a carriage return that is not given yet
};

std::size_t LineEnds::read(char* buffer, std::size_t size)
{
    for (;;) {
        std::size_t filled = 0;
        if (std::exchange(m_waits, false)) {
            buffer[filled++] = '\r';
        }
        const std::size_t more = m_input(buffer + filled, size - filled);
        if (more == 0) {
            return filled;
        }
        filled += more;
        for (std::size_t i = 0; i + 1 < filled; ++i) {
            if (buffer[i] == '\r' && buffer[i + 1] != '\n' && buffer[i + 1] != '\r') {
                buffer[i] = '\n';
            }
        }
        m_waits = buffer[filled - 1] == '\r';
        filled -= m_waits ? 1U : 0U;
        if (filled > 0) {
            return filled;
        }
    }
}

}  // namespace

ByteInput withLineFeeds(ByteInput input)
{
    const auto ends = std::make_shared<LineEnds>(std::move(input));
    return [ends](char* buffer, std::size_t size) { return ends->read(buffer, size); };
}

}  // namespace RecStation
