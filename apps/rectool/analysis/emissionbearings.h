// The bearings of emissions.
#pragma once

#include <vector>

#include "emissions.h"

namespace RecTool {

/// Walks the records once more, and gives every emission its bearing: the one with the best quality, the earliest of
/// them, of those that were taken on a channel that overlaps its band, from its first to its last sweep with the margin
/// before and behind them.
void addBearings(Recordings& recordings, double marginMs, std::vector<FoundEmission>& emissions);

}  // namespace RecTool
