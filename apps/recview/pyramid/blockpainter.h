// Draws the blocks of one series into a grid.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "levelblocks.h"
#include "store.h"
#include "tables.h"
#include "view.h"

namespace RecView {

class BlockPainter {
public:
    /// @param open rows that are not yet in the store; null where all are. All must outlive the painter.
    BlockPainter(const Store& store, const KnownType& type, const KnownSeries& series, const std::vector<OpenRow>* open,
                 Grid& grid);

    /// Chooses blocks about half as large as a pixel, or what comes next to that, and enters them.
    /// @param ofSingleUnits in frequency, where there are any
    void paint(bool ofSingleUnits);

private:
    /// A group of units and the rows of pixels that it counts for.
    struct Place {
        std::uint32_t group;
        std::uint32_t firstRow;
        std::uint32_t endRow;
        float weight;  ///< units of the group
    };
    struct Level {
        std::size_t time = 0;
        std::size_t frequency = 1;
    };
    [[nodiscard]] const Column* rowsOf(std::size_t time) const;
    [[nodiscard]] std::uint64_t firstRow(const Column& rows, double ms) const;
    [[nodiscard]] std::uint64_t endRow(const Column& rows, double ms) const;
    [[nodiscard]] Level choose(bool ofSingleUnits) const;
    void place(std::size_t frequency);
    void paintRows(const Level& level, std::uint64_t first);
    void paintStored(const Level& level, std::uint64_t first, std::span<const BlockRow> rows);
    void paintOpen(const OpenRow& open);
    void enter(const BlockRow& row, std::optional<double> next);
    template <typename Value>
    void fold(std::span<const Value> groups);
    template <typename Value, typename Better>
    void foldBest(std::span<const Value> groups, Better better);
    template <typename Value>
    void foldMean(std::span<const Value> groups);
    [[nodiscard]] double firstMsAfter(const Level& level, std::uint64_t row) const;

    const Store& m_store;
    const KnownType& m_type;
    const Series& m_series;
    double m_holdMs;
    double m_againMs;
    const std::vector<OpenRow>* m_open;
    Grid& m_grid;
    std::vector<RecTool::FrequencySpan> m_spans;  // of units
    std::size_t m_firstUnit = 0;                  // in the view
    std::size_t m_endUnit = 0;
    std::vector<Place> m_places;
    std::size_t m_placedFor = 0;  // level of frequency, counted from 1
    std::size_t m_lowRow = 0;     // rows of pixels that have places
    std::size_t m_highRow = 0;
    std::vector<float> m_levels;
    std::vector<float> m_weights;
};

}  // namespace RecView
