// Following stretches of channels from sweep to sweep.
#include "emissiontracker.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "powers.h"

namespace RecTool {

namespace {

/// Where so much of the power lies before, going from channel to channel. @param ahead 1 for upwards, -1 for downwards
template <typename Iterator>
double edgeBehind(Iterator begin, Iterator end, double power, double widthHz, double ahead)
{
    for (Iterator channel = begin; channel != end; ++channel) {
        if (channel->power > power) {
            return channel->hz + ahead * widthHz * (power / channel->power - 0.5);
        }
        power -= channel->power;
    }
    return std::prev(end)->hz;  // all of them are nothing
}

constexpr double Rounding = 1e-6;  // of a channel's width

double distance(const FrequencySpan& band, double hz)
{
    return std::max({band.lowHz - hz, hz - band.highHz, 0.0});
}

/// Adds the powers of channels, ascending, to those that are there.
void addPowers(std::vector<ChannelPower>& spectrum, const std::vector<std::size_t>& channels, const SweptLevels& sweep)
{
    auto place = std::lower_bound(spectrum.begin(), spectrum.end(), sweep.hz[channels.front()],
                                  [](const ChannelPower& channel, double hz) { return channel.hz < hz; });
    for (const std::size_t channel : channels) {
        const double hz = sweep.hz[channel];
        while (place != spectrum.end() && place->hz < hz) {
            ++place;
        }
        if (place == spectrum.end() || place->hz != hz) {
            place = spectrum.insert(place, {hz, 0});
        }
        place->power += powerOf(sweep.levels[channel]);
        ++place;
    }
}

}  // namespace

FrequencySpan bandOfPower(const std::vector<ChannelPower>& channels, double widthHz, double part)
{
    double all = 0;
    for (const ChannelPower& channel : channels) {
        all += channel.power;
    }
    const double outside = all * (1 - part) / 2;
    return {edgeBehind(channels.begin(), channels.end(), outside, widthHz, 1),
            edgeBehind(channels.rbegin(), channels.rend(), outside, widthHz, -1)};
}

FrequencySpan bandWithin(const std::vector<ChannelPower>& channels, double widthHz, double belowDb)
{
    const auto strongest = std::max_element(channels.begin(), channels.end(),
                                            [](const auto& a, const auto& b) { return a.power < b.power; });
    constexpr double Rounded = 1 - 1e-9;  // powers of ten come out a bit differently on each system
    const double least = strongest->power * powerOf(static_cast<float>(-belowDb)) * Rounded;
    const auto isIn = [least](const ChannelPower& channel) { return channel.power >= least; };
    return {std::find_if(channels.begin(), channels.end(), isIn)->hz - widthHz / 2,
            std::find_if(channels.rbegin(), channels.rend(), isIn)->hz + widthHz / 2};
}

const FrequencySpan& EmissionTracker::Open::expected() const
{
    constexpr double Sudden = 4;
    return before.width() > 0 && now.width() > Sudden * before.width() ? before : now;
}

EmissionTracker::EmissionTracker(const EmissionRules& rules, double widthHz, std::function<void(const Emission&)> ended)
    : m_rules(rules), m_widthHz(widthHz), m_ended(std::move(ended))
{
    if (m_rules.apartHz == 0) {
        m_rules.apartHz = 2 * widthHz;
    }
}

void EmissionTracker::add(const SweptLevels& sweep)
{
    endOld(sweep.momentMs);
    sortOpen();
    for (const Stretch& stretch : stretches(sweep)) {
        assign(stretch, sweep);
    }
    for (const auto& open : m_open) {
        if (!open->taken.empty()) {
            take(*open, sweep);
        } else if (!open->isOff && isMeasured(*open, sweep)) {
            open->isOff = true;
        }
    }
    std::move(m_begun.begin(), m_begun.end(), std::back_inserter(m_open));
    m_begun.clear();
}

void EmissionTracker::end()
{
    endOld(std::numeric_limits<double>::infinity());
}

void EmissionTracker::endOld(double momentMs)
{
    const auto ended = std::stable_partition(m_open.begin(), m_open.end(), [&](const auto& open) {
        const double longest = open->isOff ? m_rules.gapMs : std::max(m_rules.gapMs, m_rules.unseenMs);
        return momentMs - open->emission.stopMs <= longest;
    });
    std::for_each(ended, m_open.end(), [this](const auto& open) { close(*open); });
    m_open.erase(ended, m_open.end());
}

void EmissionTracker::sortOpen()
{
    std::stable_sort(m_open.begin(), m_open.end(),
                     [](const auto& a, const auto& b) { return a->expected().lowHz < b->expected().lowHz; });
    m_highest.clear();
    for (const auto& open : m_open) {
        const double high = open->expected().highHz;
        m_highest.push_back(m_highest.empty() ? high : std::max(m_highest.back(), high));
    }
}

std::vector<EmissionTracker::Stretch> EmissionTracker::stretches(const SweptLevels& sweep)
{
    m_on.clear();
    for (std::size_t channel = 0; channel < sweep.levels.size(); ++channel) {
        if (sweep.levels[channel] > sweep.thresholds[channel]) {
            m_on.push_back(channel);
        }
    }
    std::vector<Stretch> all;
    const double apart = m_rules.apartHz + m_widthHz * Rounding;
    for (std::size_t i = 0; i < m_on.size(); ++i) {
        const double hz = sweep.hz[m_on[i]];
        if (i == 0 || hz - sweep.hz[m_on[i - 1]] > apart) {
            all.push_back({i, i, {hz - m_widthHz / 2, hz}});
        }
        all.back().end = i + 1;
        all.back().band.highHz = hz + m_widthHz / 2;
    }
    return all;
}

bool EmissionTracker::goesOn(const Stretch& stretch, const Open& open) const
{
    const FrequencySpan& band = open.expected();
    const double overlap =
        std::min(stretch.band.highHz, band.highHz + m_widthHz) - std::max(stretch.band.lowHz, band.lowHz - m_widthHz);
    return overlap >= std::min(stretch.band.width(), band.width()) / 2 - m_widthHz * Rounding;
}

void EmissionTracker::assign(const Stretch& stretch, const SweptLevels& sweep)
{
    m_candidates.clear();
    const auto behind = std::upper_bound(m_open.begin(), m_open.end(), stretch.band.highHz + m_widthHz,
                                         [](double hz, const auto& open) { return hz < open->expected().lowHz; });
    for (auto i = static_cast<std::size_t>(behind - m_open.begin()); i-- > 0;) {
        if (m_highest[i] < stretch.band.lowHz - m_widthHz * (1 + Rounding)) {
            break;
        }
        if (goesOn(stretch, *m_open[i])) {
            m_candidates.push_back(m_open[i].get());
        }
    }
    if (m_candidates.empty()) {
        auto open = std::make_unique<Open>();
        open->taken.assign(m_on.begin() + static_cast<std::ptrdiff_t>(stretch.begin),
                           m_on.begin() + static_cast<std::ptrdiff_t>(stretch.end));
        take(*open, sweep);
        m_begun.push_back(std::move(open));
        return;
    }
    share(stretch, sweep);
}

void EmissionTracker::share(const Stretch& stretch, const SweptLevels& sweep)
{
    std::size_t nearest = m_candidates.size() - 1;  // they stand in descending order
    for (std::size_t i = stretch.begin; i < stretch.end; ++i) {
        const double hz = sweep.hz[m_on[i]];
        while (nearest > 0 &&
               distance(m_candidates[nearest - 1]->expected(), hz) < distance(m_candidates[nearest]->expected(), hz)) {
            --nearest;
        }
        m_candidates[nearest]->taken.push_back(m_on[i]);
    }
}

void EmissionTracker::take(Open& open, const SweptLevels& sweep) const
{
    Emission& emission = open.emission;
    const std::size_t strongest =
        *std::max_element(open.taken.begin(), open.taken.end(),
                          [&](std::size_t a, std::size_t b) { return sweep.levels[a] < sweep.levels[b]; });
    const float level = sweep.levels[strongest];
    if (emission.sweeps == 0) {
        emission.first = sweep.record;
        emission.startMs = emission.stopMs = sweep.momentMs;
    }
    if (emission.sweeps == 0 || level > emission.highest) {
        emission.highest = level;
        emission.highestMs = sweep.momentMs;
        emission.strongest = sweep.record;
        emission.place = sweep.place;
    }
    emission.startMs = std::min(emission.startMs, sweep.momentMs);
    emission.stopMs = std::max(emission.stopMs, sweep.momentMs);
    emission.last = sweep.record;
    const FrequencySpan band{sweep.hz[open.taken.front()] - m_widthHz / 2, sweep.hz[open.taken.back()] + m_widthHz / 2};
    open.before = emission.sweeps == 0 ? band : open.now;
    open.now = band;
    ++emission.sweeps;
    open.power += powerOf(level);
    open.isOff = false;
    addPowers(open.spectrum, open.taken, sweep);
    open.taken.clear();
}

/// Whether a sweep has a level between the edges.
bool EmissionTracker::isMeasured(const Open& open, const SweptLevels& sweep)
{
    const FrequencySpan& band = open.expected();
    auto channel =
        static_cast<std::size_t>(std::lower_bound(sweep.hz.begin(), sweep.hz.end(), band.lowHz) - sweep.hz.begin());
    while (channel < sweep.hz.size() && sweep.hz[channel] <= band.highHz) {
        if (std::isfinite(sweep.levels[channel++])) {
            return true;
        }
    }
    return false;
}

void EmissionTracker::close(Open& open) const
{
    Emission& emission = open.emission;
    if (emission.stopMs - emission.startMs < m_rules.minDurationMs || emission.sweeps < m_rules.minSweeps) {
        return;
    }
    emission.mean = levelOf(open.power / static_cast<double>(emission.sweeps));
    emission.band = m_rules.belowDb > 0 ? bandWithin(open.spectrum, m_widthHz, m_rules.belowDb)
                                        : bandOfPower(open.spectrum, m_widthHz, m_rules.partOfPower);
    m_ended(emission);
}

}  // namespace RecTool
