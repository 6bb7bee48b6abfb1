// Takes the fenced blocks of one kind out of a document.
#include "documentexamples.h"

#include <algorithm>
#include <fstream>

#include "target.h"

namespace Fuzzing {

std::vector<std::string> documentExamples(const std::string& document, const std::string& infoString)
{
    const std::string fence = "```";
    std::ifstream file(std::string(DOCUMENT_FOLDER) + "/" + document);
    require(file.is_open(), "a document is missing");
    std::vector<std::string> blocks;
    std::string line;
    bool inside = false;
    bool wanted = false;
    while (std::getline(file, line)) {
        line.erase(0, std::min(line.size(), line.find_first_not_of(' ')));  // one in a list is indented
        if (line.starts_with(fence)) {
            inside = !inside;
            wanted = inside && line.starts_with(fence + infoString);
            if (wanted) {
                blocks.emplace_back();
            }
        } else if (wanted) {
            blocks.back() += line + '\n';
        }
    }
    require(!blocks.empty(), "a document has no example");
    return blocks;
}

}  // namespace Fuzzing
