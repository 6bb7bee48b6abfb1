// The source "sim": a receiver and a direction finder without any hardware.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "configuration.h"
#include "sources/source.h"

namespace RecStation {

struct SimOptions {
    std::uint64_t seed = 1;
    double durationSeconds = 180;                          ///< recorded time
    unsigned long long startTime = 1'767'225'600'000'000;  ///< microseconds since 1970 UTC; 2026-01-01 00:00:00
};

/// Publishes values for every instance of the configuration: receivers scan and monitor, direction finders find.
/// Needs the value tree in force. The same options and instances give the same changes on every machine.
[[nodiscard]] std::unique_ptr<Source> makeSimSource(const SimOptions& options, const std::vector<Instance>& instances);

}  // namespace RecStation
