// Texts as TOML writes them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace RecStation {

/// @param text UTF-8
[[nodiscard]] inline std::string tomlString(std::string_view text)
{
    constexpr unsigned char Blank = 0x20;
    constexpr unsigned char Delete = 0x7F;
    constexpr std::size_t EscapeSize = 7;
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += {'\\', c};
        } else if (byte < Blank || byte == Delete) {
            std::array<char, EscapeSize> escape{};
            static_cast<void>(std::snprintf(escape.data(), escape.size(), "\\u%04X", static_cast<unsigned>(byte)));
            quoted += escape.data();
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

/// A key, quoted where it must be.
[[nodiscard]] inline std::string tomlKey(const std::string& key)
{
    const bool bare = !key.empty() && std::all_of(key.begin(), key.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
    });
    return bare ? key : tomlString(key);
}

}  // namespace RecStation
