// Connections to peers that are there, are not, fall silent and go; and the wish to stop in every wait.
#include "live/connection.h"

#include <atomic>

#include <system/stopsignal.h>

#include "live/lines.h"
#include "support/loopback.h"
#include "testpeer.h"

namespace RecStation {
namespace {

using namespace testing;
using namespace std::chrono_literals;

class ConnectionTest : public testing::Test {
protected:
    // What waits is asked to stop as soon as the process is in the wait, or before: both must end it.
    template <typename Wait>
    static void endsWithTheWishToStop(Wait wait)
    {
        std::thread stopper([] { System::StopSignal::request(); });
        EXPECT_THROW(wait(), Stopped);
        stopper.join();
    }

    System::StopSignal m_signal;
};

TEST_F(ConnectionTest, WhatAPeerSendsComesAndWhatIsSentArrives)
{
    TestPeer peer([](const TestClient& client) { client.send("echo " + client.receive()); });
    LineConnection lines(100);
    lines.open(peer.address());
    lines.send("hello\n");
    EXPECT_EQ(lines.next(in(10s)), "echo hello");
    EXPECT_THAT([&] { static_cast<void>(lines.next(in(10s))); },
                ThrowsMessage<ConnectionError>(HasSubstr("connection lost: the peer closed it")));
}

// It holds the second piece back until the first one is acknowledged.
TEST_F(ConnectionTest, AnswersInPiecesComeAtOnce)
{
    TestPeer peer([](const TestClient& client) {
        while (!client.receive().empty()) {
            client.send("ans");
            client.send("wer\n");
        }
    });
    LineConnection lines(100);
    lines.open(peer.address());
    std::vector<std::chrono::nanoseconds> waits;
    for (int i = 0; i < 100; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        lines.send("question\n");
        ASSERT_EQ(lines.next(in(10s)), "answer");
        waits.push_back(std::chrono::steady_clock::now() - begin);
    }
    std::ranges::sort(waits);
    EXPECT_LT(waits[waits.size() / 4], 30ms) << "a system that gathers pieces takes 40 ms for most";
}

TEST_F(ConnectionTest, ADeadlineEndsTheWaitForASilentPeer)
{
    TestPeer peer([](const TestClient& client) { static_cast<void>(client.receive()); });
    Connection connection;
    connection.open(peer.address());
    std::array<char, 8> buffer{};
    EXPECT_EQ(connection.read(buffer.data(), buffer.size(), in(1ms)), 0U);
    EXPECT_TRUE(connection.isOpen());
}

TEST_F(ConnectionTest, APortWhereNobodyListensIsRefusedAndANameThatThereIsNotIsTold)
{
    const std::uint16_t port = TestSupport::freePort();
    Connection connection;
    EXPECT_THAT(
        [&] {
            connection.open({"127.0.0.1", port});
        },
        ThrowsMessage<ConnectionError>("cannot connect: Connection refused"));
    EXPECT_THAT(
        [&] {
            connection.open({"no-such-host.invalid", port});
        },
        ThrowsMessage<ConnectionError>(HasSubstr("cannot find the host no-such-host.invalid: ")));
    EXPECT_FALSE(connection.isOpen());
}

TEST_F(ConnectionTest, TheWishToStopEndsReadingAtOnce)
{
    TestPeer peer([](const TestClient& client) { static_cast<void>(client.receive()); });
    Connection connection;
    connection.open(peer.address());
    std::array<char, 8> buffer{};
    endsWithTheWishToStop([&] { static_cast<void>(connection.read(buffer.data(), buffer.size(), in(1h))); });
}

TEST_F(ConnectionTest, TheWishToStopEndsSendingToAPeerThatTakesNothing)
{
    std::atomic<bool> done = false;
    TestPeer peer([&done](const TestClient&) { done.wait(false); });
    Connection connection;
    connection.open(peer.address());
    endsWithTheWishToStop([&] {
        for (;;) {
            connection.send(std::string(1'000'000, 'x'), 1h);
        }
    });
    done = true;
    done.notify_all();
}

TEST_F(ConnectionTest, TheWishToStopEndsAPauseAndTheLookUpOfAName)
{
    endsWithTheWishToStop([] { pauseUntil(in(1h)); });
    Connection connection;
    EXPECT_THROW(connection.open({"no-such-host.invalid", 1}), Stopped);
}

}  // namespace
}  // namespace RecStation
