// Sockets and answers.
#include "httpclient.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "support/loopback.h"

namespace RecView {

Client::Client(std::uint16_t port) : m_port(port), m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // A server that hangs ends the test, not the machine's patience.
    const timeval patience{60, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(m_socket);
        m_socket = -1;
    }
}

Client::~Client()
{
    if (m_socket >= 0) {
        ::close(m_socket);
    }
}

bool Client::send(std::string_view bytes)
{
    return TestSupport::sendAll(m_socket, bytes);
}

void Client::endSending()
{
    ::shutdown(m_socket, SHUT_WR);
}

void Client::abort()
{
    const linger now{1, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &now, sizeof now);
    ::close(m_socket);
    m_socket = -1;
}

bool Client::fill()
{
    std::array<char, 65536> bytes{};
    const ssize_t count = ::recv(m_socket, bytes.data(), bytes.size(), 0);
    if (count <= 0) {
        return false;
    }
    m_buffer.append(bytes.data(), static_cast<std::size_t>(count));
    return true;
}

std::optional<std::string> Client::takeLine()
{
    std::size_t end = 0;
    while ((end = m_buffer.find("\r\n")) == std::string::npos) {
        if (!fill()) {
            return std::nullopt;
        }
    }
    std::string line = m_buffer.substr(0, end);
    m_buffer.erase(0, end + 2);
    return line;
}

std::optional<std::string> Client::take(std::size_t bytes)
{
    while (m_buffer.size() < bytes) {
        if (!fill()) {
            return std::nullopt;
        }
    }
    std::string taken = m_buffer.substr(0, bytes);
    m_buffer.erase(0, bytes);
    return taken;
}

std::optional<std::string> Client::takeChunks()
{
    std::string body;
    for (;;) {
        const auto length = takeLine();
        if (!length || length->empty()) {
            return std::nullopt;
        }
        const auto chunk = take(std::stoul(*length, nullptr, 16));
        if (!chunk || !takeLine()) {
            return std::nullopt;
        }
        if (chunk->empty()) {
            return body;
        }
        body += *chunk;
    }
}

std::optional<Answer> Client::receive(bool isHead)
{
    Answer answer;
    auto line = takeLine();
    if (!line || line->size() < 12) {
        return std::nullopt;
    }
    answer.status = std::stoi(line->substr(9, 3));
    for (answer.head = *line + '\n'; (line = takeLine()) && !line->empty(); answer.head += *line + '\n') {
        const std::size_t colon = line->find(':');
        std::string name = line->substr(0, colon);
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
        answer.fields[name] = line->substr(std::min(colon + 2, line->size()));
    }
    if (!line) {
        return std::nullopt;
    }
    const bool isEmpty = isHead || answer.status == 304;
    std::optional<std::string> body = "";
    if (!isEmpty && answer.fields.count("content-length") > 0) {
        body = take(std::stoul(answer.fields["content-length"]));
    } else if (!isEmpty && answer.fields["transfer-encoding"] == "chunked") {
        body = takeChunks();
    }
    if (!body) {
        return std::nullopt;
    }
    answer.body = *body;
    return answer;
}

std::string Client::receiveSome()
{
    if (m_buffer.empty()) {
        fill();
    }
    return std::exchange(m_buffer, {});
}

std::string Client::receiveRest()
{
    while (fill()) {
    }
    return std::exchange(m_buffer, {});
}

std::optional<Answer> Client::get(const std::string& target, const std::string& fields)
{
    send("GET " + target + " HTTP/1.1\r\nHost: " + host() + "\r\n" + fields + "\r\n");
    return receive();
}

}  // namespace RecView
