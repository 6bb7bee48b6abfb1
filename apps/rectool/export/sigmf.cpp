// Exporting SigMF metadata: bookmarks and settings as annotations of samples.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <values/recordingtext.h>
#include <QDateTime>

#include "export.h"
#include "printing/jsonvalue.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/valuetext.h"
#include "replay/recordingtime.h"
#include "system/filenames.h"

namespace RecTool {

namespace fs = std::filesystem;

namespace {

struct IqSamples {
    std::string file;
    std::string metadataFile;  ///< that stands beside them; empty without
    std::string dataType;      ///< "ci16_le"
    double rateHz = 0;
    std::uint64_t count = 0;
    std::optional<std::int64_t> firstUs;  ///< time of the first one, since 1970 UTC
    Json metadata;                        ///< all that the file beside them says; null without
};

struct SuffixFormat {
    std::string_view suffix;
    const char* format;
};

constexpr std::array<SuffixFormat, 10> SuffixFormats{{{".cu8", "cu8"},
                                                      {".ci8", "ci8"},
                                                      {".cs8", "ci8"},
                                                      {".ci16", "ci16_le"},
                                                      {".cs16", "ci16_le"},
                                                      {".sc16", "ci16_le"},
                                                      {".cf32", "cf32_le"},
                                                      {".fc32", "cf32_le"},
                                                      {".fc32le", "cf32_le"},
                                                      {".cfile", "cf32_le"}}};

std::string formatBySuffix(const fs::path& file)
{
    for (const SuffixFormat& known : SuffixFormats) {
        if (known.suffix == utf8(file.extension())) {
            return known.format;
        }
    }
    return "";
}

/// Of a sample, I and Q together; 0 for a format that is none.
std::uint64_t bytesOf(const std::string& dataType)
{
    const std::size_t end = dataType.find('_');
    const std::string numbers = dataType.substr(0, end);
    const std::string order = end == std::string::npos ? "" : dataType.substr(end);
    const bool isComplex = numbers.substr(0, 1) == "c";
    if ((!isComplex && numbers.substr(0, 1) != "r") || (!order.empty() && order != "_le" && order != "_be")) {
        return 0;
    }
    constexpr std::array<std::pair<std::string_view, std::uint64_t>, 8> Kinds{
        {{"f32", 4}, {"f64", 8}, {"i32", 4}, {"i16", 2}, {"u32", 4}, {"u16", 2}, {"i8", 1}, {"u8", 1}}};
    for (const auto& [kind, bytes] : Kinds) {
        if (numbers.substr(1) == kind) {
            return isComplex ? 2 * bytes : bytes;
        }
    }
    return 0;
}

/// "2026-11-21T08:30:00.250010Z" in microseconds since 1970.
std::optional<std::int64_t> usOf(const std::string& text)
{
    constexpr std::int64_t UsPerMs = 1000;
    constexpr int Digits = 6;
    const std::size_t point = text.find('.');
    const QDateTime second =
        QDateTime::fromString(QString::fromStdString(text.substr(0, point)).remove('Z') + 'Z', Qt::ISODate);
    if (!second.isValid() || text.empty() || text.back() != 'Z') {
        return std::nullopt;
    }
    std::int64_t us = 0;
    for (std::size_t i = 0; i < Digits; ++i) {
        const std::size_t at = point == std::string::npos ? text.size() : point + 1 + i;
        const bool isDigit = at < text.size() && text[at] >= '0' && text[at] <= '9';
        us = us * 10 + (isDigit ? text[at] - '0' : 0);
    }
    return second.toMSecsSinceEpoch() * UsPerMs + us;
}

/// @return why the metadata cannot be used; empty when they can
std::string takeMetadata(IqSamples& samples)
{
    const Json* global = samples.metadata.find("global");
    const Json* captures = samples.metadata.find("captures");
    const Json* annotations = samples.metadata.find("annotations");
    if (global == nullptr || !global->isObject() || captures == nullptr || !captures->isArray() ||
        (annotations != nullptr && !annotations->isArray())) {
        return "it has no object \"global\" and no lists \"captures\" and \"annotations\"";
    }
    const auto textOf = [](const Json* json) { return json == nullptr ? std::nullopt : json->text(); };
    const auto numberOf = [](const Json* json) { return json == nullptr ? std::nullopt : json->number(); };
    samples.dataType = textOf(global->find("core:datatype")).value_or("");
    samples.rateHz = numberOf(global->find("core:sample_rate")).value_or(0);
    if (numberOf(global->find("core:num_channels")).value_or(1) != 1) {
        return "only samples of one channel can be annotated";
    }
    if (captures->size() > 0) {
        const Json& first = captures->at(0);
        const std::string time = textOf(first.find("core:datetime")).value_or("");
        samples.firstUs = usOf(time);
        const double begin = numberOf(first.find("core:sample_start")).value_or(0);
        if (samples.firstUs && samples.rateHz > 0) {
            constexpr double UsPerSecond = 1e6;
            *samples.firstUs -= std::llround(begin / samples.rateHz * UsPerSecond);
        }
    }
    return "";
}

/// @return false, told, when there are metadata that cannot be used
bool readMetadata(IqSamples& samples)
{
    std::ifstream file(native(samples.metadataFile), std::ios::binary);
    if (!file) {
        samples.metadataFile.clear();
        return true;
    }
    std::string problem;
    try {
        samples.metadata = Json::parse({std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
        problem = takeMetadata(samples);
    } catch (const std::invalid_argument& error) {
        problem = std::string("it is not valid JSON (") + error.what() + ")";
    }
    if (!problem.empty()) {
        complain(samples.metadataFile, "This SigMF metadata cannot be used: " + problem + '.');
    }
    return problem.empty();
}

/// Finds the samples and what is known of them. @return nothing, told, where that is not enough
std::optional<IqSamples> findSamples(const SigMfExportOptions& options)
{
    IqSamples samples;
    const fs::path beside = native(options.output).replace_extension(".sigmf-data");
    samples.file = options.samples.empty() ? utf8(beside) : options.samples;
    std::error_code error;
    const std::uintmax_t bytes = fs::file_size(native(samples.file), error);
    if (error) {
        complain(samples.file, "There is no such file of samples; --samples names the one to annotate.");
        return std::nullopt;
    }
    samples.metadataFile = utf8(native(samples.file).replace_extension(".sigmf-meta"));
    if (!readMetadata(samples)) {
        return std::nullopt;
    }
    samples.dataType = !options.format.empty()    ? options.format
                       : samples.dataType.empty() ? formatBySuffix(native(samples.file))
                                                  : samples.dataType;
    samples.rateHz = options.rateHz > 0 ? options.rateHz : samples.rateHz;
    const std::uint64_t sampleBytes = bytesOf(samples.dataType);
    if (sampleBytes == 0 || !(samples.rateHz > 0)) {
        complain(samples.file, sampleBytes != 0 ? "How many samples a second these are is not known: say --rate."
                               : samples.dataType.empty()
                                   ? "Which format these samples have is not known: say --format."
                                   : "SigMF has no format of samples " + samples.dataType + '.');
        return std::nullopt;
    }
    samples.count = bytes / sampleBytes;
    return samples;
}

/// What of a receiver is set rather than measured.
constexpr std::array<std::string_view, 12> SettingKeywords{"FREQUENCY",   "FREQOFFSET", "BANDWIDTH", "MODULATION",
                                                           "ATTENUATION", "ANTENNA",    "IFSPAN",    "OPERATEMODE",
                                                           "DRVCOMMANDS", "STARTFREQ",  "STOPFREQ",  "STEPFREQ"};

constexpr const char* Generator = "rectool";

struct Annotation {
    double beginUs = 0;  // since 1970
    double endUs = 0;
    std::string label;
    std::string comment;
};

/// Collects what is annotated.
class SigMfNotes {
public:
    SigMfNotes(const Recordings& recordings, ExportedRecords& records)
        : m_recordings(recordings), m_records(records), m_time(recordings.startMs())
    {
    }

    void add(const PlacedRecord& placed);
    /// @param lastUs when the samples end
    [[nodiscard]] std::vector<Annotation> take(double lastUs)
    {
        for (const Recording2::Inspection::Bookmark& bookmark : m_recordings.bookmarks()) {
            const auto us = static_cast<double>(m_time.us(static_cast<double>(bookmark.timeMs)));
            m_annotations.push_back({us, us, "bookmark", oneLine(fromLatin1(bookmark.text))});
        }
        for (Annotation& annotation : m_annotations) {
            annotation.endUs = std::min(annotation.endUs, lastUs);
        }
        return std::move(m_annotations);
    }
    /// Of the first spectrum, or else of the recording's start.
    [[nodiscard]] std::int64_t firstUs() const { return m_time.us(m_firstMs.value_or(0)); }
    [[nodiscard]] std::optional<double> frequencyHz() const { return m_frequencyHz; }

private:
    [[nodiscard]] bool isWanted(const TrackType& type)
    {
        const auto& keyword = m_records.keyword(type);
        return m_records.areNamed()
                   ? m_records.isWanted(type)
                   : std::find(SettingKeywords.begin(), SettingKeywords.end(), keyword) != SettingKeywords.end();
    }

    const Recordings& m_recordings;
    ExportedRecords& m_records;
    ExportTime m_time;
    std::optional<double> m_firstMs;
    std::optional<double> m_frequencyHz;  // the first one
    std::map<std::pair<std::size_t, std::int32_t>, std::size_t> m_inForce;
    std::vector<Annotation> m_annotations;
};

void SigMfNotes::add(const PlacedRecord& placed)
{
    const bool isSpectrum = values::RecordedKind(placed.record.data) == values::ValueType::LevelMap;
    if (isSpectrum && !m_firstMs && measuredUs(placed.record.data)) {
        m_firstMs = placed.momentMs;
    }
    const std::string& keyword = m_records.keyword(placed.type);
    if (keyword == "FREQUENCY" && !m_frequencyHz) {
        m_frequencyHz = placed.number();
    }
    if (isSpectrum || !isWanted(placed.type) || m_recordings.isBefore(placed.momentMs)) {
        return;
    }
    // What a recording begins with is filed in its first moments, and was so before.
    constexpr std::uint64_t StateMs = 100;
    const bool isState = placed.record.timeMs <= StateMs && m_inForce.count({placed.type.track, placed.type.code}) == 0;
    const double moment = placed.momentMs - (isState ? static_cast<double>(placed.record.timeMs) : 0);
    const auto us = static_cast<double>(m_time.us(moment));
    const auto before = m_inForce.find({placed.type.track, placed.type.code});
    if (before != m_inForce.end()) {
        m_annotations[before->second].endUs = us;
    }
    const values::ValueBase* value = placed.recorded.apply(placed.record);
    const std::string unit = placed.number() ? unitOfKeyword(keyword) : "";
    m_inForce[{placed.type.track, placed.type.code}] = m_annotations.size();
    m_annotations.push_back({us, std::numeric_limits<double>::infinity(), oneLine(keyword),
                             m_recordings.labelled(placed.type.track, oneLine(keyword)) + ": " +
                                 describe(placed.record, value) + (unit.empty() ? "" : ' ' + unit)});
}

/// Those that lie in the samples, in their order behind what is there already.
Json annotationsOf(const IqSamples& samples, const std::vector<Annotation>& annotations, std::uint64_t& outside)
{
    constexpr double UsPerSecond = 1e6;
    std::vector<std::pair<double, Json>> ordered;
    const Json* there = samples.metadata.find("annotations");
    for (std::size_t i = 0; there != nullptr && i < there->size(); ++i) {
        const Json* generator = there->at(i).find("core:generator");
        if (generator != nullptr && generator->text() == Generator) {
            continue;  // of an export before
        }
        const Json* start = there->at(i).find("core:sample_start");
        ordered.emplace_back(start == nullptr ? 0 : start->number().value_or(0), there->at(i));
    }
    const auto count = static_cast<double>(samples.count);
    const auto sampleAt = [&](double us) {
        return std::round((us - static_cast<double>(samples.firstUs.value_or(0))) / UsPerSecond * samples.rateHz);
    };
    for (const Annotation& annotation : annotations) {
        const double end = std::clamp(sampleAt(annotation.endUs), 0.0, count);
        const double begin = std::max(sampleAt(annotation.beginUs), 0.0);
        const bool isMoment = annotation.endUs == annotation.beginUs;
        const double last = isMoment ? begin + 1 : end;
        if (begin >= last || begin >= count || (isMoment && sampleAt(annotation.beginUs) < 0)) {
            ++outside;
            continue;
        }
        ordered.emplace_back(begin, Json({{"core:sample_start", static_cast<std::uint64_t>(begin)},
                                          {"core:sample_count", static_cast<std::uint64_t>(last - begin)},
                                          {"core:label", annotation.label},
                                          {"core:comment", annotation.comment},
                                          {"core:generator", Generator}}));
    }
    std::stable_sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    Json all = Json::array();
    std::for_each(ordered.begin(), ordered.end(), [&](auto& entry) { all.push_back(std::move(entry.second)); });
    return all;
}

/// What the metadata beside the samples say, or else what the recording tells.
Json documentOf(const SigMfExportOptions& options, const Recordings& recordings, const IqSamples& samples,
                const SigMfNotes& notes)
{
    Json document = samples.metadata.isObject() ? samples.metadata : Json::object();
    Json& global = document["global"];
    global["core:datatype"] = samples.dataType;
    global["core:sample_rate"] = samples.rateHz;
    if (global.find("core:version") == nullptr) {
        global["core:version"] = "1.0.0";
        global["core:recorder"] = "rectool";
        global["core:description"] = "Samples of the recording of " + recordings.devices().toStdString();
    }
    const auto expected = native(options.output).replace_extension(".sigmf-data").filename();
    if (native(samples.file).filename() != expected) {
        global["core:dataset"] = utf8(native(samples.file).filename());
    }
    if (samples.metadata.isObject()) {
        return document;
    }
    Json capture = {{"core:sample_start", 0}};
    capture["core:datetime"] = ExportTime(recordings.startMs()).isoAt(*samples.firstUs);
    if (notes.frequencyHz()) {
        capture["core:frequency"] = *notes.frequencyHz();
    }
    document["captures"] = Json::array({capture});
    return document;
}

ExitCode writeSigMf(const SigMfExportOptions& options, Recordings& recordings, IqSamples& samples,
                    ExportedRecords& records, NewFile& file)
{
    constexpr double UsPerSecond = 1e6;
    SigMfNotes notes(recordings, records);
    recordings.walk([&](const PlacedRecord& placed) {
        if (file.good()) {
            notes.add(placed);
        }
    });
    samples.firstUs = samples.firstUs.value_or(notes.firstUs());
    const double lastUs =
        static_cast<double>(*samples.firstUs) + static_cast<double>(samples.count) / samples.rateHz * UsPerSecond;
    std::uint64_t outside = 0;
    const std::vector<Annotation> all = notes.take(lastUs);
    Json document = documentOf(options, recordings, samples, notes);
    document["annotations"] = annotationsOf(samples, all, outside);
    if (outside == all.size() && file.good()) {
        return recordings.refuse(
            "No bookmark and no setting of the span lies within the samples. Nothing was written.");
    }
    file.write(document.dump(2) + '\n');
    if (outside > 0) {
        complain(recordings.file(), counted(outside, "annotation") + " left out: not within the samples.");
    }
    return endExport(recordings, records, file, counted(all.size() - outside, "annotation"));
}

}  // namespace

ExitCode exportSigMf(const SigMfExportOptions& options)
{
    auto samples = findSamples(options);
    if (!samples) {
        return ExitCode::Usage;
    }
    return exportTo(
        options,
        [&](Recordings& recordings, ExportedRecords& records, NewFile& file) {
            if (!ExportTime(recordings.startMs()).isKnown()) {
                return recordings.refuse(
                    "The recording does not tell when it began, so that nobody knows which samples are meant.");
            }
            return writeSigMf(options, recordings, *samples, records, file);
        },
        samples->file);
}

}  // namespace RecTool
