// The answers to /api/view, /api/spectrum and /api/channel: levels over time and frequency, as many as a picture has
// pixels; levels over frequency, and those of one channel over time.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>

#include "context.h"
#include "jsontext.h"

namespace RecView {

namespace {

constexpr std::uint64_t MostRecordBytes = std::uint64_t{24} << 20;  // of records, in all files together
constexpr std::size_t MostRanges = 1'000;

View askedView(const Parameters& parameters, const RecordedType& type)
{
    constexpr std::int64_t MostColumns = 4096;
    constexpr std::int64_t MostRows = 2160;
    View view;
    view.code = type.code;
    const auto [from, to] = parameters.stretch();
    view.fromMs = from;
    view.toMs = to;
    const auto [low, high] = parameters.band(type.lowHz, type.highHz);
    view.lowHz = low;
    view.highHz = high;
    view.columns = static_cast<std::size_t>(parameters.whole("columns", 1, MostColumns));
    view.rows = static_cast<std::size_t>(parameters.whole("rows", 1, MostRows));
    const std::string of = parameters.word("of", {"max", "min", "mean"});
    view.of = of == "max" ? Combine::Max : of == "min" ? Combine::Min : Combine::Mean;
    view.exact = parameters.flag("exact");
    return view;
}

/// The picture is exact in all files, or drawn of blocks in all.
bool canBeExact(const std::vector<OverviewedFile>& files, const View& view)
{
    std::uint64_t bytes = 0;
    for (const OverviewedFile& file : files) {
        bytes += file.overview->bytesOfExact(view);
    }
    return bytes <= MostRecordBytes;
}

std::vector<RangeChange> rangesIn(const std::vector<OverviewedFile>& files, const View& view)
{
    std::vector<RangeChange> ranges;
    for (const OverviewedFile& file : files) {
        const auto more =
            file.overview->ranges(view.code, file.within({view.fromMs, view.toMs}), MostRanges - ranges.size());
        ranges.insert(ranges.end(), more.begin(), more.end());
    }
    return ranges;
}

std::string describeGrid(const Grid& grid, const OverviewedFiles& overviewed)
{
    const View& view = grid.view();
    std::string out;
    {
        JsonObject object(out);
        object.members("fromMs", view.fromMs, "toMs", view.toMs, "lowHz", view.lowHz, "highHz", view.highHz);
        object.members("columns", view.columns, "rows", view.rows, "exact", grid.exact(), "made", overviewed.made);
        object.members("lowest", grid.lowest(), "highest", grid.highest());
        object.list("gaps", grid.gaps(), [&](const Stretch& gap) { appendPair(out, gap.fromMs, gap.toMs); });
        object.list("ranges", rangesIn(overviewed.files, view), [&](const RangeChange& range) {
            JsonObject(out).members("ms", range.ms, "lowHz", range.span.lowHz, "highHz", range.span.highHz);
        });
    }
    out.append((4 - out.size() % 4) % 4, ' ');  // the levels stand at a multiple of their size
    return out;
}

void appendLittleEndian(std::string& out, std::uint32_t number)
{
    constexpr std::uint32_t ByteBits = 8;
    for (std::size_t i = 0; i < sizeof(number); ++i) {
        out += static_cast<char>(number >> (ByteBits * i) & 0xFFU);
    }
}

void appendLevels(std::string& out, const std::vector<float>& levels)
{
    if constexpr (std::endian::native == std::endian::little) {
        const std::size_t size = out.size();
        out.resize(size + levels.size() * sizeof(float));
        std::memcpy(out.data() + size, levels.data(), levels.size() * sizeof(float));
    } else {
        for (const float level : levels) {
            appendLittleEndian(out, std::bit_cast<std::uint32_t>(level));
        }
    }
}

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
    object.members(axis, curve.at, "max", curve.max, "mean", curve.mean, "min", curve.min, "exact", curve.exact);
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

Response answerView(const Context& context, const Request& request)
{
    const Parameters parameters(request,
                                {"recording", "type", "from", "to", "low", "high", "columns", "rows", "of", "exact"});
    const Asked asked = askedRecording(context, parameters);
    View view = askedView(parameters, askedSpectrum(context, *asked.timeline, parameters));
    const OverviewedFiles overviewed = overviewsIn(context, *asked.timeline, {view.fromMs, view.toMs});
    view.exact = view.exact && canBeExact(overviewed.files, view);
    Grid grid(view);
    for (const OverviewedFile& file : overviewed.files) {
        file.overview->draw(grid);
    }
    grid.finish();
    Response response;
    response.type = "application/octet-stream";
    const std::string about = describeGrid(grid, overviewed);
    response.body.reserve(sizeof(std::uint32_t) + about.size() + grid.levels().size() * sizeof(float));
    appendLittleEndian(response.body, static_cast<std::uint32_t>(about.size()));
    response.body += about;
    appendLevels(response.body, grid.levels());
    return response;
}

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
    object.members("made", overviewed.made);
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
    object.members("hz", channelAt(overviewed.files, type.code, hz));
    appendCurve(object, "ms", all);
    object.members("made", overviewed.made);
    return response;
}

}  // namespace RecView
