// rectool verify: every file that the library and the tools write is sound, damage is told with its place.
#include <recording2/fileaccess.h>

#include "randomrecording.h"
#include "rectooltesting.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using testing::HasSubstr;

class RandomVerify : public testing::TestWithParam<std::uint32_t> {
protected:
    [[nodiscard]] std::string file(const std::string& name) const { return m_folder.file(name); }
    /// Expects that nothing is damaged.
    static void expectSound(const std::string& path)
    {
        const Result result = run([&] { return RecTool::verify({{path}, false}); });
        EXPECT_EQ(result.exitCode, ExitCode::Fine) << result.out << result.err;
        EXPECT_THAT(result.out, HasSubstr(path + ": sound"));
    }

    Folder m_folder;
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
        const std::string path = file("random.rec");
        writeRandomRecording(path, {.seed = GetParam(), .damagedTexts = true, .bookmarks = bookmarks});
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
    const std::string source = file("random.rec");
    writeRandomRecording(source, {.seed = GetParam()});
    const std::uint64_t middle = Recording2::Inspection::inspect(source).times.back().timeMs / 2;
    ASSERT_EQ(cut(source, "", std::to_string(middle), file("a.rec")).exitCode, ExitCode::Fine);
    ASSERT_EQ(cut(source, std::to_string(middle), "", file("b.rec")).exitCode, ExitCode::Fine);
    ASSERT_EQ(merge({file("a.rec"), file("b.rec")}, file("c.rec")).exitCode, ExitCode::Fine);
    for (const char* name : {"a.rec", "b.rec", "c.rec"}) {
        expectSound(file(name));
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomVerify, testing::Range(1U, 6U));
