// What the command line asks for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace RecView {

/// All texts are UTF-8.
struct ProgramOptions {
    std::vector<std::string> paths;  ///< files, directories, archive addresses
    std::uint16_t port = 0;          ///< 0: one that is free
    std::string listen;              ///< a numeric address; empty: the loopback one
    bool edit = false;               ///< bookmarks may be changed
    std::uint64_t cacheBytes = std::uint64_t{4'000'000'000};
    std::string cacheDirectory;        ///< empty: in the user's
    std::string archiveConfiguration;  ///< empty: of the environment
    bool open = false;                 ///< the page, in the user's browser
    bool json = false;
    bool quiet = false;
    bool untilInputEnds = false;  ///< end with whoever holds the standard input
};

}  // namespace RecView
