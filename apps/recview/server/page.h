// The page as it was compiled into the program.
#pragma once

#include <string>
#include <vector>

namespace RecView {

struct PageFile {
    std::string content;
    const char* type = "";
    std::string tag;  ///< another for another content, in quotes
};

/// @param path of a request; "/" is the page itself
/// @return nullptr where the page has no such file
[[nodiscard]] const PageFile* pageFile(const std::string& path);
[[nodiscard]] std::vector<std::string> pageFiles();  ///< all paths

}  // namespace RecView
