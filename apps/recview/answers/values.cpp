// The answer to /api/values: a number over time, or when a text, a selection or a truth value changed.
#include <algorithm>

#include "context.h"
#include "jsontext.h"
#include "recordings/valuequeries.h"

namespace RecView {

namespace {

Response numbersOf(const OverviewedFiles& overviewed, const RecordedType& type, const Stretch& time,
                   std::size_t columns)
{
    NumberCurve curve;
    for (const OverviewedFile& file : overviewed.files) {
        const Stretch part = file.within(time);
        const double all = time.toMs - time.fromMs;
        const double share = all > 0 ? (part.toMs - part.fromMs) / all : 1;
        const auto points = static_cast<std::size_t>(std::max(2.0, static_cast<double>(columns) * share));
        appendNumbers(*file.overview, type.code, part, points, curve);
    }
    Response response;
    JsonObject object(response.body);
    object.text("kind", "number");
    object.text("unit", type.unit);
    object.numbers("ms", curve.ms);
    object.numbers("min", curve.min);
    object.numbers("max", curve.max);
    object.numbers("last", curve.last);
    object.truth("exact", curve.exact);
    object.number("made", overviewed.made);
    return response;
}

Response changesOf(const OverviewedFiles& overviewed, const RecordedType& type, const Stretch& time)
{
    constexpr std::size_t Most = 5'000;
    std::vector<TextChange> changes;
    std::uint64_t more = 0;
    for (const OverviewedFile& file : overviewed.files) {
        more += appendChanges(*file.overview, type.code, file.within(time), Most, changes);
    }
    // A split begins with the state, which is no change.
    const auto repeated = std::unique(changes.begin(), changes.end(),
                                      [](const TextChange& a, const TextChange& b) { return a.text == b.text; });
    changes.erase(repeated, changes.end());
    more += thin(changes, Most);
    Response response;
    JsonObject object(response.body);
    object.text("kind", "changes");
    object.list("changes", changes, [&](const TextChange& change) {
        JsonObject entry(response.body);
        entry.number("ms", change.ms);
        entry.text("text", change.text);
    });
    object.number("more", more);
    object.number("made", overviewed.made);
    return response;
}

}  // namespace

Response answerValues(const Context& context, const Request& request)
{
    constexpr std::int64_t Most = 10'000;
    const Parameters parameters(request, {"recording", "type", "from", "to", "columns"});
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedType(context, *asked.timeline, parameters);
    const auto [from, to] = parameters.moments();
    const auto columns = static_cast<std::size_t>(parameters.whole("columns", 1, Most, 1000));
    if (type.kind == Kind::Levels || type.kind == Kind::Bearings) {
        throw Refusal(400, "The parameter \"type\" names a map, which has no single value.");
    }
    const OverviewedFiles overviewed = overviewsIn(context, *asked.timeline, {from, to});
    return type.kind == Kind::Number ? numbersOf(overviewed, type, {from, to}, columns)
                                     : changesOf(overviewed, type, {from, to});
}

}  // namespace RecView
