// Recordings of values that change at random, with the texts that the values themselves write.
#pragma once

#include "support/testing.h"

namespace RecToolTests {

constexpr std::uint64_t RandomStartMs = 1'700'000'000'000;

struct RandomOptions {
    std::uint32_t seed = 1;
    int changes = 120;
    bool damagedTexts = false;  ///< some records hold no recording text of their kind
    std::uint64_t startMs = RandomStartMs;
    std::string device = "Receiver";
    std::string pathPrefix = "";  ///< before every value path
    bool bearings = true;
    bool bookmarks = true;
};

/// Writes a recording of one value of every kind, and of one whose number the type table does not name. It begins, as
/// the recorder's do, with the state of every value from 10 ms on; ranges that change are entered in the range table.
void writeRandomRecording(const std::string& file, const RandomOptions& options);

}  // namespace RecToolTests
