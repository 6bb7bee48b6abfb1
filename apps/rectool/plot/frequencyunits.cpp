// Choosing a unit for an axis, for a number and for a legend, whose frequencies have as many decimals as one needs.
#include "frequencyunits.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <QString>

namespace RecTool {

namespace {

/// The largest unit that suits, Hz where none does.
template <typename Suits>
FrequencyUnit largestUnit(const Suits& suits)
{
    constexpr std::array Units{FrequencyUnit{1e9, "GHz"}, FrequencyUnit{1e6, "MHz"}, FrequencyUnit{1e3, "kHz"}};
    const auto unit = std::find_if(Units.begin(), Units.end(), [&](const FrequencyUnit& one) { return suits(one.hz); });
    return unit == Units.end() ? FrequencyUnit() : *unit;
}

}  // namespace

FrequencyUnit unitFor(double highestHz, double widthHz)
{
    constexpr double Narrowest = 0.005;  // narrower spans would need too many digits
    constexpr double Lowest = 0.5;       // 80 to 1000 MHz are not read as 0.08 to 1 GHz, 0.1 to 6 GHz are
    constexpr double High = 3;
    return largestUnit([&](double hz) {
        const bool isUsual = highestHz - widthHz >= hz * Lowest || highestHz >= hz * High;
        return highestHz >= hz && widthHz >= hz * Narrowest && isUsual;
    });
}

FrequencyUnit usualUnit(double highestHz)
{
    constexpr double Giga = 1e9;
    return largestUnit([&](double hz) { return hz < Giga && highestHz >= hz; });
}

std::vector<std::string> frequenciesAlike(const std::vector<double>& hz)
{
    constexpr double Exact = 5e-4;  // recorders write frequencies to 0.001 Hz
    constexpr int Most = 9;
    const FrequencyUnit unit = largestUnit([&](double unitHz) {
        return std::all_of(hz.begin(), hz.end(), [&](double frequency) { return std::abs(frequency) >= unitHz; });
    });
    int decimals = 0;
    const auto isExact = [&](double frequency) {
        const double digits = std::pow(10, decimals) / unit.hz;
        return std::abs(std::round(frequency * digits) / digits - frequency) <= Exact;
    };
    while (decimals < Most && !std::all_of(hz.begin(), hz.end(), isExact)) {
        ++decimals;
    }
    std::vector<std::string> texts;
    texts.reserve(hz.size());
    for (const double frequency : hz) {
        texts.push_back(QString::number(frequency / unit.hz, 'f', decimals).toStdString() + ' ' + unit.name);
    }
    return texts;
}

}  // namespace RecTool
