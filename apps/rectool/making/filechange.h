// What all that changes a file does alike: check it, ask, change it, read it back; and the changes of bookmarks.
#pragma once

#include <cstdint>
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
    /// Says in a summary what the file is to hold, or refuses.
    using Plan = std::function<ExitCode(Recording2::Inspection::Summary&)>;
    /// Plans the change, asks the person at the terminal, changes the file and reads it back, while no other process
    /// can change it. Whoever waited finds it as it is then, and plans anew.
    /// @param question without the mark; asked once the change is planned
    /// @param store changes the file, which holds what the summary says
    ExitCode make(
        const Plan& plan, const std::function<std::string()>& question,
        const std::function<void(Recording2::CFileAccess&, const Recording2::Inspection::Summary&)>& store) const;

    /// The file as it was when it was checked.
    [[nodiscard]] const Recording2::Inspection::Summary& summary() const { return m_summary; }
    /// A message that ends the verb without a change.
    ExitCode refuse(ExitCode code, const std::string& reason) const;

    /// The channel range table stands after the bookmark table, where storing bookmarks overwrites it.
    [[nodiscard]] static bool rangesBehindBookmarks(const Recording2::Inspection::Summary& summary);

private:
    ExitCode confirm(const std::string& question) const;

    std::string m_file;
    bool m_yes;
    Recording2::Inspection::Summary m_summary;
};

// Changes of a recording's bookmarks, as every program makes them. The file was checked before. Times are milliseconds
// of the recording, texts UTF-8 with characters of Latin-1. What is refused is told, and nothing was changed then.

ExitCode storeBookmark(FileChange& change, std::uint64_t time, const std::string& text);
ExitCode dropBookmark(FileChange& change, std::uint64_t time);
/// Gives the bookmark at a time another text.
ExitCode renameBookmark(FileChange& change, std::uint64_t time, const std::string& text);

}  // namespace RecTool
