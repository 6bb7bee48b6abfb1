// Bearings over time and as seen from above.
#pragma once

#include "bearinggroups.h"
#include "picture.h"

namespace RecTool {

/// Azimuth up, over the time axis that the rect has at its bottom.
void drawAzimuths(const BearingGroups& groups, bool areTrue, QCPAxisRect& rect);

/// A bearing points to where it was taken from; the later, the farther from the middle.
/// @param rect laid out: its size says how large the circle is
void addPolarView(Picture& picture, const PlotSource& source, const BearingGroups& groups, bool areTrue,
                  QCPAxisRect& rect);

}  // namespace RecTool
