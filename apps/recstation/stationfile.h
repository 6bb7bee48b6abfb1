// The file that starts a station: what stands in its tables [station] and [[source]], and the recorders beside them.
#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
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

}  // namespace RecStation
