// Parts of recordings: what is in force in them, when, and what is left behind when they cannot be written.
#include <recording2/fileaccess.h>
#include <recording2/mappinggenerator.h>
#include <values/recordingtext.h>

#include "filesizelimit.h"
#include "rectooltesting.h"
#include "support/recordingbytes.h"
#include "support/samplerecording.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using namespace testing;
namespace Inspection = Recording2::Inspection;

class Cut : public InFolder {
protected:
    using InFolder::part;
    [[nodiscard]] std::string part(const std::string& source, std::uint64_t from, std::uint64_t to,
                                   const std::string& name = "cut.rec") const
    {
        return part(source, std::to_string(from), std::to_string(to), name);
    }
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

/// The map that replay makes of a recording, from its begin or from a clock time within it.
std::string replayed(const std::string& file, std::optional<std::uint64_t> clockMs = std::nullopt)
{
    Recording2::MappingGenerator generator;
    Recording2::MappingGenerator::BearingMap map;
    long long start = 0;
    long long stop = 0;
    EXPECT_TRUE(generator.LoadRecording(start, stop, file.c_str(), nullptr));
    generator.RequestMapping(map, clockMs ? static_cast<long long>(*clockMs) * 1000 : start, stop);
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
        const History found(part(source, from, to, "cut" + std::to_string(from)));
        EXPECT_EQ(firstDifference(expected, found, RandomStartMs + from, RandomStartMs + to), 0U)
            << from << " to " << to;
    }
}

TEST_P(RandomCut, KeepsTheClockTimesOfRecordsBookmarksAndHeader)
{
    const std::string source = random({.seed = GetParam()});
    const std::uint64_t end = lastTime(source);
    const std::uint64_t from = end / 3;
    const std::uint64_t to = end * 2 / 3;
    const std::string part = this->part(source, from, to);

    std::vector<ClockedRecord> expected;
    for (const ClockedRecord& record : recordsOf(source)) {
        if (record.clockMs >= RandomStartMs + from && record.clockMs <= RandomStartMs + to) {
            expected.push_back(record);
        }
    }
    std::vector<ClockedRecord> found = recordsOf(part);
    const auto body = std::find_if(found.begin(), found.end(),
                                   [&](const ClockedRecord& record) { return record.clockMs >= RandomStartMs + from; });
    EXPECT_EQ((body - 1)->clockMs, RandomStartMs + from - 2) << "one millisecond stays free behind the state";
    EXPECT_EQ(std::vector<ClockedRecord>(body, found.end()), expected);

    const Inspection::Summary summary = Inspection::inspect(part);
    const auto stateRecords = static_cast<std::uint64_t>(body - found.begin());
    EXPECT_EQ(summary.header.startMs + summary.times.front().timeMs, found.front().clockMs);
    EXPECT_EQ(summary.times[stateRecords - 1].timeMs - summary.times.front().timeMs, stateRecords - 1);
    EXPECT_EQ(summary.header.stopMs, RandomStartMs + to);
    EXPECT_TRUE(summary.header.automatic);
    EXPECT_EQ(summary.header.deviceName, "Receiver");

    std::map<std::uint64_t, std::string> bookmarks = bookmarksOf(source);
    bookmarks.erase(bookmarks.begin(), bookmarks.lower_bound(RandomStartMs + from));
    bookmarks.erase(bookmarks.upper_bound(RandomStartMs + to), bookmarks.end());
    EXPECT_EQ(bookmarksOf(part), bookmarks);
    EXPECT_TRUE(isSound(part));
}

TEST_P(RandomCut, OfEverythingIsTheSourceByteForByte)
{
    const std::string source = random({.seed = GetParam(), .bookmarks = false});
    EXPECT_EQ(bytesOf(part(source, "", "")), bytesOf(source));
}

TEST_P(RandomCut, OfACutIsTheCutOfTheSource)
{
    const std::string source = random({.seed = GetParam()});
    const std::uint64_t end = lastTime(source);
    const std::string first = part(source, end / 4, end - 1, "first.rec");
    const std::uint64_t firstStart = Inspection::inspect(first).header.startMs;
    const auto inFirst = [&](std::uint64_t time) { return RandomStartMs + time - firstStart; };
    const History found(part(first, inFirst(end / 2), inFirst(end * 3 / 4), "second.rec"));
    EXPECT_EQ(firstDifference(History(source), found, RandomStartMs + end / 2, RandomStartMs + end * 3 / 4), 0U);
}

TEST_P(RandomCut, ReplaysIntoTheSameBearingsAtTheEnd)
{
    const std::string source = random({.seed = GetParam()});
    const std::uint64_t end = lastTime(source);
    const std::string expected = replayed(source);
    for (std::uint64_t from = 17; from <= end; from += 1 + end / 29) {  // from the first state of the map on
        const std::string time = std::to_string(from);
        EXPECT_EQ(replayed(part(source, time, "", time)), expected) << from;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCut, testing::Range(1U, 7U));

TEST_F(Cut, AtAnyMomentReplayGoesOnAsInTheSource)
{
    const std::string source = file("bearings.rec");
    writeBearingRecording(source, true);
    for (const std::uint64_t from : {10U, 11U, 99U, 100U, 101U, 208U, 209U, 210U, 999U, 1000U, 1001U, 1500U, 1999U}) {
        const std::string time = std::to_string(from);
        const std::string part = this->part(source, time, "", time);
        EXPECT_EQ(replayed(part), replayed(source)) << from;
        if (from > 1000) {  // the source's table does not name the range that came then, the part's does
            EXPECT_EQ(replayed(part, 1'700'000'000'000 + from), replayed(source)) << from;
        }
    }
}

TEST_F(Cut, NoStateIsPlacedWhereReplayWouldReadTheRecordInFrontOfIt)
{
    // The state of DFSPECTRUM would be the eleventh record, after one that carries a range, too.
    TestSupport::ReferenceRecording recording;
    recording.types({{1, 6, "RFSPECTRUM", "/R"}, {20, 7, "DFSPECTRUM", "/D"}});
    for (std::int32_t code = 101; code <= 109; ++code) {
        recording.record(code, "1;1", static_cast<std::uint64_t>(code));
    }
    recording.record(1, "6;0|34;1000,10,2|50;{{{{{{", 200);
    recording.record(20, "7;0|34;2000,10,2|50;1//", 201, true);
    recording.record(36, "1;1", 500);
    writeBytes(file("source.rec"), recording.close());
    const std::string part = this->part(file("source.rec"), "300", "");
    Recording2::CFileAccess cutFile(part.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    Recording2::CVTCmdData record;
    unsigned long long time = 0;
    cutFile.CRDTableToBegin();
    cutFile.readNextChannelRangeDef(record, time);
    EXPECT_EQ(record.cmd(), 20);
    EXPECT_EQ(History(part).at(1'500'000'000'123 + 300), History(file("source.rec")).at(1'500'000'000'123 + 300));
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
        EXPECT_THAT(result.err, Not(HasSubstr("is being written")));
        EXPECT_THAT(result.out, IsEmpty());
    }
    EXPECT_THAT(m_folder.names(), ElementsAre("random.rec"));
}

TEST_F(Cut, ADiskThatIsFullBeforeTheBookmarksLeavesNothingBehind)
{
    const std::string source = random({.seed = 3});
    const auto bookmarks = static_cast<std::size_t>(Inspection::inspect(source).header.positions.bookmarkTable);
    const FileSizeLimit limit(bookmarks + 20);
    if (!limit.works()) {
        GTEST_SKIP() << "This system has no limit on the size of files.";
    }
    EXPECT_EQ(cut(source, "", "", file("cut.rec")).exitCode, ExitCode::CannotRead);
    EXPECT_THAT(m_folder.names(), ElementsAre("random.rec"));
}
