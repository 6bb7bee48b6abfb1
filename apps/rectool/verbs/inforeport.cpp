// Finding out what a recording is from its header, its tables and its records.
#include "inforeport.h"

#include <values/maps.h>
#include <values/recordingtext.h>

#include "making/headerfields.h"
#include "replay/recordedvalues.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

/// What the records say that a header only seems to: a recorder that is not told a step or a level writes its own.
class RecordFacts {
public:
    RecordFacts(InfoReport& report, bool levels)
        : m_report(report), m_levels(levels), m_names(report.summary.types), m_fields(report.summary.types)
    {
    }

    void follow(const Inspection::Record& record)
    {
        m_fields.follow(record);
        m_report.ranges.add(record.data);
        const Inspection::TypeEntry* type = m_names.find(record.code);
        const std::string keyword = type == nullptr ? "" : type->keyword;
        const bool isStep = keyword == "STEPFREQ";
        const bool isLevel = m_levels && (keyword == "LEVEL" || values::RecordedKind(record.data) == LevelMap);
        const values::ValueBase* value = isStep || isLevel ? m_recorded.apply(record) : nullptr;
        const std::optional<double> number = plainNumber(value);
        if (isStep && number && *number > 0) {
            m_report.stepHz = number;
        } else if (isLevel && number) {
            m_report.levels[record.code].add(*number);
        } else if (const auto* map = dynamic_cast<const values::CellMap<float, values::levelHandler>*>(value)) {
            for (const float level : map->GetCells()) {
                m_report.levels[record.code].add(double{level});
            }
        }
    }

    void finish()
    {
        constexpr std::int32_t RecordersLowest = -30;
        constexpr std::int32_t RecordersHighest = 120;
        const Inspection::Header& header = m_report.summary.header;
        const bool isRecorders = header.minLevel == RecordersLowest && header.maxLevel == RecordersHighest;
        const bool isNone = header.minLevel == 0 && header.maxLevel == 0;
        m_report.knowsLevelScale = m_fields.tellLevels() || !(isRecorders || isNone);
    }

private:
    static constexpr values::ValueType LevelMap = values::ValueType::LevelMap;

    InfoReport& m_report;
    bool m_levels;
    TypeNames m_names;
    HeaderFields m_fields;
    RecordedValues m_recorded;
};

}  // namespace

InfoReport makeInfoReport(const std::string& file, bool levels)
{
    InfoReport report;
    report.file = file;
    PresentRecording recording;
    const bool readable = recording.open(file);
    report.summary = recording.summary();
    report.isBeingWritten = recording.isBeingWritten();
    report.timesAreMissing = !recording.timesKnown();
    if (!readable) {
        return report;
    }
    for (const Inspection::TypeEntry& type : report.summary.types) {
        report.perType[type.typeNumber];  // types without records are shown too
    }
    RecordFacts facts(report, levels);
    report.findings = recording.walk([&](const Inspection::Record& record) {
        facts.follow(record);
        for (TypeCount* count : {&report.perType[record.code], &report.all}) {
            ++count->records;
            count->bytes += record.data.size();
        }
        if (report.isBeingWritten && record.timeMs != 0) {
            report.firstTimeMs = report.firstTimeMs.value_or(record.timeMs);
            report.lastTimeMs = record.timeMs;
        }
        return true;
    });
    report.summary.header = recording.summary().header;
    facts.finish();
    if (!report.summary.times.empty()) {
        report.firstTimeMs = report.summary.times.front().timeMs;
        report.lastTimeMs = report.summary.times.back().timeMs;
    }
    return report;
}

std::uint64_t InfoReport::lengthMs() const
{
    return summary.header.stopMs - std::min(summary.header.startMs, summary.header.stopMs);
}

std::optional<FrequencySpan> InfoReport::frequencies() const
{
    const Inspection::Header& header = summary.header;
    if (header.startFrequencyHz != 0 || header.stopFrequencyHz != 0) {
        return FrequencySpan{double{header.startFrequencyHz}, double{header.stopFrequencyHz}};
    }
    const std::vector<FrequencySpan>& spans = ranges.spans();
    return spans.empty() ? std::nullopt : std::optional(FrequencySpan{spans.front().lowHz, spans.back().highHz});
}

std::vector<double> InfoReport::steps() const
{
    constexpr float Recorders = 100'000;  // what one writes that was told none
    const float ofHeader = summary.header.stepWidthHz;
    if (stepHz) {
        return {*stepHz};
    }
    if (ofHeader > 0 && ofHeader != Recorders) {
        return {double{ofHeader}};
    }
    return {ranges.steps().begin(), ranges.steps().end()};
}

std::vector<InfoBlock> InfoReport::blocks() const
{
    const Inspection::Header& h = summary.header;
    return {{"Types", "types", h.positions.typeTable, summary.types.size()},
            {"Records", "records", h.positions.firstRecord, all.records},
            {"Times", "times", h.positions.timeTable, summary.times.size()},
            {"Channel ranges", "channelRanges", h.positions.channelRangeTable, summary.channelRangeTimes.size()},
            {"Bookmarks", "bookmarks", h.positions.bookmarkTable, summary.bookmarks.size()}};
}

}  // namespace RecTool
