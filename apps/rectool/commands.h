// The verbs of rectool. Each prints its result on standard output and what is wrong on standard error.
#pragma once

#include <string>
#include <vector>

namespace RecTool {

enum class ExitCode : int {
    Fine = 0,
    Usage = 1,
    CannotRead = 2,
    Damaged = 3,  ///< read, but not all of the file is sound
};

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
};
ExitCode info(const InfoOptions& options);

struct TypesOptions {
    std::string file;
    bool json = false;
};
ExitCode types(const TypesOptions& options);

struct CatOptions {
    std::string file;
    std::string from;                ///< a time of the recording; empty: from the beginning
    std::string to;                  ///< a time of the recording, the last one shown; empty: to the end
    std::vector<std::string> types;  ///< keywords or numbers; empty: all
    bool json = false;
};
ExitCode cat(const CatOptions& options);

}  // namespace RecTool
