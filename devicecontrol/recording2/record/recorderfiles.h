// How a recorder makes its files.
#pragma once

#include <string>

#include <system/nativefile.h>

#include "../file/journal.h"

namespace Recording2 {

/// What a recorder tells of the files it makes, and remembers from one to the next.
struct RecorderFiles {
    JournalMode journal = JournalMode::Process;
    System::FileMode mode = System::DefaultFileMode;
    bool toldWithoutLocks = false;
    std::string lastName;  // path of the last recording, without its number
    int number = 1;
};

}  // namespace Recording2
