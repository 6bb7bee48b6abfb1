// Deciding which channels a sweep shows on, and counting them.
#include "occupancy.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace RecTool {

namespace {

constexpr double NoChannel = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t MostBatches = 64;

}  // namespace

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

ChannelNumbers::ChannelOf channelsOfRaster(double widthHz)
{
    return [widthHz](double hz) { return std::round(hz / widthHz) * widthHz; };
}

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

Occupancy::Occupancy(ChannelNumbers::ChannelOf channelOf, const std::vector<FrequencySpan>& bands)
    : m_numbers(std::move(channelOf), MostChannels)
{
    for (const FrequencySpan& band : bands) {
        m_bands.emplace_back(band.lowHz, band.highHz);
    }
}

bool Occupancy::add(const values::ChannelRange& range, std::span<const float> levels, double momentMs, int hour,
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

void Occupancy::addSample(std::uint32_t number, bool isOn, double momentMs, int hour)
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

void Occupancy::addToBands()
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

std::vector<ChannelOccupancy> Occupancy::channels() const
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

}  // namespace RecTool
