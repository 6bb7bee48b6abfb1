// Files made of recordings: read back before they get their name, and what they never replace.
#include <csignal>
#include <filesystem>

#include <making/newrecording.h>
#include <making/savedfile.h>

#include "rectooltesting.h"
#include "support/samplerecording.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using RecTool::NewRecording;
using namespace testing;
namespace Inspection = Recording2::Inspection;

class NewRecordingTest : public InFolder {
protected:
    /// Makes a recording of what the records and the header are.
    Result make(const std::function<void(NewRecording&)>& fill, const Inspection::Header& header)
    {
        return run([&] {
            NewRecording recording(file("new.rec"), false);
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
    void expectNothing(const Result& result, const char* sentence) const
    {
        EXPECT_EQ(result.exitCode, ExitCode::CannotRead);
        EXPECT_THAT(result.err, HasSubstr(sentence));
        EXPECT_THAT(m_folder.names(), IsEmpty());
    }
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
    const Inspection::Summary summary = Inspection::inspect(file("new.rec"));
    EXPECT_THAT(summary.channelRangeTimes, ElementsAre(10, 15));
    EXPECT_EQ(summary.bookmarks.front().text, "mark");
    EXPECT_EQ(summary.header.stopMs, 1'600'000'001'456U);
    EXPECT_THAT(recordsOf(file("new.rec")),
                ElementsAre(ClockedRecord{1'600'000'000'133, 1, "one"}, ClockedRecord{1'600'000'000'143, 1, "two"}));
}

TEST_F(NewRecordingTest, RecordsThatAreNotStoredAsTheyWereGivenAreNoticed)
{
    const auto fill = [](NewRecording& recording) {
        recording.write(1, "one", 20, false);
        recording.write(1, "two", 10, false);  // stored as 21
    };
    expectNothing(make(fill, header()), "The records are not those that were written.");
}

TEST_F(NewRecordingTest, AHeaderThatCannotTellTheTimesIsNoticed)
{
    Inspection::Header late = header();
    late.startMs = late.stopMs = std::uint64_t{1} << 62U;  // too many for microseconds
    expectNothing(make([](NewRecording& recording) { recording.write(1, "one", 10, false); }, late),
                  "The header cannot tell the start or the stop.");
}

TEST_F(NewRecordingTest, AnInterruptLeavesNothingBehind)
{
    const auto fill = [](NewRecording& recording) {
        recording.write(1, "one", 10, false);
        EXPECT_EQ(std::raise(SIGINT), 0);
    };
    expectNothing(make(fill, header()), "Interrupted. Nothing was written.");
}

TEST_F(NewRecordingTest, AFileThatAppearedMeanwhileIsNotReplaced)
{
    const auto fill = [&](NewRecording& recording) {
        recording.write(1, "one", 10, false);
        writeBytes(file("new.rec"), "precious");
    };
    EXPECT_EQ(make(fill, header()).exitCode, ExitCode::CannotRead);
    EXPECT_EQ(bytesOf(file("new.rec")), "precious");
    EXPECT_THAT(m_folder.names(), ElementsAre("new.rec"));
}

namespace {

namespace fs = std::filesystem;

class Kept : public InFolder {
protected:
    std::string with(const std::string& name, const std::string& bytes) const
    {
        writeBytes(file(name), bytes);
        return file(name);
    }
    static Result picture(const std::string& path)
    {
        return run([&] { return RecTool::mayReplace(path) ? ExitCode::Fine : ExitCode::Usage; });
    }
    static Result force(const std::string& path)
    {
        return run([&] { return RecTool::NewRecording(path, true).check({}); });
    }
    [[nodiscard]] std::string recording() const
    {
        writeSampleRecording(file("sample"));
        return bytesOf(file("sample"));
    }
};

}  // namespace

TEST_F(Kept, IsARecordingWhateverItsName)
{
    for (const std::string name : {"a.rec", "b.png", "c.tmp"}) {
        const std::string path = with(name, recording());
        EXPECT_THAT(picture(path).err, HasSubstr("It is a recording and not overwritten."));
        const Result forced = force(path);
        EXPECT_EQ(forced.exitCode, ExitCode::Usage);
        EXPECT_THAT(forced.err, HasSubstr("This is a recording, which --force does not replace either."));
    }
}

TEST_F(Kept, IsARecordingThatIsUnderWayAndItsJournal)
{
    const std::string path = with("a.tmp", std::string(499, '0') + "#");
    EXPECT_THAT(picture(path).err, HasSubstr("It is a recording and not overwritten."));
    EXPECT_THAT(force(path).err, HasSubstr("This is a recording"));
    for (const std::string name : {"b.tmp", "b.tmp.journal"}) {
        const std::string other = with(name, "anything");
        EXPECT_THAT(picture(other).err, HasSubstr("belongs to a recording that is under way"));
        EXPECT_THAT(force(other).err, HasSubstr("belongs to a recording that is under way"));
    }
}

TEST_F(Kept, IsWhatALinkLeadsTo)
{
    const std::vector<std::string> targets = {with("a.rec", recording()), with("a.tmp.journal", "journal"),
                                              file("nothing.tmp")};
    for (const std::string& target : targets) {
        const std::string link = file("link.png");
        std::error_code error;
        fs::create_symlink(target, link, error);
        if (error) {
            GTEST_SKIP() << "no links here: " << error.message();
        }
        EXPECT_EQ(picture(link).exitCode, ExitCode::Usage) << target;
        EXPECT_THAT(force(link).err, HasSubstr("This is a link, and not followed.")) << target;
        fs::remove(link);
    }
    const std::string link = file("link.png");
    fs::create_symlink(with("picture.png", "a picture"), link);
    EXPECT_EQ(picture(link).exitCode, ExitCode::Fine) << "it may be drawn anew";
    EXPECT_EQ(force(link).exitCode, ExitCode::Usage);
}

TEST_F(Kept, IsWhatTakesTheNameWhileAnotherFileIsMade)
{
    const std::string path = file("new.geojson");
    const Result saved = run([&] {
        return RecTool::saveFile(path, [&](QIODevice& device) {
            writeBytes(path, recording());
            return device.write("{}") == 2;
        });
    });
    EXPECT_EQ(saved.exitCode, ExitCode::CannotRead);
    EXPECT_EQ(bytesOf(path), recording());
}

TEST_F(Kept, IsNothingElse)
{
    EXPECT_EQ(picture(file("new.png")).exitCode, ExitCode::Fine);
    EXPECT_EQ(picture(with("old.png", "a picture")).exitCode, ExitCode::Fine);
    EXPECT_EQ(force(file("new.rec")).exitCode, ExitCode::Fine);
    EXPECT_EQ(force(with("broken.rec", "no recording")).exitCode, ExitCode::Fine);
}
