// What "trace" shows: level against frequency, or that of one channel against time.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "leveltrace.h"
#include "making/pictureoptions.h"
#include "replay/recordings.h"
#include "replay/spectra.h"

namespace RecTool {

struct TraceOptions : PlotOptions {
    std::string at;                  ///< a time of the first recording: the sweep in force then; empty: a span
    std::vector<std::string> types;  ///< keywords or numbers; empty: the RF and the IF spectrum
    double frequencyHz = 0;          ///< of the channel that is traced against time; 0: level against frequency
    double lowHz = 0;                ///< only channels from here on
    double highHz = 0;               ///< and up to here; 0: to the last one
    bool median = false;
    std::vector<std::string> percentiles;  ///< numbers from 0 to 100
    std::string time = "offset";           ///< how times are shown; or "utc", "local"
    std::string unit = "dB";               ///< of the levels
    bool csv = false;
};

/// The levels of a spectrum's channels.
struct Trace {
    std::string device;
    std::string keyword;
    std::int32_t code = 0;
    std::uint64_t sweeps = 0;
    double firstMs = 0;  ///< moments of the first and the last sweep
    double lastMs = 0;
    std::vector<ChannelLevels> channels;
};

/// One channel over time.
struct ChannelTrace {
    struct Sample {
        double momentMs = 0;
        float level = 0;
    };
    std::string device;
    std::string keyword;
    std::int32_t code = 0;
    double hz = 0;  ///< the channel that is nearest to what was asked for
    std::vector<Sample> samples;
};

/// Asked-for percentiles in their order, the median first; from 0 to 100.
[[nodiscard]] std::vector<double> percentilesOf(const TraceOptions& options);

/// @return nothing, told, when there are more channels than can be traced
[[nodiscard]] std::optional<std::vector<Trace>> traceSpan(Recordings& recordings, const std::vector<Spectrum>& spectra,
                                                          const TraceOptions& options);
/// The sweep in force at the end of the recordings' span.
[[nodiscard]] std::vector<Trace> traceMoment(Recordings& recordings, const std::vector<Spectrum>& spectra,
                                             const TraceOptions& options);
/// Levels in the span. Those of channels that do not reach the frequency are left out.
[[nodiscard]] std::vector<ChannelTrace> traceChannel(Recordings& recordings, const std::vector<Spectrum>& spectra,
                                                     double hz);

/// Level against frequency. Each trace has a channel.
void printTraces(const TraceOptions& options, const Recordings& recordings, const std::vector<Trace>& traces);
/// One channel against time. Each trace has a sample.
void printChannelTraces(const TraceOptions& options, const Recordings& recordings,
                        const std::vector<ChannelTrace>& traces);

/// What is printed with --json.
void writeTraceJson(const TraceOptions& options, const Recordings& recordings, const std::vector<Trace>& traces,
                    std::ostream& out);

}  // namespace RecTool
