// The answers to /api/view, /api/spectrum, /api/channel and /api/sweep: levels over time and frequency.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include "context.h"
#include "jsontext.h"
#include "rectool/printing/recordjson.h"
#include "sweeps.h"

namespace RecView {

namespace {

constexpr float NoLevel = std::numeric_limits<float>::quiet_NaN();
constexpr double LongestMs = 4'000;

/// Combines levels of a cell.
struct Combined {
    float highest = NoLevel;
    float lowest = NoLevel;
    double sum = 0;
    double weight = 0;

    void add(float level, double by)
    {
        if (!std::isnan(level)) {
            highest = std::fmax(highest, level);
            lowest = std::fmin(lowest, level);
            sum += double{level} * by;
            weight += by;
        }
    }
    [[nodiscard]] float mean() const { return weight == 0 ? NoLevel : static_cast<float>(sum / weight); }
    [[nodiscard]] float of(const std::string& what) const
    {
        return what == "max" ? highest : what == "min" ? lowest : mean();
    }
};

struct Grid {
    double from, to, low, high;
    std::size_t columns, rows;
    std::vector<Combined> cells;

    void add(const WalkedSweep& sweep, double until)
    {
        const double perColumn = (to - from) / static_cast<double>(columns);
        const double end = std::min({until, sweep.ms + LongestMs, to});
        const double begin = std::max(sweep.ms, from);
        if (end < begin) {
            return;
        }
        const auto first = static_cast<std::size_t>((begin - from) / perColumn);
        const auto last = static_cast<std::size_t>(std::max(0.0, std::ceil((end - from) / perColumn) - 1));
        for (std::size_t column = first; column <= std::min(std::max(first, last), columns - 1); ++column) {
            addColumn(sweep, column);
        }
    }

private:
    void addColumn(const WalkedSweep& sweep, std::size_t column)
    {
        const double perRow = (high - low) / static_cast<double>(rows);
        const double step =
            sweep.range.size() > 1 ? std::abs(sweep.range.frequencyHz(1) - sweep.range.frequencyHz(0)) : perRow;
        for (std::size_t channel = 0; channel < sweep.cells.size(); ++channel) {
            const double hz = sweep.range.frequencyHz(channel);
            const double bottom = (hz - step / 2 - low) / perRow;
            const double top = (hz + step / 2 - low) / perRow;
            for (auto row = static_cast<std::ptrdiff_t>(std::floor(std::max(bottom, 0.0)));
                 static_cast<double>(row) < top && row < static_cast<std::ptrdiff_t>(rows); ++row) {
                cells[(rows - 1 - static_cast<std::size_t>(row)) * columns + column].add(sweep.cells[channel], 1);
            }
        }
    }
};

Grid drawn(const Timeline& timeline, const RecordedType& type, Grid grid)
{
    std::optional<WalkedSweep> before;
    grid.cells.resize(grid.columns * grid.rows);
    visitSweeps(timeline, type.code, grid.from, grid.to, [&](const WalkedSweep& sweep) {
        if (before) {
            grid.add(*before, sweep.ms);
        }
        before = sweep;
        return true;
    });
    if (before) {
        grid.add(*before, std::numeric_limits<double>::infinity());
    }
    return grid;
}

void appendFloats(std::string& out, const std::vector<float>& floats)
{
    static_assert(std::endian::native == std::endian::little);
    const std::size_t size = out.size();
    out.resize(size + floats.size() * sizeof(float));
    std::memcpy(out.data() + size, floats.data(), floats.size() * sizeof(float));
}

}  // namespace

Response answerView(const Context& context, const Request& request)
{
    const Parameters parameters(request,
                                {"recording", "type", "from", "to", "low", "high", "columns", "rows", "of", "exact"});
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedType(*asked.timeline, parameters, Kind::Levels);
    const Parameters::Span times = parameters.moments();
    const std::string of = parameters.word("of", {"max", "min", "mean"});
    Parameters::Span hz = parameters.frequencies();
    hz = {std::isfinite(hz.from) ? hz.from : type.lowHz, std::isfinite(hz.to) ? hz.to : type.highHz};
    const auto columns = static_cast<std::size_t>(parameters.whole("columns", 1, 4096));
    const auto rows = static_cast<std::size_t>(parameters.whole("rows", 1, 2160));
    static_cast<void>(parameters.flag("exact"));
    const Grid grid = drawn(*asked.timeline, type, {times.from, times.to, hz.from, hz.to, columns, rows, {}});
    std::vector<float> levels;
    float lowest = NoLevel;
    float highest = NoLevel;
    for (const Combined& cell : grid.cells) {
        levels.push_back(cell.of(of));
        lowest = std::fmin(lowest, levels.back());
        highest = std::fmax(highest, levels.back());
    }
    std::string about;
    {
        JsonObject object(about);
        object.number("fromMs", times.from);
        object.number("toMs", times.to);
        object.number("lowHz", hz.from);
        object.number("highHz", hz.to);
        object.number("columns", static_cast<double>(columns));
        object.number("rows", static_cast<double>(rows));
        object.truth("exact", true);
        object.number("made", 1.0);
        object.number("lowest", lowest);
        object.number("highest", highest);
        object.member("gaps") += "[]";
        object.member("ranges") += "[]";
    }
    about.append((4 - about.size() % 4) % 4, ' ');
    Response response;
    response.type = "application/octet-stream";
    for (std::size_t shift = 0; shift < 32; shift += 8) {
        response.body += static_cast<char>(about.size() >> shift & 0xFFU);
    }
    response.body += about;
    appendFloats(response.body, levels);
    return response;
}

Response answerSpectrum(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "type", "from", "to", "low", "high", "points"});
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedType(*asked.timeline, parameters, Kind::Levels);
    const Parameters::Span times = parameters.moments();
    Parameters::Span hz = parameters.frequencies();
    hz = {std::isfinite(hz.from) ? hz.from : type.lowHz, std::isfinite(hz.to) ? hz.to : type.highHz};
    const auto points = static_cast<std::size_t>(parameters.whole("points", 1, 65536, 1000));
    const Grid grid = drawn(*asked.timeline, type, {times.from, times.to, hz.from, hz.to, 1, points, {}});
    std::vector<double> frequencies;
    std::vector<float> highest;
    std::vector<float> mean;
    std::vector<float> lowest;
    for (std::size_t i = 0; i < points; ++i) {
        const Combined& cell = grid.cells[points - 1 - i];
        frequencies.push_back(hz.from +
                              (hz.to - hz.from) * (static_cast<double>(i) + 0.5) / static_cast<double>(points));
        highest.push_back(cell.highest);
        mean.push_back(cell.mean());
        lowest.push_back(cell.lowest);
    }
    Response response;
    JsonObject object(response.body);
    object.numbers("hz", frequencies);
    object.numbers("max", highest);
    object.numbers("mean", mean);
    object.numbers("min", lowest);
    return response;
}

Response answerChannel(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "type", "hz", "from", "to", "columns"});
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedType(*asked.timeline, parameters, Kind::Levels);
    const Parameters::Span times = parameters.moments();
    const double hz = parameters.frequency("hz");
    static_cast<void>(parameters.whole("columns", 1, 65536, 1000));
    std::vector<double> ms;
    std::vector<float> levels;
    double nearest = hz;
    visitSweeps(*asked.timeline, type.code, times.from, times.to, [&](const WalkedSweep& sweep) {
        std::optional<std::size_t> best;
        for (std::size_t i = 0; i < sweep.range.size(); ++i) {
            if (!best || std::abs(sweep.range.frequencyHz(i) - hz) < std::abs(sweep.range.frequencyHz(*best) - hz)) {
                best = i;
            }
        }
        if (best) {
            nearest = sweep.range.frequencyHz(*best);
            ms.push_back(sweep.ms);
            levels.push_back(sweep.cells[*best]);
        }
        return true;
    });
    Response response;
    JsonObject object(response.body);
    object.number("hz", nearest);
    object.numbers("ms", ms);
    object.numbers("max", levels);
    object.numbers("min", levels);
    object.numbers("mean", levels);
    object.truth("exact", true);
    return response;
}

Response answerSweep(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "type", "at"});
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedType(*asked.timeline, parameters, Kind::Levels);
    const double at = parameters.moment("at");
    std::optional<WalkedSweep> found;
    double previous = NoLevel;
    double next = NoLevel;
    visitSweeps(*asked.timeline, type.code, -1e15, 1e15, [&](const WalkedSweep& sweep) {
        if (sweep.ms <= at && (!found || sweep.ms >= found->ms)) {
            previous = found ? found->ms : previous;
            found = sweep;
        } else if (sweep.ms > at) {
            next = std::fmin(next, sweep.ms);
        }
        return true;
    });
    if (!found) {
        throw Refusal(404, "Nothing was measured up to this moment.");
    }
    Response response;
    std::string& out = response.body;
    JsonObject object(out);
    object.number("ms", found->ms);
    object.number("timeMs", static_cast<double>(found->timeMs));
    object.text("file", found->file->name);
    object.number("previousMs", previous);
    object.number("nextMs", next);
    RecTool::appendJson(object.member("channels"), found->range);
    object.list("levels", found->cells, [&](float level) { RecTool::appendLevelJson(out, level); });
    return response;
}

}  // namespace RecView
