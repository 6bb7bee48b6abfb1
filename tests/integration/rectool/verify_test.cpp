// rectool verify: every file that the library and the tools write is sound, damage is told with its place.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <recording2/fileaccess.h>
#include <recording2/inspection/inspection.h>

#include "randomrecording.h"
#include "rectooltesting.h"
#include "support/samplerecording.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using testing::HasSubstr;

class VerifyVerb : public testing::Test {
protected:
    [[nodiscard]] std::string file(const std::string& name) const { return m_folder.file(name); }
    static Result verify(const std::vector<std::string>& files, bool asJson = false)
    {
        return run([&] { return RecTool::verify({files, asJson}); });
    }
    /// Expects that nothing is damaged.
    static void expectSound(const std::string& path)
    {
        const Result result = verify({path});
        EXPECT_EQ(result.exitCode, ExitCode::Fine) << result.out << result.err;
        EXPECT_THAT(result.out, HasSubstr(path + ": sound"));
    }

    Folder m_folder;
};

class RandomVerify : public VerifyVerb, public testing::WithParamInterface<std::uint32_t> {};

void change(const std::string& path, const std::function<void(Recording2::CFileAccess&)>& how)
{
    Recording2::CFileAccess file(path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    ASSERT_TRUE(file.IsValidFile());
    how(file);
}

}  // namespace

TEST_F(VerifyVerb, EveryGoldenFileIsSoundButTheOneWhoseBookmarkWasClearedAway)
{
    for (const auto& folder : std::filesystem::directory_iterator(GOLDEN_FOLDER)) {
        const std::string name = folder.path().filename().string();
        const std::string path = (folder.path() / (name + ".rec")).string();
        if (folder.is_directory() && std::filesystem::exists(path) && name != "ranges_cleared_bookmarks") {
            expectSound(path);
        }
    }
    const std::string cleared = std::string(GOLDEN_FOLDER) + "/ranges_cleared_bookmarks/ranges_cleared_bookmarks.rec";
    EXPECT_EQ(verify({cleared}).exitCode, ExitCode::Damaged);
}

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

TEST_F(VerifyVerb, TellsEveryFindingOnALineOfItsOwn)
{
    writeSampleRecording(file("sample.rec"));
    std::string bytes = bytesOf(file("sample.rec"));
    bytes[400] = 'x';
    writeBytes(file("sample.rec"), bytes + "more");
    const Result result = verify({file("sample.rec")});
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    const std::string name = file("sample.rec");
    EXPECT_EQ(result.out,
              name +
                  ": offset 400: damage: The header area is not filled with 0 and a final # behind the header "
                  "record.\n" +
                  name + ": offset " + std::to_string(bytes.size()) + ": note: 4 bytes stand behind all tables.\n" +
                  name + ": damaged, 1 finding, 1 note\n");
}

TEST_F(VerifyVerb, OfSeveralFilesTheWorstCounts)
{
    writeSampleRecording(file("sample.rec"));
    writeBytes(file("letter.rec"), "Dear reader");
    const Result result = verify({file("letter.rec"), file("sample.rec"), file("nothing.rec")});
    EXPECT_EQ(result.exitCode, ExitCode::CannotRead);
    EXPECT_EQ(result.out, file("sample.rec") + ": sound\n");
    EXPECT_THAT(result.err, HasSubstr("letter.rec: This is not a recording."));
    EXPECT_THAT(result.err, HasSubstr("nothing.rec: There is no such file."));
}

TEST_F(VerifyVerb, JsonHasOneObjectAFile)
{
    writeSampleRecording(file("sample.rec"));
    std::string bytes = bytesOf(file("sample.rec"));
    bytes[400] = 'x';
    writeBytes(file("damaged.rec"), bytes);
    const Result result = verify({file("sample.rec"), file("damaged.rec"), file("nothing.rec")}, true);
    const auto files = nlohmann::json::parse(result.out).at("files");
    ASSERT_EQ(files.size(), 3U);
    EXPECT_EQ(files[0].at("sound"), true);
    EXPECT_EQ(files[0].at("records"), 11);
    EXPECT_TRUE(files[0].at("findings").empty());
    EXPECT_EQ(files[1].at("sound"), false);
    EXPECT_EQ(files[1].at("findings")[0].at("offset"), 400);
    EXPECT_EQ(files[1].at("findings")[0].at("severity"), "damage");
    EXPECT_EQ(files[2].at("readability"), "missing");
    EXPECT_EQ(files[2].at("problem"), "There is no such file.");
}
