// Carries out the lines of a feed on the value tree in force.
#pragma once

#include <values/tree.h>

#include "feedline.h"

namespace RecStation {

/// Creates, changes or removes the value that the line names. A change is made property by property, each with its
/// notification: limits, offset, value; items, selection; range, cells.
/// @param line its times are absolute
/// @throws LineError when the value is missing, taken or of another kind; what was done before stays
void applyFeedLine(values::Tree& tree, const FeedLine& line);

}  // namespace RecStation
