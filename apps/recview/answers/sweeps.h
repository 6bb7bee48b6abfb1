// The sweeps of a spectrum, one by one, as the records have them.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include <values/maps.h>

#include "recordings/timeline.h"

namespace RecView {

struct WalkedSweep {
    double ms = 0;             ///< when it was measured, since 1970
    std::uint64_t timeMs = 0;  ///< of its record
    const RecordedFile* file = nullptr;
    values::ChannelRange range;
    std::vector<float> cells;
};

/// Visits the sweeps of a type that were measured in a span, and the one in force at its beginning, by records.
/// @param visit gives false to end it
void visitSweeps(const Timeline& timeline, std::int32_t code, double fromMs, double toMs,
                 const std::function<bool(const WalkedSweep&)>& visit);

}  // namespace RecView
