// Writing lines of bearing and fixes of a span to a file or standard output.
#include "mapgeojson.h"

#include <functional>
#include <iostream>
#include <vector>

#include "geofixes.h"
#include "geojson.h"
#include "making/savedfile.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/typenames.h"
#include "replay/linesofbearing.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

GeoJsonSettings settingsOf(const MapOptions& options)
{
    constexpr double UsPerSecond = 1e6;
    constexpr double MPerKm = 1000;
    GeoJsonSettings settings;
    settings.fix.sigmaDeg = options.sigmaDeg;
    settings.windowUs = static_cast<unsigned long long>(options.windowSeconds * UsPerSecond);
    settings.lengthM = options.lengthKm * MPerKm;
    return settings;
}

Json about(const MapOptions& options, const Span& span)
{
    return {{"file", shownName(options.files.front())},
            {"fromMs", options.from.empty() ? Json() : Json(span.from)},
            {"toMs", options.to.empty() ? Json() : Json(span.to)}};
}

void complainOfBearings(const std::string& file, const TakenBearings& taken)
{
    if (taken.withoutPosition > 0) {
        complain(file, grouped(taken.withoutPosition) + " of " +
                           grouped(taken.bearings.size() + taken.withoutPosition) +
                           " bearings are left out: where they were taken is not recorded.");
    }
    complain(file, taken.findings);
}

}  // namespace

ExitCode mapGeoJson(const MapOptions& options, const Inspection::Summary& summary, const Span& span)
{
    if (!options.output.empty() && !mayReplace(options.output)) {
        return ExitCode::Usage;
    }
    const TakenBearings taken = takeBearings(options.files.front(), summary, span);
    const GeoJsonSettings settings = settingsOf(options);
    const std::vector<BearingGroup> groups = findFixes(taken.bearings, settings.fix, settings.windowUs);
    const auto produce = [&](const TextSink& write) {
        writeGeoJson(about(options, span), taken, groups, settings, write);
    };
    if (const ExitCode saved = saveText(options.output, produce); saved != ExitCode::Fine) {
        return saved;
    }
    complainOfBearings(options.files.front(), taken);
    return finish(withPassedOver(options.files.front(), DirectionFindingKeyword, "bearings", taken.passedOver,
                                 soundness(taken.findings)));
}

}  // namespace RecTool
