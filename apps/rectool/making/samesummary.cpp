// Comparing type tables, time tables and bookmarks entry by entry.
#include "samesummary.h"

#include <algorithm>

namespace RecTool {

namespace Inspection = Recording2::Inspection;

bool sameTable(const std::vector<Inspection::TypeEntry>& a, const std::vector<Inspection::TypeEntry>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
        return x.typeNumber == y.typeNumber && x.valueType == y.valueType && x.keyword == y.keyword &&
               x.valuePath == y.valuePath;
    });
}

bool sameTable(const std::vector<Inspection::TimeEntry>& a, const std::vector<Inspection::TimeEntry>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto& x, const auto& y) { return x.timeMs == y.timeMs && x.position == y.position; });
}

bool sameTable(const std::vector<Inspection::Bookmark>& a, const std::vector<Inspection::Bookmark>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto& x, const auto& y) { return x.timeMs == y.timeMs && x.text == y.text; });
}

}  // namespace RecTool
