#include "nearestword.h"

#include <algorithm>
#include <cstddef>

namespace recstation {

namespace {

// Optimal string alignment.
std::size_t mistakes(const std::string& a, const std::string& b)
{
    std::vector<std::vector<std::size_t>> steps(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const std::size_t other = a[i - 1] == b[j - 1] ? 0 : 1;
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, steps[i - 1][j - 1] + other});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
            }
        }
    }
    return steps[a.size()][b.size()];
}

}  // namespace

std::optional<std::string> nearestWord(const std::string& word, const std::vector<std::string>& words)
{
    constexpr std::size_t longest = 40;
    constexpr std::size_t lettersPerMistake = 3;
    if (word.size() > longest) {
        return std::nullopt;
    }
    std::optional<std::string> nearest;
    std::size_t least = std::max<std::size_t>(1, word.size() / lettersPerMistake) + 1;
    for (const std::string& candidate : words) {
        const std::size_t count = mistakes(word, candidate);
        if (count < least) {
            least = count;
            nearest = candidate;
        }
    }
    return nearest;
}

}  // namespace recstation
