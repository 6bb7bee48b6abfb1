// What all verbs that change a file do alike: check it, ask, change it, read it back.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include <recording2/fileaccess.h>
#include <recording2/inspection/inspection.h>

#include "printing/exitcode.h"

namespace RecTool {

/// A change of a finished recording in place. The steps are called in their order; the first that does not give Fine is
/// the end, and has told why.
class FileChange {
public:
    /// @param yes do not ask
    FileChange(std::string file, bool yes) : m_file(std::move(file)), m_yes(yes) {}

    /// Reads the whole file. A damaged one is not to be changed.
    /// @param visit sees every record; may be empty
    ExitCode check(const std::function<void(const Recording2::Inspection::Record&)>& visit = {});
    /// Asks the person at the terminal. @param question without the mark
    ExitCode confirm(const std::string& question) const;
    /// Changes the file and reads it back, while no other process can change it. Whoever waited finds it as it is then.
    /// @param change given the file and what it holds now; says there what it must hold then, or refuses
    ExitCode apply(
        const std::function<ExitCode(Recording2::CFileAccess&, Recording2::Inspection::Summary&)>& change) const;

    /// The file as it was when it was checked.
    [[nodiscard]] const Recording2::Inspection::Summary& summary() const { return m_summary; }
    /// A message that ends the verb without a change.
    ExitCode refuse(ExitCode code, const std::string& reason) const;

    /// The channel range table stands behind the bookmark table, where storing bookmarks overwrites it.
    [[nodiscard]] static bool rangesBehindBookmarks(const Recording2::Inspection::Summary& summary);

private:
    std::string m_file;
    bool m_yes;
    Recording2::Inspection::Summary m_summary;
};

}  // namespace RecTool
