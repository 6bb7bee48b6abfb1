// rectool repair: what is whole is kept byte for byte, what is rebuilt or lost is told, the result is sound.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <recording2/inspection/inspection.h>
#include <recording2/inspection/verify/verification.h>

#include "randomrecording.h"
#include "rectooltesting.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using testing::HasSubstr;
namespace Inspection = Recording2::Inspection;

class RepairVerb : public testing::Test {
protected:
    [[nodiscard]] std::string file(const std::string& name) const { return m_folder.file(name); }
    Result repair(const std::string& bytes)
    {
        writeBytes(file("in.rec"), bytes);
        std::filesystem::remove(file("out.rec"));  // no recording is ever replaced
        const Result result = run([&] { return RecTool::repair({file("in.rec"), file("out.rec"), 0, true, false}); });
        EXPECT_EQ(bytesOf(file("in.rec")), bytes) << "the original was changed";
        return result;
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
