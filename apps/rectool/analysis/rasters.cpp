// Putting sweeps in order of frequency, with their thresholds beside them.
#include "rasters.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace RecTool {

Rasters::Rasters(std::optional<FrequencySpan> span, const ThresholdRule& threshold, const EmissionRules& rules,
                 std::function<void(const Emission&)> found)
    : m_span(span), m_threshold(threshold), m_rules(rules), m_found(std::move(found))
{
}

Rasters::Raster* Rasters::rasterOf(const values::ChannelRange& range)
{
    const double widthHz = std::abs(channelWidthHz(range));
    const auto known = m_rasters.find(widthHz);
    if (known != m_rasters.end()) {
        return &known->second;
    }
    if (m_rasters.size() == MostWidths) {
        return nullptr;
    }
    return &m_rasters.try_emplace(widthHz, m_span, m_rules, widthHz, m_found).first->second;
}

const std::vector<std::uint32_t>* Rasters::numbersOf(Raster& raster, const values::ChannelRange& range)
{
    m_channels -= raster.numbers.frequencies().size();
    const std::vector<std::uint32_t>* const numbers = raster.numbers.of(range);
    m_channels += raster.numbers.frequencies().size();
    return m_channels > MostChannels ? nullptr : numbers;
}

bool Rasters::learn(const values::ChannelRange& range, std::span<const float> levels, double momentMs)
{
    Raster* const raster = rasterOf(range);
    const std::vector<std::uint32_t>* const numbers = raster == nullptr ? nullptr : numbersOf(*raster, range);
    if (numbers == nullptr) {
        return false;
    }
    raster->floor.add(raster->numbers.frequencies(), *numbers, levels, momentMs);
    return true;
}

void Rasters::endLearning()
{
    for (auto& [width, raster] : m_rasters) {
        raster.floor.end(raster.numbers.frequencies());
    }
}

Rasters::Layout* Rasters::layoutOf(Raster& raster, const values::ChannelRange& range)
{
    constexpr std::size_t Remembered = 64;  // a scanning receiver's
    constexpr std::size_t MostRemembered = 1'000'000;
    const auto known = std::find_if(raster.layouts.begin(), raster.layouts.end(),
                                    [&](const Layout& layout) { return layout.range == range; });
    if (known != raster.layouts.end()) {
        raster.layouts.splice(raster.layouts.begin(), raster.layouts, known);
        return &raster.layouts.front();
    }
    const std::vector<std::uint32_t>* const numbers = numbersOf(raster, range);
    if (numbers == nullptr) {
        return nullptr;
    }
    Layout layout;
    layout.range = range;
    layout.order = byFrequency(range);
    std::erase_if(layout.order, [&](std::size_t channel) { return (*numbers)[channel] == ChannelNumbers::Outside; });
    const auto hz = [&](std::size_t channel) { return range.frequencyHz(channel); };
    const auto last = std::unique(layout.order.begin(), layout.order.end(),
                                  [&](std::size_t a, std::size_t b) { return hz(a) == hz(b); });
    layout.order.erase(last, layout.order.end());
    for (std::size_t i = 0; i < layout.order.size(); ++i) {
        layout.hz.push_back(hz(layout.order[i]));
        layout.numbers.push_back((*numbers)[layout.order[i]]);
        layout.isPlain = (i == 0 || layout.isPlain) && layout.order[i] == i;
    }
    raster.layouts.push_front(std::move(layout));
    std::size_t channels = 0;
    const auto tooMuch = std::find_if(std::next(raster.layouts.begin()), raster.layouts.end(), [&](const Layout& old) {
        channels += old.hz.size();
        return channels > MostRemembered;
    });
    raster.layouts.erase(tooMuch, raster.layouts.end());
    raster.layouts.resize(std::min(raster.layouts.size(), Remembered));
    return &raster.layouts.front();
}

void Rasters::setThresholds(const Raster& raster, Layout& layout, double momentMs) const
{
    if (m_threshold.fixed) {
        layout.thresholds.resize(layout.hz.size(), *m_threshold.fixed);
        return;
    }
    const std::span<const float> floors = raster.floor.at(momentMs);
    if (layout.floors == floors.data() && layout.thresholds.size() == layout.hz.size()) {
        return;
    }
    layout.floors = floors.data();
    layout.thresholds.clear();
    for (const std::uint32_t number : layout.numbers) {
        // A channel whose floor nobody knows is never on.
        layout.thresholds.push_back(number < floors.size() ? floors[number] + m_threshold.aboveFloor
                                                           : std::numeric_limits<float>::quiet_NaN());
    }
}

bool Rasters::find(const values::ChannelRange& range, std::span<const float> levels, SweptLevels about)
{
    Raster* const raster = rasterOf(range);
    Layout* const layout = raster == nullptr ? nullptr : layoutOf(*raster, range);
    if (layout == nullptr) {
        return false;
    }
    setThresholds(*raster, *layout, about.momentMs);
    about.hz = layout->hz;
    about.thresholds = layout->thresholds;
    about.levels = levels.first(std::min(levels.size(), layout->hz.size()));
    if (!layout->isPlain) {
        m_levels.clear();
        for (const std::size_t channel : layout->order) {
            m_levels.push_back(levels[channel]);
        }
        about.levels = m_levels;
    }
    const bool hasLevel =
        std::any_of(about.levels.begin(), about.levels.end(), [](float level) { return std::isfinite(level); });
    m_sweeps += hasLevel ? 1U : 0U;
    raster->tracker.add(about);
    return true;
}

void Rasters::endFinding()
{
    for (auto& [width, raster] : m_rasters) {
        raster.tracker.end();
    }
}

}  // namespace RecTool
