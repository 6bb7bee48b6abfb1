// Recovering, in these steps: hold the recording against others; evidence, which is its journal or else what salvaging
// finds; of it the records, with their times where these are known; times for the others; the new file, read back
// before it gets its name; the report. Repairing goes the same way with salvaged records of a recording that was
// closed.
#include "recovery.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include <system/lockfile.h>
#include <system/nativefile.h>
#include "../../file/journal.h"
#include "../filename.h"
#include "../verify/verification.h"
#include "leftparts.h"
#include "recoverysteps.h"

namespace Recording2::Inspection {

namespace fs = std::filesystem;

std::string counted(std::uint64_t number, const std::string& what)
{
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

std::uint64_t lastWriteMs(const std::string& path)
{
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(native(path), error);
    const auto sinceEpoch = std::chrono::file_clock::to_sys(written).time_since_epoch();
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
    return error || ms < 0 ? 0 : static_cast<std::uint64_t>(ms);
}

// A recording of more than a year is a wrong clock.
std::uint64_t lengthFrom(std::uint64_t startMs, std::uint64_t stopMs)
{
    constexpr std::uint64_t Year = std::uint64_t{366} * 86'400'000;
    return startMs != 0 && stopMs > startMs && stopMs - startMs < Year ? stopMs - startMs : 0;
}

namespace {

constexpr System::FileMode OwnerReadsAndWrites = 0600;

void fail(Recovery& report, RecoveryOutcome outcome, const std::string& problem)
{
    report.outcome = outcome;
    report.problem = problem;
}

/// Writes what stands after the records.
void end(Output& output, Found& found, RepairedTimes repaired, Recovery& report)
{
    const std::vector<std::uint64_t>& times = repaired.times;
    std::vector<std::uint64_t> ranges;
    for (std::size_t i = 0; i < times.size(); ++i) {
        if (output.ranges[i]) {
            ranges.push_back(times[i]);
        }
    }
    if (!found.stopKnown && !times.empty()) {
        found.header.stopMs = found.header.startMs + times.back();
    }
    output.file.end(found.header, {times, ranges, {}});
    report.times = std::move(repaired);
}

/// Reads the file back and gives it its name.
/// @return why it could not be written or given its name; empty when it was
std::string store(RecordingWriter& file)
{
    if (const System::Error error = file.close(true)) {
        return System::errorText(error) + '.';
    }
    const Verification read = verify(utf8(file.part()));
    if (read.readability != Readability::Ok || read.records != file.records()) {
        return "Read back, it does not hold what was written.";
    }
    const System::Error error = file.takeName(false);
    return error == 0 ? "" : "It cannot be given its name: " + System::errorText(error) + '.';
}

void finish(const Task& task, Found& found)
{
    Recovery& report = task.report;
    if (task.options.interrupted && task.options.interrupted()) {
        fail(report, RecoveryOutcome::Interrupted, "Interrupted.");
        return;
    }
    Output& output = task.output;
    if (output.times.empty() && !report.lost.empty()) {
        fail(report, RecoveryOutcome::Nothing, "No record could be saved.");
        return;
    }
    end(output, found, repairTimes(output.times, found.lengthMs, task.options.periodMs), report);
    const std::string problem = store(output.file);
    if (!problem.empty()) {
        fail(report, RecoveryOutcome::NotWritten, problem);
        return;
    }
    report.records = output.file.records();
    report.bytes = output.file.bytes();
    report.header = found.header;
    report.outcome = report.lost.empty() ? RecoveryOutcome::Whole : RecoveryOutcome::SomethingLost;
}

/// @return false when the journal belongs to another recording
bool recoverFromJournal(const std::string& recording, const RecoveryOptions& options, System::FileMode mode,
                        Recovery& report)
{
    std::optional<JournalContent> journal = readJournal(journalOf(recording));
    if (!journal) {
        return false;
    }
    Output output{{native(options.output), mode | OwnerReadsAndWrites}, {}, {}};
    Recovery attempt = report;
    attempt.journal = journalOf(recording);
    const Task task{recording, options, attempt, output};
    std::optional<Found> found = takeFromJournal(task, std::move(*journal));
    if (!found) {
        return false;
    }
    finish(task, *found);
    report = std::move(attempt);
    return true;
}

void recoverFromRecords(const std::string& recording, const RecoveryOptions& options, System::FileMode mode,
                        Recovery& report)
{
    const Salvage salvage = salvageUnclosed(recording, options.progress);
    if (salvage.readability != Readability::Ok) {
        fail(report, RecoveryOutcome::Nothing, salvage.problem);
        return;
    }
    Output output{{native(options.output), mode | OwnerReadsAndWrites}, {}, {}};
    const Task task{recording, options, report, output};
    Found found = takeFromRecords(task, salvage);
    finish(task, found);
}

/// The recording and its journal, locked: whoever writes a recording has both locks, to the end of closing it.
struct Held {
    System::NativeFile recording;
    System::NativeFile journal;
};

bool isThere(const std::string& path)
{
    std::error_code none;
    return fs::exists(fs::symlink_status(native(path), none));
}

// By its own name where a link leads to it.
bool isStillThere(const System::NativeFile& file, const std::string& path)
{
    std::error_code error;
    const fs::path own = fs::canonical(native(path), error);
    return !error && file.isAt(own);
}

/// Opens and locks a file. @return false, told, when it is not to be touched
bool hold(System::NativeFile& file, const std::string& path, const RecoveryOptions& options, Recovery& report)
{
    System::Error error = file.open(native(path), System::Access::Read);
    if (error != 0) {
        fail(report, RecoveryOutcome::Nothing, path + " cannot be opened: " + System::errorText(error) + '.');
        return false;
    }
    error = System::lockPatiently(file);
    // Whoever had the lock until now may have closed the recording, or recovered it.
    if (error == System::LockHeld || !isStillThere(file, path)) {
        fail(report, RecoveryOutcome::InUse, "A running program is writing this recording.");
        return false;
    }
    if (error != 0 && !options.withoutLocks) {
        fail(report, RecoveryOutcome::Nothing,
             "Its file system has no locks, so that nobody can tell whether a program is writing it: "
             "`rectool recover` takes it all the same.");
        return false;
    }
    return true;
}

/// "NAME.rec" for "NAME.tmp", with all of NAME, or "NAME_2.rec", ... where that is taken.
std::string nameToTake(const std::string& recording)
{
    constexpr std::string_view Open = ".tmp";
    const bool open = recording.ends_with(Open);
    const std::string stem = open ? recording.substr(0, recording.size() - Open.size()) : recording;
    std::string name = stem + ".rec";
    for (int number = 2; isThere(name); ++number) {
        name = stem + '_' + std::to_string(number) + ".rec";
    }
    return name;
}

/// A recording that was closed is left as it is. @return false when there is something to recover
bool wasClosed(const std::string& recording, const Summary& summary, Recovery& report)
{
    const bool sound = summary.findings.empty();
    const bool closedName = journalOf(recording) != Journal::pathFor(recording);
    if (summary.readability != Readability::Ok || isThere(journalOf(recording)) || (!closedName && !sound)) {
        return false;
    }
    if (!closedName) {
        fail(report, RecoveryOutcome::NothingToDo,
             "The recording is complete and only lacks its name: rename it to " + nameToTake(recording) + '.');
    } else if (sound) {
        fail(report, RecoveryOutcome::NothingToDo, "This recording was closed.");
    } else {  // its tables are what is wrong, which is for repairing: there is no journal to recover from
        fail(report, RecoveryOutcome::Nothing, "This recording was closed and is damaged: repair it instead.");
    }
    return true;
}

}  // namespace

std::string recoveredName(const std::string& recording)
{
    const fs::path path = native(recording);
    const std::u8string name = path.filename().u8string();
    // Not cut at its first dot as in closing: other recordings may be cut to the same.
    const std::u8string ending = u8".tmp";
    const std::u8string base =
        name.ends_with(ending) ? name.substr(0, name.size() - ending.size()) : name.substr(0, name.find(u8'.'));
    const auto named = [&](const std::string& end) {
        const std::u8string made = (path.parent_path() / (base + std::u8string(end.begin(), end.end()))).u8string();
        return std::string(made.begin(), made.end());
    };
    std::error_code error;
    std::string candidate = named(".rec");
    for (int number = 1; fs::exists(fs::symlink_status(native(candidate), error)); ++number) {
        std::string end = "_recovered";
        if (number > 1) {
            end.append("_").append(std::to_string(number));
        }
        candidate = named(end.append(".rec"));
    }
    return candidate;
}

Recovery recover(const std::string& recording, const RecoveryOptions& options)
{
    Recovery report;
    Summary summary = inspect(recording);
    if (summary.readability == Readability::Missing || summary.readability == Readability::Unreadable) {
        fail(report, RecoveryOutcome::Nothing, summary.problem);
        return report;
    }
    const auto held = std::make_shared<Held>();
    const bool hasJournal = isThere(journalOf(recording));
    if (!hold(held->recording, recording, options, report) ||
        (hasJournal && !hold(held->journal, journalOf(recording), options, report))) {
        return report;
    }
    summary = inspect(recording);  // nobody writes any more
    if (!options.closed && wasClosed(recording, summary, report)) {
        return report;
    }
    for (const std::string& part : removeLeftParts(options.output)) {
        report.notes.push_back("An unfinished output of an earlier run was removed: " + part + '.');
    }
    const System::FileMode mode = held->recording.mode();
    if (!recoverFromJournal(recording, options, mode, report)) {
        if (hasJournal) {
            report.notes.emplace_back(
                "The journal beside the recording is damaged or belongs to another one: it was "
                "not used");
        }
        recoverFromRecords(recording, options, mode, report);
    }
    report.held = held;
    return report;
}

}  // namespace Recording2::Inspection
