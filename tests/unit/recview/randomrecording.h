// Recordings of everything that the viewer shows, at random, for tests that compare it with rectool.
#pragma once

#include "support/testing.h"

struct RandomRecording {
    std::uint64_t startMs = 1'700'000'000'000;
    std::uint64_t lengthMs = 60'000;
    unsigned seed = 1;
    int changes = 200;
    std::string device = "Receiver";
};

/// Writes a recording of levels in changing channel ranges, bearings of a station that moves, numbers, texts,
/// selections and truth values. Times are at least 1 ms apart. The maps' time stamps are those of the clock.
void writeRandomRecording(const std::string& path, const RandomRecording& random);
