// Whether what was recovered is what was recorded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

namespace RecTool::SelfCheck {

/// The records of a run that nothing disturbed: those of every other run begin as they do.
struct Reference {
    Recording2::Inspection::Header header;
    std::vector<Recording2::Inspection::Record> records;
    std::uint64_t states = 0;  ///< records before the first step's
    std::string problem;       ///< why there is none

    /// @param steps that the run made
    static Reference read(const std::string& path, std::uint64_t steps);
    /// Recorded time of the last of so many records.
    [[nodiscard]] std::uint64_t timeOf(std::uint64_t records) const;
};

/// How a recording stands to the reference.
struct Comparison {
    std::string problem;           ///< what was never recorded is in it, or it cannot be read; empty otherwise
    std::uint64_t records = 0;     ///< that it holds
    bool isBeginning = false;      ///< none is left out from the first to the last, and their times are right
    std::uint64_t exactTimes = 0;  ///< records whose time is the recorded one
};

/// Every record must be one of the reference's, in their order.
Comparison compare(const std::string& path, const Reference& reference);

}  // namespace RecTool::SelfCheck
