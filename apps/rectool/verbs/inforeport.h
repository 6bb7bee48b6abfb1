// What the verb "info" finds out of a recording.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

#include "printing/valuetext.h"
#include "replay/recordedranges.h"

namespace RecTool {

struct TypeCount {
    std::uint64_t records = 0;
    std::uint64_t bytes = 0;  // of data
};

/// A table of the file.
struct InfoBlock {
    const char* name;  // for people
    const char* key;   // for programs
    std::int32_t position;
    std::uint64_t entries;
};

/// All that is known of a file.
struct InfoReport {
    std::string file;
    Recording2::Inspection::Summary summary;
    bool isBeingWritten = false;               // what follows is what was accepted so far
    bool timesAreMissing = false;              // it has no journal
    std::optional<std::uint64_t> firstTimeMs;  // nothing where no time is known
    std::optional<std::uint64_t> lastTimeMs;
    std::map<std::int32_t, TypeCount> perType;
    TypeCount all;
    RecordedRanges ranges;
    std::optional<double> stepHz;                 // as the device told it last
    bool knowsLevelScale = false;                 // and does not only hold what a recorder writes that was told none
    std::map<std::int32_t, MeasuredSpan> levels;  // measured, by type; where they were asked for
    std::vector<Recording2::Inspection::Finding> findings;  // of the tables and of the records

    [[nodiscard]] std::uint64_t lengthMs() const;
    /// Of the header where a device told it, else what the spectra cover; nothing where neither is known.
    [[nodiscard]] std::optional<FrequencySpan> frequencies() const;
    /// The step that the device told, or that of the header if a recorder was told it, or those of the maps.
    [[nodiscard]] std::vector<double> steps() const;
    [[nodiscard]] std::vector<InfoBlock> blocks() const;
};

/// Reads the whole file. @param levels the measured ones as well
[[nodiscard]] InfoReport makeInfoReport(const std::string& file, bool levels);

}  // namespace RecTool
