// What is to be drawn of spectra, and the grid that it is drawn into.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace RecView {

/// Which level stands for all levels of a pixel. Levels that are no number count as not measured. Infinite ones count
/// for Max and Min, not for Mean.
enum class Combine : std::uint8_t {
    Max,
    Min,
    Mean,  ///< of levels in dB; each sweep counts as much, however long it was in force
};

/// A rectangle of time and frequency, and of how many pixels its picture is made.
struct View {
    std::int32_t code = 0;  ///< type number
    double fromMs = 0;      ///< since 1970 UTC
    double toMs = 0;        ///< after fromMs
    double lowHz = 0;
    double highHz = 0;        ///< above lowHz
    std::size_t columns = 0;  ///< of time, at least 1
    std::size_t rows = 0;     ///< of frequency, at least 1
    Combine of = Combine::Max;
    bool exact = false;  ///< of single sweeps, where these are few enough to be read at once
};

/// A stretch of time in milliseconds since 1970 UTC.
struct Stretch {
    double fromMs = 0;
    double toMs = 0;

    bool operator==(const Stretch&) const = default;
};

/// Pixels that any number of overviews draw into, one file after the other. A block of levels counts for every pixel
/// whose middle it covers, at least for the one in which its own middle lies, in time as in frequency: so each is seen.
class Grid {
public:
    explicit Grid(const View& view);

    [[nodiscard]] const View& view() const { return m_view; }

    /// One column of blocks in time: levels[y] for each row, NaN for none.
    /// @param weight of these levels in means @param rows those that have levels, the others are not looked at
    void add(const Stretch& time, std::span<const float> levels, std::pair<std::size_t, std::size_t> rows,
             float weight);
    /// Something was measured all through this stretch.
    void cover(const Stretch& time);
    void notExact() { m_exact = false; }  ///< something was drawn of blocks

    /// Ends drawing. After that:
    void finish();
    /// Levels row by row, row 0 the highest frequency; NaN: nothing was measured.
    [[nodiscard]] const std::vector<float>& levels() const { return m_levels; }
    [[nodiscard]] bool exact() const { return m_exact; }       ///< all of it is made of single sweeps
    [[nodiscard]] float lowest() const { return m_lowest; }    ///< of the pixels; NaN without one
    [[nodiscard]] float highest() const { return m_highest; }  ///< of the pixels; NaN without one
    /// Where nothing covers the view, ascending.
    [[nodiscard]] const std::vector<Stretch>& gaps() const { return m_gaps; }

    /// The pixels of a block on an axis of so many, from its ends in pixels. Empty when it lies outside.
    [[nodiscard]] static std::pair<std::size_t, std::size_t> pixels(double begin, double end, std::size_t count);

private:
    View m_view;
    std::vector<float> m_pixels;   // column by column, rows ascending in frequency
    std::vector<float> m_weights;  // only for means
    std::vector<float> m_levels;
    std::vector<Stretch> m_covered;
    std::vector<Stretch> m_gaps;
    bool m_exact = true;
    float m_lowest = std::numeric_limits<float>::quiet_NaN();
    float m_highest = std::numeric_limits<float>::quiet_NaN();
};

}  // namespace RecView
