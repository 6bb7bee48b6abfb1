// What somebody who mistyped a word meant.
#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace TerminalText {

namespace Detail {

/// How many letters must be added, left out, replaced or swapped with their neighbour to make one word the other.
inline std::size_t mistakes(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::vector<std::size_t> line{i};
        for (std::size_t j = 1; j <= b.size(); ++j) {
            std::size_t least =
                std::min({last[j] + 1, line[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                least = std::min(least, beforeLast[j - 2] + 1);
            }
            line.push_back(least);
        }
        beforeLast = std::move(last);
        last = std::move(line);
    }
    return last.back();
}

}  // namespace Detail

/// The word with the fewest letters wrong, missing, too many or swapped; nothing when none is near.
[[nodiscard]] inline std::optional<std::string> nearestWord(const std::string& word,
                                                            const std::vector<std::string>& words)
{
    constexpr std::size_t Longest = 40;
    constexpr std::size_t LettersPerMistake = 3;
    if (word.size() > Longest) {
        return std::nullopt;
    }
    std::optional<std::string> nearest;
    std::size_t least = std::max<std::size_t>(1, word.size() / LettersPerMistake) + 1;
    for (const std::string& candidate : words) {
        const std::size_t count = Detail::mistakes(word, candidate);
        if (count < least) {
            least = count;
            nearest = candidate;
        }
    }
    return nearest;
}

/// What to say behind a word that there is not: ": did you mean WORD?", or nothing.
[[nodiscard]] inline std::string didYouMean(const std::string& word, const std::vector<std::string>& words)
{
    const auto near = nearestWord(word, words);
    return near ? ": did you mean " + *near + "?" : std::string();
}

}  // namespace TerminalText
