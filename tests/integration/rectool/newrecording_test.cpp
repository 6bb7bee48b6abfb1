// Writing a recording that is made of others: it is read back before it is given its name.
#include <csignal>
#include <cstdint>
#include <functional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <making/newrecording.h>

#include "rectooltesting.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using RecTool::NewRecording;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace Inspection = Recording2::Inspection;

class NewRecordingTest : public testing::Test {
protected:
    /// Makes a recording of what the records and the header are.
    Result make(const std::function<void(NewRecording&)>& fill, const Inspection::Header& header)
    {
        return run([&] {
            NewRecording recording(m_folder.file("new.rec"), false);
            EXPECT_EQ(recording.create({{1, 3, "LEVEL", "/L"}}), ExitCode::Fine);
            EXPECT_THAT(m_folder.names(), ElementsAre("new.rec.part"));
            fill(recording);
            return recording.finish(header, {{7, "mark"}});
        });
    }
    static Inspection::Header header()
    {
        Inspection::Header header;
        header.majorVersion = 2;
        header.startMs = 1'600'000'000'123;
        header.stopMs = 1'600'000'001'456;
        return header;
    }

    Folder m_folder;
};

}  // namespace

TEST_F(NewRecordingTest, HasWhatWasWritten)
{
    const auto fill = [](NewRecording& recording) {
        recording.write(1, "one", 10, true);
        recording.write(1, "two", 20, false);
        recording.addChannelRange(15);
    };
    ASSERT_EQ(make(fill, header()).exitCode, ExitCode::Fine);
    EXPECT_THAT(m_folder.names(), ElementsAre("new.rec"));
    const Inspection::Summary summary = Inspection::inspect(m_folder.file("new.rec"));
    EXPECT_THAT(summary.channelRangeTimes, ElementsAre(10, 15));
    EXPECT_EQ(summary.bookmarks.front().text, "mark");
    EXPECT_EQ(summary.header.stopMs, 1'600'000'001'456U);
    EXPECT_THAT(recordsOf(m_folder.file("new.rec")),
                ElementsAre(ClockedRecord{1'600'000'000'133, 1, "one"}, ClockedRecord{1'600'000'000'143, 1, "two"}));
}

TEST_F(NewRecordingTest, RecordsThatAreNotStoredAsTheyWereGivenAreNoticed)
{
    const auto fill = [](NewRecording& recording) {
        recording.write(1, "one", 20, false);
        recording.write(1, "two", 10, false);  // stored as 21
    };
    const Result result = make(fill, header());
    EXPECT_EQ(result.exitCode, ExitCode::CannotRead);
    EXPECT_THAT(result.err, HasSubstr("The records are not those that were written."));
    EXPECT_THAT(m_folder.names(), IsEmpty());
}

TEST_F(NewRecordingTest, AHeaderThatCannotTellTheTimesIsNoticed)
{
    Inspection::Header late = header();
    late.startMs = late.stopMs = std::uint64_t{1} << 62U;  // too many for microseconds
    const Result result = make([](NewRecording& recording) { recording.write(1, "one", 10, false); }, late);
    EXPECT_EQ(result.exitCode, ExitCode::CannotRead);
    EXPECT_THAT(result.err, HasSubstr("The header cannot tell the start or the stop."));
    EXPECT_THAT(m_folder.names(), IsEmpty());
}

TEST_F(NewRecordingTest, AnInterruptLeavesNothingBehind)
{
    const auto fill = [](NewRecording& recording) {
        recording.write(1, "one", 10, false);
        EXPECT_EQ(std::raise(SIGINT), 0);
    };
    const Result result = make(fill, header());
    EXPECT_EQ(result.exitCode, ExitCode::CannotRead);
    EXPECT_THAT(result.err, HasSubstr("Interrupted. Nothing was written."));
    EXPECT_THAT(m_folder.names(), IsEmpty());
}

TEST_F(NewRecordingTest, AFileThatAppearedMeanwhileIsNotReplaced)
{
    const auto fill = [&](NewRecording& recording) {
        recording.write(1, "one", 10, false);
        writeBytes(m_folder.file("new.rec"), "precious");
    };
    EXPECT_EQ(make(fill, header()).exitCode, ExitCode::CannotRead);
    EXPECT_EQ(bytesOf(m_folder.file("new.rec")), "precious");
    EXPECT_THAT(m_folder.names(), ElementsAre("new.rec"));
}
