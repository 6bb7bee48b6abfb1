// Checking a recording whole, asking the user, rewriting its tables and comparing them.
#include "filechange.h"

#include <iostream>
#include <vector>

#include <system/program.h>

#include "printing/output.h"
#include "printing/text.h"
#include "replay/walk.h"
#include "system/filenames.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

bool sameRecording(const Inspection::Summary& a, const Inspection::Summary& b)
{
    return a.header.startMs == b.header.startMs && a.header.stopMs == b.header.stopMs &&
           a.header.positions.firstRecord == b.header.positions.firstRecord &&
           a.header.positions.timeTable == b.header.positions.timeTable && a.types == b.types && a.times == b.times;
}

/// What is wrong with a file that was read back; empty when nothing is.
std::string difference(const Inspection::Summary& found, const Inspection::Summary& expected)
{
    if (found.readability != Inspection::Readability::Ok) {
        return found.problem;
    }
    if (!found.findings.empty()) {
        return found.findings.front().text;
    }
    if (!sameRecording(found, expected)) {
        return "The records are not those that were there before.";
    }
    if (found.bookmarks != expected.bookmarks) {
        return "The bookmarks are not those that should be there.";
    }
    return found.channelRangeTimes == expected.channelRangeTimes ? ""
                                                                 : "The channel ranges are not those that should be "
                                                                   "there.";
}

}  // namespace

ExitCode FileChange::refuse(ExitCode code, const std::string& reason) const
{
    complain(m_file, reason + " Nothing was changed.");
    return code;
}

ExitCode FileChange::check(const std::function<void(const Inspection::Record&)>& visit)
{
    if (!readSummary(m_file, m_summary)) {
        return ExitCode::CannotRead;
    }
    const std::vector<Inspection::Finding> findings = walk(m_file, m_summary, [&](const Inspection::Record& record) {
        if (visit) {
            visit(record);
        }
        return true;
    });
    if (!findings.empty()) {
        complain(m_file, findings);
        return refuse(ExitCode::Damaged, "A damaged file is not changed, to make nothing worse.");
    }
    return ExitCode::Fine;
}

ExitCode FileChange::confirm(const std::string& question) const
{
    if (m_yes) {
        return ExitCode::Fine;
    }
    if (!System::isTerminal(System::Stream::Input)) {
        return refuse(ExitCode::Usage, "There is no terminal to ask at; --yes changes the file without asking.");
    }
    std::cerr << printedName(m_file) << ": " << oneLine(question) << "? [y/N] " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    if (answer != "y" && answer != "Y" && answer != "yes") {
        return refuse(ExitCode::Usage, "Not confirmed.");
    }
    return ExitCode::Fine;
}

ExitCode FileChange::make(const Plan& plan, const std::function<std::string()>& question,
                          const std::function<void(Recording2::CFileAccess&, const Inspection::Summary&)>& store) const
{
    Inspection::Summary expected = m_summary;
    ExitCode result = plan(expected);
    if (result == ExitCode::Fine) {
        result = confirm(question());
    }
    if (result != ExitCode::Fine) {
        return result;
    }
    Recording2::CFileAccess file(forLibrary(m_file).c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    if (!file.IsValidFile()) {
        return refuse(ExitCode::CannotRead, "The file could not be opened.");
    }
    bool asked = false;
    std::string problem;
    const bool stored = file.rewriteTogether(
        [&] {
            asked = true;
            expected = Inspection::inspect(m_file);
            const Inspection::Summary now = expected;
            result = now.findings.empty() && sameRecording(now, m_summary)
                         ? plan(expected)
                         : refuse(ExitCode::CannotRead, "Another recording has taken the place of the file.");
            if (result == ExitCode::Fine) {
                store(file, now);
            }
        },
        [&] { problem = difference(Inspection::inspect(m_file), expected); });
    if (asked && result != ExitCode::Fine) {  // nothing was changed
        return result;
    }
    if (!stored) {
        return refuse(ExitCode::CannotRead,
                      asked ? "The change could not be stored. Is there space, and may a file be made beside this one?"
                            : "The change could not be stored: the file cannot be written.");
    }
    if (!problem.empty()) {
        complain(m_file, "The change could not be stored as it should be. Reading the file back: " + problem);
        return ExitCode::CannotRead;
    }
    return ExitCode::Fine;
}

bool FileChange::rangesBehindBookmarks(const Inspection::Summary& summary)
{
    const Inspection::Header& header = summary.header;
    return header.positions.bookmarkTable != 0 && header.positions.channelRangeTable > header.positions.bookmarkTable;
}

}  // namespace RecTool
