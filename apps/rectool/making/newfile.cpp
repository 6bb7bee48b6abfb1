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
