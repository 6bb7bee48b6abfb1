// Answers browsers on this machine: the page, what a handler answers below /api/, and events.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "http.h"
#include "limits.h"

namespace RecView {

struct ServerOptions {
    std::string address = "127.0.0.1";  ///< a numeric one
    std::uint16_t port = 0;             ///< 0: one that is free
    bool needsToken = false;            ///< only who knows the printed address may ask
    Limits limits = {};
};

/// Has a thread for the connections and two that call the handler.
class Server {
public:
    /// Listens and answers from here on. The events must outlive it.
    /// @throws std::runtime_error, one sentence, when it cannot listen
    Server(const ServerOptions& options, Handler handler, Events& events);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    /// Closes all connections; waits for calls of the handler that have begun.
    ~Server();

    /// With the token, where there is one: "http://127.0.0.1:40123/".
    [[nodiscard]] std::string url() const;
    [[nodiscard]] std::uint16_t port() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace RecView
