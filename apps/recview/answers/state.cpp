// The answers to /api/state and /api/record: what is in force at a moment, and the records around it.
#include <cmath>
#include <limits>
#include <optional>

#include "context.h"
#include "jsontext.h"
#include "rectool/printing/recordjson.h"
#include "rectool/replay/typenames.h"

namespace RecView {

namespace Inspection = Recording2::Inspection;
using RecTool::InForce;
using RecTool::LastRecord;

namespace {

constexpr std::uint64_t NoTime = std::numeric_limits<std::uint64_t>::max();

/// Applies what is recorded up to a time.
void restore(const RecordedFile& file, const Inspection::Summary& summary, std::uint64_t time, InForce& state)
{
    Inspection::walkRecords(file.path, summary, [&](const Inspection::Record& record) {
        if (record.timeMs <= time) {
            state.apply(record);
        }
        return record.timeMs <= time;
    });
}

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

/// Restores the state up to and with the first wanted record after a time.
const LastRecord* firstAfter(const RecordedFile& file, const Inspection::Summary& summary, std::uint64_t time,
                             const WantedRecord& wanted, InForce& state)
{
    std::optional<std::int32_t> found;
    Inspection::walkRecords(file.path, summary, [&](const Inspection::Record& record) {
        state.apply(record);
        if (record.timeMs > time && wanted.is(record.code)) {
            found = record.code;
        }
        return !found;
    });
    return found ? state.find(*found) : nullptr;
}

Response recordResponse(const RecordedFile& file, const Inspection::Summary& summary, const LastRecord& last)
{
    Response response;
    const RecTool::TypeNames names(summary.types);
    JsonObject object(response.body);
    object.number("ms", sinceEpoch(file, static_cast<double>(last.record.timeMs)));
    object.text("file", file.name);
    RecTool::RecordJson(names).append(object.member("record"), last.record, last.value);
    return response;
}

/// The time before which, or up to which, a record is looked for in a file.
std::optional<std::uint64_t> lastTimeFor(const RecordedFile& file, double ms, std::int64_t step)
{
    const double time = ms - static_cast<double>(file.startMs);
    const double last = step == 0 ? std::floor(time) : std::ceil(time) - 1;  // the one before lies before the moment
    return last < 1 ? std::nullopt : std::optional(static_cast<std::uint64_t>(last));
}

}  // namespace

Response answerState(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "at"});
    const Asked asked = askedRecording(context, parameters);
    const double at = parameters.moment("at");
    const RecordedFile& file = *asked.timeline->files[asked.timeline->fileAt(at)];
    const Inspection::Summary summary = readTables(file);
    const std::uint64_t time = timeIn(file, at);
    InForce state;
    restore(file, summary, time, state);
    Response response;
    const RecTool::TypeNames names(summary.types);
    RecTool::RecordJson json(names);
    JsonObject object(response.body);
    object.number("ms", at);
    object.text("file", file.name);
    object.number("atMs", static_cast<double>(time));
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
        wanted = {askedType(*asked.timeline, parameters).code, false};
    }
    const auto& files = asked.timeline->files;
    const std::size_t here = asked.timeline->fileAt(at);
    for (std::size_t i = here; i<files.size(); step> 0 ? ++i : --i) {  // below 0 it is beyond the end, too
        const RecordedFile& file = *files[i];
        const std::optional<std::uint64_t> time = lastTimeFor(file, at, step);
        if (step <= 0 && !time) {
            continue;
        }
        const Inspection::Summary summary = readTables(file);
        InForce state;
        const LastRecord* found = nullptr;
        if (step > 0) {
            found = firstAfter(file, summary, timeIn(file, at), wanted, state);
        } else {
            restore(file, summary, *time, state);
            found = newest(state, wanted);
        }
        if (found != nullptr) {
            return recordResponse(file, summary, *found);
        }
    }
    throw Refusal(404, step > 0 ? "There is no record after this." : "There is no record before this.");
}

}  // namespace RecView
