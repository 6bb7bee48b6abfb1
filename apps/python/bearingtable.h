// Every bearing that a direction finder took, as columns.
#pragma once

#include <cstdint>
#include <vector>

#include "reading.h"

namespace RecPython {

/// A row a bearing, in the order of recording.
struct FoundBearings : FoundType {
    std::vector<std::int64_t> sinceStartUs;
    std::vector<double> frequenciesHz;
    std::vector<double> azimuthsDeg;  ///< relative to the antenna
    std::vector<double> elevationsDeg;
    std::vector<double> levelsDb;
    std::vector<double> qualities;
};

/// As "rectool map" takes them. Without the interpreter's lock. @throws Refusal, Interrupted
[[nodiscard]] FoundBearings readBearings(const Request& request);

}  // namespace RecPython
