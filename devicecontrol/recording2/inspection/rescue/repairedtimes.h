// Times for records whose own are lost.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Recording2::Inspection {

struct RepairedTimes {
    std::vector<std::uint64_t> times;     ///< of all records, ascending
    std::uint64_t kept = 0;               ///< as they were
    std::uint64_t between = 0;            ///< evenly between the neighbours whose times are known
    std::uint64_t inFront = 0;            ///< evenly between the start of the recording and the first known time
    std::uint64_t behind = 0;             ///< after the last known time, stepMs apart or evenly to the end
    std::optional<std::uint64_t> stepMs;  ///< nothing: evenly
    std::uint64_t moved = 0;              ///< known, but there was no room in front: moved to the next free millisecond
};

/// @param known times of the records in the order of the file, ascending; nothing where one is lost
/// @param lengthMs of the recording; 0 when it is not known
/// @param periodMs from record to record after the last known time; 0: evenly to the end of the recording, or, where
/// that is not known, in the mean distance of the known times (1 ms without any)
RepairedTimes repairTimes(const std::vector<std::optional<std::uint64_t>>& known, std::uint64_t lengthMs,
                          std::uint64_t periodMs);

/// By which rules times were made up: a clause each, empty when all are known.
/// @param number how to write one
std::vector<std::string> describe(const RepairedTimes& times, std::string (*number)(std::uint64_t));

}  // namespace Recording2::Inspection
