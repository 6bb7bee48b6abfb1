// Every bearing that a direction finder took, as columns.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reading.h"

namespace RecPython {

/// A row a bearing, in the order of recording.
struct FoundBearings {
    std::vector<std::int64_t> sinceStartUs;
    std::vector<double> frequenciesHz;
    std::vector<double> azimuthsDeg;  ///< relative to the antenna
    std::vector<double> elevationsDeg;
    std::vector<double> levelsDb;
    std::vector<double> qualities;
    std::string keyword;
    std::string device;
    std::int64_t startUs = 0;
    std::uint64_t notUnderstood = 0;
    std::vector<FoundDamage> damage;
};

/// As "rectool map" takes them. Without the interpreter's lock. @throws Refusal, Interrupted
[[nodiscard]] FoundBearings readBearings(const Request& request);

}  // namespace RecPython
