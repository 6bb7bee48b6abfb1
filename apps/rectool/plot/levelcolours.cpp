// A gradient from black to yellow, and the levels at which it begins and ends.
#include "levelcolours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace RecTool {

QCPColorGradient levelColours()
{
    constexpr std::array<QRgb, 11> Stops{0xff000004, 0xff160b39, 0xff420a68, 0xff6a176e, 0xff932667, 0xffbc3754,
                                         0xffdd513a, 0xfff37819, 0xfffca50a, 0xfff6d746, 0xfffcffa4};
    QCPColorGradient gradient;
    gradient.clearColorStops();
    for (std::size_t i = 0; i < Stops.size(); ++i) {
        gradient.setColorStopAt(static_cast<double>(i) / (Stops.size() - 1), QColor(Stops[i]));
    }
    constexpr int Levels = 512;
    gradient.setLevelCount(Levels);
    gradient.setNanHandling(QCPColorGradient::nhTransparent);
    return gradient;
}

std::optional<QCPRange> colourRange(const std::vector<const SpectrumGrid*>& grids)
{
    constexpr std::size_t Dropouts = 200;  // one in so many
    constexpr double Least = 1;
    std::vector<float> pixels;
    for (const SpectrumGrid* grid : grids) {
        for (std::size_t row = 0; row < grid->rows(); ++row) {
            for (std::size_t column = 0; column < grid->columns(); ++column) {
                if (const float level = grid->at(column, row); !std::isnan(level)) {
                    pixels.push_back(level);
                }
            }
        }
    }
    if (pixels.empty()) {
        return std::nullopt;
    }
    const auto low = pixels.begin() + static_cast<std::ptrdiff_t>(pixels.size() / Dropouts);
    std::nth_element(pixels.begin(), low, pixels.end());
    const QCPRange range(double{*low}, double{*std::max_element(pixels.begin(), pixels.end())});
    return range.size() < Least ? QCPRange(range.center() - Least / 2, range.center() + Least / 2) : range;
}

QCPRange levelRange(const std::vector<const SpectrumGrid*>& grids)
{
    QCPRange range;
    range.lower = std::numeric_limits<double>::quiet_NaN();
    range.upper = range.lower;
    for (const SpectrumGrid* grid : grids) {
        range.lower = std::fmin(range.lower, double{grid->lowest()});
        range.upper = std::fmax(range.upper, double{grid->highest()});
    }
    return range;
}

}  // namespace RecTool
