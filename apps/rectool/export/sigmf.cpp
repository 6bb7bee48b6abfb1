// Exporting SigMF metadata: bookmarks and settings as annotations of samples.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include <values/recordingtext.h>

#include "exporttime.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/units.h"
#include "printing/valuetext.h"
#include "replay/measuredtime.h"
#include "sigmfsamples.h"
#include "system/filenames.h"

namespace RecTool {

namespace {

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
    [[nodiscard]] std::vector<Annotation> take(double lastUs);
    /// Of the first spectrum, or else of the recording's start.
    [[nodiscard]] std::int64_t firstUs() const { return m_time.us(m_firstMs.value_or(0)); }
    [[nodiscard]] std::optional<double> frequencyHz() const { return m_frequencyHz; }

private:
    [[nodiscard]] bool isWanted(const TrackType& type);

    const Recordings& m_recordings;
    ExportedRecords& m_records;
    ExportTime m_time;
    std::optional<double> m_firstMs;
    std::optional<double> m_frequencyHz;  // the first one
    std::map<std::pair<std::size_t, std::int32_t>, std::size_t> m_inForce;
    std::vector<Annotation> m_annotations;
};

bool SigMfNotes::isWanted(const TrackType& type)
{
    const auto& keyword = m_records.keyword(type);
    return m_records.areNamed()
               ? m_records.isWanted(type)
               : std::find(SettingKeywords.begin(), SettingKeywords.end(), keyword) != SettingKeywords.end();
}

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

std::vector<Annotation> SigMfNotes::take(double lastUs)
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
