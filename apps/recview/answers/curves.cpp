// The answers to /api/spectrum and /api/channel: levels over frequency, and those of one channel over time.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "context.h"
#include "jsontext.h"

namespace RecView {

namespace {

constexpr std::int64_t MostPoints = 20'000;

/// Puts the spectrum of one more file into that of those before. Means weigh by the time that was looked at.
void combine(Curve& all, const Curve& one, double shareOfOne)
{
    if (all.at.size() != one.at.size()) {
        if (all.at.empty()) {
            all = one;
        }
        return;
    }
    for (std::size_t i = 0; i < all.at.size(); ++i) {
        all.max[i] = std::fmax(all.max[i], one.max[i]);
        all.min[i] = std::fmin(all.min[i], one.min[i]);
        const double before = all.mean[i];
        const double mean = one.mean[i];
        all.mean[i] = std::isnan(before) ? one.mean[i]
                      : std::isnan(mean) ? all.mean[i]
                                         : static_cast<float>(before + (mean - before) * shareOfOne);
    }
    all.exact = all.exact && one.exact;
}

void appendCurve(JsonObject& object, const char* axis, const Curve& curve)
{
    object.numbers(axis, curve.at);
    object.numbers("max", curve.max);
    object.numbers("mean", curve.mean);
    object.numbers("min", curve.min);
    object.truth("exact", curve.exact);
}

/// The frequency of the channel that is nearest, of all ranges that were recorded.
double channelAt(const std::vector<OverviewedFile>& files, std::int32_t code, double hz)
{
    std::optional<double> nearest;
    for (const OverviewedFile& file : files) {
        for (const Series& series : file.overview->series()) {
            if (series.code != code || series.range.size() == 0) {
                continue;
            }
            const double channel = series.range.frequencyHz(RecTool::nearestChannel(series.range, hz));
            nearest = !nearest || std::abs(channel - hz) < std::abs(*nearest - hz) ? channel : *nearest;
        }
    }
    return nearest.value_or(hz);
}

void append(Curve& all, const Curve& one)
{
    all.at.insert(all.at.end(), one.at.begin(), one.at.end());
    all.max.insert(all.max.end(), one.max.begin(), one.max.end());
    all.min.insert(all.min.end(), one.min.begin(), one.min.end());
    all.mean.insert(all.mean.end(), one.mean.begin(), one.mean.end());
    all.exact = all.exact && one.exact;
}

}  // namespace

Response answerSpectrum(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "type", "from", "to", "low", "high", "points"});
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedSpectrum(context, *asked.timeline, parameters);
    const auto [from, to] = parameters.stretch();
    const auto [low, high] = parameters.band(type.lowHz, type.highHz);
    const auto points = static_cast<std::size_t>(parameters.whole("points", 1, MostPoints, 1000));
    const OverviewedFiles overviewed = overviewsIn(context, *asked.timeline, {from, to});
    Curve all;
    double looked = 0;
    for (const OverviewedFile& file : overviewed.files) {
        const Stretch part = file.within({from, to});
        looked += part.toMs - part.fromMs;
        const double share = looked > 0 ? (part.toMs - part.fromMs) / looked : 1;
        combine(all, file.overview->spectrumOver(type.code, part, {low, high}, points), share);
    }
    Response response;
    JsonObject object(response.body);
    appendCurve(object, "hz", all);
    object.number("made", overviewed.made);
    return response;
}

Response answerChannel(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "type", "hz", "from", "to", "columns"});
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedSpectrum(context, *asked.timeline, parameters);
    const auto [from, to] = parameters.stretch();
    const double hz = parameters.frequency("hz");
    const auto columns = static_cast<double>(parameters.whole("columns", 1, MostPoints, 1000));
    const OverviewedFiles overviewed = overviewsIn(context, *asked.timeline, {from, to});
    Curve all;
    for (const OverviewedFile& file : overviewed.files) {
        const Stretch part = file.within({from, to});
        if (part.toMs > part.fromMs) {
            const double share = (part.toMs - part.fromMs) / (to - from);
            const auto points = static_cast<std::size_t>(std::max(1.0, std::ceil(columns * share)));
            append(all, file.overview->channelOver(type.code, hz, part, points));
        }
    }
    Response response;
    JsonObject object(response.body);
    object.number("hz", channelAt(overviewed.files, type.code, hz));
    appendCurve(object, "ms", all);
    object.number("made", overviewed.made);
    return response;
}

}  // namespace RecView
