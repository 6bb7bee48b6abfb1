// What the terminal can show, and long output a page at a time.
#pragma once

namespace RecTool {

/// Whether standard output is a terminal that shows colours, and the user wants them (NO_COLOR is not set).
[[nodiscard]] bool outputHasColours();

/// While an object lives, what goes to the terminal goes through the pager that the environment names: RECTOOL_PAGER,
/// else PAGER, else "less". None where that is empty or "cat", where standard output is no terminal, or where the
/// system is Windows. The end of the object waits until the reader has seen enough.
class Pager {
public:
    explicit Pager(bool wanted);
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;
    ~Pager();

private:
    int m_process = 0;  // 0: there is none
    int m_output = 0;   // standard output and error as they were
    int m_errors = 0;
};

}  // namespace RecTool
