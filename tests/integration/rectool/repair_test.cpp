// rectool repair: what is whole is kept byte for byte, what is rebuilt or lost is told; times for records without.
// rectool verify: every file that the library and the tools write is sound, damage is told with its place.
#include <filesystem>
#include <random>

#include <recording2/fileaccess.h>
#include <recording2/inspection/rescue/repairedtimes.h>
#include <recording2/inspection/verify/verification.h>

#include "rectooltesting.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using namespace testing;
namespace Inspection = Recording2::Inspection;

class RandomRepair : public InFolder, public testing::WithParamInterface<std::uint32_t> {
protected:
    Result repair(const std::string& bytes)
    {
        writeBytes(file("in.rec"), bytes);
        std::filesystem::remove(file("out.rec"));  // no recording is ever replaced
        const Result result = run([&] { return RecTool::repair({file("in.rec"), file("out.rec"), 0, true, false}); });
        EXPECT_EQ(bytesOf(file("in.rec")), bytes) << "the original was changed";
        return result;
    }
    [[nodiscard]] Inspection::Summary result() const { return Inspection::inspect(file("out.rec")); }
    void expectSoundResult() const
    {
        const Inspection::Verification found = Inspection::verify(file("out.rec"));
        EXPECT_EQ(found.readability, Inspection::Readability::Ok);
        for (const Inspection::Remark& remark : found.remarks) {
            EXPECT_EQ(remark.severity, Inspection::Severity::Note) << remark.offset << ": " << remark.text;
        }
    }
};

std::vector<std::uint64_t> timesOf(const Inspection::Summary& summary)
{
    std::vector<std::uint64_t> times;
    for (const auto& entry : summary.times) {
        times.push_back(entry.timeMs);
    }
    return times;
}

}  // namespace

TEST_P(RandomRepair, OfASoundFileIsACopy)
{
    for (const bool bookmarks : {true, false}) {
        const std::string bytes = bytesOf(random({.seed = GetParam(), .damagedTexts = true, .bookmarks = bookmarks}));
        const Result result = repair(bytes);
        EXPECT_EQ(result.exitCode, ExitCode::Fine) << result.err;
        EXPECT_THAT(result.out, HasSubstr("in.rec is sound; this is a copy."));
        EXPECT_EQ(bytesOf(file("out.rec")), bytes);
    }
}

TEST_P(RandomRepair, OfDamagedTablesKeepsEveryRecord)
{
    std::mt19937 generator(GetParam());
    const std::string bytes = bytesOf(random({.seed = GetParam(), .changes = 40}));
    const Inspection::Summary original = Inspection::inspect(file("random.rec"));
    const auto expected = contentsOf(recordsOf(file("random.rec")));
    constexpr std::size_t Versions = 4;  // a file without a version is no recording
    const auto first = static_cast<std::size_t>(original.header.positions.firstRecord);
    const auto times = static_cast<std::size_t>(original.header.positions.timeTable);
    for (int i = 0; i < 15; ++i) {
        std::string damaged = bytes;
        const bool inFront = generator() % 2 == 0;
        const std::size_t at =
            inFront ? Versions + generator() % (first - Versions) : times + generator() % (bytes.size() - times);
        damaged[at] = static_cast<char>(generator());
        const Result result = repair(damaged);
        ASSERT_NE(result.exitCode, ExitCode::CannotRead) << at << result.err;
        EXPECT_EQ(contentsOf(recordsOf(file("out.rec"))), expected) << at;
        expectSoundResult();
        if (inFront) {
            EXPECT_EQ(timesOf(this->result()), timesOf(original)) << at;
        }
    }
}

TEST_P(RandomRepair, OfDamagedRecordsInventsNothing)
{
    std::mt19937 generator(GetParam());
    const std::string bytes = bytesOf(random({.seed = GetParam(), .changes = 40}));
    const Inspection::Summary original = Inspection::inspect(file("random.rec"));
    const std::vector<ClockedRecord> all = recordsOf(file("random.rec"));
    for (int i = 0; i < 15; ++i) {
        const std::size_t which = generator() % all.size();
        const auto position = static_cast<std::size_t>(original.times[which].position);
        std::string damaged = bytes;
        damaged[position + std::to_string(all[which].code).size()] = 'x';  // its first separator
        EXPECT_EQ(repair(damaged).exitCode, ExitCode::Damaged);
        std::vector<ClockedRecord> expected = all;
        expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(which));
        EXPECT_EQ(recordsOf(file("out.rec")), expected);
        expectSoundResult();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomRepair, testing::Range(1U, 9U));

namespace {

using Inspection::RepairedTimes;
using Inspection::repairTimes;

constexpr std::optional<std::uint64_t> Lost;

struct ExpectedTimes {
    std::vector<std::uint64_t> times = {};
    std::uint64_t kept = 0;
    std::uint64_t between = 0;
    std::uint64_t inFront = 0;
    std::uint64_t behind = 0;
    std::optional<std::uint64_t> stepMs = std::nullopt;
    std::uint64_t moved = 0;
};

struct Repaired {
    const char* name;
    std::vector<std::optional<std::uint64_t>> known;
    ExpectedTimes expected;
    std::uint64_t lengthMs = 600;
    std::uint64_t periodMs = 0;
};

const std::vector<Repaired> RepairedCases{
    {"known times stay", {10, 11, 500}, {.times = {10, 11, 500}, .kept = 3}, 600, 7},
    {"no records", {}, {}},
    {"evenly between their neighbours",
     {100, Lost, Lost, Lost, 200},
     {.times = {100, 125, 150, 175, 200}, .kept = 2, .between = 3}},
    {"in front evenly from the start", {Lost, Lost, 30}, {.times = {10, 20, 30}, .kept = 1, .inFront = 2}},
    {"behind evenly up to the end", {100, Lost, Lost}, {.times = {100, 350, 600}, .kept = 1, .behind = 2}},
    {"without any time over the recording", {Lost, Lost, Lost}, {.times = {200, 400, 600}, .behind = 3}},
    {"a period goes before the end",
     {100, Lost, Lost},
     {.times = {100, 120, 140}, .kept = 1, .behind = 2, .stepMs = 20},
     600,
     20},
    {"a period without any time", {Lost, Lost}, {.times = {20, 40}, .behind = 2, .stepMs = 20}, 0, 20},
    {"without an end in the mean distance",
     {100, 110, 130, Lost, Lost},
     {.times = {100, 110, 130, 145, 160}, .kept = 3, .behind = 2, .stepMs = 15},
     0},
    {"with an end that is too early",
     {100, Lost, Lost},
     {.times = {100, 101, 102}, .kept = 1, .behind = 2, .stepMs = 1},
     100},
    {"with an end that leaves too little room",
     {100, 110, Lost, Lost, Lost},
     {.times = {100, 110, 120, 130, 140}, .kept = 2, .behind = 3, .stepMs = 10},
     112},
    {"without anything", {Lost, Lost}, {.times = {1, 2}, .behind = 2, .stepMs = 1}, 0},
    {"where there is no room known ones move",
     {10, Lost, Lost, 11, 12, 50},
     {.times = {10, 11, 12, 13, 14, 50}, .kept = 2, .between = 2, .moved = 2}},
};

}  // namespace

TEST(RepairedTimes, AreMadeUpByTheRules)
{
    for (const auto& [name, known, expected, lengthMs, periodMs] : RepairedCases) {
        SCOPED_TRACE(name);
        const RepairedTimes times = repairTimes(known, lengthMs, periodMs);
        EXPECT_THAT(times, FieldsAre(expected.times, expected.kept, expected.between, expected.inFront, expected.behind,
                                     expected.stepMs, expected.moved));
    }
}

TEST(RepairedTimes, HugeTimesDoNotOverflow)
{
    constexpr std::uint64_t Late = std::numeric_limits<std::int64_t>::max();
    const RepairedTimes times = repairTimes({10, Lost, Late}, 600, 0);
    EXPECT_EQ(times.times[1], 10 + (Late - 10) / 2);
}

namespace {

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
        const std::vector<std::uint64_t> ranges = Inspection::inspect(path).channelRangeTimes;
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
    const std::string middle = std::to_string(Inspection::inspect(source).times.back().timeMs / 2);
    const std::string first = part(source, "", middle, "a.rec");
    const std::string second = part(source, middle, "", "b.rec");
    for (const std::string& made : {first, second, whole({first, second}, "c.rec")}) {
        expectSound(made);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomVerify, testing::Range(1U, 6U));
