// What the server answers to those who ask as they should.
#include <regex>

#include "server/reply.h"
#include "servertest.h"

using namespace testing;

namespace RecView {

TEST_F(ServerTest, ThePageIsServedWithWhatProtectsIt)
{
    start();
    Client client(m_port);
    const Answer answer = whole(client.get("/"));
    EXPECT_EQ(answer.status, 200);
    EXPECT_THAT(answer.body, StartsWith("<!DOCTYPE html>"));
    EXPECT_EQ(answer.fields.at("content-type"), "text/html; charset=utf-8");
    EXPECT_EQ(
        answer.fields.at("content-security-policy"),
        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; connect-src 'self'; "
        "frame-ancestors 'none'; base-uri 'none'; form-action 'none'");
    EXPECT_EQ(answer.fields.at("x-content-type-options"), "nosniff");
    EXPECT_EQ(answer.fields.at("referrer-policy"), "no-referrer");
    EXPECT_EQ(answer.fields.at("cross-origin-resource-policy"), "same-origin");
    EXPECT_EQ(answer.fields.at("cache-control"), "no-cache");
}

TEST_F(ServerTest, WhatABrowserHasAlreadyIsNotSentAgain)
{
    start();
    Client client(m_port);
    const Answer first = whole(client.get("/app.js"));
    EXPECT_EQ(first.fields.at("content-type"), "text/javascript; charset=utf-8");
    const Answer second = whole(client.get("/app.js", "If-None-Match: " + first.fields.at("etag") + "\r\n"));
    EXPECT_EQ(second.status, 304);
    EXPECT_EQ(client.get("/app.js", "If-None-Match: \"other\"\r\n")->status, 200);
}

TEST_F(ServerTest, AHeadIsTheResponseWithoutItsBody)
{
    start();
    Client client(m_port);
    client.send(requestOf("HEAD /style.css") + requestOf("HEAD /api/x"));
    const Answer page = whole(client.receive(true));
    EXPECT_EQ(page.fields.at("content-length"), std::to_string(pageFile("/style.css")->content.size()));
    const Answer api = whole(client.receive(true));
    EXPECT_EQ(api.fields.at("content-length"), std::to_string(std::string("GET /api/x ").size()));
}

TEST_F(ServerTest, TheHandlerIsToldPathQueryAndBody)
{
    start();
    Client client(m_port);
    EXPECT_EQ(client.get("/api/view?b=2&a=%31")->body, "GET /api/view a=1 b=2 ");
    client.send(
        requestOf("POST /api/bookmarks", "Origin: http://" + client.host() + "\r\nContent-Length: 5\r\n\r\nhello"));
    EXPECT_EQ(client.receive()->body, "POST /api/bookmarks hello");
}

TEST_F(ServerTest, RequestsThatComeTogetherAreAnsweredInTheirOrder)
{
    start();
    Client client(m_port);
    std::string requests;
    constexpr int Count = 100;
    for (int i = 0; i < Count; ++i) {
        requests += requestOf("GET " + std::string(i % 3 == 0 ? "/icon.svg" : "/api/" + std::to_string(i)));
    }
    client.send(requests);
    for (int i = 0; i < Count; ++i) {
        const Answer answer = whole(client.receive());
        EXPECT_EQ(answer.body, i % 3 == 0 ? pageFile("/icon.svg")->content : "GET /api/" + std::to_string(i) + ' ');
    }
}

TEST_F(ServerTest, WhatTheHandlerThrowsIsTold)
{
    start([](const Request& /*request*/) -> Response { throw std::runtime_error("It \"broke\"."); });
    Client client(m_port);
    const Answer answer = whole(client.get("/api/x"));
    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.body, R"({"error":"It \"broke\"."})");
    EXPECT_EQ(answer.fields.at("content-type"), "application/json");
    EXPECT_EQ(answer.fields.at("cache-control"), "no-store");
}

TEST_F(ServerTest, WhatIsMadeInPiecesArrivesWhole)
{
    start([](const Request& /*request*/) {
        Response response;
        response.type = "text/csv";
        response.fileName =
            "N\xC3\xA4"
            "chte \"1\".csv";
        response.body = "begin ";
        response.more = [count = 0](std::string& piece) mutable {
            piece = count == 1 ? "" : std::to_string(count) + ' ';
            return ++count < 4;
        };
        return response;
    });
    Client client(m_port);
    for (int i = 0; i < 2; ++i) {  // the connection stays
        const Answer answer = whole(client.get("/api/csv"));
        EXPECT_EQ(answer.body, "begin 0 2 3 ");
        EXPECT_EQ(answer.fields.at("content-disposition"),
                  "attachment; filename=\"N__chte__1_.csv\"; filename*=UTF-8''N%C3%A4chte%20%221%22.csv");
    }
    client.send("GET /api/csv HTTP/1.0\r\nHost: " + client.host() + "\r\n\r\n");
    EXPECT_THAT(client.receiveRest(), AllOf(HasSubstr("\r\n\r\nbegin 0 2 3 "), Not(HasSubstr("chunked"))));
}

TEST_F(ServerTest, PiecesThatFailAreCutShortNotEnded)
{
    start([](const Request& /*request*/) {
        Response response;
        response.more = [](std::string& piece) -> bool {
            if (piece.empty()) {
                throw std::runtime_error("no more");
            }
            return true;
        };
        response.body = "begin";
        return response;
    });
    Client client(m_port);
    client.send(requestOf("GET /api/csv"));
    EXPECT_THAT(client.receiveRest(), AllOf(HasSubstr("begin"), Not(HasSubstr("\r\n0\r\n"))));
    EXPECT_EQ(statusOf(requestOf("GET /")), 200);
}

TEST_F(ServerTest, OnlyThePageAndTheApiAreThere)
{
    start();
    for (const char* path : {"/..", "/../../etc/passwd", "/%2e%2e/etc/passwd", "/api", "/modules/", "/modules", "//",
                             "/index.html/", "/node_modules/leaflet/package.json", "/package.json", "/:/page/app.js"}) {
        EXPECT_EQ(statusOf(requestOf(std::string("GET ") + path)), 404) << path;
    }
    EXPECT_EQ(statusOf(requestOf("GET /index.html")), 200);
}

TEST_F(ServerTest, OtherMethodsAreRefused)
{
    start();
    for (const char* method : {"PUT", "DELETE", "OPTIONS", "TRACE", "PATCH", "CONNECT", "BREW"}) {
        EXPECT_EQ(statusOf(requestOf(std::string(method) + " /api/view")), 405) << method;
    }
    const std::string origin = "Origin: http://127.0.0.1:" + std::to_string(m_port) + "\r\n\r\n";
    EXPECT_EQ(statusOf(requestOf("POST /", origin)), 405);
    EXPECT_EQ(statusOf(requestOf("POST /api/events", origin)), 405);
}

TEST_F(ServerTest, EventsComeAsTheyAre)
{
    start();
    Client client(m_port);
    client.send(requestOf("GET /api/events"));
    std::string received = client.receiveSome();
    while (received.find("\r\n\r\n") == std::string::npos) {
        received += client.receiveSome();
    }
    EXPECT_THAT(received, HasSubstr("Content-Type: text/event-stream"));
    m_events.publish("grown", R"({"endMs":1})");
    m_events.publish("changed", "{}");
    const std::string expected = "event: grown\ndata: {\"endMs\":1}\n\nevent: changed\ndata: {}\n\n";
    std::string events;
    while (events.size() < expected.size()) {
        const std::string piece = client.receiveSome();
        ASSERT_FALSE(piece.empty());
        events += piece;
    }
    EXPECT_EQ(events, expected);
}

TEST_F(ServerTest, OnlyWhoShowsTheTokenIsLetIn)
{
    m_options.address = "127.0.0.1";
    m_options.needsToken = true;
    start();
    std::smatch parts;
    const std::string url = m_server->url();
    ASSERT_TRUE(std::regex_match(url, parts, std::regex(R"(http://127\.0\.0\.1:\d+(/\?token=([-\w]{32})))")));
    Client client(m_port);
    EXPECT_EQ(client.get("/api/x")->status, 401);
    EXPECT_EQ(client.get("/api/events")->status, 401);
    EXPECT_EQ(client.get("/?token=" + std::string(32, 'a'))->status, 401);
    const Answer letIn = whole(client.get(parts[1].str()));
    EXPECT_EQ(letIn.status, 303);
    EXPECT_EQ(letIn.fields.at("location"), "/");
    const std::string cookie = letIn.fields.at("set-cookie");
    EXPECT_THAT(cookie, AllOf(HasSubstr("HttpOnly"), HasSubstr("SameSite=Strict"), Not(HasSubstr(parts[2].str()))));
    EXPECT_EQ(client.get("/api/x", "Cookie: " + cookie.substr(0, cookie.find(';')) + "\r\n")->status, 200);
}

TEST_F(ServerTest, AnAddressThatCannotBeUsedIsTold)
{
    start();
    ServerOptions taken;
    taken.port = m_port;
    EXPECT_THROW(Server(taken, echo, m_events), std::runtime_error);
    for (const char* address : {"192.0.2.1", "localhost", "nonsense", ""}) {
        ServerOptions options;
        options.address = address;
        EXPECT_THROW(Server(options, echo, m_events), std::runtime_error) << address;
    }
}

TEST(Page, AllThatItLoadsIsSmall)
{
    EXPECT_NE(pageFile("/"), nullptr);
    std::size_t sum = 0;
    const auto all = pageFiles();
    for (const std::string& path : all) {
        sum += path == "/" ? 0 : pageFile(path)->content.size();
    }
    EXPECT_THAT(all,
                testing::IsSupersetOf({"/index.html", "/app.js", "/vendor/uPlot.esm.js", "/vendor/land-110m.json"}));
    constexpr std::size_t Most = 600'000;
    EXPECT_LE(sum, Most);
}

}  // namespace RecView
