// The verbs "range list", "range clear" and "range rebuild": the table of channel ranges.
#include <algorithm>
#include <iostream>
#include <map>
#include <optional>
#include <set>

#include <values/recordingtext.h>

#include "commandline/verb.h"
#include "commands.h"
#include "making/filechange.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/valuetext.h"
#include "replay/recordedvalues.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

/// Of the verbs that change the table.
struct RangeOptions {
    std::string file;
    std::vector<std::string> types;  ///< to enter, keywords or numbers; empty: the direction-finding spectrum
    bool yes = false;                ///< change the file without asking
};

/// A record that the channel range table names.
struct Definition {
    Json json;  // null when there is no such record
    std::string keyword;
    std::string text = "(no record)";
};

/// The definitions by time. Everything before them is walked, so that a map is complete.
class Definitions {
public:
    Definitions(const Inspection::Summary& summary, const TypeNames& names) : m_names(names)
    {
        for (const std::uint64_t time : summary.channelRangeTimes) {
            m_all[time];
        }
    }
    void visit(const Inspection::Record& record)
    {
        const values::ValueBase* value = m_recorded.apply(record);
        const auto found = m_all.find(record.timeMs);
        if (found != m_all.end()) {
            found->second = {toJson(record, value, m_names), m_names.label(record.code), describe(record, value)};
        }
    }
    [[nodiscard]] const std::map<std::uint64_t, Definition>& all() const { return m_all; }

private:
    const TypeNames& m_names;
    RecordedValues m_recorded;
    std::map<std::uint64_t, Definition> m_all;
};

void printRangesAsJson(const std::string& file, const Definitions& definitions)
{
    Json ranges = Json::array();
    for (const auto& [time, definition] : definitions.all()) {
        ranges.push_back({{"timeMs", time}, {"record", definition.json}});
    }
    printJson({{"file", shownName(file)}, {"channelRanges", std::move(ranges)}});
}

void printTable(const Definitions& definitions)
{
    if (definitions.all().empty()) {
        std::cout << "The recording has no channel range.\n";
        return;
    }
    Table table("rll", {"Time", "Keyword", "Value"});
    for (const auto& [time, definition] : definitions.all()) {
        table.add({std::to_string(time), definition.keyword, definition.text});
    }
    table.print();
}

/// Whether so many channel ranges stand before the bookmarks, so that readers find all of them and nothing else:
/// after them must be nothing, or a time of 0, which ends the table.
bool fits(std::size_t count, const Inspection::Header& header)
{
    constexpr std::int64_t EntryBytes = Recording2::Format::TimeBytes;
    constexpr std::int64_t TimeBytes = EntryBytes - 1;  // without the separator
    if (header.positions.bookmarkTable == 0) {
        return true;
    }
    const std::int64_t room = header.positions.channelRangeTable == 0
                                  ? 0
                                  : std::int64_t{header.positions.bookmarkTable} - header.positions.channelRangeTable;
    const std::int64_t left = room - static_cast<std::int64_t>(count) * EntryBytes;
    return left == 0 || left >= TimeBytes;
}

void clear(Recording2::CFileAccess& file)
{
    if (file.channelRangeDefAvailable()) {
        file.clearChannelRangeDef();
    }
}

/// Clearing runs into the bookmarks by up to 7 bytes; the object still has them.
void putBookmarksBack(Recording2::CFileAccess& file, const Inspection::Header& header)
{
    if (header.positions.bookmarkTable != 0) {
        file.writeBookmarks();
    }
}

/// Where the tables are not where they can be rewritten, nothing is.
ExitCode checkOrder(const FileChange& change, const Inspection::Summary& summary)
{
    return FileChange::rangesBehindBookmarks(summary)
               ? change.refuse(ExitCode::CannotRead,
                               "The channel range table stands behind the bookmarks, where readers do not look.")
               : ExitCode::Fine;
}

/// The types whose channel ranges count. @return nothing, told, when one is no type of the file
std::optional<std::set<std::int32_t>> wantedTypes(const RangeOptions& options, const TypeNames& names)
{
    if (options.types.empty() && !names.numberOf(DirectionFindingKeyword)) {
        return std::set<std::int32_t>{};
    }
    return takeTypes(options.file,
                     options.types.empty() ? std::vector<std::string>{DirectionFindingKeyword} : options.types, names);
}

/// The channel ranges that the records carry, by type number.
using FoundRanges = std::map<std::int32_t, std::vector<std::uint64_t>>;

std::vector<std::uint64_t> timesOf(const FoundRanges& found, const std::set<std::int32_t>& types)
{
    std::vector<std::uint64_t> times;
    for (const auto& [type, ofType] : found) {
        if (types.count(type) > 0) {
            times.insert(times.end(), ofType.begin(), ofType.end());
        }
    }
    std::sort(times.begin(), times.end());
    return times;
}

/// Whether so many channel ranges can be stored in the file.
ExitCode checkRoom(const FileChange& change, std::size_t count, const Inspection::Summary& summary)
{
    const ExitCode result = checkOrder(change, summary);
    return result != ExitCode::Fine || fits(count, summary.header)
               ? result
               : change.refuse(ExitCode::CannotRead, "The records hold " + std::to_string(count) +
                                                         " channel ranges, for which there is no room in front of the "
                                                         "bookmarks.");
}

ExitCode storeRanges(const FileChange& change, const std::vector<std::uint64_t>& times)
{
    const Inspection::Summary& summary = change.summary();
    const std::string count = std::to_string(times.size());
    if (times == summary.channelRangeTimes) {
        std::cout << "The channel ranges are as the records say: " << count << ". Nothing was changed.\n";
        return finish(ExitCode::Fine);
    }
    return change.make(
        [&](Inspection::Summary& now) {
            const ExitCode result = checkRoom(change, times.size(), now);
            now.channelRangeTimes = times;
            return result;
        },
        [&] {
            return "Replace the " + std::to_string(summary.channelRangeTimes.size()) + " channel ranges by the " +
                   count + " of the records";
        },
        [&](Recording2::CFileAccess& file, const Inspection::Summary& now) {
            clear(file);
            for (const std::uint64_t time : times) {
                file.addChannelRangeDef(time);
            }
            file.rebuildChannelRangeDef();
            putBookmarksBack(file, now.header);
        });
}

ExitCode clearRanges(const RangeOptions& options)
{
    FileChange change(options.file, options.yes);
    ExitCode result = change.check();
    if (result == ExitCode::Fine) {
        result = checkOrder(change, change.summary());
    }
    if (result != ExitCode::Fine) {
        return result;
    }
    const std::size_t count = change.summary().channelRangeTimes.size();
    if (count == 0) {
        std::cout << "The recording has no channel range. Nothing was changed.\n";
        return finish(ExitCode::Fine);
    }
    return change.make(
        [&](Inspection::Summary& now) {
            now.channelRangeTimes.clear();
            return checkOrder(change, now);
        },
        [&] { return "Clear the " + std::to_string(count) + " channel ranges"; },
        [&](Recording2::CFileAccess& file, const Inspection::Summary& now) {
            clear(file);
            putBookmarksBack(file, now.header);
        });
}

ExitCode rebuildRanges(const RangeOptions& options)
{
    FileChange change(options.file, options.yes);
    FoundRanges found;
    ExitCode result = change.check([&](const Inspection::Record& record) {
        if (values::CarriesChannelRange(record.data)) {
            found[record.code].push_back(record.timeMs);
        }
    });
    if (result == ExitCode::Fine) {
        result = checkOrder(change, change.summary());
    }
    if (result != ExitCode::Fine) {
        return result;
    }
    const std::optional<std::set<std::int32_t>> types = wantedTypes(options, TypeNames(change.summary().types));
    return types ? storeRanges(change, timesOf(found, *types)) : ExitCode::Usage;
}

}  // namespace

ExitCode listRanges(const ListOptions& options)
{
    Inspection::Summary summary;
    if (!readSummary(options.file, summary)) {
        return ExitCode::CannotRead;
    }
    const TypeNames names(summary.types);
    Definitions definitions(summary, names);
    const std::vector<Inspection::Finding> findings =
        walk(options.file, summary, [&](const Inspection::Record& record) {
            definitions.visit(record);
            return true;
        });
    options.json ? printRangesAsJson(options.file, definitions) : printTable(definitions);
    complain(options.file, findings);
    return finish(soundness(findings));
}

void addRangeVerbs(const Syntax& program)
{
    Syntax range(program, "range", "List, clear and rebuild the table of channel ranges");
    range.needsVerb();
    Verb list(range, "list", "Show the records that the table names", listRanges);
    list.json();
    list.examples({"range list recording.rec"});
    Verb clearing(range, "clear", "Empty the table", clearRanges);
    clearing.yes();
    clearing.examples({"range clear recording.rec"});
    Verb rebuilding(range, "rebuild", "Enter every record that carries a channel range", rebuildRanges);
    rebuilding.types("Records of this keyword or type number, instead of DFSPECTRUM; may be given several times");
    rebuilding.yes();
    rebuilding.examples(
        {"range rebuild recording.rec", "range rebuild recording.rec --type DFSPECTRUM --type RFSPECTRUM --yes"});
}

}  // namespace RecTool
