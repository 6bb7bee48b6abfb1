// Comparing the spans of the sources, and refusing those with a gap between them.
#include "overlap.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "input/isotime.h"
#include "input/timeorder.h"

namespace RecStation {

namespace {

struct Span {
    Source* source;
    unsigned long long first;
};

// The source that reaches farthest, and how far; without a time it is not known to end.
struct Reach {
    Span span;
    std::optional<unsigned long long> last;
};

std::string spanOf(const Span& span, std::optional<unsigned long long> last)
{
    return span.source->name().toStdString() + " (" + utcText(span.first) +
           (last ? " to " + utcText(std::max(*last, span.first)) : " on") + ")";
}

}  // namespace

void requireOverlap(const std::vector<std::unique_ptr<Source>>& sources, unsigned long long gapUs)
{
    std::vector<Span> spans;
    for (const auto& source : sources) {
        if (const auto first = source->nextTime()) {
            spans.push_back({source.get(), *first});
        }
    }
    std::stable_sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.first < b.first; });
    if (spans.size() < 2 || spans.back().first - spans.front().first <= gapUs) {
        return;
    }
    Reach reach{spans.front(), spans.front().source->lastTime()};
    for (auto next = spans.begin() + 1; next != spans.end() && reach.last; ++next) {
        const auto last = next->source->lastTime();
        if (next->first > *reach.last + gapUs) {
            throw std::runtime_error(spanOf(reach.span, reach.last) + " and " + spanOf(*next, last) +
                                     " lie apart: record them one after the other, correct the times of one, or give "
                                     "--allow-gap (--split-on-gap begins a new recording behind the gap)");
        }
        if (!last || *last > *reach.last) {
            reach = {*next, last};
        }
    }
}

}  // namespace RecStation
