// Blocks of levels entered into the pixels that they stand for.
#include "view.h"

#include <algorithm>
#include <cmath>

namespace RecView {

namespace {

constexpr float NothingMeasured = std::numeric_limits<float>::quiet_NaN();

}  // namespace

Grid::Grid(const View& view) : m_view(view), m_pixels(view.columns * view.rows, NothingMeasured)
{
    if (view.of == Combine::Mean) {
        m_weights.assign(m_pixels.size(), 0);
    }
}

std::pair<std::size_t, std::size_t> Grid::pixels(double begin, double end, std::size_t count)
{
    constexpr double Touching = 1e-6;  // of a pixel: edges that only differ by rounding
    const auto all = static_cast<double>(count);
    const double room = end - begin > Touching ? Touching : -Touching;
    if (!(begin <= end && end >= room && begin <= all - room)) {
        return {0, 0};
    }
    begin = std::max(begin, 0.0);
    end = std::min(end, all);
    // Pixels whose middle lies in it: i + 0.5 from begin on, before end.
    const auto first = static_cast<std::size_t>(std::ceil(std::max(begin - 0.5, 0.0)));
    const auto last = static_cast<std::size_t>(std::ceil(std::max(end - 0.5, 0.0)));
    if (first < last) {
        return {first, std::min(last, count)};
    }
    const auto middle = static_cast<std::size_t>(std::clamp((begin + end) / 2, 0.0, all - 1));
    return {middle, middle + 1};
}

void Grid::add(const Stretch& time, std::span<const float> levels, std::pair<std::size_t, std::size_t> rows,
               float weight)
{
    const double perMs = static_cast<double>(m_view.columns) / (m_view.toMs - m_view.fromMs);
    const auto [first, last] =
        pixels((time.fromMs - m_view.fromMs) * perMs, (time.toMs - m_view.fromMs) * perMs, m_view.columns);
    for (std::size_t column = first; column < last; ++column) {
        float* pixel = m_pixels.data() + column * m_view.rows;
        if (m_view.of == Combine::Mean) {
            float* weights = m_weights.data() + column * m_view.rows;
            for (std::size_t y = rows.first; y < rows.second; ++y) {
                if (!std::isnan(levels[y])) {
                    const float all = weights[y] + weight;
                    pixel[y] = weights[y] > 0 ? pixel[y] + (levels[y] - pixel[y]) * (weight / all) : levels[y];
                    weights[y] = all;
                }
            }
        } else if (m_view.of == Combine::Max) {
            for (std::size_t y = rows.first; y < rows.second; ++y) {
                pixel[y] = pixel[y] >= levels[y] || std::isnan(levels[y]) ? pixel[y] : levels[y];
            }
        } else {
            for (std::size_t y = rows.first; y < rows.second; ++y) {
                pixel[y] = pixel[y] <= levels[y] || std::isnan(levels[y]) ? pixel[y] : levels[y];
            }
        }
    }
}

void Grid::cover(const Stretch& time)
{
    const Stretch inside{std::max(time.fromMs, m_view.fromMs), std::min(time.toMs, m_view.toMs)};
    if (inside.fromMs <= inside.toMs) {
        m_covered.push_back(inside);
    }
}

void Grid::finish()
{
    constexpr std::size_t Tile = 32;  // turned about in pieces that stay in the processor's cache
    const std::size_t columns = m_view.columns;
    const std::size_t rows = m_view.rows;
    m_levels.resize(m_pixels.size());
    for (std::size_t left = 0; left < columns; left += Tile) {
        for (std::size_t low = 0; low < rows; low += Tile) {
            for (std::size_t x = left; x < std::min(left + Tile, columns); ++x) {
                for (std::size_t y = low; y < std::min(low + Tile, rows); ++y) {
                    m_levels[(rows - 1 - y) * columns + x] = m_pixels[x * rows + y];
                }
            }
        }
    }
    for (const float level : m_pixels) {
        m_lowest = level >= m_lowest || std::isnan(level) ? m_lowest : level;
        m_highest = level <= m_highest || std::isnan(level) ? m_highest : level;
    }
    std::vector<float>().swap(m_pixels);
    std::vector<float>().swap(m_weights);
    std::sort(m_covered.begin(), m_covered.end(),
              [](const Stretch& a, const Stretch& b) { return a.fromMs < b.fromMs; });
    double done = m_view.fromMs;
    for (const Stretch& covered : m_covered) {
        if (covered.fromMs > done) {
            m_gaps.push_back({done, covered.fromMs});
        }
        done = std::max(done, covered.toMs);
    }
    if (done < m_view.toMs) {
        m_gaps.push_back({done, m_view.toMs});
    }
}

}  // namespace RecView
