// Looking at what stands under a name, writing under a temporary one, and taking the final one or removing what was
// written.
#include "newfile.h"

#include <system_error>
#include <utility>

#include "printing/output.h"
#include "savedfile.h"
#include "system/filenames.h"

namespace RecTool {

namespace fs = std::filesystem;

namespace {

fs::path folderOf(const fs::path& path)
{
    const fs::path folder = path.parent_path();
    return folder.empty() ? fs::path(".") : folder;
}

constexpr std::size_t PieceBytes = 262'144;

}  // namespace

NewName::NewName(std::string path, bool replace) : m_path(std::move(path)), m_replace(replace)
{
}

ExitCode NewName::fail(ExitCode code, const std::string& reason) const
{
    complain(m_path, reason + " Nothing was written.");
    return code;
}

ExitCode NewName::check(const std::vector<std::string>& inputs) const
{
    std::error_code error;
    const fs::path path = native(m_path);
    if (path.filename().empty() || fs::is_directory(path, error)) {
        return fail(ExitCode::Usage, "This is a directory, not the name of a file.");
    }
    for (const std::string& input : inputs) {
        if (fs::equivalent(native(input), path, error)) {
            return fail(ExitCode::Usage, "The result cannot take the place of " + input + ", from which it is made.");
        }
    }
    const fs::file_status there = fs::symlink_status(path, error);
    const fs::file_status behindLinks = fs::status(path, error);
    if (fs::exists(behindLinks) && !fs::is_regular_file(behindLinks)) {
        return fail(ExitCode::Usage, "This is not an ordinary file.");
    }
    if (fs::exists(there) && !m_replace) {
        return fail(ExitCode::Usage, "There is such a file already; --force replaces it.");
    }
    const std::string kept = whyNeverReplaced();
    if (!kept.empty()) {
        return fail(ExitCode::Usage, kept);
    }
    if (!fs::is_directory(folderOf(path), error)) {
        return fail(ExitCode::CannotRead, "There is no directory " + utf8(folderOf(path)) + '.');
    }
    return ExitCode::Fine;
}

ExitCode NewName::finish(const std::string& problem, const std::function<System::Error(bool replace)>& rename) const
{
    if (Interrupt::requested()) {
        return fail(ExitCode::CannotRead, "Interrupted.");
    }
    if (!problem.empty()) {
        return fail(ExitCode::CannotRead, "The file could not be written; is the disk full? " + problem);
    }
    // Something may have taken the name meanwhile; one that is not replaced is refused by the system.
    if (const std::string kept = m_replace ? whyNeverReplaced() : ""; !kept.empty()) {
        return fail(ExitCode::CannotRead, kept);
    }
    const System::Error naming = rename(m_replace);
    return naming == 0
               ? ExitCode::Fine
               : fail(ExitCode::CannotRead, "The file cannot be given its name: " + System::errorText(naming) + '.');
}

/// Why not even --force replaces what is there; empty when it may be replaced.
std::string NewName::whyNeverReplaced() const
{
    std::error_code error;
    const fs::file_status there = fs::symlink_status(native(m_path), error);
    if (!fs::exists(there)) {
        return "";
    }
    if (fs::is_symlink(there)) {
        return "This is a link, and not followed.";
    }
    if (holdsRecording(m_path)) {
        return "This is a recording, which --force does not replace either.";
    }
    return isUnderWay(m_path) ? "By its name this belongs to a recording that is under way; it is not replaced." : "";
}

NewFile::~NewFile()
{
    m_file.close();
    const System::Error error = m_part.empty() ? 0 : System::removeFile(m_part);
    if (error != 0) {
        complain(part(), "The unfinished file could not be removed: " + System::errorText(error) + ".");
    }
}

ExitCode NewFile::create(const std::vector<std::string>& inputs)
{
    constexpr System::FileMode EverybodyByUmask = 0666;
    constexpr int MostParts = 1000;  // of runs that were killed, or still write
    const ExitCode mayBe = m_name.check(inputs);
    if (mayBe != ExitCode::Fine) {
        return mayBe;
    }
    System::Error error = System::NameTaken;
    for (int number = 1; error == System::NameTaken && number <= MostParts; ++number) {
        m_part = native(path() + ".part" + (number == 1 ? "" : std::to_string(number)));
        error = m_file.open(m_part, System::Access::New, EverybodyByUmask);
    }
    if (error != 0) {
        m_part.clear();
        return m_name.fail(ExitCode::CannotRead, "No file can be made there: " + System::errorText(error) + '.');
    }
    if (const std::string first = path() + ".part"; first != part()) {
        complain(first,
                 "This is what an earlier run left that did not end, unless it still writes: remove it then. It is not "
                 "touched.");
    }
    m_buffer.reserve(2 * PieceBytes);
    return ExitCode::Fine;
}

void NewFile::write(std::string_view bytes)
{
    m_buffer.append(bytes);
    if (m_buffer.size() >= PieceBytes) {
        flush();
    }
}

void NewFile::flush()
{
    std::size_t written = 0;
    if (m_error == 0) {
        m_error = m_file.writeAt(m_position, m_buffer.data(), m_buffer.size(), written);
        m_position += static_cast<std::int64_t>(written);
    }
    m_buffer.clear();
}

std::string NewFile::part() const
{
    return utf8(m_part);
}

ExitCode NewFile::finish(const std::string& problem)
{
    flush();
    const System::Error closing = m_file.close();
    m_error = m_error != 0 ? m_error : closing;
    const std::string why = m_error != 0 ? System::errorText(m_error) + '.' : problem;
    const ExitCode named = m_name.finish(why, [&](bool replace) {
        return replace ? System::renameReplacing(m_part, native(path())) : System::renameToNew(m_part, native(path()));
    });
    if (named == ExitCode::Fine) {
        m_part.clear();
    }
    return named;
}

}  // namespace RecTool
