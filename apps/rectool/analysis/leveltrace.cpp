// Summing levels up by channel: extremes, powers and, in a second pass, percentiles.
#include "leveltrace.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace RecTool {

namespace {

constexpr std::size_t RememberedRanges = 64;

/// 10^(level/10). Recorded levels are hundredths of a decibel, so that few powers are ever needed.
class Powers {
public:
    Powers()
    {
        for (std::size_t i = 0; i < m_powers.size(); ++i) {
            m_powers[i] = of(Lowest + static_cast<double>(i) / PerDb);
        }
    }
    [[nodiscard]] double operator()(float level) const
    {
        const double place = (double{level} - Lowest) * PerDb;
        const double nearest = std::round(place);
        constexpr double Same = 1e-3;  // of a hundredth: a float's own error
        const bool isKnown = nearest >= 0 && nearest < double{Count} && std::abs(place - nearest) < Same;
        return isKnown ? m_powers[static_cast<std::size_t>(nearest)] : of(double{level});
    }

private:
    static constexpr double Lowest = -250;
    static constexpr double PerDb = 100;
    static constexpr int Count = 50'000;
    static double of(double level) { return std::pow(10.0, level / 10); }

    std::vector<double> m_powers = std::vector<double>(Count);
};

double powerOf(float level)
{
    static const Powers powers;
    return powers(level);
}

}  // namespace

LevelTrace::LevelTrace(std::optional<FrequencySpan> span, const std::vector<double>& fractions) : m_span(span)
{
    for (const double fraction : fractions) {
        m_ranks.emplace_back(fraction);
    }
}

std::uint32_t LevelTrace::numberOf(double hz)
{
    if (m_span && (hz < m_span->lowHz || hz > m_span->highHz)) {
        return Outside;
    }
    const auto [place, isNew] = m_byFrequency.try_emplace(hz, static_cast<std::uint32_t>(m_sums.size()));
    if (isNew) {
        m_sums.emplace_back();
        m_sums.back().levels.hz = hz;
    }
    return place->second;
}

const std::vector<std::uint32_t>* LevelTrace::numbersOf(const values::ChannelRange& range)
{
    const auto known = std::find_if(m_recent.begin(), m_recent.end(),
                                    [&](const Numbering& numbering) { return numbering.range == range; });
    if (known != m_recent.end()) {
        m_recent.splice(m_recent.begin(), m_recent, known);
        return &m_recent.front().numbers;
    }
    const std::size_t most = m_ranks.empty() ? MostChannels : MostRankedChannels;
    Numbering numbering{range, {}};
    for (std::size_t channel = 0; channel < range.size(); ++channel) {
        numbering.numbers.push_back(numberOf(range.frequencyHz(channel)));
        if (m_sums.size() > most) {
            return nullptr;
        }
    }
    m_recent.push_front(std::move(numbering));
    m_recent.resize(std::min(m_recent.size(), RememberedRanges));
    return &m_recent.front().numbers;
}

bool LevelTrace::add(const values::ChannelRange& range, std::span<const float> levels, double momentMs)
{
    const std::vector<std::uint32_t>* numbers = numbersOf(range);
    if (numbers == nullptr) {
        return false;
    }
    bool isTaken = false;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const float level = levels[i];
        if (!std::isfinite(level) || (*numbers)[i] == Outside) {
            continue;
        }
        Sum& sum = m_sums[(*numbers)[i]];
        if (sum.levels.sweeps == 0 || level > sum.levels.highest) {
            sum.levels.highest = level;
            sum.levels.highestMs = momentMs;
        }
        if (sum.levels.sweeps == 0 || level < sum.levels.lowest) {
            sum.levels.lowest = level;
            sum.levels.lowestMs = momentMs;
        }
        sum.power += powerOf(level);
        ++sum.levels.sweeps;
        isTaken = true;
        for (LevelRanks& ranks : m_ranks) {
            ranks.count((*numbers)[i], level);
        }
    }
    if (isTaken) {
        m_firstMs = m_sweeps == 0 ? momentMs : std::min(m_firstMs, momentMs);
        m_lastMs = m_sweeps == 0 ? momentMs : std::max(m_lastMs, momentMs);
        ++m_sweeps;
    }
    return true;
}

void LevelTrace::beginRanking()
{
    for (LevelRanks& ranks : m_ranks) {
        ranks.endCounting();
    }
}

void LevelTrace::rank(const values::ChannelRange& range, std::span<const float> levels)
{
    const std::vector<std::uint32_t>* numbers = numbersOf(range);
    if (numbers == nullptr) {
        return;
    }
    for (std::size_t i = 0; i < levels.size(); ++i) {
        if (std::isfinite(levels[i]) && (*numbers)[i] != Outside) {
            for (LevelRanks& ranks : m_ranks) {
                ranks.look((*numbers)[i], levels[i]);
            }
        }
    }
}

std::vector<ChannelLevels> LevelTrace::channels() const
{
    std::vector<ChannelLevels> all;
    for (std::size_t number = 0; number < m_sums.size(); ++number) {
        const Sum& sum = m_sums[number];
        if (sum.levels.sweeps == 0) {
            continue;
        }
        ChannelLevels& channel = all.emplace_back(sum.levels);
        constexpr double Decibels = 10;
        channel.mean = Decibels * std::log10(sum.power / static_cast<double>(sum.levels.sweeps));
        for (const LevelRanks& ranks : m_ranks) {
            channel.percentiles.push_back(ranks.of(number));
        }
    }
    std::sort(all.begin(), all.end(), [](const ChannelLevels& a, const ChannelLevels& b) { return a.hz < b.hz; });
    return all;
}

}  // namespace RecTool
