// Follows the sweeps of one type into the blocks of their series.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <values/maps.h>

#include "levelblocks.h"
#include "sweeptext.h"
#include "tables.h"
#include "units.h"

namespace RecView {

/// Counts by size, an eightieth wide: the median is right to 1 %.
class UsualDistance {
public:
    void add(double ms)
    {
        ++m_counts[binOf(ms)];
        ++m_all;
    }
    /// 0 without any.
    [[nodiscard]] double ms() const
    {
        std::uint64_t passed = 0;
        for (std::size_t bin = 0; bin < Bins && m_all > 0; ++bin) {
            passed += m_counts[bin];
            if (passed * 2 >= m_all) {
                return std::exp2((static_cast<double>(bin) + 0.5) / PerDoubling) * LeastMs;
            }
        }
        return 0;
    }

private:
    static constexpr double LeastMs = 1.0 / 1024;
    static constexpr double PerDoubling = 55;
    static constexpr std::size_t Bins = std::size_t{42} * 55;  // up to 136 years

    static std::size_t binOf(double ms)
    {
        const double bin = std::log2(std::max(ms, LeastMs) / LeastMs) * PerDoubling;
        return static_cast<std::size_t>(std::min(bin, static_cast<double>(Bins - 1)));
    }

    std::array<std::uint32_t, Bins> m_counts{};
    std::uint64_t m_all = 0;
};

using LevelMap = values::CellMap<float, values::levelHandler>;
/// Null for every other value.
[[nodiscard]] inline const LevelMap* asLevels(const values::ValueBase* value)
{
    const bool isMap = value != nullptr && value->GetType() == values::ValueType::LevelMap;
    return isMap ? static_cast<const LevelMap*>(value) : nullptr;
}

/// What all series of a recording share.
struct SeriesLimits {
    std::size_t series = 64;                        ///< that may still be begun
    std::size_t mixed = 32;                         ///< the same of mixed ones, but for the first of a type
    std::size_t units = std::size_t{256} << 10U;    ///< of those
    std::size_t changes = std::size_t{256} << 10U;  ///< of channel range that are still noted
};

/// A record of levels that was understood, when it was measured and where it stands.
struct TrackedSweep {
    double momentMs = 0;
    std::int64_t position = 0;
    std::size_t bytes = 0;  ///< what it takes in the file
};

/// Each sweep is the whole map as it is after a record. A record that writes some cells costs what these are, not what
/// the map is: what stays the same is entered when a row of blocks ends.
class SweepTracker {
public:
    /// @param type what is told of the sweeps; all must outlive the tracker
    SweepTracker(Store& store, std::int32_t code, KnownType& type, SeriesLimits& limits);

    /// All levels in the range in force.
    void takeWhole(const TrackedSweep& sweep, const std::vector<float>& levels, bool allMeasured,
                   const LevelMap& before);
    /// Before a record is applied to the map: what is lost by that is entered. @param before null where there is none
    void prepare(const std::string& text, double momentMs, const LevelMap* before);
    /// After that, when it was understood.
    void take(const TrackedSweep& sweep, const LevelMap& after);
    /// Enters what stayed the same until now; then blocks tell of all sweeps. @param map as it is
    void settle(const LevelMap* map);
    /// Brings what is told of the series up to date.
    void refresh();
    /// The end of the recording.
    void finish(const LevelMap* map);
    /// Blocks of a series that are not yet in the store.
    [[nodiscard]] const std::vector<OpenRow>& openRows(std::uint32_t series) const;

private:
    struct Tracked {
        Tracked(Store& store, std::int32_t code, std::uint32_t number, const Units& ownUnits)
            : blocks(store, code, number, ownUnits.count())
        {
        }
        LevelBlocks blocks;
        UsualDistance toNext;  // of the type
        UsualDistance again;   // of the series
    };

    void begin(const TrackedSweep& sweep);
    void end(const TrackedSweep& sweep, const LevelMap* map);
    void pauseBefore(double momentMs, const LevelMap* map);
    void useRange(const values::ChannelRange& range, double momentMs);
    std::uint32_t seriesOf(const values::ChannelRange& range);
    std::uint32_t newSeries(const values::ChannelRange& range, bool isMixed);
    std::uint32_t mixedSeries(const values::ChannelRange& range);
    void enter(std::span<const float> levels, double times);
    void notePause(double momentMs);

    Store& m_store;
    std::int32_t m_code;
    KnownType& m_type;
    SeriesLimits& m_limits;
    std::vector<std::unique_ptr<Tracked>> m_series;
    values::ChannelRange m_range;    // in force
    std::unique_ptr<Units> m_units;  // where its channels stand in the series in force
    std::uint32_t m_current = 0;     // series in force
    double m_streak = 0;             // sweeps since the last one whose every cell was entered
    bool m_isPartial = false;        // the record being applied writes m_runs only
    std::vector<CellRun> m_runs;
    std::vector<float> m_before;   // their cells
    double m_credit = 0;           // bytes of disk that may be used
    std::size_t m_bytesOfRow = 0;  // of records since a row was ended
    double m_leastPauseMs = 1000;
};

}  // namespace RecView
