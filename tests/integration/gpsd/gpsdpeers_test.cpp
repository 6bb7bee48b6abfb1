// Peers that the test plays: devices that take turns, times, floods and rubbish.
#include "gpsdprogramtest.h"

namespace {

using namespace testing;

constexpr auto greeting = "{\"class\":\"VERSION\",\"release\":\"3.22\"}\n";

std::string tpv(const std::string& device, const std::string& latitude, const std::string& time = {})
{
    return R"({"class":"TPV","device":")" + device + R"(","mode":3,)" +
           (time.empty() ? std::string() : R"("time":")" + time + R"(",)") + R"("lat":)" + latitude +
           R"(,"lon":13.5,"altMSL":31.5,"speed":2.675})" + "\n";
}

unsigned long long nowUs()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<unsigned long long>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

class GpsdPeers : public GpsdProgramTest {
protected:
    void connect(const QStringList& more = {})
    {
        startProgram(m_peer.port(), more);
        accept();
    }
    void accept()
    {
        EXPECT_TRUE(m_peer.accept());
        m_peer.send(greeting);
        EXPECT_TRUE(m_peer.awaitText(R"(?WATCH={"enable":true,"json":true})"));
    }
    // What the peer has sent is applied when its end is noticed.
    void hangUp(int times = 1)
    {
        m_peer.hangUp();
        EXPECT_TRUE(awaitMessage("trying again", times)) << messages();
    }
    // The values are unknown before the program connects again.
    [[nodiscard]] Result stopBehindGap(int times = 1)
    {
        hangUp(times);
        accept();
        return stopProgram();
    }
    [[nodiscard]] static std::vector<std::string> latitudes(const Result& result)
    {
        return recordingOf(result).changes(Code::Latitude, 1);
    }

    Peer m_peer;
};

TEST_F(GpsdPeers, TwoDevicesNeverTakeTurnsAndTheOtherCountsAfterFiveSeconds)
{
    connect();
    std::vector<std::string> expected;
    for (int i = 0; i < 20; ++i) {
        expected.push_back("1." + std::to_string(i % 10));
        m_peer.send(tpv("a", expected.back()) + tpv("b", "7.5"));
    }
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(awaitMessage("positions come from b", 1, [this] { m_peer.send(tpv("b", "8.5")); })) << messages();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(4500));
    m_peer.send(tpv("a", "1.5") + tpv("b", "9.5"));
    const Result result = stopBehindGap();
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    std::vector<std::string> found = latitudes(result);
    const auto last = std::find(found.begin(), found.end(), "8.5");
    ASSERT_NE(last, found.end());
    EXPECT_THAT(std::vector<std::string>(last, found.end()), ElementsAre("8.5", "9.5", "nan"));
    if (*std::prev(last) == "nan") {  // unless b came in the very moment
        found.erase(std::prev(last));
    }
    found.erase(std::find(found.begin(), found.end(), "8.5"), found.end());
    EXPECT_EQ(found, expected);
}

TEST_F(GpsdPeers, OnlyTheDeviceThatIsNamedCounts)
{
    connect({"--device", "b"});
    m_peer.send("{\"class\":\"DEVICES\",\"devices\":[{\"path\":\"a\"}]}\n" + tpv("a", "1.0") + tpv("b", "2.0") +
                tpv("a", "3.0"));
    const Result result = stopBehindGap();
    EXPECT_THAT(latitudes(result), ElementsAre("2.0", "nan"));
    EXPECT_THAT(result.messages, HasSubstr("there is no b; there is a"));
}

TEST_F(GpsdPeers, ALostPeerIsUnknownAndGoesOnWhenItIsBack)
{
    connect();
    m_peer.send(tpv("a", "1.0"));
    hangUp();
    accept();
    m_peer.send(tpv("a", "2.0"));
    const Result result = stopBehindGap(2);
    EXPECT_THAT(latitudes(result), ElementsAre("1.0", "nan", "2.0", "nan"));
    EXPECT_EQ(result.summary.at("sources")[0].at("reconnects"), 2);
    EXPECT_THAT(result.messages, HasSubstr("connected again"));
}

// Whoever looks at it sees for how long nothing came.
TEST_F(GpsdPeers, ARecordingBeginsWithTheRunAndNotWithWhatComesFirst)
{
    startProgram(m_peer.port());
    ASSERT_TRUE(m_peer.accept());
    const unsigned long long connectedUs = nowUs();
    m_peer.send(greeting);
    EXPECT_TRUE(m_peer.awaitText("?WATCH"));
    const RecordedFile file = recordingOf(stopProgram());
    EXPECT_LE(file.startUs, connectedUs);
    EXPECT_LE(file.startUs, file.header.stopTS().getMicroSecs());
}

TEST_F(GpsdPeers, AReceiverThatLosesItsFixIsUnknown)
{
    connect();
    m_peer.send(tpv("a", "1.0") + "{\"class\":\"TPV\",\"device\":\"a\",\"mode\":1}\n" + tpv("a", "2.0"));
    EXPECT_THAT(latitudes(stopBehindGap()), ElementsAre("1.0", "nan", "2.0", "nan"));
}

TEST_F(GpsdPeers, WithSourceTimeRecordsHaveTheTimeOfTheReportAndTheLagIsTold)
{
    connect({"--source-time"});
    m_peer.send(tpv("a", "1.0", "2026-11-21T08:00:00.000Z") + tpv("a", "2.0", "2026-11-21T08:00:01.250Z"));
    const Result result = stopBehindGap();
    const auto numbers = recordingOf(result).numbers(Code::Latitude);
    ASSERT_GE(numbers.size(), 2U);
    constexpr unsigned long long second = 1'795'248'001'250'000;  // 2026-11-21 08:00:01.250 UTC
    EXPECT_EQ(numbers[1].timeUs, second);
    EXPECT_GT(result.summary.at("sources")[0].at("lagMs").at("most"), 0);
}

TEST_F(GpsdPeers, RubbishIsCountedAndNothingElseIsLost)
{
    connect();
    m_peer.send("rubbish\n" + std::string(200'000, 'x') + "\n{\"class\":\"TPV\",\"mode\":3,\"lat\":99,\"lon\":0}\n" +
                tpv("a", "1.0"));
    const Result result = stopBehindGap();
    EXPECT_THAT(latitudes(result), ElementsAre("1.0", "nan"));
    EXPECT_EQ(result.summary.at("sources")[0].at("lost"), 3);
}

TEST_F(GpsdPeers, AFloodEndsWithTheNewest)
{
    connect();
    std::string flood;
    for (int i = 0; i < 30'000; ++i) {
        flood += tpv("a", "1." + std::to_string(i % 10));
    }
    m_peer.send(flood + tpv("a", "5.5"));
    const Result result = stopBehindGap();
    const auto found = latitudes(result);
    ASSERT_GE(found.size(), 2U);
    EXPECT_EQ(found[found.size() - 2], "5.5");
    EXPECT_EQ(result.summary.at("sources")[0].at("used"), 30'001);
    EXPECT_LT(found.size(), 15'000U);
}

TEST_F(GpsdPeers, ASerialLineBesideItIsRecordedAtTheTimeOfArrivalAndAtOnce)
{
    connect({"--duration", "3", "nmea", "-"});
    const Result result = endProgram("$GPRMC,080000,A,5230.0000,N,01330.0000,E,10.0,90.0,211126,,,A\n");
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    const RecordedFile file = recordingOf(result);
    EXPECT_THAT(file.changes(Code::Latitude, 1), ElementsAre("52.5"));
    constexpr unsigned long long soon = 2'900'000;  // and not at the end of the run
    const unsigned long long arrival = file.numbers(Code::Latitude).front().timeUs;
    EXPECT_GE(arrival, file.startUs);
    EXPECT_LT(arrival, file.startUs + soon);
    constexpr unsigned long long minute = 60'000'000;
    EXPECT_LT(nowUs() - arrival, minute);
}

TEST_F(GpsdPeers, APeerThatIsNoGpsdIsTold)
{
    startProgram(m_peer.port());
    ASSERT_TRUE(m_peer.accept());
    m_peer.send("HTTP/1.1 400 Bad Request\r\n\r\n");
    ASSERT_TRUE(awaitMessage("what answers there is no gpsd; trying again"));
    accept();
    ASSERT_TRUE(awaitMessage(": connected"));
    stopProgram();
}

}  // namespace
