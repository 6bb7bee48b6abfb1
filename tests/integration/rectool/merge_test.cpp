// Several recordings as one: order, numbers, times, and what is refused.
#include <random>

#include <nlohmann/json.hpp>

#include <recording2/fileaccess.h>

#include "filesizelimit.h"
#include "rectooltesting.h"
#include "support/recordingbytes.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using namespace testing;
using TestSupport::HeaderFields;
using TestSupport::ReferenceRecording;
namespace Inspection = Recording2::Inspection;

constexpr std::uint64_t Start = 1'600'000'000'000;

HeaderFields headerFrom(std::uint64_t startMs, std::uint64_t stopMs, const std::string& device = "RX")
{
    return {.startMs = Start + startMs, .stopMs = Start + stopMs, .deviceName = device};
}

class Merge : public InFolder {
protected:
    std::string store(const std::string& name, const ReferenceRecording& recording, const HeaderFields& header)
    {
        std::string path = m_folder.file(name);
        writeBytes(path, recording.close(header));
        return path;
    }
    nlohmann::json mergeToJson(const std::vector<std::string>& files, bool separate = false)
    {
        const Result result = run([&] { return RecTool::merge({files, file("merged.rec"), separate, true, true}); });
        EXPECT_EQ(result.exitCode, ExitCode::Fine) << result.err;
        return result.exitCode == ExitCode::Fine ? nlohmann::json::parse(result.out) : nlohmann::json();
    }
};

class RandomMerge : public Merge, public testing::WithParamInterface<std::uint32_t> {};

/// Every record with its time, place, data and value.
std::string cat(const std::string& file)
{
    RecTool::CatOptions options;
    options.file = file;
    options.json = true;
    return run([&] { return RecTool::cat(options); }).out;
}

/// Where two texts begin to differ, a line of each; empty where they do not.
std::string firstOtherLine(const std::string& a, const std::string& b)
{
    std::istringstream linesOfA(a);
    std::istringstream linesOfB(b);
    std::string lineOfA;
    std::string lineOfB;
    do {
        lineOfA.clear();
        lineOfB.clear();
        std::getline(linesOfA, lineOfA);
        std::getline(linesOfB, lineOfB);
    } while (lineOfA == lineOfB && linesOfA && linesOfB);
    return lineOfA == lineOfB ? "" : lineOfA + "\ninstead of\n" + lineOfB;
}

}  // namespace

// Consecutive recordings

TEST_P(RandomMerge, OfTheTwoHalvesIsTheSource)
{
    const std::string source = random({.seed = GetParam(), .bookmarks = false});
    const std::uint64_t end = Inspection::inspect(source).times.back().timeMs;
    for (std::uint64_t at = 8; at <= end; at += 1 + end / 19) {
        const std::string name = std::to_string(at);
        const std::string first = part(source, "", name, "first" + name);
        const std::string merged = whole({part(source, name, "", "second" + name), first}, "whole" + name);
        EXPECT_EQ(firstDifference(History(source), History(merged), RandomStartMs, RandomStartMs + end), 0U)
            << "halves at " << at;
        const Inspection::Header header = Inspection::inspect(merged).header;
        EXPECT_EQ(header.startMs, RandomStartMs);
        EXPECT_EQ(header.stopMs, Inspection::inspect(source).header.stopMs);
    }
}

TEST_P(RandomMerge, OfManyPartsIsTheSource)
{
    const std::string source = random({.seed = GetParam()});
    const std::uint64_t end = Inspection::inspect(source).times.back().timeMs;
    std::vector<std::string> parts;
    for (std::uint64_t i = 0; i < 7; ++i) {
        const std::string from = i == 0 ? "" : std::to_string(end * i / 7);
        const std::string to = i == 6 ? "" : std::to_string(end * (i + 1) / 7);
        parts.insert(parts.begin(), part(source, from, to, "part" + std::to_string(i)));
    }
    const std::string merged = whole(parts, "whole.rec");
    EXPECT_EQ(firstDifference(History(source), History(merged), RandomStartMs, RandomStartMs + end), 0U);
    EXPECT_EQ(bookmarksOf(merged), bookmarksOf(source));
}

TEST_P(RandomMerge, OfAnyPartsIsTheSourceRecordByRecord)
{
    std::mt19937 random(GetParam());
    const auto below = [&](std::uint64_t end) { return random() % end; };
    for (int round = 0; round < 12; ++round) {
        const std::string name = std::to_string(round);
        const std::string source = this->random({.seed = GetParam() * 1000 + static_cast<std::uint32_t>(round),
                                                 .changes = static_cast<int>(1 + below(150)),
                                                 .damagedTexts = below(2) == 0,
                                                 .bearings = below(2) == 0,
                                                 .bookmarks = below(2) == 0},
                                                "source" + name);
        const std::uint64_t end = Inspection::inspect(source).times.back().timeMs;
        std::set<std::uint64_t> cuts;
        for (std::uint64_t i = 1 + below(6); i > 0; --i) {
            cuts.insert(std::min(11 + below(end), end));
        }
        for (std::uint64_t close = *cuts.rbegin(); below(3) > 0 && close < end; ++close) {
            cuts.insert(close);
        }
        cuts.insert(end + 1);
        std::vector<std::string> parts;
        std::string from;
        for (const std::uint64_t at : cuts) {
            const bool last = at == *cuts.rbegin();
            const bool twice = !last && below(2) == 0;  // the moment of the cut is in both parts
            const std::string to = last ? "" : std::to_string(twice ? at : at - 1);
            parts.push_back(part(source, from, to, "part" + name + '_' + std::to_string(at)));
            from = std::to_string(at);
        }
        std::shuffle(parts.begin(), parts.end(), random);
        const std::string merged =
            parts.size() == 1 ? part(source, "", "", "whole" + name) : whole(parts, "whole" + name);
        EXPECT_EQ(firstOtherLine(cat(merged), cat(source)), "")
            << "round " << round << ", cut at " << testing::PrintToString(cuts);
        EXPECT_EQ(bookmarksOf(merged), bookmarksOf(source));
        EXPECT_EQ(Inspection::inspect(merged).channelRangeTimes, Inspection::inspect(source).channelRangeTimes);
    }
}

// Recordings of several stations over the same time

TEST_P(RandomMerge, KeepsEveryRecordOfStationsThatShareNoValue)
{
    const std::string one = random({.seed = GetParam(), .bearings = false}, "one.rec");
    const std::string two =
        random({.seed = GetParam() + 100, .startMs = RandomStartMs + 77, .pathPrefix = "/Two"}, "two.rec");
    // The number without a name would be the same value in both.
    const Result refused = merge({two, one}, file("merged.rec"));
    EXPECT_EQ(refused.exitCode, ExitCode::Usage);
    EXPECT_THAT(refused.err, HasSubstr("Type 2 is recorded here and in"));

    const nlohmann::json summary = mergeToJson({two, one}, true);
    std::map<std::int32_t, std::int32_t> numbers;
    for (const nlohmann::json& type : summary.at("renumbered")) {
        EXPECT_EQ(type.at("file"), two);
        numbers[type.at("code")] = type.at("newCode");
    }
    std::vector<ClockedRecord> ofTwo = recordsOf(two);
    std::set<std::int32_t> codesOfTwo;
    for (ClockedRecord& record : ofTwo) {
        record.code = numbers.count(record.code) > 0 ? numbers[record.code] : record.code;
        codesOfTwo.insert(record.code);
    }
    const std::vector<ClockedRecord> merged = recordsOf(file("merged.rec"));
    std::vector<ClockedRecord> parted = merged;
    const auto endOfOne = std::stable_partition(
        parted.begin(), parted.end(), [&](const ClockedRecord& record) { return codesOfTwo.count(record.code) == 0; });
    EXPECT_EQ(contentsOf({endOfOne, parted.end()}), contentsOf(ofTwo));
    EXPECT_EQ(contentsOf({parted.begin(), endOfOne}), contentsOf(recordsOf(one)));

    // No record is later than the summary says, none is earlier than it was.
    std::map<std::int32_t, std::vector<std::uint64_t>> clocks;
    for (const ClockedRecord& record : merged) {
        clocks[record.code].push_back(record.clockMs);
    }
    std::map<std::int32_t, std::size_t> next;
    std::uint64_t moved = 0;
    std::uint64_t most = 0;
    for (const std::vector<ClockedRecord>& source : {recordsOf(one), ofTwo}) {
        for (const ClockedRecord& record : source) {
            const std::uint64_t clock = clocks[record.code][next[record.code]++];
            ASSERT_GE(clock, record.clockMs);
            moved += clock > record.clockMs ? 1 : 0;
            most = std::max(most, clock - record.clockMs);
        }
    }
    EXPECT_EQ(summary.at("movedRecords"), moved);
    EXPECT_EQ(summary.at("movedByMs"), most);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomMerge, testing::Range(1U, 6U));

TEST_F(Merge, ARangeTimeWithoutARecordKeepsItsClockTime)
{
    const std::string one = store("one.rec", ReferenceRecording().record(1, "a", 10, true), headerFrom(0, 100));
    const std::string two = store("two.rec", ReferenceRecording().record(2, "b", 10, true), headerFrom(50, 300));
    {
        Recording2::CFileAccess access(two.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
        access.addChannelRangeDef(15);
        access.rebuildChannelRangeDef();
    }
    mergeToJson({one, two});
    EXPECT_THAT(Inspection::inspect(file("merged.rec")).channelRangeTimes, ElementsAre(10, 60, 65));
}

TEST_F(Merge, AFullDiskLeavesNothingBehind)
{
    const std::string one = random({.seed = 1}, "one.rec");
    const std::string two = random({.seed = 2, .startMs = RandomStartMs + 1'000'000}, "two.rec");
    const FileSizeLimit limit(3000);
    if (!limit.works()) {
        GTEST_SKIP() << "This system has no limit on the size of files.";
    }
    EXPECT_EQ(merge({one, two}, file("merged.rec")).exitCode, ExitCode::CannotRead);
    EXPECT_THAT(m_folder.names(), ElementsAre("one.rec", "two.rec"));
}

// Files with holes, which take no room on the disk.
TEST_F(Merge, WhatIsLargerThanARecordingCanBeIsRefusedBeforeItIsWritten)
{
    constexpr std::int64_t DataBytes = 1'200'000'000;
    const auto store = [&](const std::string& name, std::uint64_t startMs) {
        HeaderFields header = headerFrom(startMs, startMs + 100);
        const std::string head = "1#" + std::to_string(DataBytes) + '#';
        header.firstRecord = 502;
        header.typeTable = 500;
        header.timeTable = static_cast<std::int32_t>(502 + static_cast<std::int64_t>(head.size()) + DataBytes);
        std::string path = file(name);
        std::ofstream stream(path, std::ios::binary);
        stream << TestSupport::headerArea() << "0#" << head;
        stream.seekp(0);
        stream << header.bytes();
        stream.seekp(header.timeTable);
        stream << TestSupport::ByteBuilder().time(10).number(502).bytes();
        return path;
    };
    const std::string one = store("one.rec", 0);
    const std::string two = store("two.rec", 1000);
    const Result result = merge({one, two}, file("merged.rec"));
    EXPECT_EQ(result.exitCode, ExitCode::CannotRead);
    EXPECT_THAT(result.err,
                AllOf(HasSubstr("2,400,000,"), HasSubstr("2,147,483,647"), HasSubstr("Nothing was written")));
    EXPECT_THAT(m_folder.names(), ElementsAre("one.rec", "two.rec"));
}
