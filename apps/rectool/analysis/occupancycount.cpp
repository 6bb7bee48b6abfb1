// Walking recordings for the occupancy of channels.
#include "occupancycount.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

#include <QDateTime>

#include "channelnumbers.h"
#include "noisefloor.h"

namespace RecTool {

namespace {

constexpr double NoChannel = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t MostBatches = 64;

/// The channel of a list that a frequency belongs to: the nearest of those that reach it.
/// @param channels by frequency
ChannelNumbers::ChannelOf channelsOfList(const std::vector<NamedChannel>& channels)
{
    return [channels](double hz) {
        double nearest = NoChannel;
        for (const NamedChannel& channel : channels) {
            const double distance = std::abs(channel.hz - hz);
            const bool isNearer = std::isnan(nearest) || distance < std::abs(nearest - hz);
            nearest = distance <= channel.widthHz / 2 && isNearer ? channel.hz : nearest;
        }
        return nearest;
    };
}

ChannelNumbers::ChannelOf channelsOf(const OccupancyOptions& options, const std::vector<NamedChannel>& named)
{
    if (!named.empty()) {
        return channelsOfList(named);
    }
    // In a raster channels are as wide as their distance, at the multiples of it.
    return [widthHz = options.rasterHz, span = wantedSpan(options.lowHz, options.highHz)](double hz) {
        return span && !span->holds(hz) ? NoChannel : widthHz > 0 ? std::round(hz / widthHz) * widthHz : hz;
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

/// Takes the sweeps of one type. Memory: about 250 bytes a channel, and 3,000 with hours.
class Occupancy {
public:
    /// Whether a level is one of an emission. @param cell of the range
    using IsOn = std::function<bool(std::size_t cell, float level)>;

    Occupancy(ChannelNumbers::ChannelOf channelOf, const std::vector<FrequencySpan>& bands)
        : m_numbers(std::move(channelOf), MostOccupancyChannels)
    {
        for (const FrequencySpan& band : bands) {
            m_bands.emplace_back(band.lowHz, band.highHz);
        }
    }

    /// @param hour of the day that it falls into, below 0: hours are not counted
    /// @return false when there are more channels than are taken
    bool add(const values::ChannelRange& range, std::span<const float> levels, double momentMs, int hour,
             const IsOn& isOn)
    {
        const std::vector<std::uint32_t>* numbers = m_numbers.of(range);
        if (numbers == nullptr) {
            return false;
        }
        m_seen.resize(m_numbers.frequencies().size(), -1);
        m_channels.resize(m_numbers.frequencies().size());
        m_touched.clear();
        for (std::size_t cell = 0; cell < levels.size(); ++cell) {
            const std::uint32_t number = (*numbers)[cell];
            if (number == ChannelNumbers::Outside || !std::isfinite(levels[cell])) {
                continue;
            }
            signed char& seen = m_seen[number];
            if (seen < 0) {
                m_touched.push_back(number);
                seen = 0;
            }
            seen = static_cast<signed char>(seen == 1 || isOn(cell, levels[cell]) ? 1 : 0);
        }
        for (const std::uint32_t number : m_touched) {
            addSample(number, m_seen[number] == 1, momentMs, hour);
        }
        addToBands();
        for (const std::uint32_t number : m_touched) {
            m_seen[number] = -1;
        }
        m_sweeps += m_touched.empty() ? 0U : 1U;
        return true;
    }

    /// By frequency.
    [[nodiscard]] std::vector<ChannelOccupancy> channels() const
    {
        std::vector<ChannelOccupancy> all;
        for (std::size_t number = 0; number < m_channels.size(); ++number) {
            if (m_channels[number].cycles.samples() > 0) {
                all.push_back(m_channels[number]);
                all.back().hz = m_numbers.frequencies()[number];
            }
        }
        std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.hz < b.hz; });
        return all;
    }
    [[nodiscard]] const std::vector<BandOccupancy>& bands() const { return m_bands; }
    [[nodiscard]] std::uint64_t sweeps() const { return m_sweeps; }

private:
    void addSample(std::uint32_t number, bool isOn, double momentMs, int hour)
    {
        ChannelOccupancy& channel = m_channels[number];
        if (channel.cycles.samples() == 0) {
            channel.firstMs = momentMs;
            channel.lastMs = momentMs;
        }
        channel.longestMs = std::max(channel.longestMs, momentMs - channel.lastMs);
        channel.lastMs = std::max(channel.lastMs, momentMs);
        channel.cycles.add(isOn);
        if (hour >= 0) {
            channel.byHour[hour].add(isOn);
        }
    }
    void addToBands()
    {
        for (BandOccupancy& band : m_bands) {
            std::size_t all = 0;
            std::size_t on = 0;
            for (const std::uint32_t number : m_touched) {
                const double hz = m_numbers.frequencies()[number];
                const bool isInside = hz >= band.lowHz() && hz <= band.highHz();
                all += isInside ? 1U : 0U;
                on += isInside && m_seen[number] == 1 ? 1U : 0U;
            }
            if (all > 0) {
                band.add(static_cast<double>(on) / static_cast<double>(all));
            }
        }
    }

    ChannelNumbers m_numbers;
    std::vector<ChannelOccupancy> m_channels;
    std::vector<BandOccupancy> m_bands;
    std::vector<signed char> m_seen;       // in this sweep: -1 not carried, 0 off, 1 on
    std::vector<std::uint32_t> m_touched;  // channels of this sweep
    std::uint64_t m_sweeps = 0;
};

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
    ChannelNumbers m_cells{std::optional<FrequencySpan>(), MostOccupancyChannels};
    NoiseFloor m_floor;
};

}  // namespace

double ChannelOccupancy::revisitMs() const
{
    return cycles.samples() < 2 ? 0 : (lastMs - firstMs) / static_cast<double>(cycles.samples() - 1);
}

void BandOccupancy::add(double part)
{
    if (m_inBatch == m_batchSize) {
        if (m_batches.size() == MostBatches) {
            for (std::size_t i = 0; i < MostBatches / 2; ++i) {
                m_batches[i] = m_batches[2 * i] + m_batches[2 * i + 1];
            }
            m_batches.resize(MostBatches / 2);
            m_batchSize *= 2;
        }
        m_batches.push_back(0);
        m_inBatch = 0;
    }
    m_batches.back() += part;
    ++m_inBatch;
    m_sum += part;
    ++m_sweeps;
}

Cycles::Interval BandOccupancy::interval(double confidence) const
{
    const std::size_t whole = m_inBatch == m_batchSize ? m_batches.size() : m_batches.size() - 1;
    if (whole < 2) {
        return {};
    }
    const auto size = static_cast<double>(m_batchSize);
    const auto count = static_cast<double>(whole);
    double sum = 0;
    double squares = 0;
    for (std::size_t i = 0; i < whole; ++i) {
        sum += m_batches[i] / size;
        squares += m_batches[i] / size * (m_batches[i] / size);
    }
    const double variance = std::max(squares - sum * sum / count, 0.0) / (count - 1) / count;
    const double reach = studentWithin(confidence, whole - 1) * std::sqrt(variance);
    return {std::max(part() - reach, 0.0), std::min(part() + reach, 1.0)};
}

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
