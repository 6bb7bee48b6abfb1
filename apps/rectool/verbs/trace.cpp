// The verb "trace": level against frequency at a moment or over a span, or that of one channel against time.
#include "analysis/trace.h"

#include <algorithm>
#include <optional>

#include <terminaltext/quantity.h>

#include "commandline/verb.h"
#include "plot/plot.h"
#include "plot/traceplot.h"
#include "printing/output.h"

namespace RecTool {

namespace {

constexpr double HighestPercentile = 100;

/// Whether the options go together; told if not.
bool isUsable(const TraceOptions& options)
{
    for (const std::string& percentile : options.percentiles) {
        const auto number = TerminalText::parseInUnits(percentile, {{"", 1}, {"%", 1}});
        if (!number || *number < 0 || *number > HighestPercentile) {
            complain(options.files.front(), "--percentile takes numbers from 0 to 100, not " + percentile + '.');
            return false;
        }
    }
    if (!options.at.empty() && (!options.from.empty() || !options.to.empty() || options.frequencyHz != 0)) {
        complain(options.files.front(), "--at is a moment: it does not go with --from, --to and --frequency.");
        return false;
    }
    if (options.highHz != 0 && options.highHz < options.lowHz) {
        complain(options.files.front(), "--low lies above --high.");
        return false;
    }
    return true;
}

ExitCode traceOne(const TraceOptions& options, Recordings& recordings, const std::vector<Spectrum>& spectra)
{
    std::vector<ChannelTrace> traces = traceChannel(recordings, spectra, options.frequencyHz);
    std::erase_if(traces, [](const ChannelTrace& trace) { return trace.samples.empty(); });
    if (traces.empty()) {
        return recordings.refuse("No sweep of the span has a channel at that frequency with a level.");
    }
    if (!options.output.empty()) {
        return recordings.end(drawChannelTraces(options, recordings, traces));
    }
    printChannelTraces(options, recordings, traces);
    return recordings.end(ExitCode::Fine);
}

ExitCode traceAll(const TraceOptions& options, Recordings& recordings, const std::vector<Spectrum>& spectra)
{
    auto traces = options.at.empty() ? traceSpan(recordings, spectra, options)
                                     : std::optional(traceMoment(recordings, spectra, options));
    if (!traces) {
        return recordings.refuse("There are more channels than can be traced at once: take some with --low and --high" +
                                 std::string(percentilesOf(options).empty() ? "." : ", or leave out the percentiles."));
    }
    std::erase_if(*traces, [](const Trace& trace) { return trace.channels.empty(); });
    if (traces->empty()) {
        return recordings.refuse(noSweep(options, spectra, options.lowHz, options.highHz));
    }
    if (!options.output.empty()) {
        return recordings.end(drawTraces(options, recordings, *traces));
    }
    printTraces(options, recordings, *traces);
    return recordings.end(ExitCode::Fine);
}

ExitCode trace(const TraceOptions& given)
{
    TraceOptions options = given;
    if (!isUsable(options)) {
        return ExitCode::Usage;
    }
    if (!options.at.empty()) {
        options.to = options.at;
        options.toName = "--at";
    }
    const bool isRanked = options.at.empty() && options.frequencyHz == 0 && !percentilesOf(options).empty();
    Recordings recordings(options, isRanked ? 2 : 1, options.output.empty() ? ExitCode::Fine : checkPicture(options));
    if (recordings.state() != ExitCode::Fine) {
        return recordings.state();
    }
    const auto spectra = wantedSpectra(recordings, options.types);
    if (!spectra) {
        return ExitCode::Usage;
    }
    return options.frequencyHz != 0 ? traceOne(options, recordings, *spectra) : traceAll(options, recordings, *spectra);
}

}  // namespace

void addTrace(const Syntax& program)
{
    Verb verb(program, "trace", "Show level against frequency, or that of one channel against time", trace);
    TraceOptions& options = verb.options();
    verb.time("--at", options.at, "The sweep in force at this time, instead of a span");
    verb.span("Only sweeps from this time on", "Only sweeps up to this time");
    const Option one = verb.frequency("--frequency", options.frequencyHz, "The channel there against time");
    verb.frequency("--low", options.lowHz, "Only channels from this frequency on").excludes(one);
    verb.frequency("--high", options.highHz, "Only channels up to this frequency").excludes(one);
    verb.types("The spectra of this keyword or type number; may be given several times");
    verb.flag("--median", options.median, "The median of each channel's levels, too");
    verb.eachAlone("--percentile", options.percentiles,
                   "This percentile of each channel's levels, too, such as 90; may "
                   "be given several times")
        .as("P");
    verb.timeForms();
    verb.unit();
    const Option json = verb.json();
    const Option csv = verb.flag("--csv", options.csv, "Print lines of CSV").excludes(json);
    verb.output("PICTURE", "Draw them: .png, .jpg or .pdf").excludes(json).excludes(csv);
    verb.paged();
    verb.examples(
        {"trace recording.rec --median", "trace night_1.rec night_2.rec --from \"22:13 UTC\" --percentile 95 --csv",
         "trace recording.rec --at bookmark:alarm -o alarm.png", "trace recording.rec --frequency 433.92M --time utc"},
        "Mean is that of the powers. Max at and the like tell the sweep that a figure comes from.");
}

}  // namespace RecTool
