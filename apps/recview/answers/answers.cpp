// Which answer belongs to which path, and errors as sentences.
#include "answers.h"

#include <algorithm>
#include <array>
#include <exception>
#include <new>
#include <string_view>

#include <recording2/inspection/filename.h>

#include "context.h"
#include "jsontext.h"

namespace RecView {

namespace {

struct Endpoint {
    std::string_view path;
    Response (*answer)(const Context&, const Request&);
    bool takesPost = false;
    bool isFile = false;  // somebody takes away what it answers
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
    Endpoint{"/api/trace", answerTrace},
    Endpoint{"/api/emissions", answerEmissions},
    Endpoint{"/api/occupancy", answerOccupancy},
    Endpoint{"/api/csv", answerCsv, false, true},
};

Cache::Options cacheOptions(const Options& options)
{
    Cache::Options cache;
    if (!options.cacheDirectory.empty()) {
        cache.directory = Recording2::Inspection::native(options.cacheDirectory);
    }
    if (options.cacheBytes != 0) {
        cache.bytes = options.cacheBytes;
    }
    return cache;
}

Response absentResponse(const Absent& absent)
{
    Response response;
    JsonObject(response.body).members(absent.until() == Absent::Until::Soon ? "again" : "nothing", absent.what());
    return response;
}

}  // namespace

struct Answers::Private {
    Private(const Options& given, Events& toEvents)
        : options(given),
          events(toEvents),
          overviews(cacheOptions(options), [this](const RecordedFile& file) { tellMade(file); }),
          catalog(options.paths, overviews,
                  {[this] { events.publish("changed", "{}"); },
                   [this](const std::string& id, double endMs) { tellGrown(id, endMs); }})
    {
        catalog.look();
        catalog.start();
    }
    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;
    ~Private() { overviews.stop(); }  // whose thread asks the catalog

    void tellGrown(const std::string& id, double endMs)
    {
        std::string json;
        JsonObject(json).members("recording", id, "endMs", endMs);
        events.publish("grown", json);
    }
    void tellMade(const RecordedFile& file)
    {
        const ListingPointer listing = catalog.listing();
        for (const Timeline& timeline : listing->timelines) {
            const bool isOfIt = std::any_of(timeline.files.begin(), timeline.files.end(),
                                            [&](const FilePointer& one) { return one->path == file.path; });
            if (isOfIt) {
                std::string json;
                JsonObject(json).members("recording", timeline.id, "made", madeOf(overviews, timeline));
                events.publish("made", json);
            }
        }
    }

    Options options;
    Events& events;
    std::mutex changing;
    Overviews overviews;
    Catalog catalog;
};

Answers::Answers(const Options& options, Events& events) : d(std::make_unique<Private>(options, events))
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
        return endpoint->answer({d->options, d->catalog, d->overviews, d->changing}, request);
    } catch (const Refusal& refusal) {
        return errorResponse(refusal.status(), refusal.what());
    } catch (const Absent& absent) {
        constexpr int AskAgain = 503;
        return endpoint->isFile ? errorResponse(AskAgain, absent.what()) : absentResponse(absent);
    } catch (const std::bad_alloc&) {
        return errorResponse(500, "There is not enough memory for this answer.");
    } catch (const std::exception& error) {
        return errorResponse(500, std::string("This could not be answered: ") + error.what());
    }
}

}  // namespace RecView
