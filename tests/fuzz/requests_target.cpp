// Requests as browsers, and others, send them to the viewer.
#include <variant>

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>

#include "server/incoming.h"
#include "server/reply.h"
#include "target.h"

namespace Fuzzing {

namespace {

namespace http = boost::beast::http;

bool isPlain(const std::string& text)
{
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return static_cast<unsigned char>(c) < 0x20U || c == 0x7F; });
}

// All that an address says comes back from its escapes.
std::string escaped(const std::string& text)
{
    constexpr std::string_view Digits = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        result += {'%', Digits[byte >> 4U], Digits[byte & 0xFU]};
    }
    return result;
}

void lookAt(const RecView::Request& request)
{
    require(request.method == "GET" || request.method == "POST", "another method was let in");
    require(!request.path.empty() && request.path.front() == '/', "a path that is not absolute was let in");
    require(isPlain(request.path), "a control character was let in");
    std::string target = '/' + escaped(request.path.substr(1));
    for (const auto& [name, value] : request.query) {
        require(isPlain(name) && isPlain(value), "a control character was let in");
        target += (target.find('?') == std::string::npos ? '?' : '&') + escaped(name) + '=' + escaped(value);
    }
    std::string problem;
    const auto again = RecView::decodeTarget(target, problem);
    require(again && again->path == request.path && again->query == request.query, "an address reads in two ways");
    static_cast<void>(RecView::pageFile(request.path));
    RecView::Response response;
    response.fileName = request.path;
    const RecView::Reply reply = RecView::headOf(response);
    for (const auto& field : reply) {
        require(isPlain({field.value().data(), field.value().size()}), "a control character came out in a header");
    }
}

}  // namespace

void runRequests(const std::string& input)
{
    static const RecView::Gate gate("127.0.0.1", 8080, "");
    std::string_view rest = input;
    while (!rest.empty()) {
        http::request_parser<http::string_body> parser;
        parser.header_limit(16 * 1024);
        parser.body_limit(std::uint64_t{64} * 1024);
        parser.eager(true);
        boost::beast::error_code error;
        const std::size_t used = parser.put(boost::asio::const_buffer(rest.data(), rest.size()), error);
        if (error || !parser.is_done()) {
            return;
        }
        rest.remove_prefix(used);
        auto judged = RecView::judged(parser.release(), gate, 8 * 1024);
        if (const auto* request = std::get_if<RecView::Request>(&judged)) {
            lookAt(*request);
        }
    }
}

std::vector<std::string> requestsSeeds()
{
    const std::string host = " HTTP/1.1\r\nHost: 127.0.0.1:8080\r\n";
    return {
        "GET /" + host + "\r\n",
        "GET /api/view?recording=N%C3%A4chte+1&type=3&from=0&to=1e12&of=max" + host +
            "Sec-Fetch-Site: same-origin\r\nCookie: recview-8080=abc; other=1\r\n\r\n",
        "HEAD /vendor/leaflet.js" + host + "If-None-Match: \"0123\"\r\n\r\nGET /api/events" + host +
            "Accept: text/event-stream\r\n\r\n",
        "POST /api/bookmarks" + host +
            "Origin: http://127.0.0.1:8080\r\nContent-Type: application/json\r\nContent-Length: 17\r\n\r\n"
            "{\"action\": \"add\"}",
        "POST /api/bookmarks" + host +
            "Origin: http://localhost:8080\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n0\r\n\r\n",
        "GET /%2e%2e/%00?a=1&a=2 HTTP/1.0\r\nHost: evil.example\r\n\r\n",
    };
}

}  // namespace Fuzzing
