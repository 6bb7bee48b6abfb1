// The median of very many distances in time, in little memory.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

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

}  // namespace RecView
