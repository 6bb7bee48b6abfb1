// Walking recordings for emissions: the noise first, then the signals, and their bearings.
#include "emissions.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <unordered_map>

#include <values/recordingtext.h>

#include "rasters.h"
#include "replay/linesofbearing.h"

namespace RecTool {

namespace {

constexpr double MsOfASecond = 1000;
constexpr std::size_t MostEmissions = 250'000;

/// Which sweeps are enough to learn the noise from. A window has many more than that.
class SweepDraw {
public:
    /// @param channels of the sweep before
    bool wants(double momentMs, std::size_t textBytes, std::size_t channels)
    {
        const double window = std::floor(momentMs / NoiseFloor::UsualWindowMs);
        if (window != m_window) {
            m_window = window;
            m_usual = m_offered;
            m_offered = 0;
        }
        m_offered += static_cast<double>(textBytes);
        constexpr double EnoughBytes = 3 * 128;  // of a channel: a level has three
        const double wanted = EnoughBytes * static_cast<double>(channels);
        const double offered = std::max(m_usual, m_offered);
        constexpr std::uint32_t Multiplier = 1'664'525;  // of Knuth and Lewis
        constexpr std::uint32_t Increment = 1'013'904'223;
        m_random = m_random * Multiplier + Increment;
        return offered <= wanted || m_random < wanted / offered * std::numeric_limits<std::uint32_t>::max();
    }

private:
    double m_window = 0;
    double m_usual = 0;  // bytes that the window before offered
    double m_offered = 0;
    std::uint32_t m_random = 1;
};

/// A spectrum on its way through the passes.
struct Watched {
    Watched(const Spectrum& spectrum, std::optional<FrequencySpan> span, const ThresholdRule& threshold,
            const EmissionRules& rules, const std::function<void(const Emission&)>& found)
        : type(spectrum.type), rasters(span, threshold, rules, found)
    {
    }
    TrackType type;
    Rasters rasters;
    SweepDraw draw;
    std::size_t channels = 0;
    unsigned long long stampUs = 0;  // of the sweep before

    /// The levels of a sweep; null where the record has none, and where a file begins with the state in which the one
    /// before it ended: that is no sweep of its own.
    const LevelMap* sweep(const PlacedRecord& placed)
    {
        const LevelMap* map = placed.carriedLevels();
        if (map == nullptr) {
            return nullptr;
        }
        const bool isAgain = map->GetTimeStamp() != 0 && map->GetTimeStamp() == stampUs &&
                             values::CarriesChannelRange(placed.record.data);
        stampUs = map->GetTimeStamp();
        channels = map->size();
        return isAgain ? nullptr : map;
    }
};

EmissionRules rulesOf(const EmissionsOptions& options)
{
    constexpr double Percent = 100;
    EmissionRules rules;
    rules.gapMs = options.gapSeconds * MsOfASecond;
    rules.unseenMs = options.unseenSeconds * MsOfASecond;
    rules.apartHz = options.apartHz;
    rules.minDurationMs = options.minDurationSeconds * MsOfASecond;
    rules.minSweeps = options.minSweeps;
    rules.belowDb = options.belowDb;
    rules.partOfPower = options.percent / Percent;
    return rules;
}

ThresholdRule thresholdOf(const EmissionsOptions& options)
{
    ThresholdRule rule;
    rule.aboveFloor = static_cast<float>(options.aboveDb);
    if (!options.threshold.empty()) {
        rule.fixed = std::strtof(options.threshold.c_str(), nullptr);
    }
    return rule;
}

/// The passes over the spectra.
class Search {
public:
    Search(Recordings& recordings, const std::vector<Spectrum>& spectra, const EmissionsOptions& options)
        : m_recordings(recordings)
    {
        for (std::size_t i = 0; i < spectra.size(); ++i) {
            m_all.push_back(std::make_unique<Watched>(
                spectra[i], wantedSpan(options.lowHz, options.highHz), thresholdOf(options), rulesOf(options),
                [this, i](const Emission& emission) {
                    if (m_found.all.size() < MostEmissions) {
                        m_found.all.push_back({emission, i, std::nullopt});
                    } else {
                        m_found.problem =
                            "There are more than 250,000 emissions: raise the threshold, or leave short ones out with "
                            "--min-duration or --min-sweeps.";
                    }
                }));
        }
    }

    void learn()
    {
        m_recordings.walk([&](const PlacedRecord& placed) {
            Watched* const watched = watchedOf(placed.type);
            if (watched == nullptr || !m_found.problem.empty()) {
                return;
            }
            const std::string& text = placed.record.data;
            const bool isWanted = watched->draw.wants(placed.momentMs, text.size(), watched->channels) ||
                                  values::CarriesChannelRange(text);
            const LevelMap* map = isWanted ? watched->sweep(placed) : nullptr;
            if (map != nullptr && !m_recordings.isBefore(placed.momentMs)) {
                note(watched->rasters.learn(map->GetChannelRange(), map->GetCells(), placed.momentMs));
            }
        });
        for (const auto& watched : m_all) {
            watched->rasters.endLearning();
            watched->stampUs = 0;
        }
    }

    void find()
    {
        std::vector<StationValues> stations = stationValues(m_recordings);
        m_recordings.walk([&](const PlacedRecord& placed) {
            Watched* const watched = watchedOf(placed.type);
            if (watched == nullptr || !m_found.problem.empty()) {
                stations[placed.type.track].apply(placed.record);
                return;
            }
            const LevelMap* map = watched->sweep(placed);
            if (map == nullptr || m_recordings.isBefore(placed.momentMs)) {
                return;
            }
            SweptLevels about;
            about.momentMs = placed.momentMs;
            about.record = {placed.part, placed.record.position, placed.record.timeMs};
            about.place = stations[placed.type.track].position();
            note(watched->rasters.find(map->GetChannelRange(), map->GetCells(), about));
        });
        for (const auto& watched : m_all) {
            watched->rasters.endFinding();
            m_found.sweeps += watched->rasters.sweeps();
        }
        std::stable_sort(m_found.all.begin(), m_found.all.end(), [](const FoundEmission& a, const FoundEmission& b) {
            return a.startMs != b.startMs ? a.startMs < b.startMs : a.band.lowHz < b.band.lowHz;
        });
    }
    [[nodiscard]] FoundEmissions& found() { return m_found; }

private:
    [[nodiscard]] Watched* watchedOf(const TrackType& type)
    {
        const auto watched =
            std::find_if(m_all.begin(), m_all.end(), [&](const auto& other) { return other->type == type; });
        return watched == m_all.end() ? nullptr : watched->get();
    }
    void note(bool isTaken)
    {
        if (!isTaken) {
            m_found.problem = "There are more channels than can be watched at once: take some with --low and --high.";
        }
    }

    Recordings& m_recordings;
    std::vector<std::unique_ptr<Watched>> m_all;
    FoundEmissions m_found;
};

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

/// Walks the records once more, and gives every emission its bearing: the one with the best quality, the earliest of
/// them, of those that were taken on a channel that overlaps its band, from its first to its last sweep with the margin
/// before and behind them.
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

}  // namespace

FoundEmissions findEmissions(Recordings& recordings, const std::vector<Spectrum>& spectra,
                             const EmissionsOptions& options)
{
    recordings.planPasses((options.threshold.empty() ? 2U : 1U) + (hasBearings(recordings) ? 1U : 0U));
    Search search(recordings, spectra, options);
    if (options.threshold.empty()) {
        search.learn();
    }
    search.find();
    if (hasBearings(recordings) && !search.found().all.empty()) {
        addBearings(recordings, options.gapSeconds * MsOfASecond, search.found().all);
    }
    return std::move(search.found());
}

}  // namespace RecTool
