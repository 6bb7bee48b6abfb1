// The report of a recording for programs.
#include "inforeport.h"
#include "listing.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/typenames.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

Json typesJson(const InfoReport& report)
{
    const TypeNames names(report.summary.types);
    Json types = Json::array();
    for (const auto& [code, count] : report.perType) {
        const Inspection::TypeEntry* type = names.find(code);
        types.push_back({{"number", code},
                         {"keyword", type == nullptr ? Json() : Json(fromLatin1(type->keyword))},
                         {"path", type == nullptr ? Json() : Json(fromLatin1(type->valuePath))},
                         {"records", count.records},
                         {"bytes", count.bytes}});
    }
    return types;
}

Json tablesJson(const InfoReport& report)
{
    Json tables = Json::object();
    for (const InfoBlock& block : report.blocks()) {
        tables[block.key] = {{"position", block.position == 0 ? Json() : Json(block.position)},
                             {"entries", block.entries}};
    }
    return tables;
}

Json frequencyJson(const InfoReport& report)
{
    const std::optional<FrequencySpan> span = report.frequencies();
    return {{"startHz", span ? Json(span->lowHz) : Json()},
            {"stopHz", span ? Json(span->highHz) : Json()},
            {"stepsHz", report.steps()}};
}

Json levelScaleJson(const InfoReport& report)
{
    const Inspection::Header& header = report.summary.header;
    return report.knowsLevelScale ? Json{{"min", header.minLevel}, {"max", header.maxLevel}} : Json();
}

Json levelsJson(const InfoReport& report)
{
    Json all = Json::array();
    for (const auto& [code, levels] : report.levels) {
        if (levels.count > 0) {
            all.push_back({{"code", code}, {"min", levels.lowest}, {"max", levels.highest}});
        }
    }
    return all;
}

}  // namespace

Json reportJson(const InfoReport& report, bool levels)
{
    const Inspection::Summary& summary = report.summary;
    Json json = {{"file", shownName(report.file)},
                 {"readability", report.isBeingWritten ? "being-written" : stateName(report.file, summary)}};
    if (summary.readability != Inspection::Readability::Ok) {
        json["problem"] = summary.problem;
        return json;
    }
    json["size"] = summary.fileSize;
    json["header"] = toJson(summary.header);
    json["frequency"] = frequencyJson(report);
    json["levelScale"] = levelScaleJson(report);
    if (levels) {
        json["levels"] = levelsJson(report);
    }
    json["durationMs"] = report.lengthMs();
    json["firstTimeMs"] = report.firstTimeMs;
    json["lastTimeMs"] = report.lastTimeMs;
    json["records"] = report.all.records;
    json["bytes"] = report.all.bytes;
    json["types"] = typesJson(report);
    json["tables"] = tablesJson(report);
    json["channelRangeTimesMs"] = summary.channelRangeTimes;
    json["bookmarks"] = toJson(summary.bookmarks);
    json["sound"] = report.findings.empty();
    json["findings"] = toJson(report.findings);
    return json;
}

}  // namespace RecTool
