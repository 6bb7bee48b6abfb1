// The examples that documents show.
#pragma once

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace TestSupport {

/// The contents of a document's code blocks, in order, whose info string is the given one or, unless whole, begins with
/// it.
/// @throws std::runtime_error when there is none
[[nodiscard]] inline std::vector<std::string> documentExamples(const std::string& path, const std::string& infoString,
                                                               bool whole = false)
{
    const std::string fence = "```";
    std::ifstream file(path);
    std::vector<std::string> blocks;
    bool inside = false;
    bool wanted = false;
    for (std::string line; std::getline(file, line);) {
        line.erase(0, std::min(line.size(), line.find_first_not_of(' ')));  // one in a list is indented
        if (line.starts_with(fence)) {
            inside = !inside;
            wanted = inside && (whole ? line == fence + infoString : line.starts_with(fence + infoString));
            if (wanted) {
                blocks.emplace_back();
            }
        } else if (wanted) {
            blocks.back() += line + '\n';
        }
    }
    if (blocks.empty()) {
        throw std::runtime_error(path + " has no example of " + infoString);
    }
    return blocks;
}

}  // namespace TestSupport
