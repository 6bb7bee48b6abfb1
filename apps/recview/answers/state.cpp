// The answers to /api/state and /api/record: what is in force at a moment, and the records around it.
#include <cmath>
#include <limits>
#include <optional>

#include "context.h"
#include "jsontext.h"
#include "rectool/printing/recordjson.h"
#include "rectool/printing/valuetext.h"
#include "rectool/replay/inforce.h"

namespace RecView {

using RecTool::InForce;
using RecTool::LastRecord;

namespace {

struct WantedRecord {
    std::int32_t code = 0;
    bool any = true;

    [[nodiscard]] bool is(std::int32_t other) const { return any || code == other; }
};

/// The newest record of a state that is wanted; null where there is none.
const LastRecord* newest(const InForce& state, const WantedRecord& wanted)
{
    const LastRecord* found = nullptr;
    for (const auto& [code, last] : state.entries()) {
        if (wanted.is(code) && (found == nullptr || last.record.position > found->record.position)) {
            found = &last;
        }
    }
    return found;
}

Response recordResponse(const RecordedFile& file, const LastRecord& last)
{
    Response response;
    const RecTool::TypeNames names(file.types);
    JsonObject object(response.body);
    object.members("ms", sinceEpoch(file, static_cast<double>(last.record.timeMs)), "file", file.name);
    RecTool::RecordJson(names).append(object.member("record"), last.record, last.value);
    return response;
}

/// The last record up to a moment, or before it; none where it is not of this file.
std::optional<Response> lastRecord(const OverviewedFile& file, double ms, bool before, const WantedRecord& wanted)
{
    const double time = before ? std::ceil(ms) - 1 : ms;
    if (file.overview == nullptr || time < file.startMs()) {
        return std::nullopt;
    }
    const InForce state = file.overview->stateAt(time);
    const LastRecord* last = newest(state, wanted);
    return last == nullptr ? std::nullopt : std::optional(recordResponse(*file.file, *last));
}

std::optional<Response> firstRecordAfter(const OverviewedFile& file, double ms, const WantedRecord& wanted)
{
    std::optional<Response> found;
    if (file.overview == nullptr) {
        return found;
    }
    file.overview->walk({ms, std::numeric_limits<double>::infinity()}, [&](const Record& record, const InForce& state) {
        const bool isAfter = sinceEpoch(*file.file, static_cast<double>(record.timeMs)) > ms;
        if (isAfter && record.timeMs != 0 && wanted.is(record.code)) {
            found = recordResponse(*file.file, *state.find(record.code));
        }
        return !found;
    });
    return found;
}

}  // namespace

Response answerState(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "at"});
    const Asked asked = askedRecording(context, parameters);
    const double at = parameters.moment("at");
    const OverviewedFile file = overviewOf(context, asked.timeline->files[asked.timeline->fileAt(at)]);
    const double time = std::max(0.0, std::floor(at - file.startMs()));
    const InForce state = file.overview == nullptr ? InForce() : file.overview->stateAt(at);
    Response response;
    const RecTool::TypeNames names(file.file->types);
    RecTool::RecordJson json(names);
    JsonObject object(response.body);
    object.members("ms", at, "file", file.file->name, "atMs", time, "made", file.share);
    object.list("state", state.entries(),
                [&](const auto& entry) { json.append(response.body, entry.second.record, entry.second.value); });
    return response;
}

Response answerRecord(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "at", "step", "type"});
    const Asked asked = askedRecording(context, parameters);
    const double at = parameters.moment("at");
    const std::int64_t step = parameters.whole("step", -1, 1, 0);
    WantedRecord wanted;
    if (parameters.has("type")) {
        wanted = {askedType(context, *asked.timeline, parameters).code, false};
    }
    const auto& files = asked.timeline->files;
    std::size_t i = asked.timeline->fileAt(at);
    while (i < files.size()) {
        const OverviewedFile file = overviewOf(context, files[i]);
        std::optional<Response> found =
            step > 0 ? firstRecordAfter(file, at, wanted) : lastRecord(file, at, step < 0, wanted);
        if (found) {
            return *std::move(found);
        }
        i = step > 0 ? i + 1 : i - 1;  // below 0 it is beyond the end, too
    }
    refuseUnfinished(context, *asked.timeline);
    throw Absent(Absent::Until::Ever, step > 0 ? "There is no record after this." : "There is no record before this.");
}

}  // namespace RecView
