#include <algorithm>
#include <filesystem>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include "commands.h"
#include "inforce.h"
#include "json.h"
#include "mergeplan.h"
#include "newrecording.h"
#include "output.h"
#include "progress.h"
#include "system/filenames.h"
#include "text.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

/// What had to be changed to get everything into one recording.
struct Adjustments {
    std::uint64_t movedRecords = 0;
    std::uint64_t movedByMs = 0;  // at most
    std::uint64_t movedBookmarks = 0;
    std::uint64_t repeatedStates = 0;
};

/// Takes the records of all inputs in the order of their clock times. Files are open only while their records come.
class Merger {
public:
    Merger(const std::vector<MergeInput>& inputs, const MergePlan& plan, std::uint64_t startMs, NewRecording& output)
        : m_plan(plan), m_startMs(startMs), m_output(output)
    {
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            const std::vector<std::uint64_t>& ranges = inputs[i].summary.channelRangeTimes;
            m_sources.push_back({inputs[i], i, {ranges.begin(), ranges.end()}, nullptr, {}, 0});
            m_bytesInAll += Inspection::RecordReader(inputs[i].file, inputs[i].summary).bytesInAll();
            m_continued = m_continued || plan.notBefore[i] > 0;
            if (!inputs[i].empty()) {
                m_next.emplace(std::max(inputs[i].firstMs, plan.notBefore[i]), i);
            }
        }
    }

    void run()
    {
        Progress progress("merging");
        const auto show = progress.callback();
        constexpr std::int64_t ProgressBytes = std::int64_t{1} << 20;
        std::int64_t nextProgress = ProgressBytes;
        while (!m_next.empty() && !NewRecording::interrupted()) {
            const auto [clockMs, index] = *m_next.begin();
            m_next.erase(m_next.begin());
            Source& source = m_sources[index];
            if (source.reader == nullptr) {
                source.reader = std::make_unique<Inspection::RecordReader>(source.input.file, source.input.summary);
                static_cast<void>(advance(source));
            }
            put(source, clockMs);
            if (advance(source)) {
                m_next.emplace(std::max(clockOf(source), m_plan.notBefore[index]), index);
            }
            if (show && m_bytesRead >= nextProgress) {
                show(m_bytesRead, m_bytesInAll);
                nextProgress = m_bytesRead + ProgressBytes;
            }
        }
        putOtherRanges();
    }

    [[nodiscard]] const Adjustments& adjustments() const { return m_adjustments; }

private:
    struct Source {
        const MergeInput& input;
        std::size_t index;
        std::set<std::uint64_t> ranges;  // times of the file's channel range table, of records that are still to come
        std::unique_ptr<Inspection::RecordReader> reader;
        Inspection::Record record;  // the next one
        std::uint64_t taken = 0;    // records that were read
    };

    [[nodiscard]] static std::uint64_t clockOf(const Source& source)
    {
        return source.input.summary.header.startMs + source.record.timeMs;
    }

    /// Goes on to the next record that has a time.
    bool advance(Source& source)
    {
        const std::int64_t before = source.reader->bytesRead();
        bool more = source.reader->next(source.record);
        while (more && source.record.timeMs == 0) {
            more = source.reader->next(source.record);
        }
        m_bytesRead += source.reader->bytesRead() - before;
        ++source.taken;
        if (!more) {
            source.reader = nullptr;
        }
        return more;
    }

    void put(Source& source, std::uint64_t clockMs)
    {
        const bool isRange = source.ranges.erase(source.record.timeMs) > 0;
        source.record.code = m_plan.numbers[source.index].at(source.record.code);
        if (repeatsState(source)) {
            ++m_adjustments.repeatedStates;
            return;
        }
        const std::uint64_t wanted = clockOf(source) - m_startMs;
        const std::uint64_t time = std::max(clockMs - m_startMs, m_lastTime + 1);
        if (time > wanted) {
            ++m_adjustments.movedRecords;
            m_adjustments.movedByMs = std::max(m_adjustments.movedByMs, time - wanted);
        }
        m_output.write(source.record.code, source.record.data, time, isRange);
        m_lastTime = time;
        if (m_continued) {
            m_inForce.apply(source.record);
        }
    }

    /// Whether a record of the state that a continuing file begins with would have to be moved, and says nothing new.
    [[nodiscard]] bool repeatsState(const Source& source) const
    {
        const bool inState = source.taken <= source.input.stateRecords;
        if (!inState || clockOf(source) >= m_plan.notBefore[source.index]) {
            return false;
        }
        InForce alone;
        alone.apply(source.record);
        return alone.completeTexts(source.record.code) == m_inForce.completeTexts(source.record.code);
    }

    /// Those in the tables at whose time no record stands.
    void putOtherRanges()
    {
        for (const Source& source : m_sources) {
            for (const std::uint64_t time : source.ranges) {
                m_output.addChannelRange(source.input.summary.header.startMs + time - m_startMs);
            }
        }
    }

    const MergePlan& m_plan;
    std::uint64_t m_startMs;
    NewRecording& m_output;
    std::vector<Source> m_sources;
    std::set<std::pair<std::uint64_t, std::size_t>> m_next;  // clock time of the next record of each input
    std::uint64_t m_lastTime = 0;
    bool m_continued = false;  // some input continues another
    InForce m_inForce;
    Adjustments m_adjustments;
    std::int64_t m_bytesRead = 0;
    std::int64_t m_bytesInAll = 0;
};

/// Every bookmark at its clock time; of several at one millisecond all but the first move to the next free one.
std::vector<Inspection::Bookmark> mergeBookmarks(const std::vector<MergeInput>& inputs, std::uint64_t startMs,
                                                 Adjustments& adjustments)
{
    std::map<std::uint64_t, std::string> placed;
    std::vector<Inspection::Bookmark> others;
    for (const MergeInput& input : inputs) {
        for (const Inspection::Bookmark& bookmark : input.summary.bookmarks) {
            const std::uint64_t time = input.summary.header.startMs + bookmark.timeMs - startMs;
            if (bookmark.timeMs == 0) {
                continue;
            }
            const auto [there, isNew] = placed.emplace(time, bookmark.text);
            if (!isNew &&
                there->second != bookmark.text) {  // the same text is the same bookmark, of two parts of a cut
                others.push_back({time, bookmark.text});
            }
        }
    }
    for (Inspection::Bookmark& bookmark : others) {
        while (!placed.emplace(bookmark.timeMs, bookmark.text).second) {
            ++bookmark.timeMs;
        }
    }
    adjustments.movedBookmarks = others.size();
    std::vector<Inspection::Bookmark> bookmarks;
    bookmarks.reserve(placed.size());
    for (auto& [time, text] : placed) {
        bookmarks.push_back({time, std::move(text)});
    }
    return bookmarks;
}

/// All different texts, in the order of the inputs.
std::string join(const std::vector<MergeInput>& inputs, std::string Inspection::Header::*text)
{
    std::vector<std::string> different;
    for (const MergeInput& input : inputs) {
        const std::string& one = input.summary.header.*text;
        if (!one.empty() && std::find(different.begin(), different.end(), one) == different.end()) {
            different.push_back(one);
        }
    }
    std::string joined;
    for (const std::string& one : different) {
        joined.append(joined.empty() ? "" : " + ").append(one);
    }
    return joined;
}

/// The lowest start and the highest stop of everything, the other fields of the first input. A range of 0 to 0 is one
/// that no value told.
Inspection::Header mergeHeaders(const std::vector<MergeInput>& inputs)
{
    Inspection::Header merged = inputs.front().summary.header;
    for (const MergeInput& input : inputs) {
        const Inspection::Header& header = input.summary.header;
        const bool hasFrequencies = header.startFrequencyHz != 0 || header.stopFrequencyHz != 0;
        const bool hadFrequencies = merged.startFrequencyHz != 0 || merged.stopFrequencyHz != 0;
        if (hasFrequencies) {
            merged.startFrequencyHz =
                hadFrequencies ? std::min(merged.startFrequencyHz, header.startFrequencyHz) : header.startFrequencyHz;
            merged.stopFrequencyHz =
                hadFrequencies ? std::max(merged.stopFrequencyHz, header.stopFrequencyHz) : header.stopFrequencyHz;
        }
        const bool hasLevels = header.minLevel != 0 || header.maxLevel != 0;
        const bool hadLevels = merged.minLevel != 0 || merged.maxLevel != 0;
        if (hasLevels) {
            merged.minLevel = hadLevels ? std::min(merged.minLevel, header.minLevel) : header.minLevel;
            merged.maxLevel = hadLevels ? std::max(merged.maxLevel, header.maxLevel) : header.maxLevel;
        }
        merged.stopMs = std::max(merged.stopMs, header.stopMs);
    }
    merged.deviceName = join(inputs, &Inspection::Header::deviceName);
    merged.deviceType = join(inputs, &Inspection::Header::deviceType);
    return merged;
}

/// What the merged file may take at most, with the room for its tables that is kept free while records are written.
std::int64_t largestSize(const std::vector<MergeInput>& inputs, const MergePlan& plan)
{
    constexpr std::int64_t HeaderBytes = 500;
    constexpr std::int64_t TypeNumbersBytes = 60;
    constexpr std::int64_t TimeEntryBytes = 20;
    constexpr std::int64_t RangeEntryBytes = 9;
    constexpr std::int64_t BookmarkHeadBytes = 30;
    std::int64_t size = HeaderBytes;
    for (const MergedType& type : plan.types) {
        size += TypeNumbersBytes + static_cast<std::int64_t>(type.entry.keyword.size() + type.entry.valuePath.size());
    }
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        for (const auto& [number, type] : inputs[i].types) {
            const std::int64_t codeDigits =
                static_cast<std::int64_t>(std::to_string(plan.numbers[i].at(number)).size());
            const auto records = static_cast<std::int64_t>(type.records);
            size += type.dataBytes + type.lengthDigits + records * (codeDigits + 2 + TimeEntryBytes);
        }
        size += static_cast<std::int64_t>(inputs[i].summary.channelRangeTimes.size()) * RangeEntryBytes;
        for (const Inspection::Bookmark& bookmark : inputs[i].summary.bookmarks) {
            size += BookmarkHeadBytes + static_cast<std::int64_t>(bookmark.text.size());
        }
    }
    return size;
}

/// What the records take, before anything is known of them.
std::int64_t recordBytes(const std::vector<std::string>& files, const std::vector<Inspection::Summary>& summaries)
{
    std::int64_t bytes = 0;
    for (std::size_t i = 0; i < files.size(); ++i) {
        bytes += Inspection::RecordReader(files[i], summaries[i]).bytesInAll();
    }
    return bytes;
}

ExitCode checkSize(const std::string& output, std::int64_t bytes)
{
    constexpr std::int64_t Most = std::numeric_limits<std::int32_t>::max();
    if (bytes <= Most) {
        return ExitCode::Fine;
    }
    complain(output, "The recordings take " + grouped(static_cast<std::uint64_t>(bytes)) + " bytes together, but one " +
                         "recording can have " + grouped(static_cast<std::uint64_t>(Most)) +
                         " at most. Nothing was written.");
    return ExitCode::CannotRead;
}

/// @return false, told, when one of the files is no recording that can be placed in time
bool inspectAll(const std::vector<std::string>& files, std::vector<Inspection::Summary>& summaries)
{
    bool fine = true;
    for (const std::string& file : files) {
        summaries.push_back(Inspection::inspect(file));
        const Inspection::Summary& summary = summaries.back();
        if (summary.readability != Inspection::Readability::Ok) {
            complain(file, summary.problem);
            fine = false;
        } else if (summary.header.startMs == 0) {
            complain(file, "The header does not tell the start of the recording, so it has no place among others.");
            fine = false;
        }
    }
    return fine;
}

/// @return false, told, when there are too few files, or the same one twice
bool checkFiles(const std::vector<std::string>& files)
{
    if (files.size() < 2) {
        complain("merge", "Two recordings are needed at least.");
        return false;
    }
    for (auto one = files.begin(); one != files.end(); ++one) {
        std::error_code error;
        const auto again = std::find_if(one + 1, files.end(), [&](const auto& other) {
            return std::filesystem::equivalent(native(*one), native(other), error);
        });
        if (again != files.end()) {
            complain(*again, "This file is given twice.");
            return false;
        }
    }
    return true;
}

std::vector<MergeInput> survey(const std::vector<std::string>& files, std::vector<Inspection::Summary> summaries)
{
    std::vector<MergeInput> inputs;
    for (std::size_t i = 0; i < files.size() && !NewRecording::interrupted(); ++i) {
        inputs.push_back(surveyForMerge(files[i], std::move(summaries[i]), &NewRecording::interrupted));
    }
    std::stable_sort(inputs.begin(), inputs.end(), [](const MergeInput& a, const MergeInput& b) {
        return std::pair(a.summary.header.startMs, a.firstMs) < std::pair(b.summary.header.startMs, b.firstMs);
    });
    return inputs;
}

Json filesToJson(const std::vector<MergeInput>& inputs)
{
    Json files = Json::array();
    for (const MergeInput& input : inputs) {
        std::uint64_t records = 0;
        for (const auto& [number, type] : input.types) {
            records += type.records;
        }
        files.push_back({{"file", shownName(input.file)},
                         {"startMs", input.summary.header.startMs},
                         {"stopMs", input.summary.header.stopMs},
                         {"records", records},
                         {"recordsWithoutTime", input.withoutTime}});
    }
    return files;
}

void printJson(const MergeOptions& options, const std::vector<MergeInput>& inputs, const MergePlan& plan,
               const Adjustments& adjustments, const NewRecordingResult& result)
{
    Json renumbered = Json::array();
    for (const RenumberedType& type : plan.renumbered) {
        renumbered.push_back({{"file", shownName(inputs[type.input].file)},
                              {"code", type.before},
                              {"newCode", type.after.typeNumber},
                              {"newKeyword", fromLatin1(type.after.keyword)},
                              {"newPath", fromLatin1(type.after.valuePath)},
                              {"separated", type.separated}});
    }
    Json json = {{"files", filesToJson(inputs)}};
    json.update(toJson(options.output, result));
    json["movedRecords"] = adjustments.movedRecords;
    json["movedByMs"] = adjustments.movedByMs;
    json["movedBookmarks"] = adjustments.movedBookmarks;
    json["repeatedStates"] = adjustments.repeatedStates;
    json["renumbered"] = std::move(renumbered);
    std::cout << dump(json, 2) << '\n';
}

void printRenumbered(const std::string& file, std::size_t input, const MergePlan& plan)
{
    std::uint64_t renumbered = 0;
    std::uint64_t separated = 0;
    for (const RenumberedType& type : plan.renumbered) {
        renumbered += type.input == input ? 1 : 0;
        separated += type.input == input && type.separated ? 1 : 0;
    }
    if (renumbered > 0) {
        std::cout << shownName(file) << ": types with another number now: " << grouped(renumbered);
        if (separated > 0) {
            std::cout << ", with _" << input + 1 << " behind the keyword and /" << input + 1
                      << " in front of the path: " << grouped(separated);
        }
        std::cout << ".\n";
    }
}

void printText(const MergeOptions& options, const std::vector<MergeInput>& inputs, const MergePlan& plan,
               const Adjustments& adjustments, const NewRecordingResult& result)
{
    print(options.output, result);
    if (adjustments.movedRecords > 0) {
        std::cout << "Records moved to a free millisecond: " << grouped(adjustments.movedRecords) << ", by at most "
                  << adjustments.movedByMs << " ms.\n";
    }
    if (adjustments.movedBookmarks > 0) {
        std::cout << "Bookmarks moved to a free millisecond: " << grouped(adjustments.movedBookmarks) << ".\n";
    }
    if (adjustments.repeatedStates > 0) {
        std::cout << "Records at the start of a file left out because they only repeat what is in force: "
                  << grouped(adjustments.repeatedStates) << ".\n";
    }
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        printRenumbered(inputs[i].file, i, plan);
    }
}

ExitCode complainAll(const std::vector<MergeInput>& inputs)
{
    ExitCode result = ExitCode::Fine;
    for (const MergeInput& input : inputs) {
        complain(input.file, input.findings);
        if (input.withoutTime > 0) {
            complain(input.file, "Records left out because their time is lost: " + grouped(input.withoutTime) + '.');
        }
        const bool damaged = !input.findings.empty() || input.withoutTime > 0;
        result = damaged ? ExitCode::Damaged : result;
    }
    return result;
}

/// The types that stand in a table.
std::vector<Inspection::TypeEntry> namedTypes(const MergePlan& plan)
{
    std::vector<Inspection::TypeEntry> types;
    for (const MergedType& type : plan.types) {
        if (type.named) {
            types.push_back(type.entry);
        }
    }
    return types;
}

ExitCode mergeInputs(const MergeOptions& options, const std::vector<MergeInput>& inputs, NewRecording& output)
{
    const MergePlan plan = planMerge(inputs, options.separate);
    if (!plan.refusal.empty()) {
        complain(inputs[plan.refusedInput].file, plan.refusal);
        return ExitCode::Usage;
    }
    ExitCode result = checkSize(options.output, largestSize(inputs, plan));
    if (result == ExitCode::Fine) {
        result = output.create(namedTypes(plan));
    }
    if (result != ExitCode::Fine) {
        return result;
    }
    const Inspection::Header header = mergeHeaders(inputs);
    Merger merger(inputs, plan, header.startMs, output);
    merger.run();
    Adjustments adjustments = merger.adjustments();
    const std::vector<Inspection::Bookmark> bookmarks = mergeBookmarks(inputs, header.startMs, adjustments);
    result = output.finish(header, bookmarks);
    if (result == ExitCode::Fine) {
        const auto print = options.json ? printJson : printText;
        print(options, inputs, plan, adjustments, output.result());
    }
    return result;
}

}  // namespace

ExitCode merge(const MergeOptions& options)
{
    if (!checkFiles(options.files)) {
        return ExitCode::Usage;
    }
    std::vector<Inspection::Summary> summaries;
    if (!inspectAll(options.files, summaries)) {
        return ExitCode::CannotRead;
    }
    NewRecording output(options.output, options.force);
    ExitCode checked = output.check(options.files);
    if (checked == ExitCode::Fine) {
        checked = checkSize(options.output, recordBytes(options.files, summaries));
    }
    if (checked != ExitCode::Fine) {
        return checked;
    }
    const std::vector<MergeInput> inputs = survey(options.files, std::move(summaries));
    if (NewRecording::interrupted()) {
        complain(options.output, "Interrupted. Nothing was written.");
        return ExitCode::CannotRead;
    }
    const ExitCode result = mergeInputs(options, inputs, output);
    const ExitCode soundnessOfInputs = complainAll(inputs);
    return finish(result == ExitCode::Fine ? soundnessOfInputs : result);
}

}  // namespace RecTool
