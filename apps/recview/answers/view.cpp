// The answer to /api/view: levels over time and frequency, as many as a picture has pixels.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

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
        object.number("fromMs", view.fromMs);
        object.number("toMs", view.toMs);
        object.number("lowHz", view.lowHz);
        object.number("highHz", view.highHz);
        object.number("columns", view.columns);
        object.number("rows", view.rows);
        object.truth("exact", grid.exact());
        object.number("made", overviewed.made);
        object.number("lowest", grid.lowest());
        object.number("highest", grid.highest());
        object.list("gaps", grid.gaps(), [&](const Stretch& gap) { appendPair(out, gap.fromMs, gap.toMs); });
        object.list("ranges", rangesIn(overviewed.files, view), [&](const RangeChange& range) {
            JsonObject entry(out);
            entry.number("ms", range.ms);
            entry.number("lowHz", range.span.lowHz);
            entry.number("highHz", range.span.highHz);
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

}  // namespace RecView
