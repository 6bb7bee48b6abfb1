// rectool verify: every file that the library and the tools write is sound, damage is told with its place.
#include <recording2/fileaccess.h>

#include "rectooltesting.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using testing::HasSubstr;

class RandomVerify : public InFolder, public testing::WithParamInterface<std::uint32_t> {
protected:
    /// Expects that nothing is damaged.
    static void expectSound(const std::string& path)
    {
        const Result result = run([&] { return RecTool::verify({{path}, false}); });
        EXPECT_EQ(result.exitCode, ExitCode::Fine) << result.out << result.err;
        EXPECT_THAT(result.out, HasSubstr(path + ": sound"));
    }
};

void change(const std::string& path, const std::function<void(Recording2::CFileAccess&)>& how)
{
    Recording2::CFileAccess file(path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    ASSERT_TRUE(file.IsValidFile());
    how(file);
}

}  // namespace

TEST_P(RandomVerify, WhatTheLibraryWritesIsSound)
{
    for (const bool bookmarks : {true, false}) {
        const std::string path = random({.seed = GetParam(), .damagedTexts = true, .bookmarks = bookmarks});
        expectSound(path);
        change(path, [](auto& access) { access.addBookmark(5, "one more, longer than the others"); });
        expectSound(path);
        change(path, [](auto& access) {
            for (std::uint64_t time = 1; time < 10'000; ++time) {
                access.removeBookmark(time);
            }
            access.addBookmark(9, "9");
        });
        expectSound(path);
        const std::vector<std::uint64_t> ranges = Recording2::Inspection::inspect(path).channelRangeTimes;
        change(path, [&](auto& access) {
            access.clearChannelRangeDef();
            access.writeBookmarks();  // clearing runs into them
        });
        expectSound(path);
        change(path, [&](auto& access) {
            access.addChannelRangeDef(ranges.front());
            access.rebuildChannelRangeDef();
        });
        expectSound(path);
    }
}

TEST_P(RandomVerify, WhatCutAndMergeMakeIsSound)
{
    const std::string source = random({.seed = GetParam()});
    const std::string middle = std::to_string(Recording2::Inspection::inspect(source).times.back().timeMs / 2);
    const std::string first = part(source, "", middle, "a.rec");
    const std::string second = part(source, middle, "", "b.rec");
    for (const std::string& made : {first, second, whole({first, second}, "c.rec")}) {
        expectSound(made);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomVerify, testing::Range(1U, 6U));
