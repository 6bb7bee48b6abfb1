// A file that is written piece by piece beside its final name, which it gets once it is whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <system/error.h>
#include <system/nativefile.h>

#include "printing/exitcode.h"
#include "system/interrupt.h"

namespace RecTool {

/// The name that a new file is going to have, and what may keep it from having it.
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

/// The steps are called in their order; the first that does not give Fine is the end, and has told why. Unless finish
/// gives Fine, nothing is left behind and a file that has the name already stays as it is. Memory: one buffer.
class NewFile {
public:
    /// @param replace an existing file may be replaced, never a recording
    NewFile(std::string path, bool replace) : m_name(std::move(path), replace) {}
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();  ///< removes what did not get its name

    [[nodiscard]] const std::string& path() const { return m_name.path(); }
    /// Makes "NAME.part". @param inputs whose names it cannot have
    [[nodiscard]] ExitCode create(const std::vector<std::string>& inputs);
    /// Appends. After a failure nothing is written any more, and finish tells.
    void write(std::string_view bytes);
    /// For a library that writes the file by itself: nothing is to be written here then.
    [[nodiscard]] std::string part() const;
    /// Whether to go on: nothing failed, and nobody wants the program to end.
    [[nodiscard]] bool good() const { return m_error == 0 && !Interrupt::requested(); }
    /// Gives the file its name. @param problem why a library could not write it, empty when it could
    [[nodiscard]] ExitCode finish(const std::string& problem = {});

private:
    void flush();

    NewName m_name;
    Interrupt m_interrupt;
    std::filesystem::path m_part;  // empty unless it is there
    System::NativeFile m_file;
    System::Error m_error = 0;
    std::string m_buffer;
    std::int64_t m_position = 0;
};

}  // namespace RecTool
