// The answers to /api/sweep and /api/csv: single sweeps, as the records have them.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <span>

#include "context.h"
#include "jsontext.h"
#include "rectool/printing/recordjson.h"

namespace RecView {

namespace {

constexpr double Never = std::numeric_limits<double>::quiet_NaN();

/// The sweeps of a type in a file, which may be beyond the recording; nothing without.
std::optional<Spectrum> spectrumOf(const Context& context, const Timeline& timeline, std::size_t file,
                                   std::int32_t code)
{
    const std::shared_ptr<Overview> overview =
        file < timeline.files.size() ? overviewOf(context, timeline.files[file]).overview : nullptr;
    const std::vector<Spectrum> spectra = overview != nullptr ? overview->spectra() : std::vector<Spectrum>();
    const auto found =
        std::find_if(spectra.begin(), spectra.end(), [code](const Spectrum& one) { return one.code == code; });
    return found == spectra.end() ? std::nullopt : std::optional(*found);
}

/// What is streamed, and how far it has come.
struct CsvStream {
    std::vector<OverviewedFile> files;
    std::int32_t code = 0;
    Stretch time;
    double lowHz = 0;
    double highHz = 0;

    std::size_t file = 0;
    double nextMs = 0;                  ///< moments before this were written
    std::size_t writtenAtNext = 0;      ///< so many sweeps of exactly this moment, too
    values::ChannelRange range;         ///< of the last line of names
    std::vector<std::size_t> channels;  ///< that are written, of this range

    bool more(std::string& piece)
    {
        constexpr std::size_t PieceBytes = std::size_t{512} << 10;
        piece.clear();
        while (piece.empty() && file < files.size()) {
            bool isFull = false;
            const double resumed = nextMs;
            std::size_t passedOver = 0;
            files[file].overview->sweeps(
                code, {nextMs, time.toMs},
                [&](const Record&, double ms, const values::ChannelRange& channelsNow, std::span<const float> levels) {
                    if (ms == resumed && passedOver < writtenAtNext) {
                        ++passedOver;
                        return true;
                    }
                    writtenAtNext = ms == nextMs ? writtenAtNext + 1 : 1;
                    nextMs = ms;
                    takeRange(channelsNow, piece);
                    appendLine(ms, levels, piece);
                    isFull = piece.size() >= PieceBytes;
                    return !isFull;
                });
            if (!isFull) {
                ++file;
                writtenAtNext = 0;
            }
        }
        return !piece.empty();
    }

private:
    /// The names of the columns; again where the channels are others.
    void takeRange(const values::ChannelRange& now, std::string& piece)
    {
        if (now == range) {
            return;
        }
        range = now;
        channels.clear();
        piece += "time_utc_ms";
        for (std::size_t i = 0; i < range.size(); ++i) {
            const double hz = range.frequencyHz(i);
            if (hz >= lowHz && hz <= highHz) {
                channels.push_back(i);
                piece += ',';
                appendNumber(piece, hz);
            }
        }
        piece += '\n';
    }
    void appendLine(double ms, std::span<const float> levels, std::string& piece)
    {
        appendNumber(piece, ms);
        for (const std::size_t channel : channels) {
            piece += ',';
            const float level = levels[channel];
            if (!std::isnan(level)) {
                RecTool::appendLevelJson(piece, level);
            }
        }
        piece += '\n';
    }
};

}  // namespace

Response answerSweep(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "type", "at"});
    const Asked asked = askedRecording(context, parameters);
    const Timeline& timeline = *asked.timeline;
    const RecordedType type = askedSpectrum(context, timeline, parameters);
    const double at = parameters.moment("at");
    std::optional<Sweep> sweep;
    std::size_t i = timeline.fileAt(at);
    for (; i < timeline.files.size(); --i) {  // below 0 it is beyond the end
        const OverviewedFile file = overviewOf(context, timeline.files[i]);
        sweep = file.overview == nullptr ? std::nullopt : file.overview->sweepAt(type.code, at);
        if (sweep) {
            break;
        }
    }
    if (!sweep) {
        refuseUnfinished(context, timeline);
        throw Absent(Absent::Until::Ever, "Nothing was measured up to this moment.");
    }
    if (const auto before = sweep->previousMs ? std::nullopt : spectrumOf(context, timeline, i - 1, type.code)) {
        sweep->previousMs = before->lastMs;
    }
    if (const auto after = sweep->nextMs ? std::nullopt : spectrumOf(context, timeline, i + 1, type.code)) {
        sweep->nextMs = after->firstMs;
    }
    Response response;
    std::string& out = response.body;
    JsonObject object(out);
    object.members("ms", sweep->momentMs, "timeMs", sweep->record.timeMs, "file", timeline.files[i]->name);
    object.members("previousMs", sweep->previousMs.value_or(Never), "nextMs", sweep->nextMs.value_or(Never));
    RecTool::appendJson(object.member("channels"), sweep->range);
    object.list("levels", sweep->levels, [&](float level) { RecTool::appendLevelJson(out, level); });
    return response;
}

Response answerCsv(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "type", "from", "to", "low", "high"});
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedSpectrum(context, *asked.timeline, parameters);
    const auto [from, to] = parameters.moments();
    const auto [low, high] = parameters.frequencies();
    auto stream = std::make_shared<CsvStream>();
    stream->files = overviewsIn(context, *asked.timeline, {from, to}).files;
    stream->code = type.code;
    stream->time = {from, to};
    stream->nextMs = from;
    stream->lowHz = low;
    stream->highHz = high;
    refuseUnfinished(context, *asked.timeline);
    Response response;
    response.type = "text/csv";
    response.fileName = asked.timeline->id + "_" + type.keyword + ".csv";
    response.more = [stream](std::string& piece) { return stream->more(piece); };
    return response;
}

}  // namespace RecView
