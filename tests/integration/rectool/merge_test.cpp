// Several recordings as one: order, numbers, times, and what is refused.
#include <algorithm>
#include <cstdint>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <recording2/fileaccess.h>

#include "filesizelimit.h"
#include "randomrecording.h"
#include "rectooltesting.h"
#include "support/recordingbytes.h"
#include "support/samplerecording.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;
using TestSupport::HeaderFields;
using TestSupport::ReferenceRecording;
namespace Inspection = Recording2::Inspection;

constexpr std::uint64_t Start = 1'600'000'000'000;

HeaderFields headerFrom(std::uint64_t startMs, std::uint64_t stopMs, const std::string& device = "RX")
{
    HeaderFields header;
    header.startMs = Start + startMs;
    header.stopMs = Start + stopMs;
    header.deviceName = device;
    return header;
}

class Merge : public testing::Test {
protected:
    std::string random(const std::string& name, const RandomOptions& options)
    {
        std::string path = m_folder.file(name);
        writeRandomRecording(path, options);
        return path;
    }
    std::string store(const std::string& name, const ReferenceRecording& recording, const HeaderFields& header)
    {
        std::string path = m_folder.file(name);
        writeBytes(path, recording.close(header));
        return path;
    }
    [[nodiscard]] std::string file(const std::string& name) const { return m_folder.file(name); }
    nlohmann::json mergeToJson(const std::vector<std::string>& files, bool separate = false)
    {
        const Result result = run([&] { return RecTool::merge({files, file("merged.rec"), separate, true, true}); });
        EXPECT_EQ(result.exitCode, ExitCode::Fine) << result.err;
        return result.exitCode == ExitCode::Fine ? nlohmann::json::parse(result.out) : nlohmann::json();
    }

    Folder m_folder;
};

class RandomMerge : public Merge, public testing::WithParamInterface<std::uint32_t> {};

std::vector<Inspection::TypeEntry> typesOf(const std::string& file)
{
    return Inspection::inspect(file).types;
}

std::string nameOf(const Inspection::TypeEntry& type)
{
    return std::to_string(type.typeNumber) + ' ' + type.keyword + ' ' + type.valuePath;
}

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

std::vector<std::string> typeNamesOf(const std::string& file)
{
    std::vector<std::string> names;
    for (const Inspection::TypeEntry& type : typesOf(file)) {
        names.push_back(nameOf(type));
    }
    return names;
}

}  // namespace

// Consecutive recordings

TEST_P(RandomMerge, OfTheTwoHalvesIsTheSource)
{
    const std::string source = random("source.rec", {.seed = GetParam(), .bookmarks = false});
    const std::uint64_t end = Inspection::inspect(source).times.back().timeMs;
    for (std::uint64_t at = 8; at <= end; at += 1 + end / 19) {
        const std::string name = std::to_string(at);
        ASSERT_EQ(cut(source, "", name, file("first" + name)).exitCode, ExitCode::Fine);
        ASSERT_EQ(cut(source, name, "", file("second" + name)).exitCode, ExitCode::Fine);
        const Result result = merge({file("second" + name), file("first" + name)}, file("whole" + name));
        ASSERT_EQ(result.exitCode, ExitCode::Fine) << result.err;
        EXPECT_EQ(firstDifference(History(source), History(file("whole" + name)), RandomStartMs, RandomStartMs + end),
                  0U)
            << "halves at " << at;
        const Inspection::Header header = Inspection::inspect(file("whole" + name)).header;
        EXPECT_EQ(header.startMs, RandomStartMs);
        EXPECT_EQ(header.stopMs, Inspection::inspect(source).header.stopMs);
    }
}

TEST_P(RandomMerge, OfManyPartsIsTheSource)
{
    const std::string source = random("source.rec", {.seed = GetParam()});
    const std::uint64_t end = Inspection::inspect(source).times.back().timeMs;
    std::vector<std::string> parts;
    for (std::uint64_t i = 0; i < 7; ++i) {
        const std::string from = i == 0 ? "" : std::to_string(end * i / 7);
        parts.push_back(file("part" + std::to_string(i)));
        ASSERT_EQ(cut(source, from, i == 6 ? "" : std::to_string(end * (i + 1) / 7), parts.back()).exitCode,
                  ExitCode::Fine);
    }
    std::reverse(parts.begin(), parts.end());
    const Result result = merge(parts, file("whole.rec"));
    ASSERT_EQ(result.exitCode, ExitCode::Fine) << result.err;
    EXPECT_EQ(firstDifference(History(source), History(file("whole.rec")), RandomStartMs, RandomStartMs + end), 0U);
    EXPECT_EQ(bookmarksOf(file("whole.rec")), bookmarksOf(source));
}

TEST_P(RandomMerge, OfAnyPartsIsTheSourceRecordByRecord)
{
    std::mt19937 random(GetParam());
    const auto below = [&](std::uint64_t end) { return random() % end; };
    for (int round = 0; round < 12; ++round) {
        const std::string name = std::to_string(round);
        const std::string source =
            this->random("source" + name, {.seed = GetParam() * 1000 + static_cast<std::uint32_t>(round),
                                           .changes = static_cast<int>(1 + below(150)),
                                           .damagedTexts = below(2) == 0,
                                           .bearings = below(2) == 0,
                                           .bookmarks = below(2) == 0});
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
            parts.push_back(file("part" + name + '_' + std::to_string(at)));
            const bool last = at == *cuts.rbegin();
            const bool twice = !last && below(2) == 0;  // the moment of the cut is in both parts
            const std::string to = last ? "" : std::to_string(twice ? at : at - 1);
            ASSERT_EQ(cut(source, from, to, parts.back()).exitCode, ExitCode::Fine);
            from = std::to_string(at);
        }
        std::shuffle(parts.begin(), parts.end(), random);
        const Result result =
            parts.size() == 1 ? cut(source, "", "", file("whole" + name)) : merge(parts, file("whole" + name));
        ASSERT_EQ(result.exitCode, ExitCode::Fine) << result.err;
        EXPECT_EQ(firstOtherLine(cat(file("whole" + name)), cat(source)), "")
            << "round " << round << ", cut at " << testing::PrintToString(cuts);
        EXPECT_EQ(bookmarksOf(file("whole" + name)), bookmarksOf(source));
        EXPECT_EQ(Inspection::inspect(file("whole" + name)).channelRangeTimes,
                  Inspection::inspect(source).channelRangeTimes);
    }
}

// Recordings of several stations over the same time

TEST_P(RandomMerge, KeepsEveryRecordOfStationsThatShareNoValue)
{
    const std::string one = random("one.rec", {.seed = GetParam(), .bearings = false});
    const std::string two =
        random("two.rec", {.seed = GetParam() + 100, .startMs = RandomStartMs + 77, .pathPrefix = "/Two"});
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
    const auto at = [](const std::vector<ClockedRecord>& records, const auto& wanted) {
        std::vector<std::pair<std::int32_t, std::string>> found;
        for (const ClockedRecord& record : records) {
            if (wanted(record.code)) {
                found.emplace_back(record.code, record.data);
            }
        }
        return found;
    };
    std::vector<ClockedRecord> ofTwo = recordsOf(two);
    std::set<std::int32_t> codesOfTwo;
    for (ClockedRecord& record : ofTwo) {
        record.code = numbers.count(record.code) > 0 ? numbers[record.code] : record.code;
        codesOfTwo.insert(record.code);
    }
    const auto any = [](std::int32_t) { return true; };
    const auto isOfTwo = [&](std::int32_t code) { return codesOfTwo.count(code) > 0; };
    const auto isOfOne = [&](std::int32_t code) { return codesOfTwo.count(code) == 0; };
    const std::vector<ClockedRecord> merged = recordsOf(file("merged.rec"));
    EXPECT_EQ(at(merged, isOfTwo), at(ofTwo, any));
    EXPECT_EQ(at(merged, isOfOne), at(recordsOf(one), any));

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

TEST_F(Merge, ARecordingThatWasSplitBySizeGoesOnWithItsStartingState)
{
    // The first file runs past its stop, as its last records came within one millisecond.
    const std::string one = store("one.rec",
                                  ReferenceRecording()
                                      .types({{36, 3, "LEVEL", "/L"}, {1, 6, "RFSPECTRUM", "/R"}})
                                      .record(36, "3;1,0,9", 10)
                                      .record(1, "6;0|34;1000,10,2|50;{{{{{{", 11)
                                      .record(36, "3;2,0,9", 500)
                                      .record(36, "3;3,0,9", 500)
                                      .record(36, "3;4,0,9", 500)
                                      .record(1, "6;0|51;0,\\<<", 500)
                                      .record(36, "3;5,0,9", 500)
                                      .record(36, "3;4,0,9", 500),
                                  headerFrom(0, 500));
    const std::string two = store("two.rec",
                                  ReferenceRecording()
                                      .types({{36, 3, "LEVEL", "/L"}, {1, 6, "RFSPECTRUM", "/R"}})
                                      .record(36, "3;4,0,9", 1)
                                      .record(1, "6;5|34;1000,10,2|50;\\<<{{{", 2)
                                      .record(36, "3;5,0,9", 4)
                                      .record(36, "3;6,0,9", 5),
                                  headerFrom(501, 600));
    const nlohmann::json summary = mergeToJson({one, two});
    EXPECT_EQ(summary.at("repeatedStates"), 1) << "the level was in force; the map has another time stamp";
    EXPECT_EQ(summary.at("movedRecords"), 3);
    EXPECT_EQ(summary.at("movedByMs"), 3);
    const std::vector<ClockedRecord> records = recordsOf(file("merged.rec"));
    ASSERT_EQ(records.size(), 11U);
    EXPECT_EQ(records[8], (ClockedRecord{Start + 506, 1, "6;5|34;1000,10,2|50;\\<<{{{"}));
    EXPECT_EQ(records[9], (ClockedRecord{Start + 507, 36, "3;5,0,9"}));
    EXPECT_EQ(records[10], (ClockedRecord{Start + 508, 36, "3;6,0,9"}));
}

TEST_F(Merge, AStopThatIsFarInFrontOfTheLastRecordMakesNoFileGoOn)
{
    const auto types = std::vector<TestSupport::TypeFields>{{36, 3, "LEVEL", "/L"}};
    const std::string one = store(
        "one.rec", ReferenceRecording().types(types).record(36, "1;0", 10).record(36, "1;1", 5000), headerFrom(0, 100));
    const std::string two =
        store("two.rec", ReferenceRecording().types(types).record(36, "1;0", 10).record(36, "1;1", 5000),
              headerFrom(200, 5200));
    EXPECT_EQ(merge({one, two}, file("merged.rec")).exitCode, ExitCode::Usage);
}

TEST_F(Merge, AStateThatSaysSomethingNewFollowsTheFileBefore)
{
    const auto types = std::vector<TestSupport::TypeFields>{{36, 3, "LEVEL", "/L"}, {37, 3, "FIELD", "/F"}};
    const std::string one = store("one.rec",
                                  ReferenceRecording()
                                      .types(types)
                                      .record(36, "3;1,0,9", 10)
                                      .record(37, "3;1,0,9", 11)
                                      .record(36, "3;2,0,9", 100),
                                  headerFrom(0, 100));
    const std::string two = store(
        "two.rec",
        ReferenceRecording().types(types).record(36, "3;7,0,9", 9).record(37, "3;1,0,9", 10).record(36, "3;8,0,9", 400),
        headerFrom(90, 500));
    const nlohmann::json summary = mergeToJson({one, two});
    EXPECT_EQ(summary.at("repeatedStates"), 1);
    EXPECT_EQ(summary.at("movedRecords"), 1);
    EXPECT_EQ(summary.at("movedByMs"), 2);
    EXPECT_EQ(recordsOf(file("merged.rec"))[3], (ClockedRecord{Start + 101, 36, "3;7,0,9"}));
}

TEST_F(Merge, AValueThatOverlapsIsRefusedWithItsFilesKeywordAndTime)
{
    const auto types = std::vector<TestSupport::TypeFields>{{36, 3, "LEVEL", "/L"}};
    const std::string one =
        store("one.rec", ReferenceRecording().types(types).record(36, "1;0", 10).record(36, "1;1", 5000),
              headerFrom(0, 5000));
    const std::string two =
        store("two.rec", ReferenceRecording().types(types).record(36, "1;0", 10).record(36, "1;1", 5000),
              headerFrom(2000, 9000));
    const Result refused = merge({two, one}, file("merged.rec"));
    EXPECT_EQ(refused.exitCode, ExitCode::Usage);
    EXPECT_THAT(refused.err, AllOf(HasSubstr("rectool: " + two + ": LEVEL (/L)"), HasSubstr("in " + one),
                                   HasSubstr("from 2020-09-13 12:26:42.010 UTC on"), HasSubstr("--separate")));
    EXPECT_THAT(m_folder.names(), ElementsAre("one.rec", "two.rec"));

    const nlohmann::json summary = mergeToJson({two, one}, true);
    EXPECT_THAT(typeNamesOf(file("merged.rec")), ElementsAre("36 LEVEL /L", "49 LEVEL_2 /2/L"));
    EXPECT_EQ(summary.at("renumbered")[0].at("newKeyword"), "LEVEL_2");
    EXPECT_EQ(summary.at("renumbered")[0].at("separated"), true);
    EXPECT_EQ(recordsOf(file("merged.rec")).size(), 4U);
}

TEST_F(Merge, ATypeThatNobodyRecordsOverlapsNothing)
{
    const auto types = std::vector<TestSupport::TypeFields>{{36, 3, "LEVEL", "/L"}, {37, 3, "FIELD", "/F"}};
    const std::string one =
        store("one.rec", ReferenceRecording().types(types).record(36, "1;0", 10).record(36, "1;1", 5000),
              headerFrom(0, 5000));
    const std::string two =
        store("two.rec", ReferenceRecording().types(types).record(37, "1;0", 10).record(37, "1;1", 5000),
              headerFrom(2000, 9000));
    EXPECT_EQ(merge({one, two}, file("merged.rec")).exitCode, ExitCode::Fine);
    EXPECT_THAT(typeNamesOf(file("merged.rec")), ElementsAre("36 LEVEL /L", "37 FIELD /F"));
}

// Numbers of types

TEST_F(Merge, TypesAreOneByKeywordPathAndKindAndNumbersAreFreed)
{
    const std::string one = store("one.rec",
                                  ReferenceRecording()
                                      .types({{36, 3, "LEVEL", "/L"}, {37, 3, "FIELD", "/F"}, {52, 3, "HIGH", "/H"}})
                                      .record(36, "one level", 10)
                                      .record(37, "one field", 20),
                                  headerFrom(0, 100));
    const std::string two = store("two.rec",
                                  ReferenceRecording()
                                      .types({{37, 3, "LEVEL", "/L"}, {36, 3, "OTHER", "/O"}, {49, 2, "FIELD", "/F"}})
                                      .record(37, "two level", 10)
                                      .record(36, "two other", 20)
                                      .record(49, "two field", 30),
                                  headerFrom(1000, 1100));
    mergeToJson({one, two});
    EXPECT_THAT(typeNamesOf(file("merged.rec")),
                ElementsAre("36 LEVEL /L", "37 FIELD /F", "52 HIGH /H", "50 OTHER /O", "49 FIELD /F"));
    std::vector<std::pair<std::int32_t, std::string>> records;
    for (const ClockedRecord& record : recordsOf(file("merged.rec"))) {
        records.emplace_back(record.code, record.data);
    }
    EXPECT_THAT(records, ElementsAre(Pair(36, "one level"), Pair(37, "one field"), Pair(36, "two level"),
                                     Pair(50, "two other"), Pair(49, "two field")));
}

TEST_F(Merge, ANumberWithoutANameIsWhatAnotherFileCallsIt)
{
    const std::string one = store(
        "one.rec", ReferenceRecording().types({{36, 3, "LEVEL", "/L"}}).record(2, "first", 10), headerFrom(0, 100));
    const std::string two =
        store("two.rec", ReferenceRecording().types({{2, 6, "IFSPECTRUM", "/I"}}).record(2, "second", 10),
              headerFrom(200, 300));
    const std::string three = store(
        "three.rec", ReferenceRecording().types({{36, 3, "LEVEL", "/L"}}).record(2, "third", 10), headerFrom(400, 500));
    mergeToJson({three, two, one});
    EXPECT_THAT(typeNamesOf(file("merged.rec")), UnorderedElementsAre("36 LEVEL /L", "2 IFSPECTRUM /I"));
    for (const ClockedRecord& record : recordsOf(file("merged.rec"))) {
        EXPECT_EQ(record.code, 2);
    }
}

// Times

TEST_F(Merge, EveryRecordKeepsItsClockTimeAndATakenMillisecondMovesOn)
{
    const std::string one = store("one.rec",
                                  ReferenceRecording()
                                      .types({{36, 3, "LEVEL", "/L"}})
                                      .record(36, "a", 10)
                                      .record(36, "b", 20, true)
                                      .record(36, "c", 21),
                                  headerFrom(0, 100));
    const std::string two = store("two.rec",
                                  ReferenceRecording()
                                      .types({{37, 3, "FIELD", "/F"}})
                                      .record(37, "d", 5)
                                      .record(37, "e", 15, true)
                                      .record(37, "f", 90),
                                  headerFrom(5, 300));
    const nlohmann::json summary = mergeToJson({two, one});
    EXPECT_EQ(summary.at("movedRecords"), 3);
    EXPECT_EQ(summary.at("movedByMs"), 1);
    EXPECT_EQ(summary.at("startMs"), Start);
    EXPECT_EQ(summary.at("stopMs"), Start + 300);
    EXPECT_THAT(recordsOf(file("merged.rec")),
                ElementsAre(ClockedRecord{Start + 10, 36, "a"}, ClockedRecord{Start + 11, 37, "d"},
                            ClockedRecord{Start + 20, 36, "b"}, ClockedRecord{Start + 21, 37, "e"},
                            ClockedRecord{Start + 22, 36, "c"}, ClockedRecord{Start + 95, 37, "f"}));
    EXPECT_THAT(Inspection::inspect(file("merged.rec")).channelRangeTimes, ElementsAre(20, 21));
}

TEST_F(Merge, BookmarksKeepTheirClockTimeAndTwoOfOneMillisecondAreBothKept)
{
    const auto mark = [](const std::string& path, const std::map<std::uint64_t, std::string>& bookmarks) {
        Recording2::CFileAccess access(path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
        for (const auto& [time, text] : bookmarks) {
            access.addBookmark(time, text);
        }
    };
    const std::string one = store("one.rec", ReferenceRecording().record(1, "a", 10), headerFrom(0, 100));
    const std::string two = store("two.rec", ReferenceRecording().record(2, "b", 10), headerFrom(50, 300));
    mark(one, {{60, "one"}, {61, "next"}, {80, "of both"}});
    mark(two, {{10, "two"}, {30, "of both"}, {200, "late"}});
    const nlohmann::json summary = mergeToJson({one, two});
    EXPECT_EQ(summary.at("movedBookmarks"), 1);
    EXPECT_EQ(summary.at("bookmarks"), 5);
    EXPECT_THAT(bookmarksOf(file("merged.rec")),
                ElementsAre(Pair(Start + 60, "one"), Pair(Start + 61, "next"), Pair(Start + 62, "two"),
                            Pair(Start + 80, "of both"), Pair(Start + 250, "late")));
}

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

// Header

TEST_F(Merge, TheHeaderCoversAllFilesAndNamesAllDevices)
{
    HeaderFields first = headerFrom(0, 900, "RX 1");
    HeaderFields second = headerFrom(100, 500, "DF 1");
    HeaderFields third = headerFrom(200, 300, "RX 1");
    first.startFrequency = 100;
    first.stopFrequency = 200;
    first.minLevel = -10;
    first.maxLevel = 20;
    first.automatic = true;
    first.jobId = "first job";
    second.startFrequency = 50;
    second.stopFrequency = 150;
    second.minLevel = -40;
    second.maxLevel = 10;
    second.jobId = "second job";
    third.startFrequency = third.stopFrequency = 0;
    third.minLevel = third.maxLevel = 0;
    const std::vector<std::string> files = {
        store("three.rec", ReferenceRecording().record(3, "c", 10), third),
        store("two.rec", ReferenceRecording().record(2, "b", 10), second),
        store("one.rec", ReferenceRecording().record(1, "a", 10), first),
    };
    mergeToJson(files);
    const Inspection::Header header = Inspection::inspect(file("merged.rec")).header;
    EXPECT_EQ(header.startFrequencyHz, 50);
    EXPECT_EQ(header.stopFrequencyHz, 200);
    EXPECT_EQ(header.minLevel, -40);
    EXPECT_EQ(header.maxLevel, 20);
    EXPECT_EQ(header.startMs, Start);
    EXPECT_EQ(header.stopMs, Start + 900);
    EXPECT_EQ(header.deviceName, "RX 1 + DF 1");
    EXPECT_EQ(header.deviceType, "RX");
    EXPECT_EQ(header.jobId, "first job");
    EXPECT_TRUE(header.automatic);
}

TEST_F(Merge, TextsThatAreTooLongForTheHeaderAreCut)
{
    const std::string one =
        store("one.rec", ReferenceRecording().record(1, "a", 10), headerFrom(0, 9, std::string(250, 'a')));
    const std::string two =
        store("two.rec", ReferenceRecording().record(2, "b", 10), headerFrom(5, 9, std::string(250, 'b')));
    ASSERT_EQ(merge({one, two}, file("merged.rec")).exitCode, ExitCode::Fine);
    const Inspection::Summary summary = Inspection::inspect(file("merged.rec"));
    EXPECT_THAT(summary.findings, IsEmpty());
    EXPECT_EQ(summary.header.deviceName.substr(0, 254), std::string(250, 'a') + " + b");
    EXPECT_EQ(summary.header.deviceType, "RX");
}

// What cannot be done

TEST_F(Merge, NeedsTwoDifferentFiles)
{
    const std::string one = store("one.rec", ReferenceRecording().record(1, "a", 10), headerFrom(0, 100));
    EXPECT_EQ(merge({one}, file("merged.rec")).exitCode, ExitCode::Usage);
    const Result twice = merge({one, m_folder.file("./one.rec")}, file("merged.rec"));
    EXPECT_EQ(twice.exitCode, ExitCode::Usage);
    EXPECT_THAT(twice.err, HasSubstr("given twice"));
    EXPECT_THAT(m_folder.names(), ElementsAre("one.rec"));
}

TEST_F(Merge, TheResultNeverTakesThePlaceOfAnInput)
{
    const std::string one = store("one.rec", ReferenceRecording().record(1, "a", 10), headerFrom(0, 100));
    const std::string two = store("two.rec", ReferenceRecording().record(2, "b", 10), headerFrom(0, 100));
    const std::string before = bytesOf(two);
    const Result result = run([&] {
        return RecTool::merge({{one, two}, m_folder.file("./two.rec"), false, true, false});
    });
    EXPECT_EQ(result.exitCode, ExitCode::Usage);
    EXPECT_EQ(bytesOf(two), before);
}

TEST_F(Merge, OneFileThatCannotBeReadIsEnough)
{
    const std::string one = store("one.rec", ReferenceRecording().record(1, "a", 10), headerFrom(0, 100));
    EXPECT_EQ(merge({one, file("nothing.rec")}, file("merged.rec")).exitCode, ExitCode::CannotRead);
    HeaderFields header = headerFrom(0, 0);
    header.startMs = 0;
    const std::string noStart = store("nostart.rec", ReferenceRecording().record(1, "a", 10), header);
    const Result result = merge({one, noStart}, file("merged.rec"));
    EXPECT_EQ(result.exitCode, ExitCode::CannotRead);
    EXPECT_THAT(result.err, HasSubstr("does not tell the start"));
    EXPECT_THAT(m_folder.names(), ElementsAre("nostart.rec", "one.rec"));
}

TEST_F(Merge, WhatIsReadableOfADamagedFileIsMerged)
{
    const std::string one = store("one.rec", ReferenceRecording().record(1, "a", 10), headerFrom(0, 100));
    const std::string two = store(
        "two.rec", ReferenceRecording().record(2, "b", 10).record(2, "c", 20).record(2, "d", 30), headerFrom(200, 300));
    std::string bytes = bytesOf(two);
    bytes[static_cast<std::size_t>(Inspection::inspect(two).times[1].position)] = 'x';
    writeBytes(two, bytes);
    const Result result = merge({one, two}, file("merged.rec"));
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    EXPECT_THAT(result.err, HasSubstr("two.rec: damaged at"));
    EXPECT_EQ(recordsOf(file("merged.rec")).size(), 3U);
}

TEST_F(Merge, AFullDiskLeavesNothingBehind)
{
    const std::string one = random("one.rec", {.seed = 1});
    const std::string two = random("two.rec", {.seed = 2, .startMs = RandomStartMs + 1'000'000});
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
