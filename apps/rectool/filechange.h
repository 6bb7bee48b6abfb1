// What all verbs that change a file do alike: check it, ask, change it, read it back.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include <recording2/fileaccess.h>
#include <recording2/inspection/inspection.h>

#include "commands.h"

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
    /// Changes the file and reads it back.
    /// @param expected what the tables must hold then; whatever else the file holds must be as before
    ExitCode apply(const std::function<void(Recording2::CFileAccess&)>& change,
                   const Recording2::Inspection::Summary& expected) const;

    /// The file as it was when it was checked.
    [[nodiscard]] const Recording2::Inspection::Summary& summary() const { return m_summary; }
    /// The channel range table stands behind the bookmark table, where storing bookmarks overwrites it.
    [[nodiscard]] bool rangesBehindBookmarks() const;
    /// A message that ends the verb without a change.
    ExitCode refuse(ExitCode code, const std::string& reason) const;

private:
    std::string m_file;
    bool m_yes;
    Recording2::Inspection::Summary m_summary;
};

}  // namespace RecTool
