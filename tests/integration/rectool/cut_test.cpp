// Parts of recordings: what is in force in them, when, and what is left behind when they cannot be written.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <recording2/fileaccess.h>
#include <recording2/mappinggenerator.h>
#include <values/recordingtext.h>

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
namespace Inspection = Recording2::Inspection;

class Cut : public testing::Test {
protected:
    std::string random(const RandomOptions& options)
    {
        std::string path = m_folder.file("random.rec");
        writeRandomRecording(path, options);
        return path;
    }
    std::string bearings(bool withRangeTable = true)
    {
        std::string path = m_folder.file("bearings.rec");
        writeBearingRecording(path, withRangeTable);
        return path;
    }
    [[nodiscard]] std::string file(const std::string& name) const { return m_folder.file(name); }

    Folder m_folder;
};

class RandomCut : public Cut, public testing::WithParamInterface<std::uint32_t> {};

std::uint64_t lastTime(const std::string& file)
{
    return Inspection::inspect(file).times.back().timeMs;
}

bool isSound(const std::string& file)
{
    const Inspection::Summary summary = Inspection::inspect(file);
    return summary.findings.empty() &&
           Inspection::walkRecords(file, summary, [](const Inspection::Record&) { return true; }).empty();
}

/// The map that replay makes of a whole recording.
std::string replayed(const std::string& file)
{
    Recording2::MappingGenerator generator;
    Recording2::MappingGenerator::BearingMap map;
    long long start = 0;
    long long stop = 0;
    EXPECT_TRUE(generator.LoadRecording(start, stop, file.c_str(), nullptr));
    generator.RequestMapping(map, start, stop);
    return map.GetObjectStateStringForRecording();
}

/// The map of a recording when replay begins at a clock time within it.
std::string replayedFrom(const std::string& file, std::uint64_t clockMs)
{
    Recording2::MappingGenerator generator;
    Recording2::MappingGenerator::BearingMap map;
    long long start = 0;
    long long stop = 0;
    EXPECT_TRUE(generator.LoadRecording(start, stop, file.c_str(), nullptr));
    generator.RequestMapping(map, static_cast<long long>(clockMs) * 1000, stop);
    return map.GetObjectStateStringForRecording();
}

}  // namespace

TEST_P(RandomCut, HasTheStateOfTheSourceAtEveryMoment)
{
    const std::string source = random({.seed = GetParam(), .damagedTexts = GetParam() % 2 == 0});
    const History expected(source);
    const std::uint64_t end = lastTime(source);
    for (std::uint64_t from = 0; from <= end; from += 1 + end / 23) {
        const std::uint64_t to = std::min(end, from + end / 3);
        const Result result = cut(source, std::to_string(from), std::to_string(to), file("cut" + std::to_string(from)));
        ASSERT_EQ(result.exitCode, ExitCode::Fine) << result.err;
        EXPECT_EQ(firstDifference(expected, History(file("cut" + std::to_string(from))), RandomStartMs + from,
                                  RandomStartMs + to),
                  0U)
            << from << " to " << to;
    }
}

TEST_P(RandomCut, KeepsTheClockTimesOfRecordsBookmarksAndHeader)
{
    const std::string source = random({.seed = GetParam()});
    const std::uint64_t end = lastTime(source);
    const std::uint64_t from = end / 3;
    const std::uint64_t to = end * 2 / 3;
    ASSERT_EQ(cut(source, std::to_string(from), std::to_string(to), file("cut.rec")).exitCode, ExitCode::Fine);

    std::vector<ClockedRecord> expected;
    for (const ClockedRecord& record : recordsOf(source)) {
        if (record.clockMs >= RandomStartMs + from && record.clockMs <= RandomStartMs + to) {
            expected.push_back(record);
        }
    }
    std::vector<ClockedRecord> found = recordsOf(file("cut.rec"));
    const auto body = std::find_if(found.begin(), found.end(),
                                   [&](const ClockedRecord& record) { return record.clockMs >= RandomStartMs + from; });
    EXPECT_EQ((body - 1)->clockMs, RandomStartMs + from - 2) << "one millisecond stays free behind the state";
    EXPECT_EQ(std::vector<ClockedRecord>(body, found.end()), expected);

    const Inspection::Summary summary = Inspection::inspect(file("cut.rec"));
    const auto stateRecords = static_cast<std::uint64_t>(body - found.begin());
    EXPECT_EQ(summary.header.startMs + summary.times.front().timeMs, found.front().clockMs);
    EXPECT_EQ(summary.times[stateRecords - 1].timeMs - summary.times.front().timeMs, stateRecords - 1);
    EXPECT_EQ(summary.header.stopMs, RandomStartMs + to);
    EXPECT_TRUE(summary.header.automatic);
    EXPECT_EQ(summary.header.deviceName, "Receiver");

    std::map<std::uint64_t, std::string> bookmarks = bookmarksOf(source);
    bookmarks.erase(bookmarks.begin(), bookmarks.lower_bound(RandomStartMs + from));
    bookmarks.erase(bookmarks.upper_bound(RandomStartMs + to), bookmarks.end());
    EXPECT_EQ(bookmarksOf(file("cut.rec")), bookmarks);
    EXPECT_TRUE(isSound(file("cut.rec")));
}

TEST_P(RandomCut, OfEverythingIsTheSourceByteForByte)
{
    const std::string source = random({.seed = GetParam(), .bookmarks = false});
    ASSERT_EQ(cut(source, "", "", file("cut.rec")).exitCode, ExitCode::Fine);
    EXPECT_EQ(bytesOf(file("cut.rec")), bytesOf(source));
}

TEST_P(RandomCut, OfACutIsTheCutOfTheSource)
{
    const std::string source = random({.seed = GetParam()});
    const std::uint64_t end = lastTime(source);
    ASSERT_EQ(cut(source, std::to_string(end / 4), std::to_string(end - 1), file("first.rec")).exitCode,
              ExitCode::Fine);
    const std::uint64_t firstStart = Inspection::inspect(file("first.rec")).header.startMs;
    const auto inFirst = [&](std::uint64_t time) { return std::to_string(RandomStartMs + time - firstStart); };
    ASSERT_EQ(cut(file("first.rec"), inFirst(end / 2), inFirst(end * 3 / 4), file("second.rec")).exitCode,
              ExitCode::Fine);
    const History expected(source);
    EXPECT_EQ(
        firstDifference(expected, History(file("second.rec")), RandomStartMs + end / 2, RandomStartMs + end * 3 / 4),
        0U);
}

TEST_P(RandomCut, ReplaysIntoTheSameBearingsAtTheEnd)
{
    const std::string source = random({.seed = GetParam()});
    const std::uint64_t end = lastTime(source);
    const std::string expected = replayed(source);
    for (std::uint64_t from = 17; from <= end; from += 1 + end / 29) {  // from the first state of the map on
        const std::string part = file(std::to_string(from));
        ASSERT_EQ(cut(source, std::to_string(from), "", part).exitCode, ExitCode::Fine);
        EXPECT_EQ(replayed(part), expected) << from;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCut, testing::Range(1U, 7U));

TEST_F(Cut, BeginsWithTheStateJustInFrontOfTheMoment)
{
    ASSERT_EQ(cut(bearings(), "1200", "1700", file("cut.rec")).exitCode, ExitCode::Fine);
    const std::uint64_t start = 1'700'000'000'000;
    const std::vector<ClockedRecord> records = recordsOf(file("cut.rec"));
    ASSERT_EQ(records.size(), 5U);
    const std::string map = "7;0|34;2e+06,25000,2|50;//";
    EXPECT_EQ(records[0], (ClockedRecord{start + 1196, 36, "3;-30,-150,50"}));
    EXPECT_EQ(records[1], (ClockedRecord{start + 1197, 20, map})) << "what the channel range table names";
    EXPECT_EQ(records[2], (ClockedRecord{start + 1198, 20, map})) << "where replay of the whole begins";
    EXPECT_EQ(records[3].clockMs, start + 1500);
    EXPECT_EQ(records[4].clockMs, start + 1600);
    const Inspection::Summary summary = Inspection::inspect(file("cut.rec"));
    EXPECT_EQ(summary.header.startMs, start + 1195);
    EXPECT_EQ(summary.header.stopMs, start + 1700);
    EXPECT_THAT(summary.channelRangeTimes, ElementsAre(2));
}

TEST_F(Cut, AtAnyMomentReplayGoesOnAsInTheSource)
{
    const std::string source = bearings();
    for (const std::uint64_t from : {10U, 11U, 99U, 100U, 101U, 208U, 209U, 210U, 999U, 1000U, 1001U, 1500U, 1999U}) {
        const std::string part = file(std::to_string(from));
        ASSERT_EQ(cut(source, std::to_string(from), "", part).exitCode, ExitCode::Fine);
        EXPECT_EQ(replayed(part), replayed(source)) << from;
        if (from > 1000) {  // the source's table does not name the range that came then, the part's does
            EXPECT_EQ(replayedFrom(part, 1'700'000'000'000 + from), replayed(source)) << from;
        }
    }
}

TEST_F(Cut, WithoutARangeTableInTheSourceThereIsNone)
{
    ASSERT_EQ(cut(bearings(false), "1200", "", file("cut.rec")).exitCode, ExitCode::Fine);
    EXPECT_THAT(Inspection::inspect(file("cut.rec")).channelRangeTimes, IsEmpty());
}

TEST_F(Cut, NoStateIsPlacedWhereReplayWouldReadTheRecordInFrontOfIt)
{
    // The state of DFSPECTRUM would be the eleventh record, behind one that carries a range, too.
    TestSupport::ReferenceRecording recording;
    recording.types({{1, 6, "RFSPECTRUM", "/R"}, {20, 7, "DFSPECTRUM", "/D"}});
    for (std::int32_t code = 101; code <= 109; ++code) {
        recording.record(code, "1;1", static_cast<std::uint64_t>(code));
    }
    recording.record(1, "6;0|34;1000,10,2|50;{{{{{{", 200);
    recording.record(20, "7;0|34;2000,10,2|50;1//", 201, true);
    recording.record(36, "1;1", 500);
    writeBytes(file("source.rec"), recording.close());
    ASSERT_EQ(cut(file("source.rec"), "300", "", file("cut.rec")).exitCode, ExitCode::Fine);
    Recording2::CFileAccess cutFile(file("cut.rec").c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    Recording2::CVTCmdData record;
    unsigned long long time = 0;
    cutFile.CRDTableToBegin();
    cutFile.readNextChannelRangeDef(record, time);
    EXPECT_EQ(record.cmd(), 20);
    EXPECT_EQ(History(file("cut.rec")).at(1'500'000'000'123 + 300),
              History(file("source.rec")).at(1'500'000'000'123 + 300));
}

TEST_F(Cut, InFrontOfTheFirstRecordThereIsNoState)
{
    ASSERT_EQ(cut(bearings(), "5", "10", file("cut.rec")).exitCode, ExitCode::Fine);
    const std::vector<ClockedRecord> records = recordsOf(file("cut.rec"));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].clockMs, 1'700'000'000'010U);
}

TEST_F(Cut, ABookmarkAtTheVeryBeginningStays)
{
    const std::string source = bearings();
    {
        Recording2::CFileAccess access(source.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
        access.addBookmark(5, "first");
        access.addBookmark(1200, "second");
    }
    ASSERT_EQ(cut(source, "5", "1199", file("early.rec")).exitCode, ExitCode::Fine);
    EXPECT_THAT(bookmarksOf(file("early.rec")), ElementsAre(testing::Pair(1'700'000'000'005, "first")));
    ASSERT_EQ(cut(source, "bookmark:second", "", file("late.rec")).exitCode, ExitCode::Fine);
    EXPECT_THAT(bookmarksOf(file("late.rec")), ElementsAre(testing::Pair(1'700'000'001'200, "second")));
}

TEST_F(Cut, TheStopOfTheSourceStaysWhereTheCutReachesItsEnd)
{
    ASSERT_EQ(cut(bearings(), "1000", "99999", file("cut.rec")).exitCode, ExitCode::Fine);
    EXPECT_EQ(Inspection::inspect(file("cut.rec")).header.stopMs, 1'700'000'002'500U);
}

// Frequencies and levels of the header

namespace {

std::string frequencyRecording()
{
    TestSupport::ReferenceRecording recording;
    recording.types({{3, 5, "DRVCOMMANDS", "/C"},
                     {11, 3, "STARTFREQ", "/A"},
                     {12, 3, "STOPFREQ", "/B"},
                     {14, 3, "STARTLEVEL", "/L"},
                     {16, 3, "RFYLIMIT", "/Y"},
                     {32, 5, "IFSPAN", "/S"},
                     {46, 4, "FREQUENCY", "/F"}});
    recording.record(11, "3;80,0,1e9", 10).record(12, "3;200,0,1e9", 11).record(14, "3;-50.5,-150,50", 12);
    recording.record(11, "3;100,0,1e9", 1000).record(12, "3;150,0,1e9", 1001).record(11, "3;90,0,1e9", 1100);
    recording.record(16, "3;0,-130.7,-20.7", 1200);
    recording.record(3, "5;23,0,x", 2000).record(46, "4;100000,0,1e9,0", 2001).record(32, "5;1,2000,x", 2002);
    recording.record(46, "4;200000,0,1e9,500", 2500);
    recording.record(3, "5;24,0,x", 3000).record(46, "4;300000,0,1e9,0", 3001);
    TestSupport::HeaderFields header;
    header.startFrequency = 7;
    header.stopFrequency = 8;
    header.stopMs = header.startMs + 4000;
    return recording.close(header);
}

Inspection::Header headerOf(const std::string& file)
{
    return Inspection::inspect(file).header;
}

}  // namespace

TEST_F(Cut, TheHeaderTellsTheRangeThatTheRecordsOfTheSpanTell)
{
    writeBytes(file("source.rec"), frequencyRecording());
    int cuts = 0;
    const auto header = [&](const char* from, const char* to) {
        const std::string part = file("cut" + std::to_string(++cuts));
        EXPECT_EQ(cut(file("source.rec"), from, to, part).exitCode, ExitCode::Fine);
        return headerOf(part);
    };
    EXPECT_EQ(header("", "500").startFrequencyHz, 80);  // the whole of it
    EXPECT_EQ(header("", "500").stopFrequencyHz, 200);
    EXPECT_EQ(header("", "500").minLevel, -50);
    EXPECT_EQ(header("", "500").maxLevel, 100) << "no record tells it: that of the source";
    EXPECT_EQ(header("1050", "1150").startFrequencyHz, 90) << "the lowest since";
    EXPECT_EQ(header("1050", "1150").stopFrequencyHz, 150);
    EXPECT_EQ(header("1150", "1300").startFrequencyHz, 90) << "what is in force at the beginning";
    EXPECT_EQ(header("1150", "1300").minLevel, -130);
    EXPECT_EQ(header("1150", "1300").maxLevel, -20);
    EXPECT_EQ(header("2100", "2200").startFrequencyHz, 99000) << "frequency and span";
    EXPECT_EQ(header("2100", "2600").startFrequencyHz, 199500) << "with the offset";
    EXPECT_EQ(header("2100", "2600").stopFrequencyHz, 201500);
    EXPECT_EQ(header("2100", "3500").startFrequencyHz, 7) << "depends on what is not recorded: that of the source";
    EXPECT_EQ(header("", "").startFrequencyHz, 7) << "a whole recording keeps its header";
}

TEST_F(Cut, TheHeaderKnowsTheSpanThatWasLearnedInFrontOfTheCut)
{
    TestSupport::ReferenceRecording recording;
    recording.types({{3, 5, "DRVCOMMANDS", "/C"}, {32, 5, "IFSPAN", "/S"}, {46, 4, "FREQUENCY", "/F"}});
    recording.record(3, "5;23,0,x", 10).record(46, "4;100000,0,1e9,0", 11).record(32, "5;1,2000,x", 12);
    recording.record(3, "5;5,0,x", 1000);  // a mode in which a recorder that starts does not look at the span
    recording.record(3, "5;23,0,x", 2000).record(46, "4;200000,0,1e9,0", 2001);
    writeBytes(file("source.rec"), recording.close());
    ASSERT_EQ(cut(file("source.rec"), "1500", "2500", file("cut.rec")).exitCode, ExitCode::Fine);
    EXPECT_EQ(headerOf(file("cut.rec")).startFrequencyHz, 199000);
    EXPECT_EQ(headerOf(file("cut.rec")).stopFrequencyHz, 201000);
}

// What cannot be done

TEST_F(Cut, WrongSpansAreWrongUsage)
{
    const std::string source = bearings();
    EXPECT_THAT(cut(source, "20", "10", file("cut.rec")).err, HasSubstr("--from lies behind --to."));
    EXPECT_THAT(cut(source, "2501", "", file("cut.rec")).err, HasSubstr("behind the end of the recording, 2500 ms."));
    EXPECT_EQ(cut(source, "20", "10", file("cut.rec")).exitCode, ExitCode::Usage);
    EXPECT_EQ(cut(source, "2501", "", file("cut.rec")).exitCode, ExitCode::Usage);
    EXPECT_EQ(cut(source, "soon", "", file("cut.rec")).exitCode, ExitCode::Usage);
    EXPECT_THAT(m_folder.names(), ElementsAre("bearings.rec"));
}

TEST_F(Cut, AnExistingFileIsReplacedOnlyByForce)
{
    const std::string source = bearings();
    writeBytes(file("there.rec"), "precious");
    const Result refused = cut(source, "", "", file("there.rec"));
    EXPECT_EQ(refused.exitCode, ExitCode::Usage);
    EXPECT_THAT(refused.err, HasSubstr("--force"));
    EXPECT_EQ(bytesOf(file("there.rec")), "precious");
    EXPECT_EQ(run([&] {
                  return RecTool::cut({source, "", "", file("there.rec"), true, false});
              }).exitCode,
              ExitCode::Fine);
    EXPECT_EQ(bytesOf(file("there.rec")), bytesOf(source));
    EXPECT_THAT(m_folder.names(), ElementsAre("bearings.rec", "there.rec"));
}

#if !defined(_WIN32)
TEST_F(Cut, WhatIsNoOrdinaryFileIsNotReplacedEvenByForce)
{
    ASSERT_EQ(mkfifo(file("pipe.rec").c_str(), S_IRUSR | S_IWUSR), 0);
    std::filesystem::create_symlink(file("pipe.rec"), file("link.rec"));
    for (const std::string& output : {file("pipe.rec"), file("link.rec")}) {
        const Result result = run([&] { return RecTool::cut({bearings(), "", "", output, true, false}); });
        EXPECT_EQ(result.exitCode, ExitCode::Usage);
        EXPECT_THAT(result.err, HasSubstr("This is not an ordinary file."));
        EXPECT_TRUE(std::filesystem::is_fifo(output));
    }
    EXPECT_TRUE(std::filesystem::is_symlink(file("link.rec")));
}
#endif

TEST_F(Cut, NameWithSeveralDotsIsTheNameOfTheFile)
{
    ASSERT_EQ(cut(bearings(), "", "", file("a.b.tmp")).exitCode, ExitCode::Fine);
    ASSERT_EQ(cut(bearings(), "", "", file("no dot")).exitCode, ExitCode::Fine);
    EXPECT_THAT(m_folder.names(), ElementsAre("a.b.tmp", "bearings.rec", "no dot"));
}

TEST_F(Cut, AFileThatOnlyHasTheNameOfAnUnfinishedOneIsLeftAlone)
{
    writeBytes(file("cut.rec.part"), "of another");
    ASSERT_EQ(cut(bearings(), "", "", file("cut.rec")).exitCode, ExitCode::Fine);
    EXPECT_EQ(bytesOf(file("cut.rec.part")), "of another");
    EXPECT_THAT(m_folder.names(), ElementsAre("bearings.rec", "cut.rec", "cut.rec.part"));
}

TEST_F(Cut, UnfinishedOutputsOfKilledRunsAreRemovedAndNamed)
{
    writeBytes(file("cut.rec.part"), std::string(499, '0') + "#types");
    writeBytes(file("cut.rec.part2"), "");
    const Result result = cut(bearings(), "", "", file("cut.rec"));
    ASSERT_EQ(result.exitCode, ExitCode::Fine);
    EXPECT_THAT(result.err, testing::AllOf(HasSubstr("cut.rec.part: This unfinished output"),
                                           HasSubstr("cut.rec.part2: This unfinished output")));
    EXPECT_THAT(m_folder.names(), ElementsAre("bearings.rec", "cut.rec"));
}

TEST_F(Cut, FilesThatCannotBeReadOrWrittenAreExitCode2)
{
    writeBytes(file("letter.rec"), "Dear reader,\nthis is a letter.\n");
    EXPECT_EQ(cut(file("nothing.rec"), "", "", file("cut.rec")).exitCode, ExitCode::CannotRead);
    EXPECT_EQ(cut(file("letter.rec"), "", "", file("cut.rec")).exitCode, ExitCode::CannotRead);
    const Result noFolder = cut(bearings(), "", "", file("nowhere/cut.rec"));
    EXPECT_EQ(noFolder.exitCode, ExitCode::CannotRead);
    EXPECT_THAT(noFolder.err, HasSubstr("There is no directory"));
    const Result directory = run([&] { return RecTool::cut({bearings(), "", "", file(""), true, false}); });
    EXPECT_EQ(directory.exitCode, ExitCode::Usage);
    EXPECT_THAT(m_folder.names(), ElementsAre("bearings.rec", "letter.rec"));
}

TEST_F(Cut, WhatIsReadableOfADamagedFileIsCut)
{
    std::string bytes = bytesOf(bearings());
    const Inspection::Summary summary = Inspection::inspect(bearings());
    bytes[static_cast<std::size_t>(summary.times[3].position)] = 'x';
    writeBytes(file("damaged.rec"), bytes);
    const Result result = cut(file("damaged.rec"), "", "", file("cut.rec"));
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    EXPECT_THAT(result.err, HasSubstr("damaged at"));
    EXPECT_EQ(recordsOf(file("cut.rec")).size(), 7U);
    EXPECT_TRUE(isSound(file("cut.rec")));
}

TEST_F(Cut, RecordsWithoutATimeAreLeftOutAndCounted)
{
    const std::string bytes = bytesOf(bearings());
    const Inspection::Summary summary = Inspection::inspect(bearings());
    writeBytes(file("short.rec"), bytes.substr(0, static_cast<std::size_t>(summary.header.timeTablePosition) + 30));
    const Result result = cut(file("short.rec"), "", "", file("cut.rec"));
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    EXPECT_THAT(result.err, HasSubstr("Records left out because their time is lost: "));
    EXPECT_TRUE(isSound(file("cut.rec")));
}

TEST_F(Cut, ARecordWithoutATimeIsToldAlsoWhereTheRestIsNotRead)
{
    TestSupport::ReferenceRecording recording;
    recording.record(1, "a", 10).record(1, "b", 20).record(1, "c", 30).record(1, "d", 40);
    std::string bytes = recording.close();
    const auto entryAt = [&](std::uint64_t time) { return bytes.rfind(TestSupport::ByteBuilder().time(time).bytes()); };
    bytes.erase(entryAt(20), entryAt(30) - entryAt(20));
    writeBytes(file("gap.rec"), bytes);
    const Result result = cut(file("gap.rec"), "", "30", file("cut.rec"));
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    EXPECT_THAT(result.err, HasSubstr("Records left out because their time is lost: 1."));
    EXPECT_EQ(recordsOf(file("cut.rec")).size(), 2U);
}

TEST_F(Cut, AFullDiskLeavesNothingBehind)
{
    const std::string source = random({.seed = 3});
    for (const std::size_t bytes : {0U, 100U, 600U, 2000U}) {
        const FileSizeLimit limit(bytes);
        if (!limit.works()) {
            GTEST_SKIP() << "This system has no limit on the size of files.";
        }
        const Result result = cut(source, "50", "", file("cut.rec"));
        EXPECT_EQ(result.exitCode, ExitCode::CannotRead);
        EXPECT_THAT(result.err, HasSubstr("is the disk full?"));
        EXPECT_THAT(result.out, IsEmpty());
    }
    EXPECT_THAT(m_folder.names(), ElementsAre("random.rec"));
}

TEST_F(Cut, ADiskThatIsFullBeforeTheBookmarksLeavesNothingBehind)
{
    const std::string source = random({.seed = 3});
    const auto bookmarks = static_cast<std::size_t>(Inspection::inspect(source).header.bookmarkTablePosition);
    const FileSizeLimit limit(bookmarks + 20);
    if (!limit.works()) {
        GTEST_SKIP() << "This system has no limit on the size of files.";
    }
    EXPECT_EQ(cut(source, "", "", file("cut.rec")).exitCode, ExitCode::CannotRead);
    EXPECT_THAT(m_folder.names(), ElementsAre("random.rec"));
}

TEST_F(Cut, TheSummaryCanBeJson)
{
    const Result result = run([&] { return RecTool::cut({bearings(), "1200", "1700", file("cut.rec"), false, true}); });
    const nlohmann::json json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json.at("fromMs"), 1200);
    EXPECT_EQ(json.at("toMs"), 1700);
    EXPECT_EQ(json.at("records"), 5);
    EXPECT_EQ(json.at("stateRecords"), 3);
    EXPECT_EQ(json.at("channelRanges"), 1);
    EXPECT_EQ(json.at("bytes"), bytesOf(file("cut.rec")).size());
    EXPECT_EQ(json.at("startMs"), 1'700'000'001'195);
}
