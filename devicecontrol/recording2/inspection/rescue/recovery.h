// Closes a recording that its recorder could not close: for the tools of this project.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "../inspection.h"
#include "../recordingname.h"
#include "repairedtimes.h"

namespace Recording2::Inspection {

enum class RecoveryOutcome : std::uint8_t {
    Whole,          ///< the file holds every record that was accepted, as closing would have written it
    SomethingLost,  ///< the file holds what could be saved
    NothingToDo,    ///< the recording was closed, though perhaps not given its name, and is not damaged by what
                    ///< inspect() sees; there is no new file
    Nothing,        ///< nothing could be saved, or it is for repairing; there is no new file
    InUse,          ///< a process is writing the recording; there is no new file
    NotWritten,     ///< the new file could not be written; there is none
    Interrupted,    ///< as the options asked for; there is no new file
};

struct RecoveryOptions {
    std::string output;          ///< path of the new file, which must not exist
    std::uint64_t periodMs = 0;  ///< from record to record where no later time is known; 0: see repairTimes
    Progress progress;
    std::function<bool()> interrupted;  ///< asked now and then; may be empty
    bool closed = false;                ///< takes what is whole of a recording, too, that was closed and is damaged
    bool withoutLocks = false;  ///< also where the file system has none and nobody can tell whether somebody writes
};

struct Recovery {
    RecoveryOutcome outcome = RecoveryOutcome::Nothing;
    std::string problem;           ///< one sentence when there is no new file
    std::string journal;           ///< path of the journal that was used, empty without one
    bool journalComplete = false;  ///< it knows every record that was accepted
    std::uint64_t records = 0;     ///< kept
    std::int64_t bytes = 0;        ///< of the new file
    RepairedTimes times;
    std::uint64_t lostRecords = 0;   ///< that the journal knows
    std::vector<std::string> lost;   ///< a clause each: what was lost, and why
    std::vector<std::string> notes;  ///< a sentence each
    Header header;                   ///< as written
    std::shared_ptr<void> held;      ///< keeps other processes from recovering it too, until it is put away
};

/// A name for what is recovered that no file has yet: "NAME.rec", or "NAME_recovered.rec" where that is taken.
[[nodiscard]] std::string recoveredName(const std::string& recording);

/// Writes a closed recording of one that was left unclosed: a ".tmp", or a ".rec" whose closing failed.
/// - With a journal the new file is, byte for byte, what closing would have written for the records accepted.
/// - Where there is none, or it is damaged, the records are walked: those that are whole are kept, and repairTimes says
///   which times they get. Without a journal the start is that in the name, if it tells one in UTC, and the stop the
///   time at which the file was last written.
/// The recording and its journal are only read. The new file is written beside its name with fsync, read
/// back and then given its name.
/// A recording that a process writes, and one that only lacks its name, is left alone.
Recovery recover(const std::string& recording, const RecoveryOptions& options);

}  // namespace Recording2::Inspection
