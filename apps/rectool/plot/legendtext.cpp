// Frequencies in one unit, with as many decimals as the most exact of them needs.
#include "legendtext.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <QString>

namespace RecTool {

namespace {

struct FrequencyScale {
    double hz;
    const char* name;
};
constexpr std::array FrequencyScales{FrequencyScale{1e9, " GHz"}, FrequencyScale{1e6, " MHz"},
                                     FrequencyScale{1e3, " kHz"}, FrequencyScale{1, " Hz"}};

FrequencyScale scaleOf(double hz)
{
    const auto fits = [hz](const FrequencyScale& scale) { return std::abs(hz) >= scale.hz; };
    const auto scale = std::find_if(FrequencyScales.begin(), FrequencyScales.end(), fits);
    return scale == FrequencyScales.end() ? FrequencyScales.back() : *scale;
}

}  // namespace

std::vector<std::string> frequenciesAlike(const std::vector<double>& hz)
{
    constexpr double Exact = 5e-4;  // recorders write frequencies to 0.001 Hz
    constexpr int Most = 9;
    if (hz.empty()) {
        return {};
    }
    const FrequencyScale scale =
        scaleOf(*std::min_element(hz.begin(), hz.end(), [](double a, double b) { return std::abs(a) < std::abs(b); }));
    int decimals = 0;
    const auto isExact = [&](double frequency) {
        const double digits = std::pow(10, decimals) / scale.hz;
        return std::abs(std::round(frequency * digits) / digits - frequency) <= Exact;
    };
    while (decimals < Most && !std::all_of(hz.begin(), hz.end(), isExact)) {
        ++decimals;
    }
    std::vector<std::string> texts;
    texts.reserve(hz.size());
    for (const double frequency : hz) {
        texts.push_back(QString::number(frequency / scale.hz, 'f', decimals).toStdString() + scale.name);
    }
    return texts;
}

}  // namespace RecTool
