// Recordings are shown while they are written: what is accepted appears, and nothing changes when they are closed.
#include "../../unit/recview/answerstest.h"
#include "support/program.h"

namespace AnswersTests {
namespace {

class RecViewLive : public AnswersTest {
protected:
    RecViewLive() { TestSupport::requireApplication(); }
    ~RecViewLive() override
    {
        m_recorder.kill();
        m_recorder.waitForFinished();
    }

    void record(const QStringList& options)
    {
        const QStringList arguments{"-q", "-o", QString::fromStdString(folder()), "--plugin", PLUGIN};
        m_recorder.start(RECSTATION, arguments + options);
        ASSERT_TRUE(m_recorder.waitForStarted());
    }
    void waitForRecorder()
    {
        ASSERT_TRUE(m_recorder.waitForFinished(TestSupport::PatienceMs));
        ASSERT_EQ(m_recorder.exitCode(), 0) << m_recorder.readAllStandardError().toStdString();
    }
    /// The recording of the receiver; null while there is none.
    json receiver()
    {
        const json list = askJson("recordings");
        for (const json& one : list["recordings"]) {
            if (!one["spectra"].empty()) {
                return one;
            }
        }
        return {};
    }
    static std::map<std::string, std::string> at(const json& recording, double ms)
    {
        return {{"recording", recording["id"]}, {"at", json(ms).dump()}};
    }

private:
    QProcess m_recorder;
};

TEST_F(RecViewLive, WhatIsAcceptedAppearsAndStaysTheSameWhenItIsClosed)
{
    open();
    record({"--speed", "20", "sim", "--duration", "60s"});
    waitUntil([&] { return !receiver().is_null(); });
    const json first = receiver();
    EXPECT_EQ(first["live"], true);
    EXPECT_EQ(first["timesKnown"], true);
    // It grows, and the newest sweep is at hand.
    constexpr double Second = 1000;
    waitUntil([&] { return double(receiver()["endMs"]) > double(first["endMs"]) + 2 * Second; });
    auto asked = at(first, receiver()["endMs"]);
    const json state = askJson("state", asked);
    EXPECT_GT(state["state"].size(), 10U);
    asked["type"] = "RFSPECTRUM";
    const json sweep = askJson("sweep", asked);
    EXPECT_GT(double(sweep["ms"]), double(first["endMs"]));
    // A bookmark has to wait until it is closed; without --edit nobody asks.
    waitForRecorder();
    waitUntil([&] { return receiver()["live"] == false; });
    EXPECT_EQ(receiver()["made"], 1) << "what was made while it grew goes on";
    const std::string file = path(receiver()["files"][0]["name"]);
    EXPECT_EQ(askJson("sweep", asked)["ms"] >= sweep["ms"], true);
    const double start = receiver()["startMs"];
    for (const std::uint64_t time : {9U, 500U, 20'000U, 59'000U}) {
        EXPECT_EQ(askJson("state", at(first, start + double(time)))["state"], stateOf(file, time)["state"]) << time;
    }
}

TEST_F(RecViewLive, EverySweepIsThereOnceItIsClosed)
{
    open();
    record({"--speed", "100", "sim", "--duration", "60s"});
    waitForRecorder();
    waitUntil([&] { return !receiver().is_null() && receiver()["live"] == false; });
    const json recording = receiver();
    waitUntilMade(recording["id"]);
    std::size_t sweeps = 0;
    for (const json& record : recordsOf(path(recording["files"][0]["name"]))) {
        sweeps += record["keyword"] == "RFSPECTRUM" ? 1U : 0U;
    }
    RecView::Response csv =
        ask("csv",
            {{"recording", recording["id"]}, {"type", "RFSPECTRUM"}, {"from", "0"}, {"to", recording["endMs"].dump()}});
    ASSERT_EQ(csv.status, 200) << csv.body;
    std::size_t lines = 0;
    for (std::string piece; csv.more(piece);) {
        std::istringstream text(piece);
        for (std::string line; std::getline(text, line);) {
            lines += line.starts_with("time_utc_ms") ? 0U : 1U;
        }
    }
    EXPECT_EQ(lines, sweeps);
}

TEST_F(RecViewLive, WithoutAJournalItIsToldThatTheTimesAreNotKnownYet)
{
    open();
    record({"--journal", "off", "--speed", "20", "sim", "--duration", "20s"});
    json live;
    waitUntil([&] {
        const json list = askJson("recordings")["recordings"];
        live = list.empty() ? json() : list[0];
        return !live.is_null();
    });
    EXPECT_EQ(live["live"], true);
    EXPECT_EQ(live["timesKnown"], false);
    waitForRecorder();
    waitUntil([&] { return !receiver().is_null() && receiver()["live"] == false; });
    EXPECT_EQ(receiver()["timesKnown"], true);
}

}  // namespace
}  // namespace AnswersTests
