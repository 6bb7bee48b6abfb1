// Asking for a document and reading the answer, with Boost.Beast's parser upon a connection that a wish to stop ends.
#include "sources/kraken/httpfetch.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

namespace RecStation {

namespace {

namespace http = boost::beast::http;

constexpr std::uint32_t LongestHeader = 16'384;
constexpr auto TooLarge = "its answer is larger than 1 MiB";

bool isPrintable(std::string_view text)
{
    constexpr char Delete = 127;
    return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c != Delete; });
}

}  // namespace

struct HttpAnswer::Parser {
    http::response_parser<http::string_body> http;
    std::string unread;  // of the header, which is parsed as a whole
    std::size_t bytes = 0;
};

HttpAnswer::HttpAnswer() : m_parser(std::make_unique<Parser>())
{
    m_parser->http.header_limit(LongestHeader);
    m_parser->http.body_limit(LongestBody);
    m_parser->http.eager(true);
}

HttpAnswer::~HttpAnswer() = default;

void HttpAnswer::put(std::string_view bytes)
{
    // Boost 1.74 does not always refuse a length that is told and too large.
    m_parser->bytes += bytes.size();
    if (m_parser->bytes > LongestBody + LongestHeader) {
        throw ConnectionError(TooLarge);
    }
    std::string& unread = m_parser->unread;
    unread.append(bytes);
    while (!unread.empty() && !m_parser->http.is_done()) {
        boost::beast::error_code error;
        const std::size_t used = m_parser->http.put(boost::asio::buffer(unread), error);
        unread.erase(0, used);
        if (error == http::error::need_more) {
            if (unread.size() > LongestHeader) {
                throw ConnectionError("its answer is no HTTP: a header without end");
            }
            return;
        }
        if (error == http::error::body_limit) {
            throw ConnectionError(TooLarge);
        }
        if (error) {
            throw ConnectionError("its answer is no HTTP: " + error.message());
        }
        if (used == 0) {
            return;
        }
    }
}

bool HttpAnswer::end()
{
    boost::beast::error_code error;
    if (!m_parser->http.is_done() && m_parser->http.got_some()) {
        m_parser->http.put_eof(error);
    }
    return !error && isWhole();
}

bool HttpAnswer::isWhole() const
{
    return m_parser->http.is_done();
}

std::string HttpAnswer::takeBody()
{
    auto answer = m_parser->http.release();
    if (answer.result() != http::status::ok) {
        constexpr std::size_t Longest = 40;
        std::string reason(answer.reason().substr(0, Longest));
        reason =
            isPrintable(reason) || reason.find_first_of("\r\n\t\x1b") == std::string::npos ? reason : std::string();
        throw ConnectionError("it answers " + std::to_string(answer.result_int()) + (reason.empty() ? "" : " ") +
                              reason);
    }
    return std::move(answer.body());
}

std::string fetch(Connection& connection, const HttpUrl& url, std::chrono::milliseconds patience)
{
    constexpr std::size_t PieceSize = 16'384;
    const Deadline deadline = in(patience);
    connection.send("GET " + url.path + " HTTP/1.1\r\nHost: " + addressText(url.address) +
                    "\r\nAccept: */*\r\nConnection: close\r\n\r\n");
    HttpAnswer answer;
    std::array<char, PieceSize> piece{};
    while (!answer.isWhole()) {
        std::size_t count = 0;
        try {
            count = connection.read(piece.data(), piece.size(), deadline);
        } catch (const ConnectionError&) {
            if (answer.end()) {
                break;
            }
            throw;
        }
        if (count == 0) {
            throw ConnectionError("its answer did not come within " + std::to_string(patience.count() / 1000) + " s");
        }
        answer.put({piece.data(), count});
    }
    connection.close();
    return answer.takeBody();
}

std::optional<HttpUrl> parseHttpUrl(std::string_view text)
{
    constexpr std::string_view Scheme = "http://";
    constexpr std::uint16_t HttpPort = 80;
    constexpr std::uint16_t KrakenPort = 8081;
    const bool full = text.starts_with(Scheme);
    if (full) {
        text.remove_prefix(Scheme.size());
    }
    const std::size_t slash = text.find('/');
    const auto address = parseAddress(text.substr(0, slash), full ? HttpPort : KrakenPort);
    if (!address || !isPrintable(text) || text.find_first_of("@#") != std::string_view::npos) {
        return std::nullopt;
    }
    HttpUrl url{*address, slash == std::string_view::npos ? "/" : std::string(text.substr(slash))};
    if (!full && slash == std::string_view::npos) {
        url.path = "/DOA_value.html";
    }
    return url;
}

std::string urlText(const HttpUrl& url)
{
    return "http://" + addressText(url.address) + url.path;
}

}  // namespace RecStation
