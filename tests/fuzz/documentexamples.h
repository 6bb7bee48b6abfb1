// The examples of the documents, as seeds.
#pragma once

#include <string>
#include <vector>

namespace Fuzzing {

/// The contents of a document's code blocks whose info string begins with the given one.
[[nodiscard]] std::vector<std::string> documentExamples(const std::string& document, const std::string& infoString);

}  // namespace Fuzzing
