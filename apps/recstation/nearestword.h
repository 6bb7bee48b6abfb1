// What somebody who mistyped a word meant.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace recstation {

/// The word with the fewest letters wrong, missing, too many or swapped; nothing when none is near.
[[nodiscard]] std::optional<std::string> nearestWord(const std::string& word, const std::vector<std::string>& words);

}  // namespace recstation
