// The names of recordings that some paths hold, listed again and again at little cost.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <system/names.h>

namespace RecView {

/// A name of the file system that may be that of a recording.
struct WatchedName {
    std::string path;       ///< as the system has it
    bool wasNamed = false;  ///< by itself, not found in a directory: that it is missing is to be told
};

class WatchedPaths {
public:
    explicit WatchedPaths(std::vector<std::string> paths) : m_paths(std::move(paths)) {}

    /// Lists the recordings, finished and not: files that were named, and *.rec and *.tmp of directories. A directory
    /// is read only when it has changed since. What cannot be read is as empty.
    [[nodiscard]] std::vector<WatchedName> list();

private:
    struct Directory {
        std::filesystem::file_time_type changed;
        bool settled = false;  ///< it did not change for so long that nothing can have been overlooked
        std::vector<std::string> files;
    };

    void addDirectory(const std::string& path, std::vector<WatchedName>& names);

    std::vector<std::string> m_paths;
    std::map<std::string, Directory> m_directories;
};

}  // namespace RecView
