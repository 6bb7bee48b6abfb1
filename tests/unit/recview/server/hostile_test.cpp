// What the server makes of those who ask for too much, too slowly, half, or nonsense: it goes on.
#include <atomic>
#include <future>

#include "servertest.h"

using std::chrono::milliseconds;
using testing::HasSubstr;

namespace RecView {

namespace {

/// Lets a handler wait until the test goes on.
class Barrier {
public:
    ~Barrier() { open(); }
    void open()
    {
        if (!m_isOpen.exchange(true)) {
            m_opened.set_value();
        }
    }
    void wait() const { m_waiting.wait(); }

private:
    std::promise<void> m_opened;
    std::shared_future<void> m_waiting{m_opened.get_future()};
    std::atomic<bool> m_isOpen = false;
};

}  // namespace

class HostileTest : public ServerTest {
protected:
    /// Answers without end. @return what is ready when the maker of the pieces is given up
    std::future<void> startEndless()
    {
        start([this](const Request& request) {
            Response response = endless(request);
            response.more = [more = response.more, end = std::shared_ptr<void>(nullptr, [this](void*) {
                                                       m_ended.set_value();
                                                   })](std::string& piece) { return more(piece); };
            return response;
        });
        return m_ended.get_future();
    }
    static void expectEnd(const std::future<void>& ended)
    {
        EXPECT_EQ(ended.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    }

private:
    std::promise<void> m_ended;
};

TEST_F(HostileTest, WhatIsTooLargeIsRefused)
{
    start();
    EXPECT_EQ(statusOf(requestOf("GET /api/x", "X: " + std::string(20'000, 'a') + "\r\n\r\n")), 431);
    EXPECT_EQ(statusOf(requestOf("GET /api/x?" + std::string(10'000, 'a'))), 414);
    const std::string origin = "Origin: http://127.0.0.1:" + std::to_string(m_port) + "\r\n";
    EXPECT_EQ(statusOf(requestOf("POST /api/x", origin + "Content-Length: 65537\r\n\r\n")), 413);
    EXPECT_EQ(statusOf(requestOf("POST /api/x", origin + "Content-Length: 99999999999999999999\r\n\r\n")), 400);
    std::string chunks = "Transfer-Encoding: chunked\r\n\r\n";
    for (int i = 0; i < 5; ++i) {
        chunks += "4000\r\n" + std::string(0x4000, 'a') + "\r\n";
    }
    EXPECT_EQ(statusOf(requestOf("POST /api/x", origin + chunks + "0\r\n\r\n")), 413);
    expectsToAnswer();
}

TEST_F(HostileTest, WhatIsNoRequestIsRefused)
{
    start();
    for (const std::string& request :
         {std::string("nonsense\r\n\r\n"), std::string("GET /\r\n\r\n"), std::string("GET / HTTP/9.9\r\n\r\n"),
          std::string("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n\r\n", 15), requestOf("GET http://127.0.0.1/"),
          requestOf("GET *"), std::string("GET / HTTP/1.1\r\n\r\n"), requestOf("GET /", "Host: 127.0.0.1\r\n\r\n"),
          requestOf("GET /api/x?a=1&a=1"), requestOf("GET /%zz"),
          requestOf("POST /api/x", "Content-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"),
          requestOf("GET /", "No colon\r\n\r\n")}) {
        EXPECT_EQ(statusOf(request), 400) << request;
    }
    expectsToAnswer();
}

TEST_F(HostileTest, ARequestThatDoesNotArriveInTimeIsGivenUp)
{
    m_options.limits.requestTime = milliseconds(30);
    start();
    Client client(m_port);
    client.send("GET /api/x HTTP/1.1\r\nHo");
    EXPECT_EQ(client.receiveRest(), "");
    expectsToAnswer();
}

TEST_F(HostileTest, AConnectionThatAsksNothingIsGivenUp)
{
    m_options.limits.idleTime = milliseconds(30);
    start();
    Client silent(m_port);
    EXPECT_EQ(silent.receiveRest(), "");
    Client asked(m_port);
    ASSERT_TRUE(asked.get("/").has_value());
    EXPECT_EQ(asked.receiveRest(), "");
}

TEST_F(HostileTest, AReaderThatTakesNothingIsGivenUp)
{
    m_options.limits.stallTime = milliseconds(100);
    const std::future<void> ended = startEndless();
    Client client(m_port);
    client.send(requestOf("GET /api/csv"));
    expectEnd(ended);  // what makes the pieces is given up with the connection
}

TEST_F(HostileTest, AStreamThatIsStoppedHalfWayEndsForItsMakerToo)
{
    const std::future<void> ended = startEndless();
    Client client(m_port);
    client.send(requestOf("GET /api/csv"));
    EXPECT_FALSE(client.receiveSome().empty());
    client.abort();
    expectEnd(ended);
    m_server.reset();
}

TEST_F(HostileTest, MoreConnectionsThanThereMayBeAreToldSo)
{
    m_options.limits.connections = 8;
    start();
    const auto clients = this->clients(8, [&](int /*number*/) { return requestOf("GET /icon.svg"); });
    for (const auto& client : clients) {
        ASSERT_TRUE(client->receive().has_value());
    }
    Client surplus(m_port);
    EXPECT_EQ(whole(surplus.receive()).status, 503);
    EXPECT_EQ(surplus.receiveRest(), "");
    clients.front()->endSending();
    EXPECT_EQ(clients.front()->receiveRest(), "");
    expectsToAnswer();
}

TEST_F(HostileTest, TwoHundredConnectionsAtOnceAreAllAnswered)
{
    start();
    constexpr std::size_t Count = 200;
    const auto clients = this->clients(Count, [](int /*number*/) { return ""; });
    std::size_t answered = 0;
    std::size_t refused = 0;
    for (int round = 0; round < 3; ++round) {
        for (std::size_t i = 0; i < Count; ++i) {
            clients[i]->send(requestOf("GET /api/" + std::to_string(i)));
        }
        for (std::size_t i = 0; i < Count; ++i) {
            const auto answer = clients[i]->receive();
            ASSERT_TRUE(answer.has_value()) << i;
            (answer->status == 200 ? answered : refused) += 1;
            EXPECT_TRUE(answer->status == 503 || answer->body == "GET /api/" + std::to_string(i) + ' ') << answer->head;
        }
    }
    EXPECT_EQ(answered + refused, 3 * Count);
    EXPECT_GE(answered, 3 * m_options.limits.waitingRequests);
    expectsToAnswer();
}

TEST_F(HostileTest, MoreRequestsThanMayWaitAreToldSo)
{
    m_options.limits.waitingRequests = 4;
    Barrier barrier;
    start([&barrier](const Request& request) {
        barrier.wait();
        return echo(request);
    });
    constexpr int Count = 12;
    const auto clients = this->clients(Count, [&](int /*number*/) { return requestOf("GET /api/x"); });
    // Two are being worked on at most, four wait.
    EXPECT_EQ(Client(m_port).get("/icon.svg")->status, 200) << "what needs no worker goes on";
    barrier.open();
    int refused = 0;
    for (const auto& client : clients) {
        refused += whole(client->receive()).status == 503 ? 1 : 0;
    }
    EXPECT_GE(refused, Count - 6);
    EXPECT_LE(refused, Count - 4);
    expectsToAnswer();
}

TEST_F(HostileTest, WhatNobodyWaitsForAnyMoreIsNotWorkedOn)
{
    Barrier barrier;
    std::atomic<int> calls = 0;
    start([&](const Request& request) {
        ++calls;
        if (request.path == "/api/slow") {
            barrier.wait();
        }
        return echo(request);
    });
    Client first(m_port);
    Client second(m_port);
    first.send(requestOf("GET /api/slow"));
    second.send(requestOf("GET /api/slow"));
    while (calls < 2) {
        std::this_thread::yield();
    }
    {
        Client left(m_port);
        left.send(requestOf("GET /api/dropped"));
        left.endSending();
        EXPECT_EQ(left.receiveRest(), "");  // the server has seen the end
    }
    barrier.open();
    EXPECT_TRUE(first.receive().has_value());
    EXPECT_TRUE(second.receive().has_value());
    expectsToAnswer();
    EXPECT_EQ(calls, 3);
}

TEST_F(HostileTest, MoreStreamsOfEventsThanThereMayBeAreToldSo)
{
    m_options.limits.eventStreams = 3;
    start();
    const auto clients = this->clients(3, [&](int /*number*/) { return requestOf("GET /api/events"); });
    for (const auto& client : clients) {
        EXPECT_THAT(client->receiveSome(), HasSubstr("200 OK"));
    }
    Client surplus(m_port);
    EXPECT_EQ(surplus.get("/api/events")->status, 503);
    clients.front()->endSending();
    EXPECT_EQ(clients.front()->receiveRest(), "");
    Client next(m_port);
    next.send(requestOf("GET /api/events"));
    EXPECT_THAT(next.receiveSome(), HasSubstr("200 OK"));
}

TEST_F(HostileTest, AStreamOfEventsThatIsNotReadIsClosedAndCostsTheOthersNothing)
{
    start();
    Client lazy(m_port);
    Client eager(m_port);
    lazy.send(requestOf("GET /api/events"));
    eager.send(requestOf("GET /api/events"));
    EXPECT_THAT(lazy.receiveSome(), HasSubstr("200 OK"));
    EXPECT_THAT(eager.receiveSome(), HasSubstr("200 OK"));
    // More than the system holds for a connection, and the server besides.
    const std::string event(32 * 1024, 'x');
    constexpr int Count = 600;
    std::size_t sent = 0;
    for (int i = 0; i < Count; ++i) {
        m_events.publish("grown", event);
        const std::size_t size = std::string("event: grown\ndata: \n\n").size() + event.size();
        sent += size;
        for (std::size_t received = 0; received < size;) {
            const std::string piece = eager.receiveSome();
            ASSERT_FALSE(piece.empty()) << i;
            received += piece.size();
        }
    }
    expectsToAnswer();
    EXPECT_LT(lazy.receiveRest().size(), sent);
}

TEST_F(HostileTest, ItEndsAtOnceWithConnectionsOpen)
{
    start();
    const auto clients = this->clients(
        50, [&](int i) { return i % 3 == 1 ? "GET / HT" : requestOf(i % 3 == 0 ? "GET /api/events" : "GET /"); });
    EXPECT_TRUE(clients[2]->receive().has_value());
    const auto begin = std::chrono::steady_clock::now();
    m_server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(8))
        << "a connection is given 10 seconds at least";
    for (const auto& client : clients) {
        client->receiveRest();
    }
}

}  // namespace RecView
