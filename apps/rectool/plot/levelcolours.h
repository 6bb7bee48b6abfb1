// The colours of levels and evidence in pictures.
#pragma once

#include <array>
#include <span>

#include <qcustomplot.h>
#include <QColor>

namespace RecTool {

/// Evenly from the first colour to the last; none for what is no number.
[[nodiscard]] inline QCPColorGradient gradientOf(std::span<const QRgb> stops)
{
    QCPColorGradient gradient;
    gradient.clearColorStops();
    for (std::size_t i = 0; i < stops.size(); ++i) {
        gradient.setColorStopAt(static_cast<double>(i) / static_cast<double>(stops.size() - 1), QColor(stops[i]));
    }
    gradient.setNanHandling(QCPColorGradient::nhTransparent);
    return gradient;
}

/// Dark to light and blue to yellow at an even pace, legible for the colour-blind and in grey.
[[nodiscard]] inline QCPColorGradient levelColours()
{
    constexpr std::array<QRgb, 11> Stops{0xff000004, 0xff160b39, 0xff420a68, 0xff6a176e, 0xff932667, 0xffbc3754,
                                         0xffdd513a, 0xfff37819, 0xfffca50a, 0xfff6d746, 0xfffcffa4};
    constexpr int Levels = 512;
    QCPColorGradient gradient = gradientOf(Stops);
    gradient.setLevelCount(Levels);
    return gradient;
}

}  // namespace RecTool
