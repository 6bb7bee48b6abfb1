// The file that starts a station: what stands in its tables [station] and [[source]], and the recorders beside them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace RecStation {

/// "FILE:LINE: what is wrong".
class StationFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One key of a table, as a command line would have it.
struct StationSetting {
    std::string key;
    std::vector<std::string> texts;  ///< several where the file has an array
    std::optional<bool> on;          ///< instead of texts: true or false
    unsigned line = 0;
};

struct StationTable {
    std::string type;  ///< of a source; empty for [station]
    unsigned line = 0;
    std::vector<StationSetting> settings;
};

/// The lines of the keys in recorders' tables, by "recorder.key".
using KeyLines = std::map<std::string, unsigned>;

struct StationFile {
    std::string path;
    std::string text;
    StationTable station;
    std::vector<StationTable> sources;
    bool startsSources = false;  ///< has one of the tables above
    bool hasRecorders = false;
    bool hasArchive = false;
    KeyLines lines;

    /// "PATH:LINE: ".
    [[nodiscard]] std::string at(unsigned line) const { return path + ':' + std::to_string(line) + ": "; }
};

/// @param text the content of the file
/// @throws StationFileError for tables and keys that mean nothing; what is no TOML at all too
[[nodiscard]] StationFile readStationFile(const std::string& path, const std::string& text);

/// Everything but [station] and [[source]], in the order of the file.
/// @param text TOML
/// @param forced what every recorder's key Journal becomes; empty: nothing
/// @param lacking what it becomes where a recorder has none; empty: nothing
[[nodiscard]] std::string otherTables(const std::string& text, const std::string& forced, const std::string& lacking);

// ---- texts as TOML writes them

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
