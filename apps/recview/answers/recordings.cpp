// The answer to /api/recordings: all that there is, and what cannot be shown.
#include "context.h"
#include "jsontext.h"

namespace RecView {

namespace {

void appendType(std::string& out, const RecordedType& type, bool isSpectrum)
{
    JsonObject object(out);
    object.members("code", type.code, "keyword", type.keyword);
    if (!isSpectrum) {
        object.members("kind", nameOf(type.kind));
    }
    object.members("unit", type.unit);
    if (isSpectrum) {
        object.members("lowHz", type.lowHz, "highHz", type.highHz);
    }
}

void appendFile(std::string& out, const RecordedFile& file)
{
    JsonObject object(out);
    object.members("name", file.name, "startMs", file.startMs, "endMs", file.endMs);
    object.members("bytes", file.bytes, "live", file.live);
}

void appendTimeline(std::string& out, const Context& context, const Timeline& timeline)
{
    std::vector<RecordedType> values;
    std::vector<RecordedType> spectra;
    bool hasBearings = false;
    for (const auto& [code, type] : typesOf(context, timeline)) {
        values.push_back(type);
        hasBearings = hasBearings || type.kind == Kind::Bearings;
        if (type.kind == Kind::Levels) {
            spectra.push_back(type);
        }
    }
    JsonObject object(out);
    const RecordedFile& first = *timeline.files.front();
    object.members("id", timeline.id, "title", first.name, "device", first.device, "type", first.deviceType);
    object.members("startMs", timeline.startMs(), "endMs", timeline.endMs());
    object.members("live", timeline.isLive(), "timesKnown", timeline.timesKnown());
    object.list("files", timeline.files, [&](const FilePointer& file) { appendFile(out, *file); });
    object.list("spectra", spectra, [&](const RecordedType& type) { appendType(out, type, true); });
    object.list("values", values, [&](const RecordedType& type) { appendType(out, type, false); });
    object.members("hasBearings", hasBearings, "made", madeOf(context.overviews, timeline));
}

/// What does not hinder a file from being shown, but not all of it.
std::vector<Problem> problemsOf(const Context& context, const Listing& listing)
{
    std::vector<Problem> problems = listing.problems;
    for (const Timeline& timeline : listing.timelines) {
        for (const FilePointer& file : timeline.files) {
            const Made made = context.overviews.known(*file);
            const std::string& sentence = made.problem.empty() ? made.damage : made.problem;
            if (!sentence.empty() && file->damage.empty()) {
                problems.push_back({file->name, sentence});
            }
        }
    }
    return problems;
}

}  // namespace

Response answerRecordings(const Context& context, const Request& request)
{
    const Parameters parameters(request, {});
    const ListingPointer listing = context.catalog.listing();
    Response response;
    std::string& out = response.body;
    JsonObject object(out);
    object.members("edit", context.options.edit);
    object.list("recordings", listing->timelines,
                [&](const Timeline& timeline) { appendTimeline(out, context, timeline); });
    object.list("problems", problemsOf(context, *listing),
                [&](const Problem& problem) { JsonObject(out).members("name", problem.name, "error", problem.error); });
    return response;
}

}  // namespace RecView
