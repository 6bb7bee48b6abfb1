// A recording is looked at with rectool while the real program records it.
#include "programtest.h"

namespace RecStation {
namespace {

using namespace testing;

class FollowingTest : public ProgramTest {
protected:
    void begin(const QStringList& arguments = {}) { beginLevels(m_recording, arguments); }
    void feed(const QByteArray& line)
    {
        m_recording.write(line + '\n');
        ASSERT_TRUE(m_recording.waitForBytesWritten(PatienceMs));
    }
    void look(QProcess& process, const QStringList& arguments)
    {
        start(process, arguments + files("*.tmp").mid(0, 1), RECTOOL);
    }
    /// Follows the recording in a process of its own, until the levels were shown.
    void follow(const QStringList& arguments = {})
    {
        look(m_cat, QStringList{"cat", "--follow"} + arguments);
        waitForOutput("-40.25\n");
    }
    Result lookOnce(const QStringList& arguments)
    {
        QProcess process;
        look(process, arguments);
        return finish(process);
    }
    /// What is closed before a follower found it has another name by then.
    static void waitUntilFollowing(QProcess& process)
    {
        process.setReadChannel(QProcess::StandardOutput);
        ASSERT_TRUE(process.bytesAvailable() > 0 || process.waitForReadyRead(PatienceMs));
    }
    /// Waits until the process that follows has printed a text.
    void waitForOutput(const QByteArray& text)
    {
        m_cat.setReadChannel(QProcess::StandardOutput);
        while (!m_printed.contains(text)) {
            ASSERT_TRUE(m_cat.waitForReadyRead(PatienceMs)) << m_printed.toStdString();
            m_printed += m_cat.readAllStandardOutput();
        }
    }

    QProcess m_recording;
    QProcess m_cat;
    QByteArray m_printed;
};

TEST_F(FollowingTest, RecordsAreShownAsTheyAreAcceptedUntilTheRecordingIsClosed)
{
    begin();
    follow({"--type", "LEVEL", "--csv"});
    EXPECT_EQ(m_printed, "timeMs,keyword,value\n10,LEVEL,-30\n1500,LEVEL,-31.5\n2500,LEVEL,-40.25\n");
    for (int i = 1; i <= 20; ++i) {
        const QByteArray number = QByteArray::number(i);
        feed(R"({"at": )" + QByteArray::number(3000 + i) + R"(, "path": "/LEVEL", "set": )" + number + "}");
        waitForOutput("\n" + QByteArray::number(3000 + i) + ",LEVEL," + number + "\n");
    }
    feed(R"({"at": 4000, "path": "/LEVEL", "set": 77})");
    EXPECT_EQ(finish(m_recording).exitCode, 3);  // the mark was bad input
    const Result result = finish(m_cat);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(m_printed.toStdString() + result.out, EndsWith("4000,LEVEL,77\n"));
    EXPECT_THAT(result.err, IsEmpty());
}

TEST_F(FollowingTest, EveryFormIsFollowedAndGivesWhatTheFinishedFileGives)
{
    begin();
    QProcess lines;
    QProcess json;
    QProcess from;
    look(lines, {"cat", "-f", "--time", "utc"});
    look(json, {"cat", "--follow", "--json"});
    look(from, {"cat", "--follow", "--csv", "--from", "2s", "--to", "3500"});
    waitUntilFollowing(lines);
    waitUntilFollowing(json);
    waitUntilFollowing(from);
    feed(R"({"at": 3000, "path": "/LEVEL", "set": 5})");
    feed(R"({"at": 3600, "path": "/LEVEL", "set": 6})");
    EXPECT_EQ(finish(from).out, "timeMs,keyword,value\n2500,LEVEL,-40.25\n3000,LEVEL,5\n");  // --to ends it
    finish(m_recording);
    const QString closed = files("*.rec").value(0);
    QProcess again;
    start(again, {"cat", "--json", closed}, RECTOOL);
    EXPECT_EQ(finish(json).out, finish(again).out);
    EXPECT_THAT(finish(lines).out, HasSubstr("2026-01-02T03:04:08.000Z  LEVEL"));
}

TEST_F(FollowingTest, TheNextFileOfARecordingIsFollowedToo)
{
    begin();
    follow({"--csv", "--type", "LEVEL"});
    feed(R"({"at": 3000, "record": "Off"})");
    feed(R"({"at": 4000, "record": "On"})");
    feed(R"({"at": 4500, "path": "/LEVEL", "set": 5})");
    waitForOutput("\n500,LEVEL,5\n");
    finish(m_recording);
    const Result result = finish(m_cat);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, HasSubstr("It is complete and goes on in "));
    EXPECT_EQ(m_printed.count("timeMs,keyword,value"), 1);
}

TEST_F(FollowingTest, ARecorderThatIsKilledEndsTheFollowingWithASentence)
{
    begin();
    follow();
    m_recording.kill();
    ASSERT_TRUE(m_recording.waitForFinished(PatienceMs));
    const Result result = finish(m_cat);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, HasSubstr("Its recorder ended without closing it; `rectool recover`"));
    const Result later = lookOnce({"cat", "--follow"});
    EXPECT_EQ(later.exitCode, 2);
    EXPECT_THAT(later.out, HasSubstr("-40.25\n"));
    const Result unclosed = lookOnce({"cat"});
    EXPECT_EQ(unclosed.exitCode, 2);
    EXPECT_THAT(unclosed.out, IsEmpty());
    EXPECT_THAT(unclosed.err, HasSubstr("never closed"));
}

#if !defined(_WIN32)
TEST_F(FollowingTest, AnInterruptEndsTheFollowingWell)
{
    begin();
    follow();
    ASSERT_EQ(::kill(static_cast<pid_t>(m_cat.processId()), SIGINT), 0);
    const Result result = finish(m_cat);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, IsEmpty());
    finish(m_recording);
}
#endif

TEST_F(FollowingTest, WhatWasAcceptedSoFarIsShownWithTheWordThatItIsBeingWritten)
{
    begin();
    const Result cat = lookOnce({"cat", "--type", "LEVEL", "--csv"});
    EXPECT_EQ(cat.exitCode, 0);
    EXPECT_EQ(cat.out, "timeMs,keyword,value\n10,LEVEL,-30\n1500,LEVEL,-31.5\n2500,LEVEL,-40.25\n");
    EXPECT_THAT(cat.err, EndsWith("This recording is being written: this is what was accepted so far.\n"));

    const Result info = lookOnce({"info"});
    EXPECT_EQ(info.exitCode, 0);
    EXPECT_THAT(info.out, AllOf(HasSubstr(", which is being written"), HasSubstr("2026-01-02 03:04:07.500 UTC")));
    const auto json = nlohmann::json::parse(lookOnce({"info", "--json"}).out)["files"][0];
    EXPECT_EQ(json["readability"], "being-written");
    EXPECT_EQ(json["lastTimeMs"], 2500);
    EXPECT_EQ(json["durationMs"], 2500);

    const auto state = nlohmann::json::parse(lookOnce({"state", "--at", "end", "--json"}).out);
    EXPECT_EQ(state["atMs"], 2500);
    EXPECT_THAT(state.dump(), HasSubstr("-40.25"));
    EXPECT_THAT(lookOnce({"state", "--at", "2s", "--json"}).out, HasSubstr("-31.5"));
    finish(m_recording);
}

TEST_F(FollowingTest, WithoutAJournalItIsSaidThatTimesAreMissing)
{
    begin({"--journal", "off"});
    for (const char* verb : {"cat", "info"}) {
        const Result result = lookOnce({verb});
        EXPECT_EQ(result.exitCode, 0) << verb;
        EXPECT_THAT(result.err + result.out, HasSubstr("no journal")) << verb;
    }
    QProcess cat;
    look(cat, {"cat", "--follow", "--csv", "--type", "LEVEL"});
    waitForMessage(cat, "It has no journal, so the times of its records are missing");
    finish(m_recording);
    // What was read before the recording was closed has no time.
    EXPECT_THAT(finish(cat).out, AnyOf(StartsWith("timeMs,keyword,value\n10,LEVEL,-30\n1500,"),
                                       StartsWith("timeMs,keyword,value\n,LEVEL,-30\n")));
}

TEST_F(FollowingTest, WhatCannotBeFollowedIsRefused)
{
    QProcess cat;
    start(cat, {"cat", "--follow", "none.tmp"}, RECTOOL);
    const Result result = finish(cat);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, HasSubstr("none.tmp: There is no such file."));
    begin();
    const Result wrong = lookOnce({"cat", "--follow", "--type", "NONE"});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_THAT(wrong.err, HasSubstr("NONE"));
    finish(m_recording);
}

}  // namespace
}  // namespace RecStation
