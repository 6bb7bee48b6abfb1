// Finding the recording and the type that a request names.
#include "context.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

#include <QString>

namespace RecView {

namespace Inspection = Recording2::Inspection;

Asked askedRecording(const Context& context, const Parameters& parameters)
{
    const std::string& id = parameters.text("recording");
    ListingPointer listing = context.catalog.listing();
    const Timeline* timeline = listing->find(id);
    if (timeline == nullptr) {
        throw Refusal(404, "There is no recording of this name any more, or there never was.");
    }
    return {std::move(listing), timeline};
}

RecordedType askedType(const Timeline& timeline, const Parameters& parameters)
{
    const std::string& name = parameters.text("type");
    std::int32_t code = 0;
    const char* const end = name.data() + name.size();
    const auto [last, error] = std::from_chars(name.data(), end, code);
    const bool isNumber = error == std::errc() && last == end;
    for (const auto& [number, type] : timeline.recorded()) {
        const bool isKeyword =
            QString::fromStdString(name).compare(QString::fromStdString(type.keyword), Qt::CaseInsensitive) == 0;
        if (isNumber ? number == code : isKeyword) {
            return type;
        }
    }
    throw Refusal(400, "The parameter \"type\" names nothing that this recording holds.");
}

RecordedType askedType(const Timeline& timeline, const Parameters& parameters, Kind kind)
{
    RecordedType type = askedType(timeline, parameters);
    if (type.kind != kind) {
        throw Refusal(400, std::string("The parameter \"type\" does not name ") + nameOf(kind) + ".");
    }
    return type;
}

std::uint64_t timeIn(const RecordedFile& file, double ms)
{
    const double time = std::floor(ms - static_cast<double>(file.startMs));
    return time < 1 ? 0 : static_cast<std::uint64_t>(time);
}

double sinceEpoch(const RecordedFile& file, double timeMs)
{
    return static_cast<double>(file.startMs) + timeMs;
}

Inspection::Summary readTables(const RecordedFile& file)
{
    Inspection::Summary summary = Inspection::inspect(file.path);
    if (summary.readability != Inspection::Readability::Ok) {
        throw Refusal(404, file.name + ": " + summary.problem);
    }
    return summary;
}

}  // namespace RecView
