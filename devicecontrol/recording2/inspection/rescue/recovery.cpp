// Recovery with a journal and without one, and the new file that both write.
#include "recovery.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "../../files.h"
#include "../../format/layout.h"
#include "../../journal.h"
#include "../../system/nativefile.h"
#include "../fieldreader.h"
#include "../filename.h"
#include "../recordingname.h"
#include "../tables.h"
#include "../verification.h"
#include "journalreader.h"
#include "leftparts.h"
#include "salvage.h"

namespace Recording2::Inspection {

namespace {

namespace fs = std::filesystem;

std::string counted(std::uint64_t number, const std::string& what)
{
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

/// What goes into the new file, gathered by one of the two ways.
struct Found {
    Format::HeaderRecord header;
    std::string types;  // the block as it stands in the file
    bool stopKnown = false;
    std::uint64_t lengthMs = 0;  // of the recording, 0 when it is not known
};

/// The new file: records as they are found, and then what closing writes.
class NewFile {
public:
    /// @param mode the original's: whoever may read it may read what is made of it
    NewFile(const std::string& output, System::FileMode mode) : m_output(output), m_mode(mode | OwnerReadsAndWrites) {}
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile()
    {
        m_file.reset();
        if (m_made) {
            System::removeFile(native(m_part));
        }
    }

    void begin(const std::string& types)
    {
        makePart();
        static_cast<void>(m_file->lock());  // whoever looks for parts that are left lets it be
        m_file->append(Format::headerArea());
        m_positions.typeTable = types.empty() ? 0 : here();
        m_file->append(types);
    }
    void add(const Record& record, std::optional<std::uint64_t> time, bool channelRange)
    {
        if (m_positions.firstRecord == 0) {
            m_positions.firstRecord = here();
        }
        m_starts.push_back(here());
        m_times.push_back(time);
        m_ranges.push_back(channelRange);
        m_file->commit(
            Format::putRecordHead(m_file->reserve(), record.code, static_cast<std::uint32_t>(record.data.size())));
        m_file->append(record.data);
    }
    [[nodiscard]] std::size_t records() const { return m_starts.size(); }
    /// What closing writes. @return the times that the records got
    RepairedTimes end(Found& found, std::uint64_t periodMs)
    {
        RepairedTimes times = repairTimes(m_times, found.lengthMs, periodMs);
        writeTables(times.times);
        if (!found.stopKnown && !times.times.empty()) {
            found.header.stopMs = found.header.startMs + times.times.back();
        }
        found.header.positions = m_positions;
        std::string record;
        Format::appendHeader(record, found.header);
        m_bytes = m_file->position();
        m_file->seek(0);
        m_file->append(record);
        m_file->force();
        m_file->close();
        return times;
    }
    /// @return why the file could not be written or given its name; empty when it was
    std::string finish()
    {
        if (!m_file->good()) {
            return System::errorText(m_file->error()) + '.';
        }
        const Verification read = verify(m_part);
        if (read.readability != Readability::Ok || read.records != records()) {
            return "Read back, it does not hold what was written.";
        }
        const System::Error error = System::renameToNew(native(m_part), native(m_output));
        if (error != 0) {
            return "It cannot be given its name: " + System::errorText(error) + '.';
        }
        m_made = false;
        return "";
    }
    [[nodiscard]] std::int64_t bytes() const { return m_bytes; }
    [[nodiscard]] bool good() const { return m_file->good(); }

private:
    static constexpr System::FileMode OwnerReadsAndWrites = 0600;

    // Without a suffix that anybody takes for a recording.
    void makePart()
    {
        m_part = m_output + ".part";
        int number = 1;
        do {
            m_file = std::make_unique<OutputFile>(native(m_part), OpenMode::New, m_mode);
            m_made = m_file->good();
            m_part = m_made ? m_part : m_output + ".part" + std::to_string(++number);
        } while (m_file->error() == System::NameTaken);
    }
    [[nodiscard]] std::int32_t here() const
    {
        return static_cast<std::int32_t>(std::min(m_file->position(), Format::LastPosition));
    }
    void writeTables(const std::vector<std::uint64_t>& times)
    {
        m_positions.timeTable = times.empty() ? 0 : here();
        for (std::size_t i = 0; i < times.size(); ++i) {
            m_file->commit(Format::putTimeEntry(m_file->reserve(), times[i], m_starts[i]));
        }
        for (std::size_t i = 0; i < times.size(); ++i) {
            if (!m_ranges[i]) {
                continue;
            }
            m_positions.channelRangeTable = m_positions.channelRangeTable == 0 ? here() : m_positions.channelRangeTable;
            m_file->commit(Format::putTime(m_file->reserve(), times[i]));
        }
    }

    std::string m_output;
    std::string m_part;
    System::FileMode m_mode;
    bool m_made = false;
    std::unique_ptr<OutputFile> m_file;
    Format::Positions m_positions;
    std::vector<std::int32_t> m_starts;
    std::vector<std::optional<std::uint64_t>> m_times;
    std::vector<bool> m_ranges;
    std::int64_t m_bytes = 0;
};

/// Shared by both ways: the user's wishes and the report.
struct Task {
    const std::string& recording;
    const RecoveryOptions& options;
    Recovery& report;
    NewFile& output;

    [[nodiscard]] bool goOn(std::int64_t done, std::int64_t all) const
    {
        if (options.progress) {
            options.progress(done, all);
        }
        return output.good() && !(options.interrupted && options.interrupted());
    }
};

constexpr std::int64_t ProgressBytes = std::int64_t{1} << 20U;

/// When nobody wrote the recording any more, milliseconds since 1970 UTC; 0 when the file does not tell.
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

/// The way with a journal.
class FromJournal {
public:
    FromJournal(const Task& task, JournalContent journal)
        : m_task(task),
          m_journal(std::move(journal)),
          m_file(task.recording),
          m_bytes(m_file, m_journal),
          m_fields(m_bytes, 0, m_bytes.size())
    {
        m_task.report.journalComplete = m_journal.complete;
    }

    Found run()
    {
        readHeader();
        readTypes();
        m_task.output.begin(m_found.types);
        const std::vector<Format::Journal::Entry>& entries = m_journal.entries;
        for (std::size_t number = 0; number < entries.size() && m_goesOn; ++number) {
            if (entries[number].check != 0) {
                takeKnown(number);
                showProgress();
            }
        }
        if (!m_journal.complete && m_goesOn) {
            m_task.report.notes.emplace_back(
                "The journal is damaged or was cut off: records that it does not know are "
                "taken from the recording itself");
            walk(m_at, m_file.size());  // not in the tail, of which nothing tells where it ends
        }
        tellLosses();
        m_found.lengthMs =
            lengthFrom(m_found.header.startMs, std::max(m_found.header.stopMs, lastWriteMs(m_task.recording)));
        return std::move(m_found);
    }
    [[nodiscard]] bool provesItself() const { return m_known > 0 || m_journal.entries.empty(); }

private:
    void readHeader()
    {
        if (m_journal.header) {
            m_found.header = *m_journal.header;
        } else {
            m_found.header.major = Format::OldestMajorVersion;
            m_task.report.lost.emplace_back("the header, which is damaged in the journal");
        }
        if (m_journal.stopMs) {
            m_found.header.stopMs = *m_journal.stopMs;
        }
        m_found.stopKnown = m_journal.complete && m_journal.header && (m_journal.stopMs || m_journal.entries.empty());
    }

    /// The block of types, and with it where the records begin: a walk from another place would take types for records.
    void readTypes()
    {
        const auto& said = m_journal.types;
        const std::int64_t firstKnown = firstKnownRecord();
        m_at = said ? static_cast<std::int64_t>(said->end) : firstKnown;
        if (!said && m_journal.complete && firstKnown == Format::HeaderAreaBytes) {
            return;  // a recording without types
        }
        const std::int64_t end = walkTypes();
        const bool sound = end != 0 && (said ? hasCheck(*said) : true);
        if (!sound) {
            m_found.types.clear();
            m_task.report.lost.emplace_back("the names of the types");
        } else if (!said) {
            m_at = end;
        }
    }
    [[nodiscard]] std::int64_t firstKnownRecord()
    {
        const auto& all = m_journal.entries;
        const auto first = std::find_if(all.begin(), all.end(), [](const auto& entry) { return entry.check != 0; });
        return first == all.end() ? m_bytes.size() : first->position;
    }
    [[nodiscard]] bool hasCheck(const Format::Journal::Types& said) const
    {
        return said.begin == std::uint64_t{Format::HeaderAreaBytes} && said.end - said.begin == m_found.types.size() &&
               Format::Journal::Check(m_journal.salt)
                       .addSample(0, m_found.types.data(), m_found.types.size())
                       .value() == said.check;
    }
    /// @return where the types end, 0 when they are not whole
    std::int64_t walkTypes()
    {
        Summary types;
        types.fileSize = m_bytes.size();
        types.header.typeTablePosition = Format::HeaderAreaBytes;
        readTypeTable(m_bytes, types);
        if (types.ends.types == 0) {
            return 0;
        }
        m_found.types.resize(static_cast<std::size_t>(types.ends.types - Format::HeaderAreaBytes));
        m_bytes.readAt(Format::HeaderAreaBytes, m_found.types.data(), m_found.types.size());
        return types.ends.types;
    }

    void takeKnown(std::size_t number)
    {
        const Format::Journal::Entry& entry = m_journal.entries[number];
        walk(m_at, entry.position);
        const std::optional<std::int64_t> end = read(entry.position, m_bytes.size());
        const Format::Journal::EntryCheck check(m_journal.salt, number, entry);
        if (end && check.with(m_record.code, m_record.data) == entry.check) {
            m_task.output.add(m_record, entry.timeMs, entry.channelRange);
            m_at = *end;
            ++m_known;
        } else {
            ++m_task.report.lostRecords;
            m_at = entry.position;
            m_skip = true;
        }
    }

    /// Takes the whole records between two positions; nobody knows their times.
    void walk(std::int64_t from, std::int64_t to)
    {
        if (std::exchange(m_skip, false)) {
            return;  // what begins there is a record that was lost
        }
        while (from < to && m_goesOn) {
            const std::optional<std::int64_t> end = read(from, to);
            if (!end) {
                m_lostBytes += to - from;
                return;
            }
            m_task.output.add(m_record, std::nullopt, false);
            from = *end;
            m_at = from;
            showProgress();
        }
    }

    /// Reads the record there. @return where it ends
    std::optional<std::int64_t> read(std::int64_t position, std::int64_t bound)
    {
        if (m_fields.position() != position) {
            m_fields.seek(position);
        }
        std::int32_t length = 0;
        const bool sound = m_fields.number(m_record.code) && m_fields.number(length) && length > 0 &&
                           m_fields.position() + length <= bound && m_fields.bytes(m_record.data, length);
        return sound ? std::optional<std::int64_t>(m_fields.position()) : std::nullopt;
    }

    void tellLosses()
    {
        Recovery& report = m_task.report;
        const std::int64_t missing = m_journal.tailStart.value_or(0) - m_file.size();
        const std::string why = missing > 0
                                    ? ": the recording was cut off, " +
                                          counted(static_cast<std::uint64_t>(missing), "byte") + " of it are missing"
                                    : ": the bytes are not those that were recorded";
        if (report.lostRecords > 0) {
            report.lost.push_back(counted(report.lostRecords, "record") + why);
        }
        if (m_lostBytes > 0) {
            report.lost.push_back(counted(static_cast<std::uint64_t>(m_lostBytes), "byte") +
                                  " that are no whole record");
        }
        const auto unknown = m_task.output.records() - m_known;
        if (unknown > 0) {
            report.lost.push_back("the exact time of " + counted(unknown, "record"));
        }
        if (!m_journal.complete && report.lost.empty()) {
            report.lost.emplace_back("perhaps the last records: the journal does not tell where they ended");
        }
    }

    void showProgress()
    {
        if (m_at >= m_nextProgress) {
            m_nextProgress = m_at + ProgressBytes;
            m_goesOn = m_task.goOn(m_at, m_bytes.size());
        }
    }

    const Task& m_task;
    JournalContent m_journal;
    FileSource m_file;
    UnclosedBytes m_bytes;
    FieldReader m_fields;
    Found m_found;
    Record m_record;
    std::int64_t m_at = 0;
    std::int64_t m_nextProgress = ProgressBytes;
    std::int64_t m_lostBytes = 0;
    std::uint64_t m_known = 0;
    bool m_skip = false;
    bool m_goesOn = true;
};

/// The way without one.
class FromRecords {
public:
    FromRecords(const Task& task, Salvage salvage) : m_task(task), m_salvage(std::move(salvage)) {}

    Found run()
    {
        Found found;
        fillHeader(found);
        if (!m_salvage.types.empty()) {
            Format::appendNumber(found.types, static_cast<std::int32_t>(m_salvage.types.size()));
        }
        for (const TypeEntry& type : m_salvage.types) {
            Format::appendTypeEntry(found.types, type.typeNumber, type.valueType, type.keyword, type.valuePath);
        }
        m_task.output.begin(found.types);
        copyRecords();
        tellLosses();
        return found;
    }

private:
    void fillHeader(Found& found) const
    {
        const Header& said = m_salvage.header;
        Format::HeaderRecord& header = found.header;
        header.major = Format::OldestMajorVersion;
        if (said.majorVersion >= Format::OldestMajorVersion) {  // a file that was closed, but not given its name
            header = {static_cast<std::int16_t>(said.majorVersion),
                      static_cast<std::int16_t>(said.minorVersion),
                      said.startFrequencyHz,
                      said.stopFrequencyHz,
                      said.stepWidthHz,
                      said.minLevel,
                      said.maxLevel,
                      said.startMs,
                      said.stopMs,
                      said.jobId,
                      said.deviceName,
                      said.deviceType,
                      {},
                      said.automatic};
            found.stopKnown = true;
            found.lengthMs = lengthFrom(said.startMs, said.stopMs);
            return;
        }
        header.startMs = startInName(m_task.recording).value_or(0);
        found.lengthMs = lengthFrom(header.startMs, lastWriteMs(m_task.recording));
    }

    void copyRecords()
    {
        SalvageReader reader(m_task.recording);
        Record record;
        std::int64_t nextProgress = 0;
        const std::vector<std::uint64_t>& ranges = m_salvage.channelRangeTimes;
        for (const SalvagedRecord& salvaged : m_salvage.records) {
            if (!reader.read(salvaged.position, record)) {
                ++m_task.report.lostRecords;
                continue;
            }
            const bool isRange = salvaged.timeMs && std::binary_search(ranges.begin(), ranges.end(), *salvaged.timeMs);
            m_unknown += salvaged.timeMs ? 0U : 1U;
            m_task.output.add(record, salvaged.timeMs, isRange);
            if (salvaged.position >= nextProgress) {
                nextProgress = salvaged.position + ProgressBytes;
                if (!m_task.goOn(salvaged.position, m_salvage.records.back().position)) {
                    return;
                }
            }
        }
    }

    void tellLosses() const
    {
        Recovery& report = m_task.report;
        std::int64_t bytes = 0;
        for (const LostBytes& lost : m_salvage.lostBytes) {
            bytes += lost.bytes;
        }
        if (bytes > 0) {
            report.lost.push_back(counted(static_cast<std::uint64_t>(bytes), "byte") + " that are no whole record");
        }
        if (m_unknown > 0) {
            report.lost.push_back("the exact time of " + counted(m_unknown, "record"));
        }
        if (!m_salvage.lostHeaderFields.empty()) {
            report.lost.emplace_back("the header");
        }
        if (m_salvage.typesLost) {
            report.lost.emplace_back("names of types");
        }
        if (m_salvage.channelRangesLost) {
            report.lost.emplace_back("the channel range table");
        }
    }

    const Task& m_task;
    Salvage m_salvage;
    std::uint64_t m_unknown = 0;
};

void fail(Recovery& report, RecoveryOutcome outcome, const std::string& problem)
{
    report.outcome = outcome;
    report.problem = problem;
}

/// What is said about a header that was written.
Header toHeader(const Format::HeaderRecord& record)
{
    Header header;
    header.majorVersion = record.major;
    header.minorVersion = record.minor;
    header.startFrequencyHz = record.startFrequency;
    header.stopFrequencyHz = record.stopFrequency;
    header.stepWidthHz = record.stepWidth;
    header.minLevel = record.minLevel;
    header.maxLevel = record.maxLevel;
    header.startMs = record.startMs;
    header.stopMs = record.stopMs;
    header.jobId = record.jobId;
    header.deviceName = record.deviceName;
    header.deviceType = record.deviceType;
    return header;
}

void finish(const Task& task, Found& found)
{
    Recovery& report = task.report;
    if (task.options.interrupted && task.options.interrupted()) {
        fail(report, RecoveryOutcome::Interrupted, "Interrupted.");
        return;
    }
    if (task.output.records() == 0 && !report.lost.empty()) {
        fail(report, RecoveryOutcome::Nothing, "No record could be saved.");
        return;
    }
    report.times = task.output.end(found, task.options.periodMs);
    const std::string problem = task.output.finish();
    if (!problem.empty()) {
        fail(report, RecoveryOutcome::NotWritten, problem);
        return;
    }
    report.records = task.output.records();
    report.bytes = task.output.bytes();
    report.header = toHeader(found.header);
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
    NewFile output(options.output, mode);
    Recovery attempt = report;
    attempt.journal = journalOf(recording);
    const Task task{recording, options, attempt, output};
    FromJournal way(task, std::move(*journal));
    Found found = way.run();
    if (!way.provesItself()) {
        return false;
    }
    finish(task, found);
    report = std::move(attempt);
    return true;
}

void recoverFromRecords(const std::string& recording, const RecoveryOptions& options, System::FileMode mode,
                        Recovery& report)
{
    Salvage salvage = salvageUnclosed(recording, options.progress);
    if (salvage.readability != Readability::Ok) {
        fail(report, RecoveryOutcome::Nothing, salvage.problem);
        return;
    }
    NewFile output(options.output, mode);
    const Task task{recording, options, report, output};
    Found found = FromRecords(task, std::move(salvage)).run();
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
    error = file.lock();
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

std::string journalOf(const std::string& recording)
{
    constexpr std::string_view Closed = ".rec";
    const bool renamed = recording.size() > Closed.size() &&
                         recording.compare(recording.size() - Closed.size(), Closed.size(), Closed) == 0;
    return Journal::pathFor(renamed ? recording.substr(0, recording.size() - Closed.size()) + ".tmp" : recording);
}

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
