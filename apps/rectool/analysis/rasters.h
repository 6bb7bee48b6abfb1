// The levels of one spectrum, apart by the width of their channels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include <values/maps.h>

#include "channelnumbers.h"
#include "emissiontracker.h"
#include "noisefloor.h"

namespace RecTool {

/// Which channels are on.
struct ThresholdRule {
    std::optional<float> fixed;  ///< those above this level; else above the noise floor
    float aboveFloor = 0;
};

/// Learns the noise floor in a first pass, if need be, and finds emissions in the next one.
class Rasters {
public:
    static constexpr std::size_t MostChannels = 1'000'000;
    static constexpr std::size_t MostWidths = 1000;

    /// @param span of the frequencies that are taken; nothing for all
    Rasters(std::optional<FrequencySpan> span, const ThresholdRule& threshold, const EmissionRules& rules,
            std::function<void(const Emission&)> found);

    /// First pass. @return false when there are more channels or widths than are taken
    bool learn(const values::ChannelRange& range, std::span<const float> levels, double momentMs);
    void endLearning();
    /// Next pass. @param about the record, without its levels @return the same
    bool find(const values::ChannelRange& range, std::span<const float> levels, SweptLevels about);
    void endFinding();
    /// That were looked at for emissions: with a level of a channel that is taken.
    [[nodiscard]] std::uint64_t sweeps() const { return m_sweeps; }

private:
    struct Layout {
        values::ChannelRange range;
        std::vector<double> hz;              // ascending, of those that are taken
        std::vector<std::size_t> order;      // where they stand in the range
        bool isPlain = false;                // they are the range as it is
        std::vector<std::uint32_t> numbers;  // of the order
        std::vector<float> thresholds;
        const float* floors = nullptr;  // that they were made of
    };
    struct Raster {
        Raster(std::optional<FrequencySpan> span, const EmissionRules& rules, double widthHz,
               const std::function<void(const Emission&)>& found)
            : numbers(span, MostChannels), tracker(rules, widthHz, found)
        {
        }
        ChannelNumbers numbers;
        NoiseFloor floor;
        EmissionTracker tracker;
        std::list<Layout> layouts;  // the latest first
    };
    Raster* rasterOf(const values::ChannelRange& range);
    const std::vector<std::uint32_t>* numbersOf(Raster& raster, const values::ChannelRange& range);
    Layout* layoutOf(Raster& raster, const values::ChannelRange& range);
    void setThresholds(const Raster& raster, Layout& layout, double momentMs) const;

    std::optional<FrequencySpan> m_span;
    ThresholdRule m_threshold;
    EmissionRules m_rules;
    std::function<void(const Emission&)> m_found;
    std::map<double, Raster> m_rasters;  // by the width of a channel
    std::uint64_t m_sweeps = 0;
    std::size_t m_channels = 0;   // of all of them
    std::vector<float> m_levels;  // of a sweep, ascending
};

}  // namespace RecTool
