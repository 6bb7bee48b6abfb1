// Walking recordings for the occupancy of channels.
#include "occupancycount.h"

#include <algorithm>
#include <limits>

#include <QDateTime>

#include "noisefloor.h"

namespace RecTool {

namespace {

ChannelNumbers::ChannelOf channelsOf(const OccupancyOptions& options, const std::vector<NamedChannel>& named)
{
    if (!named.empty()) {
        return channelsOfList(named);
    }
    const ChannelNumbers::ChannelOf cells =
        options.rasterHz > 0 ? channelsOfRaster(options.rasterHz) : [](double hz) { return hz; };
    return [cells, span = wantedSpan(options.lowHz, options.highHz)](double hz) {
        return span && !span->holds(hz) ? std::numeric_limits<double>::quiet_NaN() : cells(hz);
    };
}

/// The hour of the day, or below 0 where nobody asks for it.
int hourOf(const OccupancyOptions& options, std::uint64_t startMs, double momentMs)
{
    if (!options.byHour) {
        return -1;
    }
    const auto ms = static_cast<qint64>(startMs) + static_cast<qint64>(momentMs);
    const bool isLocal = options.time == "local";
    return QDateTime::fromMSecsSinceEpoch(ms, isLocal ? Qt::LocalTime : Qt::UTC).time().hour();
}

/// The occupancy of one type, in one pass or, with a noise floor, in two.
class Counting {
public:
    Counting(const OccupancyOptions& options, const ChannelNumbers::ChannelOf& channelOf,
             const std::vector<FrequencySpan>& bands)
        : m_options(options), m_occupancy(channelOf, bands)
    {
    }

    [[nodiscard]] bool learn(const LevelMap& map, double momentMs)
    {
        const std::vector<std::uint32_t>* cells = m_cells.of(map.GetChannelRange());
        if (cells != nullptr) {
            m_floor.add(m_cells.frequencies(), *cells, map.GetCells(), momentMs);
        }
        return cells != nullptr;
    }
    void endLearning() { m_floor.end(m_cells.frequencies()); }
    [[nodiscard]] bool count(const LevelMap& map, double momentMs, int hour)
    {
        if (m_options.hasThreshold) {
            const auto threshold = static_cast<float>(m_options.thresholdDb);
            return m_occupancy.add(map.GetChannelRange(), map.GetCells(), momentMs, hour,
                                   [threshold](std::size_t /*cell*/, float level) { return level >= threshold; });
        }
        const std::vector<std::uint32_t>& cells = *m_cells.of(map.GetChannelRange());
        const std::span<const float> floors = m_floor.at(momentMs);
        const auto above = static_cast<float>(m_options.aboveDb);
        return m_occupancy.add(map.GetChannelRange(), map.GetCells(), momentMs, hour,
                               [&](std::size_t cell, float level) { return level >= floors[cells[cell]] + above; });
    }
    [[nodiscard]] const Occupancy& occupancy() const { return m_occupancy; }

private:
    const OccupancyOptions& m_options;
    Occupancy m_occupancy;
    ChannelNumbers m_cells{std::optional<FrequencySpan>(), Occupancy::MostChannels};
    NoiseFloor m_floor;
};

}  // namespace

std::optional<std::vector<TypeOccupancy>> countOccupancy(const OccupancyOptions& options, Recordings& recordings,
                                                         const std::vector<Spectrum>& spectra,
                                                         const std::vector<NamedChannel>& names,
                                                         const std::vector<FrequencySpan>& bands)
{
    std::vector<Counting> all;
    for (std::size_t i = 0; i < spectra.size(); ++i) {
        all.emplace_back(options, channelsOf(options, names), bands);
    }
    const auto learn = [&](std::size_t i, const LevelMap& map, double momentMs) { return all[i].learn(map, momentMs); };
    const auto count = [&](std::size_t i, const LevelMap& map, double momentMs) {
        return all[i].count(map, momentMs, hourOf(options, recordings.startMs(), momentMs));
    };
    if (!options.hasThreshold) {
        if (!walkSweeps(recordings, spectra, learn)) {
            return std::nullopt;
        }
        std::for_each(all.begin(), all.end(), [](Counting& counting) { counting.endLearning(); });
    }
    if (!walkSweeps(recordings, spectra, count)) {
        return std::nullopt;
    }
    std::vector<TypeOccupancy> types;
    for (std::size_t i = 0; i < spectra.size(); ++i) {
        const Occupancy& counted = all[i].occupancy();
        if (counted.sweeps() > 0) {
            types.push_back({recordings.tracks()[spectra[i].type.track].device, spectra[i].keyword,
                             spectra[i].type.code, counted.sweeps(), counted.channels(), counted.bands()});
        }
    }
    return types;
}

}  // namespace RecTool
