// Asking a rigctld of the test: what it tells, does not have, or cannot tell at present.
#include "sources/rig/rigclient.h"

#include <system/stopsignal.h>

#include "testpeer.h"

namespace RecStation {
namespace {

using namespace testing;
using Answers = std::map<std::string, std::string>;

TestPeer::Serve answering(Answers answers)
{
    return [answers = std::move(answers)](const TestClient& client) {
        std::string commands;
        for (std::string more = client.receive(); !more.empty(); more = client.receive()) {
            commands += more;
            for (std::size_t end = commands.find('\n'); end != std::string::npos; end = commands.find('\n')) {
                const auto answer = answers.find(commands.substr(0, end));
                client.send(answer == answers.end() ? "RPRT -1\n" : answer->second);
                commands.erase(0, end + 1);
            }
        }
    };
}

Answers goodAnswers()
{
    return {{"+\\chk_vfo", "ChkVFO: 0\n"},
            {"+f", "get_freq:\nFrequency: 145000000\nRPRT 0\n"},
            {"+m", "get_mode:\nMode: FM\nPassband: 15000\nRPRT 0\n"},
            {"+l STRENGTH", "get_level: STRENGTH\n-38\nRPRT 0\n"}};
}

class RigClientTest : public testing::Test {
protected:
    [[nodiscard]] RigClient client(const TestPeer& peer, std::optional<double> s9Dbm = std::nullopt)
    {
        return {peer.address(), s9Dbm, [this](const std::string& clause) { m_told.push_back(clause); }};
    }

    System::StopSignal m_signal;
    std::vector<std::string> m_told;
};

TEST_F(RigClientTest, TellsWhatItIsToldStrengthsOverS9OrInDbm)
{
    TestPeer peer(answering(goodAnswers()));
    RigClient overS9 = client(peer);
    overS9.connect();
    const RigAnswers answers = overS9.ask();
    EXPECT_EQ(answers.frequencyHz, 145e6);
    EXPECT_EQ(answers.mode, "FM");
    EXPECT_EQ(answers.bandwidthHz, 15e3);
    EXPECT_EQ(answers.levelDb, -38);
    EXPECT_EQ(overS9.used(), 3U);
    overS9.disconnect();
    RigClient inDbm = client(peer, -73);
    inDbm.connect();
    EXPECT_EQ(inDbm.ask().levelDb, -111);
    EXPECT_THAT(m_told, IsEmpty());
}

TEST_F(RigClientTest, WhatTheReceiverDoesNotHaveIsToldOnceLeftOutAndTheOthersGoOn)
{
    Answers answers = goodAnswers();
    answers["+l STRENGTH"] = "get_level: STRENGTH\nRPRT -11\n";
    TestPeer peer(answering(answers));
    RigClient rig = client(peer);
    rig.connect();
    EXPECT_TRUE(std::isnan(rig.ask().levelDb.value()));
    const RigAnswers second = rig.ask();
    EXPECT_FALSE(second.levelDb) << "not asked for again";
    EXPECT_EQ(second.mode, "FM");
    EXPECT_THAT(m_told, ElementsAre("it does not tell its signal strength (not available, RPRT -11), which stays "
                                    "unknown"));
    EXPECT_EQ(rig.lost(), 0U);
}

TEST_F(RigClientTest, WhatItCannotTellAtPresentIsUnknownButForTheFrequencyAndIsAskedAgain)
{
    Answers answers = goodAnswers();
    answers["+f"] = "get_freq:\nRPRT -5\n";
    answers["+m"] = "get_mode:\nMode: \nPassband: 0\nRPRT 0\n";
    TestPeer peer(answering(answers));
    RigClient rig = client(peer);
    rig.connect();
    for (int i = 0; i < 2; ++i) {
        const RigAnswers told = rig.ask();
        EXPECT_FALSE(told.frequencyHz);
        EXPECT_EQ(told.mode, "");
        EXPECT_TRUE(std::isnan(told.bandwidthHz.value()));
        EXPECT_EQ(told.levelDb, -38);
    }
    EXPECT_EQ(rig.lost(), 4U);
    EXPECT_THAT(m_told, ElementsAre("it does not tell its frequency at present: communication timed out, RPRT -5",
                                    HasSubstr("it does not tell its mode and bandwidth at present: it answers ")));
}

TEST_F(RigClientTest, AFailureThatComesAndGoesFillsNoLog)
{
    Answers failing = goodAnswers();
    failing["+l STRENGTH"] = "get_level: STRENGTH\nRPRT -5\n";
    TestPeer peer([failing, connections = 0](const TestClient& client) mutable {
        answering(++connections % 2 == 0 ? goodAnswers() : failing)(client);
    });
    RigClient rig = client(peer);
    for (int i = 0; i < 60; ++i) {
        rig.connect();
        static_cast<void>(rig.ask());
        rig.disconnect();
    }
    EXPECT_THAT(m_told, SizeIs(2 * TellRate::Most)) << "that it fails, and that it tells it again";
    EXPECT_EQ(rig.lost(), 30U);
}

TEST_F(RigClientTest, WhatFollowsAnOverlongLineIsNoAnswerToIt)
{
    Answers answers = goodAnswers();
    answers["+m"] = "get_mode:\nMode: " + std::string(2 * RigReplyReader::LongestLine, 'A') + "\nPassband: 1\nRPRT 0\n";
    TestPeer peer(answering(answers));
    RigClient rig = client(peer);
    rig.connect();
    EXPECT_THAT([&] { static_cast<void>(rig.ask()); }, ThrowsMessage<ConnectionError>(HasSubstr("a line is too long")));
    EXPECT_EQ(rig.lost(), 1U);
}

TEST_F(RigClientTest, AVfoIsNamedWhereRigctldWantsOne)
{
    TestPeer peer(answering({{"+\\chk_vfo", "ChkVFO: 1\n"},
                             {"+f currVFO", "get_freq: currVFO\nFrequency: 7100000\nRPRT 0\n"},
                             {"+m currVFO", "get_mode: currVFO\nMode: USB\nPassband: 2400\nRPRT 0\n"},
                             {"+l currVFO STRENGTH", "get_level: currVFO STRENGTH\n3\nRPRT 0\n"}}));
    RigClient rig = client(peer);
    rig.connect();
    EXPECT_EQ(rig.ask().frequencyHz, 7.1e6);
    EXPECT_EQ(rig.ask().levelDb, 3);
}

TEST_F(RigClientTest, AnyOtherServerIsToldApart)
{
    TestPeer web([](const TestClient& client) { client.send("HTTP/1.1 400 Bad Request\r\n\r\n"); });
    RigClient rig = client(web);
    EXPECT_THAT([&] { rig.connect(); },
                ThrowsMessage<ConnectionError>("it does not answer as rigctld does: \"HTTP/1.1 400 Bad Request\""));
}

}  // namespace
}  // namespace RecStation
