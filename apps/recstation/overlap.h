// Whether the sources of a run measured at the same time.
#pragma once

#include <memory>
#include <vector>

#include "sources/source.h"

namespace RecStation {

/// Waits for the first change of every source. Reads inputs to their ends where that is needed to know.
/// @throws std::runtime_error that names both spans when sources lie apart by more than the gap (microseconds), because
/// the recording would have it in its middle
void requireOverlap(const std::vector<std::unique_ptr<Source>>& sources, unsigned long long gapUs);

}  // namespace RecStation
