// The colours of levels in pictures.
#pragma once

#include <optional>
#include <vector>

#include <qcustomplot.h>
#include <QColor>

#include "spectrumgrid.h"

namespace RecTool {

constexpr QRgb NotMeasuredColour = 0xffd4d7da;

/// Dark to light and blue to yellow at an even pace, legible for the colour-blind and in grey.
[[nodiscard]] QCPColorGradient levelColours();

/// The levels that the colours stand for: from about the lowest pixel to the highest one. The very lowest ones do not
/// count: single dropouts would take away most of the colours from everything else. @return nothing without a level
[[nodiscard]] std::optional<QCPRange> colourRange(const std::vector<const SpectrumGrid*>& grids);

/// The lowest and highest single level of grids, NaN without one.
[[nodiscard]] QCPRange levelRange(const std::vector<const SpectrumGrid*>& grids);

}  // namespace RecTool
