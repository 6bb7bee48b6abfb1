// The name that a new file is going to have, and what may keep it from having it.
#pragma once

#include <string>
#include <vector>

#include "printing/exitcode.h"

namespace RecTool {

class NewName {
public:
    /// @param replace an existing file may be replaced, but for those that measurements may be lost with
    NewName(std::string path, bool replace);

    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] bool replaces() const { return m_replace; }
    /// Whether the name may be taken: it is none of the inputs', and free unless it may be replaced. @return Fine, or
    /// what it is, told
    [[nodiscard]] ExitCode check(const std::vector<std::string>& inputs) const;
    /// Why what has taken the name meanwhile stays, also where files are replaced; empty when it need not.
    [[nodiscard]] std::string whyKept() const;
    /// Tells why nothing was written. @return the code
    [[nodiscard]] ExitCode fail(ExitCode code, const std::string& reason) const;

private:
    [[nodiscard]] std::string whyNeverReplaced() const;

    std::string m_path;
    bool m_replace;
};

}  // namespace RecTool
