// Looking one byte ahead, across buffers.
#include "sources/nmea/lineends.h"

#include <utility>

namespace RecStation {

ByteInput withLineFeeds(ByteInput input)
{
    return [input = std::move(input), waits = false](char* buffer, std::size_t size) mutable -> std::size_t {
        for (;;) {
            std::size_t filled = 0;
            if (std::exchange(waits, false)) {  // a carriage return that is not given yet
                buffer[filled++] = '\r';
            }
            const std::size_t more = input(buffer + filled, size - filled);
            if (more == 0) {
                return filled;
            }
            filled += more;
            for (std::size_t i = 0; i + 1 < filled; ++i) {
                if (buffer[i] == '\r' && buffer[i + 1] != '\n' && buffer[i + 1] != '\r') {
                    buffer[i] = '\n';
                }
            }
            waits = buffer[filled - 1] == '\r';
            filled -= waits ? 1U : 0U;
            if (filled > 0) {
                return filled;
            }
        }
    };
}

}  // namespace RecStation
