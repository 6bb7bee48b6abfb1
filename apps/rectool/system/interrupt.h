// A person at the terminal, or the system, wants the program to end.
#pragma once

namespace RecTool {

/// While an object lives, an interrupt (Ctrl-C, termination) does not end the program but is noted, and a write past a
/// limit of the process fails like one on a full disk, so that a file that is half written can be taken away. One
/// object at a time.
class Interrupt {
public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    [[nodiscard]] static bool requested() noexcept;
};

}  // namespace RecTool
