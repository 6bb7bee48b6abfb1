// Listening, and the threads.
#include "server.h"

#include <exception>
#include <stdexcept>
#include <thread>
#include <utility>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include "connection.h"
#include "eventstreams.h"

namespace RecView {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::size_t WorkerThreads = 2;

tcp::acceptor listening(asio::io_context& context, const ServerOptions& options)
{
    error_code error;
    const auto address = asio::ip::make_address(options.address, error);
    if (error) {
        throw std::runtime_error('"' + options.address + "\" is no address in numbers, such as 192.168.1.20 or ::1.");
    }
    tcp::acceptor acceptor(context);
    const tcp::endpoint endpoint(address, options.port);
    acceptor.open(endpoint.protocol(), error);
    if (!error) {
        acceptor.set_option(tcp::acceptor::reuse_address(true), error);
        acceptor.bind(endpoint, error);
    }
    if (!error) {
        acceptor.listen(asio::socket_base::max_listen_connections, error);
    }
    if (error) {
        const std::string port = options.port == 0 ? std::string() : ", port " + std::to_string(options.port);
        throw std::runtime_error("Cannot listen on " + options.address + port + ": " + error.message() + ".");
    }
    return acceptor;
}

}  // namespace

struct Server::Private {
    Private(const ServerOptions& options, Handler&& givenHandler, Events& givenEvents)
        : limits(options.limits),
          handler(std::move(givenHandler)),
          events(givenEvents),
          context(std::make_unique<asio::io_context>(1)),
          acceptor(std::make_unique<tcp::acceptor>(listening(*context, options))),
          pause(std::make_unique<asio::steady_timer>(*context)),
          token(options.needsToken ? newSecret() : std::string()),
          gate(options.address, acceptor->local_endpoint().port(), token),
          streams(limits),
          workers(WorkerThreads, limits.waitingRequests),
          site{*context, limits, gate, handler, workers, streams}
    {
        accept();
        events.listen([this](const std::string& name, const std::string& json) {
            asio::post(*context, [this, name, json] { streams.publish(name, json); });
        });
        thread = std::thread([this] { run(); });
    }
    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;
    ~Private()
    {
        events.listen({});
        context->stop();
        thread.join();
        workers.stop();
        // Connections that are left end here, with what still waits for them.
        streams.closeAll();
        pause.reset();
        acceptor.reset();
        context.reset();
    }

    void run()
    {
        for (;;) {
            try {
                context->run();
                return;
            } catch (const std::exception&) {
                // Memory has run out for a request: it ends with its connection, the others go on.
            }
        }
    }

    void accept()
    {
        acceptor->async_accept([this](error_code error, tcp::socket socket) {
            if (error == asio::error::operation_aborted) {
                return;
            }
            if (error) {  // no more files may be open: connections that end make room
                constexpr std::chrono::milliseconds Pause{50};
                pause->expires_after(Pause);
                pause->async_wait([this](error_code stopped) {
                    if (!stopped) {
                        accept();
                    }
                });
                return;
            }
            welcome(std::move(socket));
            accept();
        });
    }

    void welcome(tcp::socket&& socket)
    {
        constexpr std::size_t MostTurnedAway = 64;
        error_code error;
        socket.set_option(tcp::no_delay(true), error);
        if (site.connections < limits.connections) {
            std::make_shared<Connection>(std::move(socket), site, std::make_shared<Counted>(site.connections))->begin();
        } else if (turnedAway < MostTurnedAway) {
            std::make_shared<Connection>(std::move(socket), site, std::make_shared<Counted>(turnedAway))->turnAway();
        }
    }

    Limits limits;
    Handler handler;
    Events& events;
    std::unique_ptr<asio::io_context> context;
    std::unique_ptr<tcp::acceptor> acceptor;
    std::unique_ptr<asio::steady_timer> pause;
    std::string token;
    Gate gate;
    EventStreams streams;
    Workers workers;
    Site site;
    std::size_t turnedAway = 0;
    std::thread thread;
};

Server::Server(const ServerOptions& options, Handler handler, Events& events)
    : d(std::make_unique<Private>(options, std::move(handler), events))
{
}

Server::~Server() = default;

std::string Server::url() const
{
    const auto endpoint = d->acceptor->local_endpoint();
    std::string host = endpoint.address().is_unspecified() ? "127.0.0.1" : endpoint.address().to_string();
    if (host.find(':') != std::string::npos) {
        host = '[' + host + ']';
    }
    return "http://" + host + ':' + std::to_string(endpoint.port()) + '/' +
           (d->token.empty() ? std::string() : "?token=" + d->token);
}

std::uint16_t Server::port() const
{
    return d->acceptor->local_endpoint().port();
}

}  // namespace RecView
