// A quick look at a recording: what it is and how much it holds, without its tables of times.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "inspection.h"

namespace Recording2::Inspection {

/// As inspect, but without the tables after the records: as quick for a large file as for a small one.
Summary inspectHead(const std::string& path);

/// Whether a running program holds the file as one that it is still writing.
bool isBeingWritten(const std::string& path);

struct RecordScan {
    std::uint64_t records = 0;
    bool whole = false;  ///< every byte up to the end of the records belongs to one
};

/// Counts the records of a file and reads the data of some types only. Ends at the first damage.
/// @param summary of the same file, as inspectHead gives it
/// @param wanted whether to read the data of records of this type
/// @param visit takes the code and data of each of them; the text is reused
RecordScan scanRecords(const std::string& path, const Summary& summary, const std::function<bool(std::int32_t)>& wanted,
                       const std::function<void(std::int32_t, const std::string&)>& visit);

}  // namespace Recording2::Inspection
