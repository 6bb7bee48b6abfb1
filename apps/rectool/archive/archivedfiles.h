// Recordings that are named by an archive address: every verb that takes a file takes them from here.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "printing/exitcode.h"

namespace RecTool {

/// "zelvo:///GROUP/FILE"
[[nodiscard]] bool isArchiveAddress(const std::string& name);

/// The archive that is asked: that of a configuration file, or else of the environment (ZELVO_CONFIG).
/// @throws std::runtime_error when the file cannot be used
void useArchive(const std::string& configurationFile);

/// The recordings that a verb takes, and what for.
struct NamedFiles {
    std::string* file = nullptr;
    std::vector<std::string>* list = nullptr;  ///< keeps those that are at hand
    bool change = false;                       ///< nobody else may use them meanwhile
    bool needsAll = false;                     ///< something is made of all of the list together
    bool listsAll = false;                     ///< also those that could not be read
};

/// Runs a verb with local paths in the place of archive addresses, locked meanwhile. What was changed is stored where
/// the verb was Fine. @return the worst of what the verb and the archive tell
[[nodiscard]] ExitCode runOnLocalFiles(const NamedFiles& files, const std::function<ExitCode()>& verb);

template <typename Options>
ExitCode runOnLocalFiles(Options options, ExitCode (*verb)(const Options&))
{
    NamedFiles files;
    if constexpr (requires { options.files; }) {
        files.list = &options.files;
    } else if constexpr (requires { options.file; }) {
        files.file = &options.file;
    }
    files.change = requires
    {
        options.yes;
    };  // what asks before it changes the file
    files.needsAll = requires
    {
        options.output;
    };
    if constexpr (requires { options.json; }) {
        files.listsAll = options.json;
    }
    return runOnLocalFiles(files, [&] { return verb(options); });
}

}  // namespace RecTool
