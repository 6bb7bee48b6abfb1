// Every seed and every kept input goes through its target in the ordinary build too: targets keep working, and what
// was once found stays found. doc/fuzzing.md says how an input is kept.
#include "support/testing.h"
#include "target.h"

namespace {

namespace fs = std::filesystem;
using Fuzzing::Target;

struct Input {
    const Target* target;
    std::string name;
    std::string bytes;
};

void PrintTo(const Input& input, std::ostream* stream)
{
    *stream << input.target->name << '/' << input.name;
}

std::string bytesOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<Input> allInputs()
{
    std::vector<Input> inputs;
    for (const Target& target : Fuzzing::targets()) {
        std::size_t number = 0;
        for (const std::string& seed : target.seeds()) {
            inputs.push_back({&target, "seed" + std::to_string(number++), seed});
        }
        const fs::path kept = fs::path(KEPT_FOLDER) / target.name;
        if (fs::is_directory(kept)) {
            for (const fs::directory_entry& entry : fs::directory_iterator(kept)) {
                inputs.push_back({&target, entry.path().filename().string(), bytesOf(entry.path())});
            }
        }
    }
    return inputs;
}

std::string testName(const testing::TestParamInfo<Input>& info)
{
    std::string name = std::string(info.param.target->name) + '_' + info.param.name;
    for (char& c : name) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        c = plain ? c : '_';
    }
    return name;
}

class FuzzTarget : public testing::TestWithParam<Input> {};

TEST_P(FuzzTarget, TakesAnyBytes)
{
    GetParam().target->run(GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(Kept, FuzzTarget, testing::ValuesIn(allInputs()), testName);

TEST(FuzzTargets, HaveSeedsAndDifferentNames)
{
    std::string last;
    for (const Target& target : Fuzzing::targets()) {
        EXPECT_LT(last, target.name);
        EXPECT_FALSE(target.seeds().empty()) << target.name;
        last = target.name;
    }
    EXPECT_THROW(static_cast<void>(Fuzzing::targetOf("nothing")), std::invalid_argument);
}

TEST(FuzzTargets, KeptInputsBelongToATarget)
{
    for (const fs::directory_entry& entry : fs::directory_iterator(KEPT_FOLDER)) {
        if (entry.is_directory()) {
            EXPECT_NO_THROW(static_cast<void>(Fuzzing::targetOf(entry.path().filename().string()))) << entry.path();
        }
    }
}

}  // namespace
