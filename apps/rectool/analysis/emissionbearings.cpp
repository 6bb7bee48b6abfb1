// Putting bearings to emissions, by their time and frequency.
#include "emissionbearings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>

#include "replay/linesofbearing.h"

namespace RecTool {

namespace {

/// Finds the emissions that a channel of a direction finder shows at a moment. Its bearings come in order of time, but
/// for a few.
class EmissionsByChannel {
public:
    EmissionsByChannel(std::vector<FoundEmission>& emissions, double marginMs)
        : m_emissions(emissions), m_marginMs(marginMs)
    {
    }

    template <typename Visit>
    void visit(double hz, double widthHz, double momentMs, const Visit& visit)
    {
        constexpr double DisorderMs = 10'000;
        Channel& channel = channelAt(hz, widthHz);
        if (momentMs < channel.latestMs - DisorderMs) {
            channel.next = 0;
            channel.current.clear();
            channel.latestMs = momentMs;
        }
        channel.latestMs = std::max(channel.latestMs, momentMs);
        while (channel.next < channel.all.size() &&
               m_emissions[channel.all[channel.next]].startMs <= momentMs + m_marginMs) {
            channel.current.push_back(channel.all[channel.next++]);
        }
        std::erase_if(channel.current, [&](std::size_t i) {
            return m_emissions[i].stopMs < channel.latestMs - m_marginMs - DisorderMs;
        });
        for (const std::size_t i : channel.current) {
            FoundEmission& emission = m_emissions[i];
            if (emission.startMs <= momentMs + m_marginMs && emission.stopMs >= momentMs - m_marginMs) {
                visit(emission);
            }
        }
    }

private:
    struct Channel {
        std::vector<std::size_t> all;      // by their start
        std::vector<std::size_t> current;  // begun, and not long over
        std::size_t next = 0;              // that is to begin
        double latestMs = -std::numeric_limits<double>::infinity();
    };

    Channel& channelAt(double hz, double widthHz)
    {
        const auto [place, isNew] = m_channels.try_emplace(hz);
        for (std::size_t i = 0; isNew && i < m_emissions.size(); ++i) {
            const FrequencySpan& band = m_emissions[i].band;
            const double overlap = std::min(band.highHz, hz + widthHz / 2) - std::max(band.lowHz, hz - widthHz / 2);
            if (widthHz > 0 && band.width() > 0 ? overlap > 0 : overlap >= 0) {
                place->second.all.push_back(i);
            }
        }
        return place->second;
    }

    std::vector<FoundEmission>& m_emissions;  // by their start
    double m_marginMs;
    std::unordered_map<double, Channel> m_channels;
};

/// Whether a bearing is better than the one that an emission has. One of no known quality is the worst.
bool isBetter(const values::Bearing& bearing, const FoundEmission& emission)
{
    if (!emission.bearing) {
        return true;
    }
    return bearing.quality > emission.bearing->quality ||
           (std::isnan(emission.bearing->quality) && !std::isnan(bearing.quality));
}

void putBearing(FoundEmission& emission, const PlacedRecord& placed, const BearingTaker::Taken& taken)
{
    const std::uint64_t count = emission.bearing ? emission.bearing->count : 0;
    const TakenBearing& bearing = taken.bearing;
    if (isBetter(bearing.bearing, emission)) {
        emission.bearing = EmissionBearing{bearing.line.azimuthDeg,
                                           bearing.headingDeg.has_value(),
                                           bearing.bearing.quality,
                                           placed.momentMs,
                                           {placed.part, placed.record.position, placed.record.timeMs},
                                           taken.hasPosition ? std::optional(bearing.line.from) : std::nullopt,
                                           0};
    }
    emission.bearing->count = count + 1;
}

}  // namespace

void addBearings(Recordings& recordings, double marginMs, std::vector<FoundEmission>& emissions)
{
    std::vector<EmissionsByChannel> byChannel(recordings.tracks().size(), EmissionsByChannel(emissions, marginMs));
    AllBearings bearings(recordings, [&](const PlacedRecord& placed, const BearingTaker::Taken& taken) {
        byChannel[placed.type.track].visit(taken.bearing.frequencyHz, std::abs(channelWidthHz(taken.range)),
                                           placed.momentMs,
                                           [&](FoundEmission& emission) { putBearing(emission, placed, taken); });
    });
    recordings.walk([&](const PlacedRecord& placed) { bearings.apply(placed); });
}

}  // namespace RecTool
