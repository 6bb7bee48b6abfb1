// Recordings that are named by an archive address: every verb that takes a file takes them from here.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <zelvo/zelvo.h>

#include "printing/exitcode.h"
#include "printing/output.h"

namespace RecTool {

/// "zelvo:///GROUP/FILE"
[[nodiscard]] bool isArchiveAddress(const std::string& name);

/// Files of the archive, locked and at hand while this exists. What was changed is stored by giveBack only.
class ArchivedFiles {
public:
    /// @param change the files are to be changed, and nobody else may use them meanwhile
    explicit ArchivedFiles(bool change) : m_change(change) {}
    ArchivedFiles(const ArchivedFiles&) = delete;
    ArchivedFiles& operator=(const ArchivedFiles&) = delete;
    ~ArchivedFiles() = default;

    /// Puts the local path in the place of an address; another name stays.
    /// @return false, told, when the archive does not give the file
    bool take(std::string& name);
    /// Gives the files back after a verb. A change is stored only where the verb was Fine.
    /// @return the result, or, told, CannotRead when the change could not be stored
    [[nodiscard]] ExitCode giveBack(ExitCode result);

private:
    bool m_change;
    std::unique_ptr<Zelvo::ZelvoClient> m_client;
    std::map<std::string, std::string> m_paths;  // by address
};

/// Lets a verb run with local paths in the place of archive addresses.
template <typename Options>
ExitCode runOnLocalFiles(Options options, ExitCode (*verb)(const Options&))
{
    constexpr bool Changes = requires
    {
        options.yes;
    };  // what asks before it changes the file
    constexpr bool NeedsAll = requires
    {
        options.output;
    };  // something is made of all files together
    ArchivedFiles files(Changes);
    ExitCode result = ExitCode::Fine;
    if constexpr (requires { options.files; }) {
        bool listsAll = false;  // also what could not be read
        if constexpr (requires { options.json; }) {
            listsAll = options.json;
        }
        std::vector<std::string> shown;
        for (std::string& file : options.files) {
            const bool taken = files.take(file);
            result = taken ? result : ExitCode::CannotRead;
            if (taken || listsAll) {
                shown.push_back(std::move(file));
            }
        }
        options.files = std::move(shown);
        if ((NeedsAll && result != ExitCode::Fine) || options.files.empty()) {
            return ExitCode::CannotRead;  // it was told why
        }
    } else if (!files.take(options.file)) {
        return ExitCode::CannotRead;
    }
    return worse(result, files.giveBack(verb(options)));
}

}  // namespace RecTool
