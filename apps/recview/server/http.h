// What the server and those who answer say to each other: requests, responses, events.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace RecView {

/// What somebody asks for. It is decoded and checked: the path is absolute, a name stands in the query once.
struct Request {
    std::string method;  ///< "GET" (also for HEAD) or "POST"
    std::string path;    ///< without the query
    std::map<std::string, std::string> query;
    std::string body;  ///< at most 64 KiB
    /// Whether who asked does not want the answer any more; to be asked while it takes long. May be empty.
    std::function<bool()> isGone{};
};

struct Response {
    int status = 200;
    std::string type = "application/json";
    std::string body;
    /// When set, the pieces of the body follow one by one: called on a worker until it gives false, one call at a time,
    /// not always by the same thread. A reader that is slow or has gone just makes it be called later or never again.
    std::function<bool(std::string& piece)> more;
    std::string fileName;  ///< when set, the answer is saved under this name
};

/// {"error": SENTENCE}
[[nodiscard]] Response errorResponse(int status, const std::string& sentence);

/// Called on worker threads, several at the same time. What it throws becomes a 500 that tells what happened.
using Handler = std::function<Response(const Request&)>;

/// What happens without being asked for, told to every open stream of events.
class Events {
public:
    using Listener = std::function<void(const std::string& name, const std::string& json)>;

    /// From any thread. Where nobody listens it is forgotten.
    /// @param name one word
    /// @param json one line
    void publish(const std::string& name, const std::string& json);
    /// The one that is told, in the threads that publish; {}: nobody, and nobody is being told any more.
    void listen(Listener listener);

private:
    std::mutex m_mutex;
    Listener m_listener;
};

}  // namespace RecView
