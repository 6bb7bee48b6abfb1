// One line of the table of recordings.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

#include "replay/recordedranges.h"

namespace RecTool {

struct ListedRecording {
    std::string file;
    std::string device;  // UTF-8, name and type
    std::uint64_t startMs = 0;
    std::uint64_t stopMs = 0;
    std::uint64_t records = 0;
    std::uint64_t spectra = 0;
    std::int64_t bytes = 0;
    std::vector<FrequencySpan> ranges;
    Recording2::Inspection::Readability readability = Recording2::Inspection::Readability::Ok;
    const char* state = "";             // the word of that
    bool whole = true;                  // all of its records can be read
    std::optional<std::size_t> damage;  // findings of a check

    [[nodiscard]] bool closed() const { return readability == Recording2::Inspection::Readability::Ok; }
    [[nodiscard]] std::uint64_t lengthMs() const { return stopMs - std::min(startMs, stopMs); }
    [[nodiscard]] bool sound() const { return whole && damage.value_or(0) == 0; }
};

/// What is to be listed, with the arguments understood.
struct ListChoice {
    std::string device;  // in small letters
    std::optional<std::uint64_t> sinceMs;
    std::optional<std::uint64_t> untilMs;
    std::optional<double> coversHz;
};

[[nodiscard]] std::string inSmallLetters(std::string text);

/// @param verify check all of it
/// @return nothing when the recording is not among those that are to be listed
[[nodiscard]] std::optional<ListedRecording> look(const std::string& file, const ListChoice& choice, bool verify);

}  // namespace RecTool
