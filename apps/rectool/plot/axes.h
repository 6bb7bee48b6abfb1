// Axes of time, frequency and level, and the bookmarks beside them.
#pragma once

#include <vector>

#include <QString>

#include "picture.h"
#include "timeticks.h"

namespace RecTool {

enum class TimeScale : unsigned char { Clock, Elapsed };

/// Makes an axis one of time. It shows the elapsed time where the recording's start is not known.
void setTimeAxis(Picture& picture, QCPAxis& axis, const PlotSource& source, TimeScale scale, int pixels);
/// What the time axis of a picture says: "Time (UTC, 2026-11-21)".
[[nodiscard]] QString timeLabel(const PlotSource& source, TimeScale scale);
/// Whether clock times can be shown at all.
[[nodiscard]] bool hasClock(const PlotSource& source);

/// The unit that frequencies of a picture are best shown in.
struct FrequencyUnit {
    double hz = 1;
    const char* name = "Hz";
};
[[nodiscard]] FrequencyUnit unitFor(double highestHz, double widthHz);

/// The unit in which receivers show a frequency, however little it changes: MHz from 1 MHz on, kHz from 1 kHz on.
[[nodiscard]] FrequencyUnit usualUnit(double highestHz);

/// Ticks with as many digits as their distance needs, so that neighbours never look alike, and so few that they fit.
/// @param isPiece other axes go on at both ends: labels keep away from there
void setNumberTicks(Picture& picture, QCPAxis& axis, int pixels, bool isPiece = false);

/// Draws a line across the axis' rect for every bookmark, with its text where there is room: labels near each other
/// are moved apart, and how many do not fit is said.
void markBookmarks(Picture& picture, QCPAxis& timeAxis, const PlotSource& source, bool withLabels = true);

}  // namespace RecTool
