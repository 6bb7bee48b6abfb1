// The blocks of one series: largest, smallest and mean level of so many sweeps and units, coarser and coarser.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "store.h"
#include "view.h"

namespace RecView {

/// Kinds of columns that hold blocks.
enum class BlockKind : std::uint32_t {
    Rows = 1,     ///< BlockRow
    Levels = 16,  ///< and two more, by Combine: int16 in hundredths of a dB
    Floats = 24,  ///< the same as they are, of rows that hundredths do not do
};

/// Sweeps whose blocks were written together. Rows of a level follow each other in time and in the file.
struct BlockRow {
    double firstMs = 0;  ///< moments of the first and the last sweep
    double lastMs = 0;
    std::int64_t position = 0;  ///< of the first one's record
    std::uint32_t sweeps = 0;
    std::uint32_t childEnd = 0;  ///< rows of the level below that are in this one or before it
    std::uint32_t floats = NoFloats;
    std::uint32_t spare = 0;

    static constexpr std::uint32_t NoFloats = 0xFFFFFFFF;
};

constexpr std::int16_t NoHundredths = std::numeric_limits<std::int16_t>::min();  ///< nothing measured

/// How blocks are laid out: level t of time, level c of frequency.
struct BlockLayout {
    static constexpr std::size_t RowsPerRow = 4;   ///< of the level below, or more
    static constexpr std::size_t LeastSweeps = 4;  ///< in a row of level 0, but before a pause
    static constexpr std::size_t TimeLevels = 11;
    static constexpr std::size_t FirstFineTime = 2;  ///< level from which on there are blocks of single units
    static constexpr std::array<std::size_t, 4> Groups{1, 8, 64, 512};  ///< units in a block, by level of frequency

    /// Whether a level of frequency is there in a level of time, for a series of so many units.
    [[nodiscard]] static bool has(std::size_t time, std::size_t frequency, std::size_t units)
    {
        return frequency == 0 ? time >= FirstFineTime : frequency == 1 || units > Groups[frequency - 1] * Groups[1];
    }
    [[nodiscard]] static std::size_t groups(std::size_t frequency, std::size_t units)
    {
        return (units + Groups[frequency] - 1) / Groups[frequency];
    }
    /// @param plane by Combine, of levels
    [[nodiscard]] static ColumnKey keyOf(BlockKind kind, std::int32_t code, std::uint32_t series, std::size_t time,
                                         std::size_t frequency = 0, std::size_t plane = 0)
    {
        return {static_cast<std::uint32_t>(kind) + static_cast<std::uint32_t>(plane), code, series,
                static_cast<std::uint32_t>(time * Groups.size() + frequency)};
    }
};

/// Levels of some sweeps, unit by unit, before they are written.
class OpenBlock {
public:
    OpenBlock() = default;
    explicit OpenBlock(std::size_t units) : m_max(units), m_min(units), m_sum(units) { clear(); }

    [[nodiscard]] std::size_t units() const { return m_max.size(); }
    void clear();
    /// Levels of units from 0 on, none NaN or infinite, so many times.
    void takeMeasured(std::span<const float> levels, double times);
    void take(std::size_t unit, float level, double times);
    /// Only for the largest and smallest level.
    void touch(std::size_t unit, float level);
    /// Only for the mean; times may be below 0.
    void addToSum(std::size_t unit, float level, double times);
    void merge(const OpenBlock& other);

    /// Of units [first, end) together, by Combine; NaN where nothing was measured.
    [[nodiscard]] std::array<float, 3> levels(std::size_t first, std::size_t end) const;

private:
    void makeCounts();

    std::vector<float> m_max;
    std::vector<float> m_min;
    std::vector<double> m_sum;
    std::vector<double> m_count;  // empty as long as all units have m_everywhere
    double m_everywhere = 0;      // levels in the sum of every unit
};

/// A row that is still growing.
struct OpenRow {
    BlockRow row;
    std::size_t children = 0;
    OpenBlock block;
};

/// Writes the blocks of a series. The caller says when rows end.
class LevelBlocks {
public:
    LevelBlocks(Store& store, std::int32_t code, std::uint32_t series, std::size_t units);

    [[nodiscard]] std::size_t units() const { return m_units; }
    /// The row of level 0 that sweeps are entered into.
    [[nodiscard]] OpenRow& open() { return m_open.front(); }
    [[nodiscard]] const std::vector<OpenRow>& openRows() const { return m_open; }
    /// What writing the row of level 0 takes on disk.
    [[nodiscard]] std::uint64_t rowBytes() const { return rowBytes(0); }
    /// What writing all levels takes.
    [[nodiscard]] std::uint64_t allBytes() const;
    /// Ends the row of level 0, and those above it whose time has come; these wait until there is credit for them.
    /// @param credit bytes that may be written @return those that were
    std::uint64_t endRow(double credit);
    /// Ends the rows of all levels, at the end or before a pause. @return bytes written
    std::uint64_t endAll();

private:
    [[nodiscard]] std::uint64_t rowBytes(std::size_t time) const;
    std::uint64_t close(std::size_t time);
    std::uint64_t writeFloats(const OpenBlock& block, std::size_t time, std::size_t frequency);
    static void enter(const OpenRow& closed, OpenRow& above, std::uint32_t childEnd);
    void fill(const OpenBlock& block, std::size_t frequency);

    Store& m_store;
    std::int32_t m_code;
    std::uint32_t m_series;
    std::size_t m_units;
    std::vector<OpenRow> m_open;                                    // by level of time
    std::array<std::vector<float>, 3> m_planes;                     // of a row being written
    std::array<std::uint32_t, BlockLayout::TimeLevels> m_floats{};  // rows kept as floats so far
};

}  // namespace RecView
