// A source whose peer comes late, goes, comes back, and talks rubbish.
#include "live/peersource.h"

#include <charconv>

#include <system/stopsignal.h>

#include "live/lines.h"
#include "support/loopback.h"
#include "testpeer.h"

namespace RecStation {
namespace {

using namespace testing;

/// Takes a number from every line.
class NumberSource final : public PeerSource {
public:
    NumberSource(Address address, const SourceRun& run)
        : PeerSource("numbers", addressText(address), run), m_address(std::move(address))
    {
    }
    void prepare() override {}

    std::vector<int> shown;  // -1: unknown

protected:
    void connect() override { m_lines.open(m_address); }
    [[nodiscard]] Received receive() override
    {
        const auto line = m_lines.next(in(std::chrono::hours(1)));
        const auto [end, error] = std::from_chars(line->data(), line->data() + line->size(), m_number);
        if (error != std::errc()) {
            throw ConnectionError("it does not count");
        }
        return {systemTimeUs(), std::nullopt};
    }
    void disconnect() noexcept override { m_lines.close(); }
    void apply() override { shown.push_back(m_number); }
    void forget() override { shown.push_back(-1); }
    [[nodiscard]] SourceReport counts() const override { return {}; }

private:
    Address m_address;
    LineConnection m_lines{100};
    int m_number = 0;
};

class PeerSourceTest : public testing::Test {
protected:
    [[nodiscard]] SourceRun forRun()
    {
        SourceRun run{m_configuration, {}, {}};
        run.hooks.report = [this](const QString& sentence) { m_told.push_back(sentence.toStdString()); };
        return run;
    }
    static void play(NumberSource& source, std::size_t steps)
    {
        while (source.shown.size() < steps && source.nextTime()) {
            source.step();
        }
    }

    System::StopSignal m_signal;
    Configuration m_configuration;
    std::vector<std::string> m_told;
};

TEST_F(PeerSourceTest, APeerThatGoesLeavesTheValuesUnknownUntilItIsBack)
{
    const auto serve = [](const TestClient& client) { client.send("1\n2\n"); };
    auto peer = std::make_unique<TestPeer>(serve);
    const std::uint16_t port = peer->port();
    NumberSource source(peer->address(), forRun());
    play(source, 3);
    EXPECT_THAT(source.shown, ElementsAre(1, 2, -1));
    peer.reset();
    peer = std::make_unique<TestPeer>(serve, port);
    play(source, 5);
    EXPECT_THAT(source.shown, ElementsAre(1, 2, -1, 1, 2));
    EXPECT_EQ(source.report().reconnects, 1U);
    ASSERT_THAT(m_told, SizeIs(2));
    EXPECT_THAT(m_told[0], HasSubstr("numbers 127.0.0.1:"));
    EXPECT_THAT(m_told[0], HasSubstr(": connection lost: the peer closed it; trying again"));
    EXPECT_THAT(m_told[1], HasSubstr(": connected again"));
}

TEST_F(PeerSourceTest, OneThatHangsUpAtOnceIsTriedLaterAndLater)
{
    TestPeer peer([](const TestClient& client) { client.send("1\n"); });
    NumberSource source(peer.address(), forRun());
    const auto begin = std::chrono::steady_clock::now();
    play(source, 7);
    EXPECT_THAT(source.shown, ElementsAre(1, -1, 1, -1, 1, -1, 1));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, Retry::First * (1 + 2 + 4));
}

TEST_F(PeerSourceTest, APeerThatIsNotThereAtTheStartIsToldOnceAndRecordedWhenItComes)
{
    const std::uint16_t port = TestSupport::freePort();
    NumberSource source({"127.0.0.1", port}, forRun());
    std::unique_ptr<TestPeer> peer;
    std::thread later([&] {
        pauseUntil(in(std::chrono::milliseconds(300)));  // two tries fail
        peer = std::make_unique<TestPeer>([](const TestClient& client) { client.send("7\n"); }, port);
    });
    play(source, 1);
    later.join();
    EXPECT_THAT(source.shown, ElementsAre(7));
    EXPECT_EQ(source.report().reconnects, 0U);
    EXPECT_THAT(m_told,
                ElementsAre(HasSubstr("cannot connect: Connection refused; trying again"), HasSubstr(": connected")));
}

TEST_F(PeerSourceTest, RubbishIsToldOnceAndTheWishToStopEndsTheTries)
{
    TestPeer peer([](const TestClient& client) { client.send("HTTP/1.1 400 Bad Request\r\n"); });
    NumberSource source(peer.address(), forRun());
    std::thread stopper([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        System::StopSignal::request();
    });
    play(source, 1);
    stopper.join();
    EXPECT_THAT(source.shown, IsEmpty());
    EXPECT_THAT(m_told, ElementsAre(HasSubstr("it does not count; trying again")));
}

}  // namespace
}  // namespace RecStation
