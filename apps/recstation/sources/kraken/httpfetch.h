// One document over HTTP, bounded in size and time.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "live/connection.h"

namespace RecStation {

/// What http://HOST:PORT/PATH names.
struct HttpUrl {
    Address address;
    std::string path;  ///< with its query, beginning with "/"
};

/// "http://HOST[:PORT][/PATH]", where the port is 80, or "HOST[:PORT]", which is what a KrakenSDR serves:
/// port 8081, /DOA_value.html. Nothing for anything else.
[[nodiscard]] std::optional<HttpUrl> parseHttpUrl(std::string_view text);
/// As messages name it.
[[nodiscard]] std::string urlText(const HttpUrl& url);

/// Puts the bytes of an answer together. Knows nothing of connections.
class HttpAnswer {
public:
    static constexpr std::size_t LongestBody = 1'048'576;

    HttpAnswer();
    HttpAnswer(const HttpAnswer&) = delete;
    HttpAnswer& operator=(const HttpAnswer&) = delete;
    ~HttpAnswer();

    /// @throws ConnectionError when they are no answer, or too large
    void put(std::string_view bytes);
    /// The peer has closed the connection. @return whether the answer is whole with that
    [[nodiscard]] bool end();
    [[nodiscard]] bool isWhole() const;
    /// Of an answer that is whole. @throws ConnectionError when the peer refused
    [[nodiscard]] std::string takeBody();

private:
    struct Parser;
    std::unique_ptr<Parser> m_parser;
};

/// Asks over an open connection for the document. The connection can be used only once for that.
/// @throws ConnectionError, Stopped
[[nodiscard]] std::string fetch(Connection& connection, const HttpUrl& url, std::chrono::milliseconds patience);

}  // namespace RecStation
