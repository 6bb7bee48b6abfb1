// The verb "repair": what is whole of a damaged recording as a new one.
#include <algorithm>
#include <iostream>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <recording2/inspection/rescue/repairedtimes.h>
#include <recording2/inspection/rescue/salvage.h>
#include <recording2/inspection/verify/verification.h>
#include <values/recordingtext.h>

#include "commandline/verb.h"
#include "commands.h"
#include "making/newrecording.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/valuetext.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using Inspection::RepairedTimes;
using Inspection::Salvage;

namespace {

std::uint64_t toldLengthMs(const Inspection::Header& header)
{
    const bool known = header.startMs != 0 && header.stopMs > header.startMs;
    return known ? header.stopMs - header.startMs : 0;
}

RepairedTimes timesFor(const Salvage& found, std::uint64_t periodMs)
{
    std::vector<std::optional<std::uint64_t>> known;
    known.reserve(found.records.size());
    for (const Inspection::SalvagedRecord& record : found.records) {
        known.push_back(record.timeMs);
    }
    return Inspection::repairTimes(known, toldLengthMs(found.header), periodMs);
}

/// What is kept of a file, on its way into a new one.
class Repair {
public:
    Repair(const RepairOptions& options, Salvage& found)
        : m_options(options), m_found(found), m_names(found.types), m_times(timesFor(found, options.periodMs))
    {
        repairHeader();
    }

    ExitCode write(NewRecording& output)
    {
        const ExitCode result = output.create(m_found.types);
        if (result != ExitCode::Fine) {
            return result;
        }
        if (!writeRecords(output)) {
            complain(m_options.file, "The file changed while it was read. Nothing was written.");
            return ExitCode::CannotRead;
        }
        std::map<std::uint64_t, std::string> bookmarks;
        for (const Inspection::Bookmark& bookmark : m_found.bookmarks) {
            bookmarks.emplace(bookmark.timeMs, bookmark.text);
        }
        return output.finish(m_found.header, bookmarks);
    }

    [[nodiscard]] const Salvage& found() const { return m_found; }
    [[nodiscard]] const RepairedTimes& times() const { return m_times; }
    [[nodiscard]] std::uint64_t rangesFromRecords() const { return m_rangesFromRecords; }
    [[nodiscard]] std::uint64_t lostTimes() const { return m_times.times.size() - m_times.kept; }
    [[nodiscard]] bool isWhole() const
    {
        return m_found.lostHeaderFields.empty() && !m_found.typesLost && m_found.lostBytes.empty() && !m_found.cutOff &&
               lostTimes() == 0 && !m_found.channelRangesLost && !m_found.bookmarksLost;
    }

private:
    /// What no header can say counts as lost. A stop that is lost is the time of the last record.
    void repairHeader()
    {
        constexpr std::uint64_t Latest = std::numeric_limits<std::uint64_t>::max() / 1000;  // in a time stamp
        Inspection::Header& header = m_found.header;
        if (header.minorVersion < 0) {
            header.minorVersion = 0;
            m_found.lostHeaderFields.emplace_back("the minor version");
        }
        if (header.startMs > Latest) {
            header.startMs = 0;
            m_found.lostHeaderFields.emplace_back("the start time");
        }
        cutAtNul(header.jobId, "the job id behind a NUL byte");
        cutAtNul(header.deviceName, "the device name behind a NUL byte");
        cutAtNul(header.deviceType, "the device type behind a NUL byte");
        const bool wrong = header.stopMs > Latest || (header.stopMs != 0 && header.stopMs < header.startMs);
        std::vector<std::string>& lost = m_found.lostHeaderFields;
        if (wrong) {
            header.stopMs = 0;
            lost.emplace_back("the stop time");
        }
        const bool stopLost = std::find(lost.begin(), lost.end(), "the stop time") != lost.end();
        if (stopLost && header.startMs != 0 && !m_times.times.empty()) {
            header.stopMs = std::min(Latest, header.startMs + m_times.times.back());
        }
    }

    void cutAtNul(std::string& text, const char* lost)
    {
        if (const std::size_t end = text.find('\0'); end != std::string::npos) {
            text.resize(end);
            m_found.lostHeaderFields.emplace_back(lost);
        }
    }

    /// @return false when a record is not there any more
    bool writeRecords(NewRecording& output)
    {
        constexpr std::size_t ProgressRecords = 1000;
        const std::optional<std::int32_t> bearings = m_names.numberOf(DirectionFindingKeyword);
        Progress progress(m_options.file);
        std::size_t i = 0;
        const auto take = [&](const Inspection::Record& record, std::optional<std::uint64_t>, bool isNamed) {
            const bool isFound = !isNamed && m_found.channelRangesLost && record.code == bearings &&
                                 values::CarriesChannelRange(record.data);
            m_rangesFromRecords += isFound ? 1 : 0;
            output.write(record.code, record.data, m_times.times[i], isNamed || isFound);
            if (i % ProgressRecords == 0) {
                progress.show(static_cast<std::int64_t>(i), static_cast<std::int64_t>(m_found.records.size()));
            }
            ++i;
            return !Interrupt::requested();
        };
        return Inspection::readSalvaged(m_options.file, m_found, take) == 0;
    }

    const RepairOptions& m_options;
    Salvage& m_found;
    TypeNames m_names;
    RepairedTimes m_times;
    std::uint64_t m_rangesFromRecords = 0;
};

std::string joined(const std::vector<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : ", ") + text;
    }
    return all;
}

std::vector<std::string> rebuiltLines(const Repair& repair)
{
    std::vector<std::string> lines = Inspection::describe(repair.times(), grouped);
    if (repair.rangesFromRecords() > 0) {
        lines.push_back(counted(repair.rangesFromRecords(), "channel range") + ", from the " + DirectionFindingKeyword +
                        " records that carry one");
    }
    return lines;
}

std::vector<std::string> lostLines(const Repair& repair)
{
    constexpr std::size_t Most = 20;
    const Salvage& found = repair.found();
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < std::min(found.lostBytes.size(), Most); ++i) {
        const Inspection::LostBytes& lost = found.lostBytes[i];
        lines.push_back(counted(static_cast<std::uint64_t>(lost.bytes), "byte") + " among the records, at offset " +
                        std::to_string(lost.offset));
    }
    if (found.lostBytes.size() > Most) {
        lines.push_back("bytes at " + grouped(found.lostBytes.size() - Most) + " more places; --json lists them all");
    }
    if (found.cutOff) {
        lines.emplace_back("what stood behind the end of the file, which was cut off");
    }
    if (repair.lostTimes() > 0) {
        lines.push_back("the true time of " + counted(repair.lostTimes(), "record"));
    }
    if (!found.lostHeaderFields.empty()) {
        lines.push_back("of the header: " + joined(found.lostHeaderFields));
    }
    if (found.typesLost) {
        lines.emplace_back("names of types");
    }
    if (found.channelRangesLost) {
        lines.emplace_back("entries of the channel range table");
    }
    if (found.bookmarksLost) {
        lines.push_back(found.lostBookmarks > 0 ? counted(found.lostBookmarks, "bookmark") + " or more" : "bookmarks");
    }
    return lines;
}

void printRepairSummary(const RepairOptions& options, const Repair& repair, bool sound,
                        const NewRecordingResult& result)
{
    print(options.output, result);
    if (sound) {
        std::cout << printedName(options.file) << " is sound; this is a copy.\n";
        return;
    }
    const std::uint64_t ranges = result.channelRanges - repair.rangesFromRecords();
    std::cout << "Kept: " << counted(result.records, "record") << ", " << counted(repair.times().kept, "time") << ", "
              << counted(repair.found().types.size(), "type") << ", " << counted(ranges, "channel range") << ", "
              << counted(result.bookmarks, "bookmark") << ".\n";
    for (const std::string& line : rebuiltLines(repair)) {
        std::cout << "Rebuilt: " << line << ".\n";
    }
    for (const std::string& line : lostLines(repair)) {
        std::cout << "Lost: " << line << ".\n";
    }
    if (repair.isWhole()) {
        std::cout << "Nothing was lost.\n";
    }
}

void printRepairAsJson(const RepairOptions& options, const Repair& repair, bool sound, const NewRecordingResult& result)
{
    const Salvage& found = repair.found();
    Json lostBytes = Json::array();
    for (const Inspection::LostBytes& lost : found.lostBytes) {
        lostBytes.push_back({{"offset", lost.offset}, {"bytes", lost.bytes}});
    }
    Json json = {{"file", shownName(options.file)}, {"sound", sound}, {"whole", repair.isWhole()}};
    json.update(toJson(options.output, result));
    json["types"] = found.types.size();
    json["times"] = toJson(repair.times());
    json["channelRangesFromRecords"] = repair.rangesFromRecords();
    json["lost"] = {{"bytes", std::move(lostBytes)},
                    {"cutOff", found.cutOff},
                    {"headerFields", found.lostHeaderFields},
                    {"types", found.typesLost},
                    {"channelRanges", found.channelRangesLost},
                    {"bookmarks", found.bookmarksLost}};
    printJson(json);
}

/// Whether there is nothing of a recording in a file that once held one.
bool isHopeless(const Salvage& found)
{
    const bool hadMore = !found.lostBytes.empty() || found.cutOff || !found.lostHeaderFields.empty() ||
                         found.header.positions.firstRecord != 0;
    return found.records.empty() && hadMore;
}

}  // namespace

ExitCode repair(const RepairOptions& options)
{
    ExitCode result = NewRecording(options.output, options.force).check({options.file});
    if (result != ExitCode::Fine) {
        return result;
    }
    bool sound = false;
    {
        Progress progress(options.file + ": checking");
        const Inspection::Verification verification = Inspection::verify(options.file, progress.callback());
        sound = verification.count(Inspection::Severity::Damage) == 0;
    }
    Salvage found = [&] {
        Progress progress(options.file + ": looking for records");
        return Inspection::salvage(options.file, progress.callback());
    }();
    if (found.readability != Inspection::Readability::Ok) {
        complain(options.file, found.problem);
        return ExitCode::CannotRead;
    }
    if (isHopeless(found)) {
        complain(options.file, "No record could be saved. Nothing was written.");
        return ExitCode::CannotRead;
    }
    Repair repair(options, found);
    NewRecording output(options.output, options.force);  // from here on an interrupt is waited for
    result = repair.write(output);
    if (result != ExitCode::Fine) {
        return result;
    }
    (options.json ? printRepairAsJson : printRepairSummary)(options, repair, sound, output.result());
    return finish(repair.isWhole() ? ExitCode::Fine : ExitCode::Damaged);
}

void addRepair(const Syntax& program)
{
    Verb verb(program, "repair", "Store what is whole of a damaged recording as a recording", repair);
    verb.newRecording();
    verb.period();
    verb.examples({"repair damaged.rec -o repaired.rec", "repair cut.rec -o repaired.rec --period 20ms --json"},
                  "Exit code 0: nothing was lost; 3: something was lost; 2: nothing could be saved.");
}

}  // namespace RecTool
