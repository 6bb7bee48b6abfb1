// The name that a new file is going to have, and what may keep it from having it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <system/error.h>

#include "printing/exitcode.h"

namespace RecTool {

class NewName {
public:
    /// @param replace an existing file may be replaced, but for those that measurements may be lost with
    NewName(std::string path, bool replace);

    [[nodiscard]] const std::string& path() const { return m_path; }
    /// Whether the name may be taken: it is none of the inputs', and free unless it may be replaced. @return Fine, or
    /// what it is, told
    [[nodiscard]] ExitCode check(const std::vector<std::string>& inputs) const;
    /// The last step. @param problem why the file could not be written; empty when it could
    /// @param rename gives it the name, in the place of another file or of none
    /// @return Fine, or, told, why it was not given, also because somebody wants the program to end
    [[nodiscard]] ExitCode finish(const std::string& problem,
                                  const std::function<System::Error(bool replace)>& rename) const;
    /// Tells why nothing was written. @return the code
    [[nodiscard]] ExitCode fail(ExitCode code, const std::string& reason) const;

private:
    [[nodiscard]] std::string whyNeverReplaced() const;

    std::string m_path;
    bool m_replace;
};

}  // namespace RecTool
