// How a recorder makes its files: under names that nobody else has, in a directory that many processes may record into.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <system/nativefile.h>

#include "../file/growingrecording.h"
#include "../file/journal.h"
#include "../file/recordingtables.h"

namespace Recording2 {

/// What a recorder tells of the files it makes, and remembers from one to the next.
struct RecorderFiles {
    JournalMode journal = JournalMode::Process;
    System::FileMode mode = System::DefaultFileMode;
    bool toldWithoutLocks = false;
    std::string lastName;  // path of the last recording, without its number
    int number = 1;

    /// Makes a file, locked and with its journal. What fails is traced, and file().good() is false.
    /// @param path "NAME.tmp"; receives the name that was found, "NAME_2.tmp" and so on, before each try
    /// @param tables as GrowingRecording takes them
    /// @param onName called before a file of that name is made
    std::unique_ptr<GrowingRecording> make(std::string& path, RecordingTables& tables,
                                           const std::function<void()>& onName);

private:
    System::Error tryName(const std::string& path, GrowingRecording& made);
    System::Error lock(const std::string& path, OutputFile& file);
    System::Error keepJournal(const std::string& path, GrowingRecording& made) const;
};

}  // namespace Recording2
