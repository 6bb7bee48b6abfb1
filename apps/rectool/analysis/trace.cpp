// Walking recordings for traces.
#include "trace.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "printing/output.h"

namespace RecTool {

namespace {

constexpr double Percent = 100;

Trace namedTrace(const Recordings& recordings, const Spectrum& spectrum)
{
    return {recordings.tracks()[spectrum.type.track].device, spectrum.keyword, spectrum.type.code, 0, 0, 0, {}};
}

/// The sweep that a type shows now.
struct Shown {
    values::ChannelRange range;
    std::vector<float> levels;
    double momentMs = 0;
};

}  // namespace

std::vector<double> percentilesOf(const TraceOptions& options)
{
    std::vector<double> all;
    if (options.median) {
        all.push_back(Percent / 2);
    }
    for (const std::string& percentile : options.percentiles) {
        all.push_back(std::strtod(percentile.c_str(), nullptr));
    }
    return all;
}

std::optional<std::vector<Trace>> traceSpan(Recordings& recordings, const std::vector<Spectrum>& spectra,
                                            const TraceOptions& options)
{
    std::vector<double> fractions = percentilesOf(options);
    std::for_each(fractions.begin(), fractions.end(), [](double& fraction) { fraction /= Percent; });
    std::vector<LevelTrace> all(spectra.size(), LevelTrace(wantedSpan(options.lowHz, options.highHz), fractions));
    const auto add = [&](std::size_t i, const LevelMap& map, double momentMs) {
        return all[i].add(map.GetChannelRange(), map.GetCells(), momentMs);
    };
    if (!walkSweeps(recordings, spectra, add)) {
        return std::nullopt;
    }
    if (!fractions.empty()) {
        std::for_each(all.begin(), all.end(), [](LevelTrace& trace) { trace.beginRanking(); });
        walkSweeps(recordings, spectra, [&](std::size_t i, const LevelMap& map, double /*momentMs*/) {
            all[i].rank(map.GetChannelRange(), map.GetCells());
            return true;
        });
    }
    std::vector<Trace> traces;
    for (std::size_t i = 0; i < spectra.size(); ++i) {
        Trace trace = namedTrace(recordings, spectra[i]);
        trace.sweeps = all[i].sweeps();
        trace.firstMs = all[i].firstMs();
        trace.lastMs = all[i].lastMs();
        trace.channels = all[i].channels();
        traces.push_back(std::move(trace));
    }
    return traces;
}

std::vector<Trace> traceMoment(Recordings& recordings, const std::vector<Spectrum>& spectra,
                               const TraceOptions& options)
{
    std::vector<Shown> shown(spectra.size());
    recordings.walk([&](const PlacedRecord& placed) {
        for (std::size_t i = 0; i < spectra.size(); ++i) {
            const LevelMap* map = placed.type == spectra[i].type ? placed.levels() : nullptr;
            if (map != nullptr) {
                shown[i].range = map->GetChannelRange();
                shown[i].levels.assign(map->GetCells().begin(), map->GetCells().end());
                shown[i].momentMs = placed.momentMs;
            }
        }
    });
    std::vector<Trace> traces;
    for (std::size_t i = 0; i < spectra.size(); ++i) {
        LevelTrace sweep(wantedSpan(options.lowHz, options.highHz), {});
        Trace trace = namedTrace(recordings, spectra[i]);
        if (sweep.add(shown[i].range, shown[i].levels, shown[i].momentMs)) {
            trace.sweeps = sweep.sweeps();
            trace.firstMs = trace.lastMs = shown[i].momentMs;
            trace.channels = sweep.channels();
        }
        traces.push_back(std::move(trace));
    }
    return traces;
}

std::vector<ChannelTrace> traceChannel(Recordings& recordings, const std::vector<Spectrum>& spectra, double hz)
{
    std::vector<ChannelTrace> traces;
    traces.reserve(spectra.size());
    for (const Spectrum& spectrum : spectra) {
        traces.push_back(
            {recordings.tracks()[spectrum.type.track].device, spectrum.keyword, spectrum.type.code, hz, {}});
    }
    walkSweeps(recordings, spectra, [&](std::size_t i, const LevelMap& map, double momentMs) {
        const auto channel = channelAt(map.GetChannelRange(), hz);
        if (channel && std::isfinite(map.GetCells()[*channel])) {
            traces[i].hz = map.GetChannelRange().frequencyHz(*channel);
            traces[i].samples.push_back({momentMs, map.GetCells()[*channel]});
        }
        return true;
    });
    return traces;
}

}  // namespace RecTool
