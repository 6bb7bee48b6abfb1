// Which answer belongs to which path, and errors as sentences.
#include "answers.h"

#include <algorithm>
#include <array>
#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include "context.h"
#include "jsontext.h"

namespace RecView {

namespace {

struct Endpoint {
    std::string_view path;
    Response (*answer)(const Context&, const Request&);
    bool takesPost = false;
};

constexpr std::array Endpoints{
    Endpoint{"/api/recordings", answerRecordings},
    Endpoint{"/api/state", answerState},
    Endpoint{"/api/record", answerRecord},
    Endpoint{"/api/bearings", answerBearings},
    Endpoint{"/api/bookmarks", answerBookmarks, true},
    Endpoint{"/api/values", answerValues},
    Endpoint{"/api/view", answerView},
    Endpoint{"/api/spectrum", answerSpectrum},
    Endpoint{"/api/channel", answerChannel},
    Endpoint{"/api/sweep", answerSweep},
};

Response errorResponse(int status, const std::string& sentence)
{
    Response response;
    response.status = status;
    JsonObject(response.body).text("error", sentence);
    return response;
}

std::vector<NamedPath> namedPaths(const Options& options)
{
    std::vector<NamedPath> paths;
    for (const std::string& path : options.paths) {
        paths.push_back({path, path});
    }
    return paths;
}

}  // namespace

struct Answers::Private {
    Private(Options given, Events& toEvents)
        : options(std::move(given)),
          events(toEvents),
          catalog(namedPaths(options), [this] { events.publish("changed", "{}"); })
    {
        catalog.look();
        catalog.start();
    }

    Options options;
    Events& events;
    std::mutex changing;
    Catalog catalog;
};

Answers::Answers(Options options, Events& events) : d(std::make_unique<Private>(std::move(options), events))
{
}

Answers::~Answers() = default;

Response Answers::operator()(const Request& request)
{
    const auto* endpoint =
        std::find_if(Endpoints.begin(), Endpoints.end(), [&](const Endpoint& one) { return one.path == request.path; });
    if (endpoint == Endpoints.end()) {
        return errorResponse(404, "There is nothing under this path.");
    }
    if (request.method != "GET" && !(request.method == "POST" && endpoint->takesPost)) {
        return errorResponse(405, "This path does not take " + request.method + ".");
    }
    try {
        return endpoint->answer({d->options, d->catalog, d->changing}, request);
    } catch (const Refusal& refusal) {
        return errorResponse(refusal.status(), refusal.what());
    } catch (const std::bad_alloc&) {
        return errorResponse(500, "There is not enough memory for this answer.");
    } catch (const std::exception& error) {
        return errorResponse(500, std::string("This could not be answered: ") + error.what());
    }
}

}  // namespace RecView
