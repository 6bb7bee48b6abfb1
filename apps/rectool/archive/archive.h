// The verbs of the archive itself.
#pragma once

#include <cstdint>
#include <string>

#include "printing/exitcode.h"

namespace RecTool {

struct ArchiveStatusOptions {
    bool json = false;
};
ExitCode archiveStatus(const ArchiveStatusOptions& options);

struct ArchiveGroupsOptions {
    std::int64_t limit = 0;  ///< the newest so many; 0: all
    bool json = false;
};
ExitCode archiveGroups(const ArchiveGroupsOptions& options);

struct ArchiveShowOptions {
    std::string what;  ///< a group or an address
    bool json = false;
};
ExitCode archiveShow(const ArchiveShowOptions& options);

struct ArchiveFetchOptions {
    std::string address;
    std::string output;  ///< empty: under its own name into the current directory
    bool json = false;
};
ExitCode archiveFetch(const ArchiveFetchOptions& options);

struct ArchiveVerifyOptions {
    std::string group;  ///< empty: all
    bool all = false;   ///< go on after the first problem
    bool json = false;
};
ExitCode archiveVerify(const ArchiveVerifyOptions& options);

struct ArchiveRetryOptions {
    std::string group;  ///< empty: all
    bool json = false;
};
ExitCode archiveRetry(const ArchiveRetryOptions& options);

}  // namespace RecTool
