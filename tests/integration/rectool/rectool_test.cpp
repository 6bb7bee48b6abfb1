// The program among others: what only a process of its own meets. What it prints is tested in tests/cases.
#include <QStandardPaths>
#include <nlohmann/json.hpp>

#include "support/program.h"
#include "support/recordingbytes.h"
#include "support/samplerecording.h"

namespace {

using nlohmann::json;
using TestSupport::ProgramResult;
using TestSupport::runProgram;
using namespace testing;

ProgramResult rectool(const QStringList& arguments)
{
    return runProgram(RECTOOL, arguments);
}

json bookmarksOf(const QString& path)
{
    return json::parse(rectool({"bookmark", "list", "--json", path}).out).at("bookmarks");
}

class RecTool : public testing::Test {
protected:
    RecTool() { writeBearingRecording(path.toStdString(), true); }

    QTemporaryDir folder;
    QString path = folder.filePath("bearings.rec");
};

}  // namespace

TEST_F(RecTool, BookmarksThatTwoProgramsAddAtOnceAreAllStored)
{
    constexpr int Each = 8;
    const auto add = [&](int first) {
        for (int i = 0; i < Each; ++i) {
            const QString time = QString::number(first + 2 * i);
            EXPECT_EQ(rectool({"bookmark", "add", path, time, "mark", "--yes"}).exitCode, 0);
        }
    };
    std::thread other(add, 100);
    add(101);
    other.join();
    EXPECT_EQ(bookmarksOf(path).size(), std::size_t{2 * Each});
    EXPECT_EQ(rectool({"verify", path}).exitCode, 0);
}

TEST_F(RecTool, AClockTimeThatSaysLocalIsOfTheZoneOfThisComputer)
{
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(1'700'000'001'500, Qt::LocalTime);
    const QString text = moment.toString("yyyy-MM-dd HH:mm:ss.zzz") + " local";
    EXPECT_EQ(json::parse(rectool({"state", path, "--json", "--at", text}).out).at("atMs"), 1500);
}

#if !defined(_WIN32)
TEST_F(RecTool, AtATerminalOnlyYesChangesTheFile)
{
    if (QStandardPaths::findExecutable("script").isEmpty()) {
        GTEST_SKIP() << "there is no script program";
    }
    const std::string before = TestSupport::readFile(path);
    const auto answer = [&](const char* text) {
        const QString command =
            QStringLiteral("echo '%1' | script -qec '%2 bookmark add %3 100 mark' /dev/null").arg(text, RECTOOL, path);
        return runProgram("sh", {"-c", command});
    };
    const ProgramResult refused = answer("");
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.out,
                AllOf(HasSubstr("Add the bookmark \"mark\" at 100 ms? [y/N]"), HasSubstr("Not confirmed.")));
    EXPECT_EQ(TestSupport::readFile(path), before);
    EXPECT_EQ(answer("y").exitCode, 0);
    EXPECT_EQ(bookmarksOf(path).size(), 1U);
}

TEST_F(RecTool, AReaderThatHasSeenEnoughIsNoError)
{
    const QString command = QStringLiteral(
        "trap '' PIPE; { for i in 1 2 3 4 5; do \"$0\" cat --json \"$1\"; echo $? >&2; done; } | head -n 0");
    const ProgramResult result = runProgram("sh", {"-c", command, RECTOOL, path});
    EXPECT_EQ(result.err, "0\n0\n0\n0\n0\n");
}

TEST_F(RecTool, AFullDiskIsAnError)
{
    if (!QFile::exists("/dev/full")) {
        GTEST_SKIP() << "there is no /dev/full";
    }
    const ProgramResult result = runProgram("sh", {"-c", "\"$0\" cat \"$1\" >/dev/full", RECTOOL, path});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, HasSubstr("the output could not be written"));
}
#endif
