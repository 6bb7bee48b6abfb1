// Text of files, names and values as it may be shown on a terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace TerminalText {

namespace Detail {

struct Decoded {
    std::uint32_t character = 0;
    std::size_t bytes = 0;  ///< 0: no UTF-8
};

/// The first character of what is not empty.
inline Decoded decode(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::uint32_t lead = byte(0);
    const std::size_t bytes = lead < 0x80U ? 1 : lead < 0xC2U ? 0 : lead < 0xE0U ? 2 : lead < 0xF0U ? 3 : 4;
    if (bytes == 0 || bytes > text.size() || lead > 0xF4U) {
        return {};
    }
    constexpr std::uint32_t LeadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    Decoded decoded{lead & LeadBits[bytes], bytes};
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) {
            return {};
        }
        decoded.character = decoded.character << 6U | (byte(i) & 0x3FU);
    }
    constexpr std::uint32_t Least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = decoded.character >= 0xD800U && decoded.character <= 0xDFFFU;
    return decoded.character < Least[bytes] || surrogate || decoded.character > 0x10FFFFU ? Decoded{} : decoded;
}

/// What a terminal obeys instead of showing it: control characters, ends of lines, turns of the direction.
inline bool isObeyed(std::uint32_t c)
{
    return c < 0x20U || (c >= 0x7FU && c < 0xA0U) || c == 0x2028U || c == 0x2029U || (c >= 0x202AU && c <= 0x202EU) ||
           (c >= 0x2066U && c <= 0x2069U);
}

inline void appendEscapedByte(std::string& line, char byte)
{
    constexpr std::string_view Digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    switch (byte) {
        case '\n':
            line += "\\n";
            break;
        case '\r':
            line += "\\r";
            break;
        case '\t':
            line += "\\t";
            break;
        default:
            line.append({'\\', 'x', Digits[value >> 4U], Digits[value & 0xFU]});
    }
}

}  // namespace Detail

/// UTF-8 as one line that a terminal only shows: \n, \x1b and the like for what it would obey, and for bytes that are
/// no UTF-8, byte by byte.
[[nodiscard]] inline std::string oneLine(std::string_view utf8)
{
    std::string line;
    while (!utf8.empty()) {
        const Detail::Decoded decoded = Detail::decode(utf8);
        const std::size_t bytes = decoded.bytes == 0 ? 1 : decoded.bytes;
        if (decoded.bytes != 0 && !Detail::isObeyed(decoded.character)) {
            line += utf8.substr(0, bytes);
        } else {
            for (const char byte : utf8.substr(0, bytes)) {
                Detail::appendEscapedByte(line, byte);
            }
        }
        utf8.remove_prefix(bytes);
    }
    return line;
}

}  // namespace TerminalText
