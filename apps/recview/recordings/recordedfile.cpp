// Reading header, type table and first records, from which all kinds and most frequencies are known; joining files to
// timelines, and finding the file of a moment.
#include "recordedfile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <set>
#include <tuple>
#include <utility>

#include <QString>

#include <recording2/inspection/filename.h>
#include <recording2/inspection/scan.h>
#include <values/recordingtext.h>
#include <values/valuebase.h>

#include "rectool/printing/text.h"
#include "rectool/printing/valuetext.h"
#include "rectool/replay/recordedranges.h"

namespace RecView {

namespace {

constexpr std::uint64_t LongestPauseMs = 10'000;  // a new file takes less than a second
constexpr std::uint64_t ClockStepMs = 1'000;      // a split begins while the last records of the file are stamped

bool follows(const RecordedFile& file, const RecordedFile& before)
{
    return file.device == before.device && file.deviceType == before.deviceType && file.folder == before.folder &&
           before.startMs != 0 && !before.live && file.startMs > before.startMs &&
           file.startMs + ClockStepMs >= before.endMs && file.startMs <= before.endMs + LongestPauseMs;
}

std::string idOf(const RecordedFile& file, std::set<std::string>& taken)
{
    std::string base = file.name;
    for (const char* suffix : {".rec", ".tmp"}) {
        if (base.ends_with(suffix)) {
            base.resize(base.size() - std::string(suffix).size());
            break;
        }
    }
    std::string id = base;
    for (int number = 2; !taken.insert(id).second; ++number) {
        id = base + '~' + std::to_string(number);
    }
    return id;
}

}  // namespace

namespace Inspection = Recording2::Inspection;

const char* nameOf(Kind kind)
{
    constexpr std::array Names{"number", "text", "selection", "boolean", "levels", "bearings"};
    return Names.at(static_cast<std::size_t>(kind));
}

std::string validUtf8(const std::string& bytes)
{
    return QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size())).toStdString();
}

std::optional<Kind> kindOf(const Inspection::Record& record)
{
    // In the order of ValueType, whose numbers never change.
    constexpr std::array<std::optional<Kind>, 9> Kinds{std::nullopt, Kind::Boolean,  Kind::Text,
                                                       Kind::Number, Kind::Number,   Kind::Selection,
                                                       Kind::Levels, Kind::Bearings, Kind::Bearings};
    return Kinds.at(static_cast<std::size_t>(values::RecordedKind(record.data)));
}

RecordedType typeOf(std::int32_t code, Kind kind, const NamedTypes& types)
{
    RecordedType type;
    type.code = code;
    type.kind = kind;
    type.keyword = RecTool::TypeNames(types).label(code);
    type.unit = kind == Kind::Levels ? "dB" : kind == Kind::Number ? RecTool::unitOfKeyword(type.keyword) : "";
    return type;
}

void noteType(const Inspection::Record& record, const NamedTypes& types, RecordedTypes& recorded)
{
    if (recorded.contains(record.code)) {
        return;
    }
    if (const std::optional<Kind> kind = kindOf(record)) {
        recorded.emplace(record.code, typeOf(record.code, *kind, types));
    }
}

void RecordedType::widen(double low, double high)
{
    lowHz = std::fmin(lowHz, low);
    highHz = std::fmax(highHz, high);
}

namespace {

/// Without a stop that can be one the times of the records tell how long it is.
std::uint64_t lengthOf(const std::string& path, const Inspection::Header& header)
{
    constexpr std::uint64_t LongestMs = std::uint64_t{366} * 24 * 3600 * 1000;
    if (header.stopMs > header.startMs && header.stopMs - header.startMs < LongestMs) {
        return header.stopMs - header.startMs;
    }
    const Inspection::Summary whole = Inspection::inspect(path);
    return whole.times.empty() ? 0 : std::min(LongestMs, whole.times.back().timeMs);
}

/// The initial state of every value stands in front, so that little need be read.
RecordedTypes firstTypes(const std::string& path, const Inspection::Summary& summary)
{
    constexpr std::int64_t MostBytes = std::int64_t{1} << 20;
    constexpr int MostRecords = 500;
    RecordedTypes found;
    std::map<std::int32_t, RecTool::RecordedRanges> ranges;
    Inspection::RecordReader reader(path, summary);
    Inspection::Record record;
    for (int count = 0; count < MostRecords && reader.bytesRead() < MostBytes && reader.next(record); ++count) {
        noteType(record, summary.types, found);
        ranges[record.code].add(record.data);
    }
    for (auto& [code, type] : found) {
        if (const auto& spans = ranges[code].spans(); !spans.empty()) {
            const std::set<double>& steps = ranges[code].steps();
            const double half = steps.empty() ? 0 : *steps.begin() / 2;  // cells reach as far around their channels
            type.lowHz = spans.front().lowHz - half;
            type.highHz = spans.back().highHz + half;
        }
    }
    return found;
}

}  // namespace

// After the year 9999 is none: damaged files may tell any.
std::uint64_t plausibleStart(std::uint64_t startMs)
{
    return startMs > RecTool::EndOfYear9999Ms ? 0 : startMs;
}

std::string damageOf(const Inspection::Summary& summary)
{
    return summary.findings.empty()
               ? ""
               : "The file is damaged: " + summary.findings.front().text + " What can be read is shown.";
}

std::shared_ptr<RecordedFile> describedFile(const std::string& path, const Inspection::Header& header,
                                            const NamedTypes& types)
{
    auto file = std::make_shared<RecordedFile>();
    const std::filesystem::path native = Inspection::native(path);
    file->path = path;
    file->name = validUtf8(Inspection::utf8(native.filename()));
    file->folder = Inspection::utf8(native.parent_path());
    file->device = RecTool::fromLatin1(header.deviceName);
    file->deviceType = RecTool::fromLatin1(header.deviceType);
    file->startMs = plausibleStart(header.startMs);
    file->types = types;
    return file;
}

FilePointer lookAtFile(const std::string& path, std::string& problem)
{
    const Inspection::Summary summary = Inspection::inspectHead(path);
    if (summary.readability != Inspection::Readability::Ok) {
        problem = summary.problem;
        return nullptr;
    }
    const Inspection::Header& header = summary.header;
    auto file = describedFile(path, header, summary.types);
    file->endMs = file->startMs + lengthOf(path, header);
    file->bytes = summary.fileSize;
    for (const std::uint64_t number :
         {header.startMs, header.stopMs, static_cast<std::uint64_t>(header.positions.firstRecord),
          static_cast<std::uint64_t>(header.positions.timeTable)}) {
        file->content += std::to_string(number) + ' ';
    }
    file->recorded = firstTypes(path, summary);
    file->damage = damageOf(summary);
    return file;
}

double Timeline::endMs() const
{
    std::uint64_t end = 0;
    for (const FilePointer& file : files) {
        end = std::max(end, file->endMs);
    }
    return static_cast<double>(end);
}

bool Timeline::timesKnown() const
{
    return std::all_of(files.begin(), files.end(), [](const FilePointer& file) { return file->timesKnown; });
}

RecordedTypes Timeline::recorded() const
{
    RecordedTypes all;
    for (const FilePointer& file : files) {
        for (const auto& [code, type] : file->recorded) {
            const auto [place, isNew] = all.try_emplace(code, type);
            if (!isNew) {
                place->second.widen(type.lowHz, type.highHz);
            }
        }
    }
    return all;
}

std::size_t Timeline::fileAt(double ms) const
{
    const auto after = std::upper_bound(files.begin(), files.end(), ms, [](double moment, const FilePointer& file) {
        return moment < static_cast<double>(file->startMs);
    });
    return after == files.begin() ? 0 : static_cast<std::size_t>(after - files.begin()) - 1;
}

std::vector<Timeline> makeTimelines(std::vector<FilePointer> files)
{
    std::sort(files.begin(), files.end(), [](const FilePointer& a, const FilePointer& b) {
        return std::tie(a->startMs, a->path) < std::tie(b->startMs, b->path);
    });
    std::vector<Timeline> timelines;
    std::set<std::string> taken;
    for (FilePointer& file : files) {
        const auto before = std::find_if(timelines.rbegin(), timelines.rend(), [&](const Timeline& timeline) {
            return follows(*file, *timeline.files.back());
        });
        if (before != timelines.rend()) {
            before->files.push_back(std::move(file));
        } else {
            std::string id = idOf(*file, taken);
            timelines.push_back({std::move(id), {std::move(file)}});
        }
    }
    return timelines;
}

const Timeline* Listing::find(const std::string& id) const
{
    const auto found =
        std::find_if(timelines.begin(), timelines.end(), [&](const Timeline& timeline) { return timeline.id == id; });
    return found == timelines.end() ? nullptr : &*found;
}

}  // namespace RecView
