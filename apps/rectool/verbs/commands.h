// The verbs of rectool. Each prints its result on standard output and what is wrong on standard error.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "map/mapoptions.h"
#include "plot/plot.h"
#include "printing/exitcode.h"

namespace RecTool {

struct CatOptions {
    std::string file;
    std::string from;                ///< a time of the recording; empty: from the beginning
    std::string to;                  ///< a time of the recording, the last one shown; empty: to the end
    std::vector<std::string> types;  ///< keywords or numbers; empty: all
    std::string time = "offset";     ///< how times are shown; or "utc", "local"
    bool csv = false;                ///< plain values as CSV
    bool json = false;
    bool follow = false;  ///< also the records that are still to come
};
ExitCode cat(const CatOptions& options);

/// What all verbs that list one table of a file take.
struct ListOptions {
    std::string file;
    bool json = false;
};
ExitCode types(const ListOptions& options);
ExitCode listBookmarks(const ListOptions& options);
ExitCode listRanges(const ListOptions& options);

struct StateOptions {
    std::string file;
    std::string at;  ///< a time of the recording, or "end"
    bool json = false;
};
ExitCode state(const StateOptions& options);

ExitCode map(const MapOptions& options);

struct DiffOptions {
    std::string file;
    std::string from;  ///< a time of the recording
    std::string to;    ///< a time of the recording
    bool all = false;  ///< show what is the same as well
    bool json = false;
};
ExitCode diff(const DiffOptions& options);

struct CutOptions {
    std::string file;
    std::string from;    ///< a time of the recording; empty: from the beginning
    std::string to;      ///< a time of the recording; empty: to the end
    std::string output;  ///< the new file
    bool force = false;  ///< replace an existing file
    bool json = false;
};
ExitCode cut(const CutOptions& options);

struct MergeOptions {
    std::vector<std::string> files;
    std::string output;     ///< the new file
    bool separate = false;  ///< keep values apart that several files recorded at the same time
    bool force = false;     ///< replace an existing file
    bool json = false;
};
ExitCode merge(const MergeOptions& options);

struct VerifyOptions {
    std::vector<std::string> files;
    bool json = false;
};
ExitCode verify(const VerifyOptions& options);

struct RepairOptions {
    std::string file;
    std::string output;          ///< the new file
    std::uint64_t periodMs = 0;  ///< from record to record where no later time is known; 0: worked out
    bool force = false;          ///< replace an existing file
    bool json = false;
};
ExitCode repair(const RepairOptions& options);

}  // namespace RecTool
