// A client that sends what it is told, byte by byte, also what no browser would.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace RecView {

struct Answer {
    int status = 0;
    std::string head;
    std::map<std::string, std::string> fields;  ///< names in lower case
    std::string body;
};

/// A connection to the loopback address. What a server that has ended it makes of what is sent is no error.
class Client {
public:
    explicit Client(std::uint16_t port);
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client();

    [[nodiscard]] bool isConnected() const { return m_socket >= 0; }
    /// @return false when the server does not take it any more
    bool send(std::string_view bytes);
    void endSending();
    /// Ends so that the server loses what it has not read, and the other way round.
    void abort();
    /// The next answer; nothing where the server ends the connection before it is whole.
    std::optional<Answer> receive(bool isHead = false);
    /// Some bytes as they come; empty at the end.
    std::string receiveSome();
    std::string receiveRest();
    /// Sends GET with the usual fields and what else is given, each with its "\r\n".
    std::optional<Answer> get(const std::string& target, const std::string& fields = {});
    [[nodiscard]] std::string host() const { return "127.0.0.1:" + std::to_string(m_port); }

private:
    bool fill();
    std::optional<std::string> takeLine();
    std::optional<std::string> take(std::size_t bytes);
    std::optional<std::string> takeChunks();

    std::uint16_t m_port;
    int m_socket = -1;
    std::string m_buffer;
};

}  // namespace RecView
