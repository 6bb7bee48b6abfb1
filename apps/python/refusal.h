// What ends a call from Python: what rectool would say, or the Ctrl-C of whoever waits.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "rectool/printing/exitcode.h"
#include "rectool/printing/output.h"

namespace RecPython {

/// Becomes recording2.RequestError or FileError, by the exit code that rectool would end with.
class Refusal : public std::runtime_error {
public:
    Refusal(RecTool::ExitCode code, std::string file, const std::string& sentence)
        : std::runtime_error(sentence), m_code(code), m_file(std::move(file))
    {
    }
    [[nodiscard]] RecTool::ExitCode code() const { return m_code; }
    [[nodiscard]] const std::string& file() const { return m_file; }  ///< empty where it is about none

private:
    RecTool::ExitCode m_code;
    std::string m_file;
};

/// Keeps what rectool's parts complain of, in the thread that calls them. One at a time a thread.
class Kept {
public:
    /// @throws Refusal with what was complained of unless the code is Fine
    void require(RecTool::ExitCode code) const;
    [[noreturn]] void refuse(RecTool::ExitCode code, const std::string& more = {}) const;

private:
    RecTool::Complaints m_complaints;
};

/// Thrown where a signal handler of Python raised something, which is then still set.
struct Interrupted {};

/// Asks Python now and then whether somebody pressed Ctrl-C. Called without the interpreter's lock.
class Patience {
public:
    /// To be called for every record. @throws Interrupted
    void next()
    {
        constexpr std::uint32_t Often = 256;
        if (++m_count % Often == 0) {
            look();
        }
    }

private:
    static void look();

    std::uint32_t m_count = 0;
};

}  // namespace RecPython
