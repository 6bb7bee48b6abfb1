// Levels as powers.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace RecTool {

/// 10^(level/10). Recorded levels are hundredths of a decibel, so that few powers are ever needed.
class Powers {
public:
    /// Those of the program.
    static const Powers& table()
    {
        static const Powers powers;
        return powers;
    }
    Powers()
    {
        for (std::size_t i = 0; i < m_powers.size(); ++i) {
            m_powers[i] = of(Lowest + static_cast<double>(i) / PerDb);
        }
    }
    [[nodiscard]] double operator()(float level) const
    {
        const float place = level * static_cast<float>(PerDb) - static_cast<float>(Lowest * PerDb);
        constexpr float Same = 4e-3F;  // of a hundredth: what floats of this size cannot tell apart
        const bool isInside = place > 0 && place < float{Count - 1};
        const auto nearest = static_cast<std::uint32_t>(isInside ? place + 0.5F : 0.0F);
        const bool isKnown = isInside && std::abs(place - static_cast<float>(nearest)) <= Same;
        return isKnown ? m_powers[nearest] : of(double{level});
    }

private:
    static constexpr double Lowest = -250;
    static constexpr double PerDb = 100;
    static constexpr int Count = 50'000;
    static double of(double level) { return std::pow(10.0, level / 10); }

    std::vector<double> m_powers = std::vector<double>(Count);
};

/// 10^(level/10). Fast for hundredths of a decibel.
[[nodiscard]] inline double powerOf(float level)
{
    return Powers::table()(level);
}

/// 10 log10(power).
[[nodiscard]] inline double levelOf(double power)
{
    constexpr double Decibels = 10;
    return Decibels * std::log10(power);
}

}  // namespace RecTool
