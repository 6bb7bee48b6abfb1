// Calls of the system that go through functions of the test, which kill the process, fail, or are only noted.
#pragma once

#include "support/testing.h"

namespace CrashTests {

/// What happens at the call of the system with a number, once or from then on.
struct Trouble {
    bool kill = false;
    int error = 0;
    bool lasting = false;
    int from = 0;  ///< 0: never
    int calls = 0;

    bool now()
    {
        ++calls;
        return from != 0 && (lasting ? calls >= from : calls == from);
    }
};
extern Trouble trouble;

/// What was written, fsynced and removed, as "write a.rec", while it is asked for.
extern std::vector<std::string>* callsMade;

/// What happens before the next wait for a lock, once.
extern std::function<void()> beforeLocking;

}  // namespace CrashTests
