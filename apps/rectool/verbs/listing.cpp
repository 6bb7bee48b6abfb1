// Finding the recordings of directories, choosing and sorting them, and printing their table.
#include "listing.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include <recording2/inspection/recordingname.h>
#include <recording2/inspection/scan.h>
#include <recording2/inspection/verify/verification.h>

#include "archive/archivedfiles.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/valuetext.h"
#include "replay/recordedranges.h"
#include "replay/recordingtime.h"
#include "system/filenames.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
namespace fs = std::filesystem;
using Inspection::Readability;

namespace {

struct ListedRecording {
    std::string file;
    std::string device;  // UTF-8, name and type
    std::uint64_t startMs = 0;
    std::uint64_t stopMs = 0;
    std::uint64_t records = 0;
    std::uint64_t spectra = 0;
    std::int64_t bytes = 0;
    std::vector<FrequencySpan> ranges;
    Readability readability = Readability::Ok;
    const char* state = "";             // the word of that
    bool whole = true;                  // all of its records can be read
    std::optional<std::size_t> damage;  // findings of a check

    [[nodiscard]] bool closed() const { return readability == Readability::Ok; }
    [[nodiscard]] std::uint64_t lengthMs() const { return stopMs - std::min(startMs, stopMs); }
    [[nodiscard]] bool sound() const { return whole && damage.value_or(0) == 0; }
};

/// What is to be listed, with the arguments understood.
struct ListChoice {
    std::string device;  // in small letters
    std::optional<std::uint64_t> sinceMs;
    std::optional<std::uint64_t> untilMs;
    std::optional<double> coversHz;
};

std::string inSmallLetters(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return text;
}

bool takesHeader(const ListChoice& choice, const ListedRecording& listed)
{
    const bool isDevice = inSmallLetters(listed.device).find(choice.device) != std::string::npos;
    return isDevice && (!choice.sinceMs || listed.stopMs >= *choice.sinceMs) &&
           (!choice.untilMs || listed.startMs <= *choice.untilMs);
}

bool takesRanges(const ListChoice& choice, const ListedRecording& listed)
{
    return !choice.coversHz || std::any_of(listed.ranges.begin(), listed.ranges.end(),
                                           [&](const FrequencySpan& span) { return span.holds(*choice.coversHz); });
}

/// Which types are spectra, and which tell frequencies.
class MapTypes {
public:
    explicit MapTypes(const std::vector<Inspection::TypeEntry>& types)
    {
        for (const Inspection::TypeEntry& type : types) {
            const bool isSpectrum = type.keyword == "RFSPECTRUM" || type.keyword == "IFSPECTRUM";
            if (isSpectrum) {
                m_spectra.insert(type.typeNumber);
            }
            if (isSpectrum || type.keyword == DirectionFindingKeyword) {
                m_maps.insert(type.typeNumber);
            }
            m_named.insert(type.typeNumber);
        }
        for (const std::int32_t usual : {1, 2}) {  // a recorder names only one of both spectra
            if (m_named.count(usual) == 0) {
                m_spectra.insert(usual);
                m_maps.insert(usual);
            }
        }
    }
    [[nodiscard]] bool isSpectrum(std::int32_t code) const { return m_spectra.count(code) > 0; }
    [[nodiscard]] bool isMap(std::int32_t code) const { return m_maps.count(code) > 0; }

private:
    std::set<std::int32_t> m_spectra;
    std::set<std::int32_t> m_maps;
    std::set<std::int32_t> m_named;
};

std::string deviceShown(const Inspection::Header& header)
{
    const std::string name = oneLine(fromLatin1(header.deviceName));
    const std::string type = oneLine(fromLatin1(header.deviceType));
    return type.empty() ? name : name + (name.empty() ? "(" : " (") + type + ')';
}

void takeHeader(const Inspection::Summary& summary, ListedRecording& listed)
{
    listed.readability = summary.readability;
    listed.state = stateName(listed.file, summary);
    listed.bytes = summary.fileSize;
    if (listed.closed()) {
        listed.device = deviceShown(summary.header);
        listed.startMs = summary.header.startMs;
        listed.stopMs = summary.header.stopMs;
        listed.whole = summary.findings.empty();
    } else {
        listed.startMs = Inspection::startInName(listed.file).value_or(0);
        listed.stopMs = listed.startMs;
    }
}

void takeRecords(const Inspection::Summary& summary, ListedRecording& listed)
{
    const MapTypes types(summary.types);
    RecordedRanges ranges;
    const Inspection::RecordScan scan = Inspection::scanRecords(
        listed.file, summary,
        [&](std::int32_t code) {
            listed.spectra += types.isSpectrum(code) ? 1U : 0U;
            return types.isMap(code);
        },
        [&](std::int32_t, const std::string& data) { ranges.add(data); });
    listed.records = scan.records;
    listed.whole = listed.whole && scan.whole;
    listed.ranges = ranges.spans();
    const Inspection::Header& header = summary.header;
    if (listed.ranges.empty() && header.stopFrequencyHz > 0 && header.startFrequencyHz <= header.stopFrequencyHz) {
        listed.ranges.push_back({double{header.startFrequencyHz}, double{header.stopFrequencyHz}});
    }
}

void check(ListedRecording& listed)
{
    const Inspection::Verification verification = Inspection::verify(listed.file);
    listed.damage = verification.count(Inspection::Severity::Damage);
}

/// @param verify check all of it
/// @return nothing when the recording is not among those that are to be listed
std::optional<ListedRecording> look(const std::string& file, const ListChoice& choice, bool verify)
{
    const Inspection::Summary summary = Inspection::inspectHead(file);
    ListedRecording listed;
    listed.file = file;
    takeHeader(summary, listed);
    if (!takesHeader(choice, listed)) {
        return std::nullopt;
    }
    if (listed.closed()) {
        takeRecords(summary, listed);
    }
    if (!takesRanges(choice, listed)) {
        return std::nullopt;
    }
    if (listed.closed() && verify) {
        check(listed);
    }
    return listed;
}

/// @return nothing, told, when an argument is not what it should be
std::optional<ListChoice> makeChoice(const OverviewOptions& options)
{
    const auto now =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch());
    ListChoice choice;
    choice.device = inSmallLetters(options.device);
    const auto takeMoment = [&](const char* name, const std::string& text, DayEnd end,
                                std::optional<std::uint64_t>& moment) {
        if (!text.empty()) {
            moment = parseMoment(text, static_cast<std::uint64_t>(now.count()), end);
        }
        if (!text.empty() && !moment) {
            complain(name, "\"" + text + "\" is no moment. Expected: " + MomentForms + ".");
        }
        return text.empty() || moment;
    };
    if (!takeMoment("--since", options.since, DayEnd::First, choice.sinceMs) ||
        !takeMoment("--until", options.until, DayEnd::Last, choice.untilMs)) {
        return std::nullopt;
    }
    if (!options.covers.empty()) {
        choice.coversHz = parseHertz(options.covers);
        if (!choice.coversHz) {
            complain("--covers", "\"" + options.covers + "\" is no frequency. Expected: such as 433.5M or 88000000.");
            return std::nullopt;
        }
    }
    return choice;
}

bool isRecordingName(const fs::path& path)
{
    return path.extension() == ".rec" || path.extension() == ".tmp";
}

/// The recordings of a directory by name. @return false, told, when it cannot be read
bool addDirectory(const std::string& directory, bool isRecursive, std::vector<std::string>& files)
{
    std::error_code error;
    std::vector<std::string> found;
    for (fs::recursive_directory_iterator
             entry(native(directory), fs::directory_options::skip_permission_denied, error),
         end;
         !error && entry != end; entry.increment(error)) {
        if (!isRecursive) {
            entry.disable_recursion_pending();
        }
        std::error_code none;
        if (isRecordingName(entry->path()) && entry->is_regular_file(none)) {
            found.push_back(utf8(entry->path()));
        }
    }
    if (error) {
        complain(directory, "The directory cannot be read: " + error.message() + '.');
    }
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
    return !error;
}

bool isDirectory(const std::string& name)
{
    std::error_code error;
    return !isArchiveAddress(name) && fs::is_directory(native(name), error);
}

std::vector<std::string> filesOf(const OverviewOptions& options, ExitCode& result)
{
    std::vector<std::string> files;
    for (const std::string& name : options.files) {
        if (!isDirectory(name)) {
            files.push_back(name);
        } else if (!addDirectory(name, options.recursive, files)) {
            result = worse(result, ExitCode::CannotRead);
        }
    }
    return files;
}

/// Whether one stands before another in the order of a column.
bool isBefore(const std::string& column, const ListedRecording& a, const ListedRecording& b)
{
    return column == "device"    ? a.device < b.device
           : column == "length"  ? a.lengthMs() < b.lengthMs()
           : column == "records" ? a.records < b.records
           : column == "spectra" ? a.spectra < b.spectra
           : column == "size"    ? a.bytes < b.bytes
           : column == "file"    ? a.file < b.file
                                 : a.startMs < b.startMs;
}

std::string rangesText(const std::vector<FrequencySpan>& ranges)
{
    constexpr std::size_t Most = 2;
    constexpr int Digits = 6;
    std::string text;
    for (std::size_t i = 0; i < std::min(ranges.size(), Most); ++i) {
        text += i == 0 ? "" : ", ";
        text += frequency(ranges[i].lowHz, Digits);
        text += ranges[i].highHz > ranges[i].lowHz ? " to " + frequency(ranges[i].highHz, Digits) : "";
    }
    return ranges.size() > Most ? text + " and " + std::to_string(ranges.size() - Most) + " more" : text;
}

/// A word of the table of what cannot be read, or whether it was closed.
std::string stateText(const ListedRecording& listed)
{
    if (!listed.closed()) {
        return listed.state;
    }
    return !listed.sound() ? "damaged" : listed.damage ? "sound" : "closed";
}

void print(const std::vector<ListedRecording>& all)
{
    constexpr std::size_t ToSeconds = 19;
    Table table("lrlrrlll", {"Start (UTC)", "Length", "Device", "Records", "Spectra", "Frequencies", "State", "File"});
    for (const ListedRecording& listed : all) {
        const bool closed = listed.closed();
        table.add({listed.startMs == 0 ? "unknown" : utc(listed.startMs).substr(0, ToSeconds),
                   closed ? duration(listed.lengthMs()) : "-", listed.device, closed ? grouped(listed.records) : "-",
                   closed ? grouped(listed.spectra) : "-", rangesText(listed.ranges), stateText(listed),
                   oneLine(shownName(listed.file))});
    }
    table.print();
}

Json listedAsJson(const ListedRecording& listed)
{
    const auto spanJson = [](const FrequencySpan& span) -> Json {
        return {{"lowHz", span.lowHz}, {"highHz", span.highHz}};
    };
    const bool closed = listed.closed();
    const auto known = [&](std::uint64_t number) { return closed ? Json(number) : Json(); };
    return {{"file", shownName(listed.file)},
            {"readability", listed.state},
            {"device", closed ? Json(listed.device) : Json()},
            {"startMs", listed.startMs == 0 ? Json() : Json(listed.startMs)},
            {"durationMs", known(listed.lengthMs())},
            {"size", listed.bytes},
            {"records", known(listed.records)},
            {"spectra", known(listed.spectra)},
            {"ranges", Json::arrayOf(listed.ranges, spanJson)},
            {"closed", closed},
            {"sound", closed && (listed.damage || !listed.sound()) ? Json(listed.sound()) : Json()}};
}

/// What could not be read decides more than what is damaged; a recording that is still open is neither.
ExitCode judge(const ListedRecording& listed)
{
    if (!listed.closed()) {
        return listed.readability == Readability::NeverClosed ? ExitCode::Fine : ExitCode::CannotRead;
    }
    return listed.sound() ? ExitCode::Fine : ExitCode::Damaged;
}

}  // namespace

const char* stateName(const std::string& file, const Inspection::Summary& summary)
{
    const bool open = summary.readability == Inspection::Readability::NeverClosed ||
                      summary.readability == Inspection::Readability::Empty;  // all of it is still in its journal
    return open && Inspection::isBeingWritten(file) ? "being-written" : name(summary.readability);
}

bool asksForListing(const OverviewOptions& options)
{
    const std::array<const std::string*, 5> texts = {&options.device, &options.since, &options.until, &options.covers,
                                                     &options.sort};
    return options.table || options.recursive || options.verify || options.reverse ||
           std::any_of(texts.begin(), texts.end(), [](const std::string* text) { return !text->empty(); }) ||
           std::any_of(options.files.begin(), options.files.end(), isDirectory);
}

ExitCode listRecordings(const OverviewOptions& options)
{
    const std::optional<ListChoice> choice = makeChoice(options);
    if (!choice) {
        return ExitCode::Usage;
    }
    ExitCode result = ExitCode::Fine;
    const std::vector<std::string> files = filesOf(options, result);
    std::vector<ListedRecording> all;
    Progress progress("recordings");
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (std::optional<ListedRecording> listed = look(files[i], *choice, options.verify)) {
            result = worse(result, judge(*listed));
            all.push_back(std::move(*listed));
        }
        progress.show(static_cast<std::int64_t>(i), static_cast<std::int64_t>(files.size()));
    }
    progress.clear();
    std::stable_sort(all.begin(), all.end(),
                     [&](const ListedRecording& a, const ListedRecording& b) { return isBefore(options.sort, a, b); });
    if (options.reverse) {
        std::reverse(all.begin(), all.end());
    }
    if (options.json) {
        printJson({{"recordings", Json::arrayOf(all, listedAsJson)}});
    } else if (all.empty()) {
        std::cout << (files.empty() ? "There is no recording.\n" : "No recording is like that.\n");
    } else {
        print(all);
    }
    return finish(result);
}

}  // namespace RecTool
