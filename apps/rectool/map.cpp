#include <cmath>
#include <iostream>
#include <limits>
#include <vector>

#include "bearingreplay.h"
#include "commands.h"
#include "json.h"
#if defined(RECTOOL_HAS_GEO)
#include "mapgeojson.h"
#endif
#include "output.h"
#include "progress.h"
#include "recordedvalues.h"
#include "recordingtime.h"
#include "table.h"
#include "text.h"
#include "typenames.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using values::Bearing;

namespace {

struct Span {
    std::uint64_t from = 0;
    std::uint64_t to = std::numeric_limits<std::uint64_t>::max();
};

/// The numbers of the channels that have a bearing and got it in the span.
std::vector<std::size_t> shownChannels(const BearingReplay& replay, const Span& span)
{
    std::vector<std::size_t> shown;
    for (std::size_t i = 0; i < replay.channels().size(); ++i) {
        const BearingChange& channel = replay.channels()[i];
        if (!isEmpty(channel.bearing) && channel.timeMs >= span.from) {
            shown.push_back(i);
        }
    }
    return shown;
}

std::string cell(double value)
{
    return std::isnan(value) ? "-" : number(value);
}

void printTable(const BearingReplay& replay, const std::vector<std::size_t>& shown)
{
    constexpr unsigned long long UsPerMs = 1000;
    if (shown.empty()) {
        std::cout << "There is no bearing.\n";
        return;
    }
    Table table({Table::Align::Right, Table::Align::Right, Table::Align::Right, Table::Align::Right,
                 Table::Align::Right, Table::Align::Right, Table::Align::Right, Table::Align::Left});
    table.add({"Channel", "Frequency", "Azimuth", "Elevation", "Level", "Quality", "Time", "Measured"});
    for (const std::size_t i : shown) {
        const BearingChange& channel = replay.channels()[i];
        const Bearing& bearing = channel.bearing;
        table.add({std::to_string(i), frequency(replay.range().frequencyHz(i)), cell(bearing.azimuthDeg),
                   cell(bearing.elevationDeg), cell(bearing.levelDb), cell(bearing.quality),
                   std::to_string(channel.timeMs), utc(channel.measuredUs / UsPerMs)});
    }
    table.print(std::cout, "");
}

void printJson(const MapOptions& options, const Span& span, const BearingReplay& replay,
               const std::vector<std::size_t>& shown)
{
    Json bearings = Json::array();
    for (const std::size_t i : shown) {
        const BearingChange& channel = replay.channels()[i];
        Json bearing = {{"channel", i}, {"frequencyHz", replay.range().frequencyHz(i)}};
        bearing.update(toJson(channel.bearing));
        bearing["timeMs"] = channel.timeMs;
        bearing["timeStampUs"] = channel.measuredUs;
        bearings.push_back(std::move(bearing));
    }
    std::cout << dump({{"file", shownName(options.file)},
                       {"fromMs", options.from.empty() ? Json() : Json(span.from)},
                       {"toMs", options.to.empty() ? Json() : Json(span.to)},
                       {"range", toJson(replay.range())},
                       {"bearings", std::move(bearings)}},
                      2)
              << '\n';
}

/// Applies every record of the direction finder up to the end of the span.
std::vector<Inspection::Finding> replayRecords(const MapOptions& options, const Inspection::Summary& summary,
                                               std::uint64_t to, BearingReplay& replay)
{
    const std::optional<std::int32_t> wanted = TypeNames(summary.types).numberOf(DirectionFindingKeyword);
    Progress progress(options.file);
    std::vector<Inspection::Finding> findings = summary.findings;
    const auto inRecords = Inspection::walkRecords(
        options.file, summary,
        [&](const Inspection::Record& record) {
            const bool timeIsKnown = record.timeMs != 0;
            if (wanted == record.code && timeIsKnown && record.timeMs <= to) {
                replay.apply(record);
            }
            return record.timeMs <= to;
        },
        progress.callback());
    findings.insert(findings.end(), inRecords.begin(), inRecords.end());
    return findings;
}

}  // namespace

ExitCode map(const MapOptions& options)
{
    const Inspection::Summary summary = Inspection::inspect(options.file);
    if (summary.readability != Inspection::Readability::Ok) {
        complain(options.file, summary.problem);
        return ExitCode::CannotRead;
    }
    Span span;
    if (!takeSpan(options.file, options.from, options.to, summary, span.from, span.to)) {
        return ExitCode::Usage;
    }
    if (options.geoJson) {
#if defined(RECTOOL_HAS_GEO)
        return mapGeoJson(options, summary, span.from, span.to);
#else
        complain(options.file, "This rectool was built without GeographicLib, which --geojson needs.");
        return ExitCode::Usage;
#endif
    }
    BearingReplay replay;
    const std::vector<Inspection::Finding> findings = replayRecords(options, summary, span.to, replay);
    const std::vector<std::size_t> shown = shownChannels(replay, span);
    options.json ? printJson(options, span, replay, shown) : printTable(replay, shown);
    complain(options.file, findings);
    return finish(
        withPassedOver(options.file, DirectionFindingKeyword, "bearings", replay.passedOver(), soundness(findings)));
}

}  // namespace RecTool
