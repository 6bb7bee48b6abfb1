// How the values of several recordings become those of one.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

namespace RecTool {

/// A recording that is to be merged, as one walk over its records shows it. Clock times are milliseconds since 1970
/// UTC; records whose time is lost are only counted.
struct MergeInput {
    struct Type {
        std::uint64_t records = 0;
        std::uint64_t firstMs = 0;      ///< clock time of the first record
        std::int64_t dataBytes = 0;     ///< of all records
        std::int64_t lengthDigits = 0;  ///< of all records
    };

    std::string file;
    Recording2::Inspection::Summary summary;
    std::vector<Recording2::Inspection::Finding> findings;  ///< in the tables and the records
    std::map<std::int32_t, Type> types;                     ///< of the records, by number
    std::uint64_t withoutTime = 0;
    std::uint64_t firstMs = 0;       ///< clock time of the first record
    std::uint64_t lastMs = 0;        ///< clock time of the last record
    bool isPart = false;             ///< it was cut out of another recording: recorders begin later
    std::uint64_t stateRecords = 0;  ///< the state at the start: of a part the records before the first free
                                     ///< millisecond, else those before the first type that comes back
    std::uint64_t bodyMs = 0;        ///< clock time of the first record after them; 0 without one

    [[nodiscard]] bool empty() const { return types.empty(); }
    /// Of a part: the moment from which on it was cut, after the state in front and the millisecond that stays free.
    [[nodiscard]] std::uint64_t cutMs() const { return firstMs + stateRecords + 1; }
    /// Where it stands among others.
    [[nodiscard]] std::uint64_t beginMs() const
    {
        return isPart ? std::min(cutMs(), summary.header.stopMs) : summary.header.startMs;
    }
};

/// Walks the records of a file that can be read. The wish to end the program ends the walk.
MergeInput surveyForMerge(std::string file, Recording2::Inspection::Summary summary);

/// A value of the merged recording.
struct MergedType {
    Recording2::Inspection::TypeEntry entry;
    bool named = false;               ///< it stands in a type table
    std::vector<std::size_t> inputs;  ///< that record it
};

/// A type that has another number in the merged recording.
struct RenumberedType {
    std::size_t input = 0;
    std::int32_t before = 0;
    Recording2::Inspection::TypeEntry after;
    bool separated = false;  ///< and another keyword and path, too
};

/// What becomes of the types of the inputs.
struct MergePlan {
    std::vector<MergedType> types;
    std::vector<std::map<std::int32_t, std::int32_t>> numbers;  ///< of each input: old number to new
    std::vector<std::uint64_t> notBefore;  ///< of each input: clock time before which its records must not come
    std::vector<RenumberedType> renumbered;
    std::string refusal;           ///< why there is no plan; empty when there is one
    std::size_t refusedInput = 0;  ///< the file that does not go with one before it
};

/// @param inputs in order of their start
/// @param separate give values that overlap a number and path of their own
MergePlan planMerge(const std::vector<MergeInput>& inputs, bool separate);

}  // namespace RecTool
