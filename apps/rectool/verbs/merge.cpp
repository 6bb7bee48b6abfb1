// The verb "merge": several recordings as one, their headers, bookmarks and sizes.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include "commandline/verb.h"
#include "commands.h"
#include "making/mergeplan.h"
#include "making/merger.h"
#include "making/newrecording.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "replay/walk.h"
#include "system/filenames.h"

namespace RecTool {

namespace Format = Recording2::Format;
namespace Inspection = Recording2::Inspection;

namespace {

/// Every bookmark at its clock time; of several at one millisecond all but the first move to the next free one.
std::map<std::uint64_t, std::string> mergeBookmarks(const std::vector<MergeInput>& inputs, std::uint64_t startMs,
                                                    Adjustments& adjustments)
{
    std::map<std::uint64_t, std::string> placed;
    std::vector<Inspection::Bookmark> others;
    for (const MergeInput& input : inputs) {
        for (const Inspection::Bookmark& bookmark : input.summary.bookmarks) {
            const std::uint64_t clock = input.summary.header.startMs + bookmark.timeMs;
            const std::uint64_t time = std::max<std::uint64_t>(clock - std::min(clock, startMs), 1);
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
    return placed;
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

/// Makes a range hold another one, too. One of 0 to 0 is one that no value told.
template <typename Number>
void widen(Number& low, Number& high, Number otherLow, Number otherHigh)
{
    const bool isTold = low != 0 || high != 0;
    if (otherLow != 0 || otherHigh != 0) {
        low = isTold ? std::min(low, otherLow) : otherLow;
        high = isTold ? std::max(high, otherHigh) : otherHigh;
    }
}

/// The lowest start and the highest stop of everything, the other fields of the first input.
Inspection::Header mergeHeaders(const std::vector<MergeInput>& inputs)
{
    Inspection::Header merged = inputs.front().summary.header;
    for (const MergeInput& input : inputs) {
        const Inspection::Header& header = input.summary.header;
        widen(merged.startFrequencyHz, merged.stopFrequencyHz, header.startFrequencyHz, header.stopFrequencyHz);
        widen(merged.minLevel, merged.maxLevel, header.minLevel, header.maxLevel);
        merged.stopMs = std::max(merged.stopMs, header.stopMs);
    }
    merged.deviceName = join(inputs, &Inspection::Header::deviceName);
    merged.deviceType = join(inputs, &Inspection::Header::deviceType);
    return merged;
}

/// What the merged file may take at most, with the room for its tables that is kept free while records are written.
std::int64_t largestSize(const std::vector<MergeInput>& inputs, const MergePlan& plan)
{
    constexpr std::int64_t TypeNumbersBytes = 60;
    constexpr std::int64_t BookmarkHeadBytes = 30;
    std::int64_t size = Format::HeaderAreaBytes;
    for (const MergedType& type : plan.types) {
        size += TypeNumbersBytes + static_cast<std::int64_t>(type.entry.keyword.size() + type.entry.valuePath.size());
    }
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        for (const auto& [number, type] : inputs[i].types) {
            const std::int64_t codeDigits =
                static_cast<std::int64_t>(std::to_string(plan.numbers[i].at(number)).size());
            const auto records = static_cast<std::int64_t>(type.records);
            size += type.dataBytes + type.lengthDigits + records * (codeDigits + 2 + Format::WidestTimeEntryBytes);
        }
        size += static_cast<std::int64_t>(inputs[i].summary.channelRangeTimes.size()) * std::int64_t{Format::TimeBytes};
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
    if (bytes <= Format::LastPosition) {
        return ExitCode::Fine;
    }
    complain(output, "The recordings take " + grouped(static_cast<std::uint64_t>(bytes)) + " bytes together, but one " +
                         "recording can have " + grouped(static_cast<std::uint64_t>(Format::LastPosition)) +
                         " at most. Nothing was written.");
    return ExitCode::CannotRead;
}

/// @return false, told, when one of the files is no recording that can be placed in time
bool inspectAll(const std::vector<std::string>& files, std::vector<Inspection::Summary>& summaries)
{
    bool fine = true;
    for (const std::string& file : files) {
        if (!readSummary(file, summaries.emplace_back())) {
            fine = false;
        } else if (summaries.back().header.startMs == 0) {
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
    for (std::size_t i = 0; i < files.size() && !Interrupt::requested(); ++i) {
        inputs.push_back(surveyForMerge(files[i], std::move(summaries[i])));
    }
    std::stable_sort(inputs.begin(), inputs.end(), [](const MergeInput& a, const MergeInput& b) {
        const auto place = [](const MergeInput& input) {
            return std::tuple(input.beginMs(), input.summary.header.stopMs, input.firstMs);
        };
        return place(a) < place(b);
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

void printMergeAsJson(const MergeOptions& options, const std::vector<MergeInput>& inputs, const MergePlan& plan,
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
    printJson(json);
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
        std::cout << printedName(file) << ": types with another number now: " << grouped(renumbered);
        if (separated > 0) {
            std::cout << ", with _" << input + 1 << " behind the keyword and /" << input + 1
                      << " in front of the path: " << grouped(separated);
        }
        std::cout << ".\n";
    }
}

void printMerge(const MergeOptions& options, const std::vector<MergeInput>& inputs, const MergePlan& plan,
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
        tellWithoutTime(input.file, input.withoutTime);
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
    Adjustments adjustments = mergeRecords(inputs, plan, header.startMs, output);
    result = output.finish(header, mergeBookmarks(inputs, header.startMs, adjustments));
    if (result == ExitCode::Fine) {
        const auto print = options.json ? printMergeAsJson : printMerge;
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
    if (Interrupt::requested()) {
        complain(options.output, "Interrupted. Nothing was written.");
        return ExitCode::CannotRead;
    }
    const ExitCode result = mergeInputs(options, inputs, output);
    const ExitCode soundnessOfInputs = complainAll(inputs);
    return finish(result == ExitCode::Fine ? soundnessOfInputs : result);
}

void addMerge(const Syntax& program)
{
    Verb verb(program, "merge", "Make one recording of several, by clock time", merge);
    verb.newRecording();
    verb.flag("--separate", verb.options().separate,
              "Keep values apart that several files recorded at the same time, instead of refusing them");
    verb.examples({"merge first.rec second.rec -o whole.rec", "merge receiver.rec df.rec -o station.rec --separate"});
}

}  // namespace RecTool
