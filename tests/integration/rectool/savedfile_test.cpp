// What no verb of rectool replaces: neither a picture or a document, nor a recording that is made with --force.
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <making/newrecording.h>
#include <making/savedfile.h>

#include "rectooltesting.h"
#include "support/samplerecording.h"

namespace {

using namespace RecToolTests;
using RecTool::ExitCode;
using testing::HasSubstr;
namespace fs = std::filesystem;

class Kept : public testing::Test {
protected:
    [[nodiscard]] std::string file(const std::string& name) const { return m_folder.file(name); }
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

    Folder m_folder;
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
