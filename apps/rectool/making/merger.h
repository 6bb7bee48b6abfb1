// The records of several recordings as those of one.
#pragma once

#include <cstdint>
#include <vector>

#include "mergeplan.h"
#include "newrecording.h"

namespace RecTool {

/// What had to be changed to get everything into one recording.
struct Adjustments {
    std::uint64_t movedRecords = 0;
    std::uint64_t movedByMs = 0;  // at most
    std::uint64_t movedBookmarks = 0;
    std::uint64_t repeatedStates = 0;
};

/// Writes the records of all inputs in the order of their clock times, until the user interrupts.
/// @param inputs by their begin
/// @param startMs of the new recording, since 1970 UTC
[[nodiscard]] Adjustments mergeRecords(const std::vector<MergeInput>& inputs, const MergePlan& plan,
                                       std::uint64_t startMs, NewRecording& output);

}  // namespace RecTool
