// The answer to /api/values: a number over time, or when a text, a selection or a truth value changed.
#include <algorithm>
#include <cmath>
#include <limits>

#include <values/value.h>

#include "context.h"
#include "jsontext.h"
#include "rectool/replay/recordedvalues.h"

namespace RecView {

namespace Inspection = Recording2::Inspection;

namespace {

/// Visits the values of a type in a span, and the one in force at its beginning.
void visitValues(const Timeline& timeline, std::int32_t code, const Parameters::Span& span,
                 const std::function<void(double ms, const values::ValueBase*)>& visit)
{
    for (std::size_t i = timeline.fileAt(span.from); i < timeline.files.size(); ++i) {
        const RecordedFile& file = *timeline.files[i];
        RecTool::RecordedValues recorded;
        Inspection::walkRecords(file.path, readTables(file), [&](const Inspection::Record& record) {
            const double ms = sinceEpoch(file, static_cast<double>(record.timeMs));
            if (record.code == code && record.timeMs != 0 && ms <= span.to) {
                visit(ms, recorded.apply(record));
            }
            return ms <= span.to;
        });
    }
}

Response numbersOf(const Timeline& timeline, const RecordedType& type, const Parameters::Span& span)
{
    std::vector<double> ms;
    std::vector<double> numbers;
    visitValues(timeline, type.code, span, [&](double at, const values::ValueBase* value) {
        const auto* number = dynamic_cast<const values::ValueNumeric<double>*>(value);
        if (at <= span.from) {
            ms.clear();
            numbers.clear();
        }
        ms.push_back(at);
        numbers.push_back(number != nullptr ? number->GetValue() : std::numeric_limits<double>::quiet_NaN());
    });
    Response response;
    JsonObject object(response.body);
    object.text("kind", "number");
    object.text("unit", type.unit);
    object.numbers("ms", ms);
    object.numbers("min", numbers);
    object.numbers("max", numbers);
    object.numbers("last", numbers);
    object.truth("exact", true);
    return response;
}

struct Change {
    double ms = 0;
    std::string text;
};

Response changesOf(const Timeline& timeline, const RecordedType& type, const Parameters::Span& span)
{
    constexpr std::size_t Most = 5'000;
    std::vector<Change> changes;
    std::size_t more = 0;
    visitValues(timeline, type.code, span, [&](double at, const values::ValueBase* value) {
        if (at <= span.from) {
            changes.clear();
        }
        if (changes.size() == Most) {
            ++more;
            return;
        }
        changes.push_back({at, value != nullptr ? RecTool::describe(*value) : "?"});
    });
    Response response;
    JsonObject object(response.body);
    object.text("kind", "changes");
    object.list("changes", changes, [&](const Change& change) {
        JsonObject entry(response.body);
        entry.number("ms", change.ms);
        entry.text("text", change.text);
    });
    object.number("more", static_cast<double>(more));
    return response;
}

}  // namespace

Response answerValues(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "type", "from", "to", "columns"});
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedType(*asked.timeline, parameters);
    const Parameters::Span span = parameters.moments();
    static_cast<void>(parameters.whole("columns", 1, 65536, 1000));
    if (type.kind == Kind::Levels || type.kind == Kind::Bearings) {
        throw Refusal(400, "The parameter \"type\" names a map, which has no single value.");
    }
    return type.kind == Kind::Number ? numbersOf(*asked.timeline, type, span) : changesOf(*asked.timeline, type, span);
}

}  // namespace RecView
