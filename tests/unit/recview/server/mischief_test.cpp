// Twelve thousand requests that nobody should send, whole, half and broken off: each ends only itself.
#include <random>

#include "servertest.h"

namespace RecView {

using MischiefTest = ServerTest;

namespace {

/// Makes requests that nobody should send; the same ones in every run.
class Mischief {
public:
    explicit Mischief(std::uint16_t port) : m_host("127.0.0.1:" + std::to_string(port)) {}

    std::string next()
    {
        std::string request = seed();
        for (std::size_t changes = upTo(6); changes > 0; --changes) {
            change(request);
        }
        return request;
    }
    std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(m_random); }

private:
    std::string oneOf(const std::vector<std::string>& words) { return words[upTo(words.size() - 1)]; }
    std::string seed()
    {
        const std::string method = oneOf({"GET", "GET", "HEAD", "POST", "PUT", "", "GE\tT", "M-SEARCH"});
        const std::string target =
            oneOf({"/", "/api/view?recording=a&from=1&to=2", "/api/csv", "/%2e%2e/%2e%2e/etc/passwd", "/api/events",
                   "*", "http://" + m_host + "/", "/api/?" + std::string(upTo(9000), 'q'), "/vendor/leaflet.js"});
        std::string request = method + ' ' + target + ' ' + oneOf({"HTTP/1.1", "HTTP/1.0", "HTTP/2.0", "HTP/1.1", ""});
        request += "\r\nHost: " + oneOf({m_host, m_host, m_host, "evil.example", ""}) + "\r\n";
        request += oneOf({"", "Origin: http://" + m_host + "\r\n", "Origin: null\r\n", "Connection: close\r\n",
                          "Expect: 100-continue\r\n", "Upgrade: websocket\r\nConnection: Upgrade\r\n",
                          "Range: bytes=0-18446744073709551615\r\n", "X: " + std::string(upTo(17'000), 'x') + "\r\n",
                          "Cookie: " + std::string(upTo(2000), ';') + "\r\n"});
        request += oneOf({"\r\n", "Content-Length: 5\r\n\r\nhello", "Content-Length: -1\r\n\r\n",
                          "Content-Length: 70000\r\n\r\n" + std::string(upTo(70'000), 'b'),
                          "Transfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n0\r\n\r\n",
                          "Transfer-Encoding: chunked\r\n\r\nfffffffffffffffff\r\n",
                          "Content-Length: 5\r\nContent-Length: 6\r\n\r\nhello", " folded\r\n\r\n", ""});
        return request;
    }
    void change(std::string& request)
    {
        const std::size_t at = upTo(request.size());
        switch (upTo(5)) {
            case 0:
                request.insert(at, 1, static_cast<char>(upTo(255)));
                break;
            case 1:
                request.erase(at, upTo(20));
                break;
            case 2:
                request.resize(at);
                break;
            case 3:
                request.insert(at, request.substr(0, upTo(request.size())));
                break;
            case 4:
                if (at < request.size()) {
                    request[at] = static_cast<char>(upTo(255));
                }
                break;
            default:
                break;
        }
        constexpr std::size_t Longest = 200'000;
        request.resize(std::min(request.size(), Longest));
    }

    std::mt19937 m_random{20261122};
    std::string m_host;
};

}  // namespace

TEST_F(MischiefTest, TenThousandHostileRequestsEndOnlyThemselves)
{
    start([](const Request& request) { return request.path == "/api/csv" ? endless(request) : echo(request); });
    Mischief mischief(m_port);
    constexpr int Count = 12'000;
    for (int i = 0; i < Count; ++i) {
        Client client(m_port);
        ASSERT_TRUE(client.isConnected()) << i;
        const std::string request = mischief.next();
        const std::size_t first = mischief.upTo(request.size());
        client.send(request.substr(0, first));
        client.send(std::string_view(request).substr(first));
        switch (mischief.upTo(3)) {
            case 0:
                client.abort();
                break;
            case 1:
                break;  // ends without a word
            default:
                client.endSending();
                client.receiveSome();
        }
        if (i % 1000 == 0) {
            expectsToAnswer();
        }
    }
    expectsToAnswer();
}

}  // namespace RecView
