// A server with a handler of the test's, and limits that a test can reach.
#pragma once

#include "server/server.h"
#include "support/httpclient.h"
#include "support/testing.h"

namespace RecView {

class ServerTest : public testing::Test {
protected:
    /// Answers what it was asked: METHOD PATH NAME=VALUE... BODY.
    static Response echo(const Request& request)
    {
        Response response;
        response.type = "text/plain";
        response.body = request.method + ' ' + request.path;
        for (const auto& [name, value] : request.query) {
            response.body += ' ' + name + '=' + value;
        }
        response.body += ' ' + request.body;
        return response;
    }

    /// Never ends by itself.
    static Response endless(const Request& /*request*/)
    {
        Response response;
        response.more = [](std::string& piece) {
            piece.assign(1 << 16, 'x');
            return true;
        };
        return response;
    }

    void start(Handler handler = echo)
    {
        m_server = std::make_unique<Server>(m_options, std::move(handler), m_events);
        m_port = m_server->port();
    }
    [[nodiscard]] std::string requestOf(const std::string& line, const std::string& rest = "\r\n") const
    {
        return line + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(m_port) + "\r\n" + rest;
    }
    /// The status of what a connection of its own answers; 0 where it answers nothing.
    [[nodiscard]] int statusOf(const std::string& request) const
    {
        Client client(m_port);
        client.send(request);
        const auto answer = client.receive(request.starts_with("HEAD "));
        return answer ? answer->status : 0;
    }
    /// Connections, each of which has sent what it is given for its number.
    [[nodiscard]] std::vector<std::unique_ptr<Client>> clients(int count, const std::function<std::string(int)>& asked)
    {
        std::vector<std::unique_ptr<Client>> all;
        for (int i = 0; i < count; ++i) {
            all.push_back(std::make_unique<Client>(m_port));
            EXPECT_TRUE(all.back()->isConnected());
            all.back()->send(asked(i));
        }
        return all;
    }
    /// An answer that must come.
    static Answer whole(std::optional<Answer> answer)
    {
        EXPECT_TRUE(answer.has_value());
        return std::move(answer).value_or(Answer{});
    }
    void expectsToAnswer() const { EXPECT_EQ(whole(Client(m_port).get("/api/still?there=1")).status, 200); }

    ServerOptions m_options;
    Events m_events;
    std::unique_ptr<Server> m_server;
    std::uint16_t m_port = 0;
};

}  // namespace RecView
