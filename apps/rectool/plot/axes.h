// Axes of time, frequency and level, and the bookmarks beside them.
#pragma once

#include <QString>

#include "picture.h"

namespace RecTool {

enum class TimeScale : unsigned char { Clock, Elapsed };

/// Makes an axis one of time. It shows the elapsed time where the recording's start is not known.
/// @return what the axis says: "Time (UTC, 2026-11-21)"
QString setTimeAxis(const Picture& picture, QCPAxis& axis, TimeScale scale, int pixels);
constexpr int TimeAxisAround = 120;  // pixels beside an axis of time across the picture, about
/// Makes the axes of a rect whose time runs across a row: what all rows share stands above the first and below the
/// last. @param pixels how wide the rect will be, about
void setTimeAcross(Picture& picture, QCPAxisRect& rect, int row, int pixels);

/// Ticks with as many digits as their distance needs, so that neighbours never look alike, and so few that they fit.
/// @param isPiece other axes go on at both ends: labels keep away from there
void setNumberTicks(const Picture& picture, QCPAxis& axis, int pixels, bool isPiece = false);

/// Draws a line across the axis' rect for every bookmark, with its text where there is room: labels near each other
/// are moved apart, and how many do not fit is said.
void markBookmarks(Picture& picture, const QCPAxis& timeAxis, bool withLabels = true);

}  // namespace RecTool
