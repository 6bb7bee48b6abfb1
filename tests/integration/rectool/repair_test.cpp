// rectool repair: what is whole is kept byte for byte, what is rebuilt or lost is told, the result is sound.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <recording2/inspection/inspection.h>
#include <recording2/inspection/verify/verification.h>

#include "filesizelimit.h"
#include "randomrecording.h"
#include "rectooltesting.h"
#include "support/recordingbytes.h"
#include "support/samplerecording.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
namespace Inspection = Recording2::Inspection;

class RepairVerb : public testing::Test {
protected:
    [[nodiscard]] std::string file(const std::string& name) const { return m_folder.file(name); }
    Result repair(const std::string& bytes, std::uint64_t periodMs = 0, bool asJson = false)
    {
        writeBytes(file("in.rec"), bytes);
        std::filesystem::remove(file("out.rec"));  // no recording is ever replaced
        const Result result = run([&] {
            return RecTool::repair({file("in.rec"), file("out.rec"), periodMs, true, asJson});
        });
        EXPECT_EQ(bytesOf(file("in.rec")), bytes) << "the original was changed";
        return result;
    }
    std::string bearings()
    {
        writeBearingRecording(file("bearings.rec"), true);
        return bytesOf(file("bearings.rec"));
    }
    std::string random(const RandomOptions& options)
    {
        writeRandomRecording(file("random.rec"), options);
        return bytesOf(file("random.rec"));
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

    Folder m_folder;
};

class RandomRepair : public RepairVerb, public testing::WithParamInterface<std::uint32_t> {};

/// Records without their times.
std::vector<std::pair<std::int32_t, std::string>> contents(const std::string& file)
{
    std::vector<std::pair<std::int32_t, std::string>> all;
    for (const ClockedRecord& record : recordsOf(file)) {
        all.emplace_back(record.code, record.data);
    }
    return all;
}

std::vector<std::uint64_t> timesOf(const Inspection::Summary& summary)
{
    std::vector<std::uint64_t> times;
    for (const auto& entry : summary.times) {
        times.push_back(entry.timeMs);
    }
    return times;
}

std::string timeBytes(std::uint64_t time)
{
    return TestSupport::ByteBuilder().time(time).bytes();
}

/// The bytes with the first occurrence of a piece behind an offset replaced.
std::string with(std::string bytes, std::int64_t behind, const std::string& piece, const std::string& replacement)
{
    const std::size_t at = bytes.find(piece, static_cast<std::size_t>(behind));
    EXPECT_NE(at, std::string::npos) << piece;
    return bytes.replace(at, piece.size(), replacement);
}

}  // namespace

TEST_P(RandomRepair, OfASoundFileIsACopy)
{
    for (const bool bookmarks : {true, false}) {
        const std::string bytes = random({.seed = GetParam(), .damagedTexts = true, .bookmarks = bookmarks});
        const Result result = repair(bytes);
        EXPECT_EQ(result.exitCode, ExitCode::Fine) << result.err;
        EXPECT_THAT(result.out, HasSubstr("in.rec is sound; this is a copy."));
        EXPECT_EQ(bytesOf(file("out.rec")), bytes);
    }
}

TEST_P(RandomRepair, OfDamagedTablesKeepsEveryRecord)
{
    std::mt19937 generator(GetParam());
    const std::string bytes = random({.seed = GetParam(), .changes = 40});
    const Inspection::Summary original = Inspection::inspect(file("random.rec"));
    const auto expected = contents(file("random.rec"));
    constexpr std::size_t Versions = 4;  // a file without a version is no recording
    const auto first = static_cast<std::size_t>(original.header.firstRecordPosition);
    const auto times = static_cast<std::size_t>(original.header.timeTablePosition);
    for (int i = 0; i < 15; ++i) {
        std::string damaged = bytes;
        const bool inFront = generator() % 2 == 0;
        const std::size_t at =
            inFront ? Versions + generator() % (first - Versions) : times + generator() % (bytes.size() - times);
        damaged[at] = static_cast<char>(generator());
        const Result result = repair(damaged);
        ASSERT_NE(result.exitCode, ExitCode::CannotRead) << at << result.err;
        EXPECT_EQ(contents(file("out.rec")), expected) << at;
        expectSoundResult();
        if (inFront) {
            EXPECT_EQ(timesOf(this->result()), timesOf(original)) << at;
        }
    }
}

TEST_P(RandomRepair, OfDamagedRecordsInventsNothing)
{
    std::mt19937 generator(GetParam());
    const std::string bytes = random({.seed = GetParam(), .changes = 40});
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

TEST_F(RepairVerb, PutsADamagedFillingRightAndLosesNothing)
{
    const std::string bytes = bearings();
    std::string damaged = bytes;
    damaged[400] = 'x';
    const Result result = repair(damaged);
    EXPECT_EQ(result.exitCode, ExitCode::Fine) << result.err;
    EXPECT_THAT(result.out, HasSubstr("Nothing was lost."));
    EXPECT_EQ(bytesOf(file("out.rec")), bytes);
}

TEST_F(RepairVerb, TimesOfDamagedEntriesLieBetweenTheirNeighbours)
{
    const std::string bytes = bearings();
    const auto table = Inspection::inspect(file("bearings.rec")).header.timeTablePosition;
    const Result result = repair(with(bytes, table, timeBytes(1000), timeBytes(1'000'000)));
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    EXPECT_THAT(timesOf(this->result()), ElementsAre(10, 11, 100, 200, 850, 1500, 1600, 2000));
    EXPECT_THAT(result.out, HasSubstr("Kept: 8 records, 7 times, 8 types, 1 channel range, 0 bookmarks.\n"
                                      "Rebuilt: 1 time, evenly between the known times around them.\n"
                                      "Lost: the true time of 1 record.\n"));
    expectSoundResult();
}

TEST_F(RepairVerb, OfACutFileTheTimesAreEvenAndTheRangesThoseOfTheRecords)
{
    const std::string bytes = bearings();
    const auto at = static_cast<std::size_t>(Inspection::inspect(file("bearings.rec")).times[5].position);
    const Result result = repair(bytes.substr(0, at));
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    EXPECT_THAT(timesOf(this->result()), ElementsAre(500, 1000, 1500, 2000, 2500));
    EXPECT_THAT(this->result().channelRangeTimes, ElementsAre(500, 1500, 2500));
    EXPECT_THAT(result.out, HasSubstr("Rebuilt: 5 times, evenly to the end (none was known)."));
    EXPECT_THAT(result.out, HasSubstr("Rebuilt: 3 channel ranges, from the DFSPECTRUM records that carry one."));
    EXPECT_THAT(result.out, HasSubstr("Lost: what stood behind the end of the file, which was cut off."));
    expectSoundResult();

    EXPECT_EQ(repair(bytes.substr(0, at), 20).exitCode, ExitCode::Damaged);
    EXPECT_THAT(timesOf(this->result()), ElementsAre(20, 40, 60, 80, 100));
}

TEST_F(RepairVerb, LostBytesAreToldWithTheirPlace)
{
    const std::string bytes = bearings();
    const auto position = Inspection::inspect(file("bearings.rec")).times[1].position;
    const auto next = Inspection::inspect(file("bearings.rec")).times[2].position;
    std::string damaged = bytes;
    damaged[static_cast<std::size_t>(position)] = 'x';
    const Result result = repair(damaged, 0, true);
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    const auto document = nlohmann::json::parse(result.out);
    EXPECT_EQ(document.at("sound"), false);
    EXPECT_EQ(document.at("whole"), false);
    EXPECT_EQ(document.at("records"), 7);
    EXPECT_EQ(document.at("lost").at("bytes")[0].at("offset"), position);
    EXPECT_EQ(document.at("lost").at("bytes")[0].at("bytes"), next - position);
}

TEST_F(RepairVerb, AStopThatCannotBeIsTheTimeOfTheLastRecord)
{
    std::string bytes = bearings();
    const auto stop = static_cast<std::size_t>(Inspection::inspect(file("bearings.rec")).header.fieldOffsets[8]);
    bytes.replace(stop, 9, timeBytes(5));
    const Result result = repair(bytes);
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    EXPECT_THAT(result.out, HasSubstr("Lost: of the header: the stop time."));
    EXPECT_EQ(this->result().header.stopMs, this->result().header.startMs + 2000);
    expectSoundResult();
}

TEST_F(RepairVerb, OfATextOfTheHeaderWhatStandsBehindANulByteIsLost)
{
    const Result result = repair(with(bearings(), 0, "Receiver", std::string("Rec\0iver", 8)));
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    EXPECT_THAT(result.out, HasSubstr("Lost: of the header: the device name behind a NUL byte."));
    EXPECT_EQ(this->result().header.deviceName, "Rec");
    expectSoundResult();
}

TEST_F(RepairVerb, WhatHoldsNoRecordCannotBeSaved)
{
    const std::string bytes = bearings();
    EXPECT_EQ(repair("a letter").exitCode, ExitCode::CannotRead);
    EXPECT_EQ(repair(std::string(499, '0') + '#').exitCode, ExitCode::CannotRead);
    const Result result = repair(bytes.substr(0, 510));
    EXPECT_EQ(result.exitCode, ExitCode::CannotRead);
    EXPECT_THAT(result.err, HasSubstr("No record could be saved. Nothing was written."));
    EXPECT_THAT(m_folder.names(), Not(testing::Contains("out.rec")));
}

TEST_F(RepairVerb, NeitherTheOriginalNorAnExistingFileIsReplaced)
{
    writeBytes(file("in.rec"), bearings());
    writeBytes(file("there.rec"), "precious");
    const auto into = [&](const std::string& name) {
        return run([&] { return RecTool::repair({file("in.rec"), file(name), 0, false, false}); }).exitCode;
    };
    EXPECT_EQ(into("there.rec"), ExitCode::Usage);
    EXPECT_EQ(into("in.rec"), ExitCode::Usage);
    EXPECT_EQ(bytesOf(file("there.rec")), "precious");
}

TEST_F(RepairVerb, OfTwoDamagedBookmarksTheOtherOnesAreKept)
{
    std::string bytes = bearings();
    writeBytes(file("marked.rec"), bytes);
    run([&] { return RecTool::addBookmark({file("marked.rec"), "100", "one", true}); });
    run([&] { return RecTool::addBookmark({file("marked.rec"), "200", "two", true}); });
    run([&] { return RecTool::addBookmark({file("marked.rec"), "300", "three", true}); });
    bytes = bytesOf(file("marked.rec"));
    const auto table = Inspection::inspect(file("marked.rec")).header.bookmarkTablePosition;
    const Result result = repair(with(bytes, table, "3#two", "x#two"));
    EXPECT_EQ(result.exitCode, ExitCode::Damaged);
    ASSERT_EQ(this->result().bookmarks.size(), 2U);
    EXPECT_EQ(this->result().bookmarks[0].text, "one");
    EXPECT_EQ(this->result().bookmarks[1].text, "three");
    expectSoundResult();
}
