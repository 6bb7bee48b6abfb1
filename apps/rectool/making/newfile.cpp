// Writing under a temporary name, and taking the final one or removing what was written.
#include "newfile.h"

#include <utility>

#include "printing/output.h"
#include "system/filenames.h"

namespace RecTool {

namespace {

constexpr std::size_t PieceBytes = 262'144;

}  // namespace

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
    return fromNative(m_part);
}

ExitCode NewFile::finish(const std::string& problem)
{
    flush();
    const System::Error closing = m_file.close();
    m_error = m_error != 0 ? m_error : closing;
    if (Interrupt::requested()) {
        return m_name.fail(ExitCode::CannotRead, "Interrupted.");
    }
    const std::string why = m_error != 0 ? System::errorText(m_error) + '.' : problem;
    if (!why.empty()) {
        return m_name.fail(ExitCode::CannotRead, "The file could not be written; is the disk full? " + why);
    }
    const std::string kept = m_name.whyKept();  // something may have taken the name meanwhile
    if (!kept.empty()) {
        return m_name.fail(ExitCode::CannotRead, kept);
    }
    const std::filesystem::path output = native(path());
    const System::Error naming =
        m_name.replaces() ? System::renameReplacing(m_part, output) : System::renameToNew(m_part, output);
    if (naming != 0) {
        return m_name.fail(ExitCode::CannotRead,
                           "The file cannot be given its name: " + System::errorText(naming) + '.');
    }
    m_part.clear();
    return ExitCode::Fine;
}

}  // namespace RecTool
