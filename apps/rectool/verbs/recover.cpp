// The verb "recover": closes a recording that a crash or power cut left open.
#include <iostream>
#include <string>

#include <recording2/inspection/rescue/recovery.h>

#include "commandline/verb.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "system/interrupt.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using Inspection::Recovery;
using Inspection::RecoveryOutcome;

namespace {

struct RecoverOptions {
    std::string file;
    std::string output;          ///< the new file; empty: beside the old one
    std::uint64_t periodMs = 0;  ///< from record to record where no time is known; 0: worked out
    bool json = false;
};

void printRecoverySummary(const RecoverOptions& options, const std::string& output, const Recovery& recovery)
{
    std::cout << oneLine(output) << ": " << counted(recovery.records, "record") << ", "
              << grouped(static_cast<std::uint64_t>(recovery.bytes)) << " bytes, from " << utc(recovery.header.startMs)
              << " to " << utc(recovery.header.stopMs) << '\n';
    if (recovery.journal.empty()) {
        std::cout << "There was no journal that could be used: the records of " << printedName(options.file)
                  << " were walked.\n";
    } else {
        std::cout << "By " << oneLine(recovery.journal) << ": " << counted(recovery.times.kept, "record")
                  << " with their exact time.\n";
    }
    for (const std::string& line : Inspection::describe(recovery.times, grouped)) {
        std::cout << "Rebuilt: " << line << ".\n";
    }
    for (const std::string& line : recovery.lost) {
        std::cout << "Lost: " << oneLine(line) << ".\n";
    }
    for (const std::string& line : recovery.notes) {
        std::cout << "Note: " << oneLine(line) << ".\n";
    }
    if (recovery.outcome == RecoveryOutcome::Whole) {
        std::cout << "Nothing was lost.\n";
    }
    std::cout << printedName(options.file) << " was left as it is.\n";
}

void printRecoveryAsJson(const RecoverOptions& options, const std::string& output, const Recovery& recovery)
{
    printJson({{"file", shownName(options.file)},
               {"output", output},
               {"whole", recovery.outcome == RecoveryOutcome::Whole},
               {"journal", recovery.journal.empty() ? Json() : Json(recovery.journal)},
               {"journalComplete", recovery.journalComplete},
               {"records", recovery.records},
               {"bytes", recovery.bytes},
               {"startMs", recovery.header.startMs},
               {"stopMs", recovery.header.stopMs},
               {"times", toJson(recovery.times)},
               {"lostRecords", recovery.lostRecords},
               {"lost", recovery.lost},
               {"notes", recovery.notes}});
}

ExitCode recover(const RecoverOptions& options)
{
    const Interrupt interrupt;
    const std::string output = options.output.empty() ? Inspection::recoveredName(options.file) : options.output;
    Recovery recovery;
    {
        Progress progress(options.file);
        recovery = Inspection::recover(options.file, {.output = output,
                                                      .periodMs = options.periodMs,
                                                      .progress = progress.callback(),
                                                      .interrupted = Interrupt::requested,
                                                      .withoutLocks = true});
    }
    switch (recovery.outcome) {
        case RecoveryOutcome::Whole:
        case RecoveryOutcome::SomethingLost:
            break;
        case RecoveryOutcome::NothingToDo:
            std::cout << printedName(options.file) << ": " << oneLine(recovery.problem)
                      << " There is nothing to recover; `rectool verify` "
                      << "tells whether it is sound.\n";
            return finish(ExitCode::Fine);
        case RecoveryOutcome::NotWritten:
            complain(output, "The file could not be written: " + recovery.problem);
            return ExitCode::CannotRead;
        default:
            complain(options.file, recovery.problem + " Nothing was written.");
            return ExitCode::CannotRead;
    }
    (options.json ? printRecoveryAsJson : printRecoverySummary)(options, output, recovery);
    return finish(recovery.outcome == RecoveryOutcome::Whole ? ExitCode::Fine : ExitCode::Damaged);
}

}  // namespace

void addRecover(const Syntax& program)
{
    Verb verb(program, "recover", "Close a recording that a crash, a power cut or a full disk left open", recover);
    verb.output("FILE", "The new recording (default: NAME.rec beside NAME.tmp, or NAME_recovered.rec)");
    verb.period();
    verb.json("Print a summary as JSON");
    verb.examples({"recover receiver.tmp", "recover receiver.tmp -o saved.rec --period 20ms --json"},
                  "Reads NAME.tmp.journal too. Neither file is changed.\n"
                  "Exit code 0: every record is there; 3: something was lost; 2: nothing could be saved.");
}

}  // namespace RecTool
