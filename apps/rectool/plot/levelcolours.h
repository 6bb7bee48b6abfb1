// The colours of levels in all pictures.
#pragma once

#include <array>

#include <qcustomplot.h>
#include <QColor>

namespace RecTool {

/// Dark to light and blue to yellow at an even pace, legible for the colour-blind and in grey.
[[nodiscard]] inline QCPColorGradient levelColours()
{
    constexpr std::array<QRgb, 11> Stops{0xff000004, 0xff160b39, 0xff420a68, 0xff6a176e, 0xff932667, 0xffbc3754,
                                         0xffdd513a, 0xfff37819, 0xfffca50a, 0xfff6d746, 0xfffcffa4};
    constexpr int Levels = 512;
    QCPColorGradient gradient;
    gradient.clearColorStops();
    for (std::size_t i = 0; i < Stops.size(); ++i) {
        gradient.setColorStopAt(static_cast<double>(i) / (Stops.size() - 1), QColor(Stops[i]));
    }
    gradient.setLevelCount(Levels);
    gradient.setNanHandling(QCPColorGradient::nhTransparent);
    return gradient;
}

}  // namespace RecTool
