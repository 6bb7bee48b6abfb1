// How often channels were occupied: samples, cycles of on and off, and revisit times, while sweeps go by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include <values/maps.h>

#include "channelnumbers.h"
#include "cycles.h"

namespace RecTool {

/// A channel that a user names: what lies within half the width of it belongs to it.
struct NamedChannel {
    double hz = 0;
    double widthHz = 0;
    std::string name;
};
/// The channel of a list that a frequency belongs to: the nearest of those that reach it.
/// @param channels by frequency
[[nodiscard]] ChannelNumbers::ChannelOf channelsOfList(const std::vector<NamedChannel>& channels);
/// The same in a raster: channels as wide as their distance, at the multiples of it.
[[nodiscard]] ChannelNumbers::ChannelOf channelsOfRaster(double widthHz);

/// One channel, over all sweeps that carry a level of it.
struct ChannelOccupancy {
    double hz = 0;
    Cycles cycles;
    std::map<int, Cycles> byHour;  ///< of the day; empty unless asked for
    double firstMs = 0;            ///< moments of the first and the last sample, since the start of the first recording
    double lastMs = 0;
    double longestMs = 0;  ///< between two samples
    /// From sample to sample in the middle (mean), 0 for a single one.
    [[nodiscard]] double revisitMs() const;
};

/// A band over time: the part of its channels that is on, sweep by sweep.
class BandOccupancy {
public:
    BandOccupancy(double lowHz, double highHz) : m_lowHz(lowHz), m_highHz(highHz) {}

    void add(double part);
    [[nodiscard]] double lowHz() const { return m_lowHz; }
    [[nodiscard]] double highHz() const { return m_highHz; }
    [[nodiscard]] std::uint64_t sweeps() const { return m_sweeps; }
    [[nodiscard]] double part() const { return m_sum / static_cast<double>(m_sweeps); }
    /// From the means of 32 to 64 stretches of as many sweeps, taken as independent (batch means).
    [[nodiscard]] Cycles::Interval interval(double confidence) const;

private:
    double m_lowHz;
    double m_highHz;
    std::uint64_t m_sweeps = 0;
    double m_sum = 0;
    std::vector<double> m_batches{0.0};  // sums of parts
    std::uint64_t m_batchSize = 1;
    std::uint64_t m_inBatch = 0;
};

/// Takes the sweeps of one type. Memory: about 250 bytes a channel, and 3,000 with hours.
class Occupancy {
public:
    static constexpr std::size_t MostChannels = 200'000;

    /// Whether a level is one of an emission. @param cell of the range
    using IsOn = std::function<bool(std::size_t cell, float level)>;

    Occupancy(ChannelNumbers::ChannelOf channelOf, const std::vector<FrequencySpan>& bands);

    /// @param hour of the day that it falls into, below 0: hours are not counted
    /// @return false when there are more channels than are taken
    bool add(const values::ChannelRange& range, std::span<const float> levels, double momentMs, int hour,
             const IsOn& isOn);

    /// By frequency.
    [[nodiscard]] std::vector<ChannelOccupancy> channels() const;
    [[nodiscard]] const std::vector<BandOccupancy>& bands() const { return m_bands; }
    [[nodiscard]] std::uint64_t sweeps() const { return m_sweeps; }

private:
    void addSample(std::uint32_t number, bool isOn, double momentMs, int hour);
    void addToBands();

    ChannelNumbers m_numbers;
    std::vector<ChannelOccupancy> m_channels;
    std::vector<BandOccupancy> m_bands;
    std::vector<signed char> m_seen;       // in this sweep: -1 not carried, 0 off, 1 on
    std::vector<std::uint32_t> m_touched;  // channels of this sweep
    std::uint64_t m_sweeps = 0;
};

}  // namespace RecTool
