// Differences between two moments of a recording.
#include <nlohmann/json.hpp>

#include "rectooltesting.h"

namespace {

using namespace RecToolTests;
using nlohmann::json;

class RandomDiff : public InFolder, public testing::WithParamInterface<std::uint32_t> {};

/// A value without what may change although nothing that was measured does.
json content(json value)
{
    if (value.is_object()) {
        value.erase("timeStampUs");
    }
    return value;
}

}  // namespace

TEST_P(RandomDiff, ListsExactlyTheTypesWhoseStatesDiffer)
{
    const std::string file = random({.seed = GetParam(), .damagedTexts = true});
    for (std::uint64_t from = 5; from < 400; from += 37) {
        const std::uint64_t to = from + std::uint64_t{60} * GetParam();
        const Result result = run([&] {
            return RecTool::diff({file, std::to_string(from), std::to_string(to), true, true});
        });
        const json document = json::parse(result.out);
        for (const json& type : document.at("types")) {
            const json& before = type.at("before");
            const json& after = type.at("after");
            const bool understood = !before.is_null() && !before.at("value").is_null() && !after.at("value").is_null();
            const bool same = understood ? content(before.at("value")) == content(after.at("value"))
                                         : !before.is_null() && before.at("data") == after.at("data");
            EXPECT_EQ(type.at("differs"), !same) << type.at("keyword") << " from " << from << " to " << to;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomDiff, testing::Range(1U, 5U));
