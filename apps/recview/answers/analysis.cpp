// The answers to /api/trace, /api/emissions and /api/occupancy: what rectool's verbs of these names say with --json.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <mutex>
#include <sstream>
#include <string>

#include "context.h"
#include "jsontext.h"
#include "rectool/analysis/emissions.h"
#include "rectool/analysis/occupancycount.h"
#include "rectool/analysis/trace.h"
#include "rectool/printing/output.h"
#include "rectool/printing/text.h"

namespace RecView {

using RecTool::Recordings;
using Spectra = std::vector<RecTool::Spectrum>;

namespace {

constexpr std::size_t MostChannels = 4096;
constexpr std::size_t MostEmissions = 2000;

/// Takes recordings, span, channels and spectrum of a request over into a verb's options.
template <typename Options>
Options optionsOf(const Context& context, const Parameters& parameters)
{
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedSpectrum(context, *asked.timeline, parameters);
    const auto [from, to] = parameters.stretch();
    const auto [low, high] = parameters.band(type.lowHz, type.highHz);
    Options options;
    double startMs = 0;
    for (const FilePointer& file : asked.timeline->files) {
        const bool reaches = static_cast<double>(file->startMs) <= to && static_cast<double>(file->endMs) >= from;
        if (reaches && !file->live) {
            startMs = options.files.empty() ? static_cast<double>(file->startMs) : startMs;
            options.files.push_back(file->path);
            RecTool::setShownName(file->path, file->name);
        }
    }
    if (options.files.empty()) {
        throw Absent(Absent::Until::Ever, asked.timeline->isLive()
                                              ? "What is still being recorded can be worked out when it is closed."
                                              : "Nothing was recorded in this span.");
    }
    options.from = std::to_string(std::llround(std::max(0.0, std::floor(from - startMs))));
    options.to = std::to_string(std::llround(std::max(0.0, std::ceil(to - startMs))));
    options.types = {std::to_string(type.code)};
    options.lowHz = std::max(low, 0.0);
    options.highHz = std::max(high, 0.0);
    options.json = true;
    return options;
}

/// A number of decibels or hertz.
double given(const Parameters& parameters, const std::string& name, double otherwise, double least, double most)
{
    const double number = parameters.has(name) ? parameters.frequency(name) : otherwise;
    if (!(number >= least && number <= most)) {
        throw Refusal(400, "The parameter \"" + name + "\" is out of its range.");
    }
    return number;
}

struct Worked {
    std::string answer;  ///< what rectool prints with --json
    std::size_t leftOut = 0;
};

std::size_t checkedChannels(std::size_t channels)
{
    if (channels > MostChannels) {
        throw Absent(Absent::Until::Ever, "There are " + RecTool::grouped(channels) + " channels: zoom in to at most " +
                                              RecTool::grouped(MostChannels) + '.');
    }
    return channels;
}

/// Walks recordings for an answer: one at a time, so that others find a worker for their questions, and not for long.
template <typename Options>
Response workedOut(const Request& request, const Options& options, std::size_t passes,
                   const std::function<Worked(Recordings&, const Spectra&)>& work)
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::seconds Longest{30};
    static std::mutex onlyOne;
    const std::unique_lock lock(onlyOne, std::try_to_lock);
    if (!lock.owns_lock()) {
        throw Absent(Absent::Until::Soon, "Something else is being worked out; ask again in a moment.");
    }
    const RecTool::Complaints complaints;
    Recordings recordings(options, passes);
    const auto spectra = recordings.state() == RecTool::ExitCode::Fine
                             ? RecTool::wantedSpectra(recordings, options.types)
                             : std::optional<Spectra>();
    if (!spectra) {
        throw Refusal(503, complaints.text());
    }
    const Clock::time_point end = Clock::now() + Longest;
    recordings.stopWhen([&] { return Clock::now() > end || (request.isGone && request.isGone()); });
    try {
        const Worked worked = work(recordings, *spectra);
        Response response;
        {
            JsonObject object(response.body);
            object.members("leftOut", worked.leftOut);
            object.member("answer") += worked.answer;
        }
        return response;
    } catch (const Recordings::Stopped&) {
        throw Absent(Absent::Until::Ever, "This takes longer than 30 seconds: look at less time, or ask rectool.");
    }
}

/// The strongest ones, in their order.
std::size_t keepStrongest(std::vector<RecTool::FoundEmission>& all)
{
    if (all.size() <= MostEmissions) {
        return 0;
    }
    std::vector<float> highest;
    std::transform(all.begin(), all.end(), std::back_inserter(highest),
                   [](const RecTool::FoundEmission& emission) { return static_cast<float>(emission.highest); });
    const auto last = highest.begin() + static_cast<std::ptrdiff_t>(MostEmissions);
    std::nth_element(highest.begin(), last, highest.end(), std::greater<>());
    const std::size_t before = all.size();
    std::erase_if(all, [&](const RecTool::FoundEmission& emission) { return emission.highest <= double{*last}; });
    return before - all.size();
}

}  // namespace

Response answerTrace(const Context& context, const Request& request)
{
    const Parameters parameters(request, {"recording", "type", "from", "to", "low", "high", "median"});
    auto options = optionsOf<RecTool::TraceOptions>(context, parameters);
    options.median = parameters.flag("median");
    return workedOut(request, options, options.median ? 2 : 1, [&](Recordings& recordings, const Spectra& spectra) {
        const auto traces = RecTool::traceSpan(recordings, spectra, options);
        if (!traces) {
            throw Absent(Absent::Until::Ever, "There are too many channels: zoom in.");
        }
        std::size_t channels = 0;
        for (const RecTool::Trace& trace : *traces) {
            channels += trace.channels.size();
        }
        checkedChannels(channels);
        std::ostringstream out;
        RecTool::writeTraceJson(options, recordings, *traces, out);
        return Worked{out.str()};
    });
}

Response answerEmissions(const Context& context, const Request& request)
{
    constexpr double MostDb = 1000;
    const Parameters parameters(request, {"recording", "type", "from", "to", "low", "high", "above"});
    auto options = optionsOf<RecTool::EmissionsOptions>(context, parameters);
    options.aboveDb = given(parameters, "above", options.aboveDb, 0, MostDb);
    return workedOut(request, options, 2, [&](Recordings& recordings, const Spectra& spectra) {
        RecTool::FoundEmissions found = RecTool::findEmissions(recordings, spectra, options);
        if (!found.problem.empty()) {
            throw Absent(Absent::Until::Ever, found.problem);
        }
        const std::size_t leftOut = keepStrongest(found.all);
        std::ostringstream out;
        RecTool::writeEmissionsJson(options, recordings, spectra, found, out);
        return Worked{out.str(), leftOut};
    });
}

Response answerOccupancy(const Context& context, const Request& request)
{
    constexpr double MostDb = 1000;
    constexpr double MostHz = 1e12;
    const Parameters parameters(request, {"recording", "type", "from", "to", "low", "high", "above", "raster"});
    auto options = optionsOf<RecTool::OccupancyOptions>(context, parameters);
    options.aboveDb = given(parameters, "above", options.aboveDb, 0, MostDb);
    options.rasterHz = given(parameters, "raster", 0, 0, MostHz);
    return workedOut(request, options, 2, [&](Recordings& recordings, const Spectra& spectra) {
        const auto types = RecTool::countOccupancy(options, recordings, spectra, {}, {});
        std::size_t channels = types ? 0 : RecTool::MostOccupancyChannels;
        for (const RecTool::TypeOccupancy& type : types.value_or(std::vector<RecTool::TypeOccupancy>())) {
            channels += type.channels.size();
        }
        checkedChannels(channels);
        return Worked{RecTool::occupancyJson(options, recordings, *types, {}).dump()};
    });
}

}  // namespace RecView
