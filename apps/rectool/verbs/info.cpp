// The verb "info": header, types, tables and findings of recordings, or a table of many.
#include <algorithm>
#include <iostream>
#include <string>

#include "commandline/verb.h"
#include "inforeport.h"
#include "listing.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/valuetext.h"
#include "replay/recordingtime.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

std::string span(const InfoReport& report)
{
    if (!report.firstTimeMs || !report.lastTimeMs) {
        return report.timesAreMissing ? "missing, as there is no journal" : "none";
    }
    const std::uint64_t first = *report.firstTimeMs;
    const std::uint64_t last = *report.lastTimeMs;
    return grouped(first) + " ms to " + grouped(last) + " ms (" + duration(last - first) + ")";
}

void printField(const char* name, const std::string& text)
{
    constexpr std::size_t Width = 12;
    std::cout << "  " << padded(name, Width) << oneLine(text) << '\n';
}

void printFrequencies(const InfoReport& report)
{
    constexpr int FloatDigits = 6;
    const std::optional<FrequencySpan> span = report.frequencies();
    if (!span) {
        return;
    }
    std::string text = frequency(span->lowHz, FloatDigits) + " to " + frequency(span->highHz, FloatDigits);
    const std::vector<double> all = report.steps();
    for (const double step : all) {
        text += step != all.front() ? ", " : all.size() > 1 ? ", steps " : ", step ";
        text += frequency(step, FloatDigits);
    }
    printField("Frequency", text);
}

void printLevels(const InfoReport& report)
{
    constexpr int Digits = 5;  // hundredths of a decibel
    const Inspection::Header& header = report.summary.header;
    if (report.knowsLevelScale) {
        printField("Level scale", std::to_string(header.minLevel) + " to " + std::to_string(header.maxLevel));
    }
    const TypeNames names(report.summary.types);
    for (const auto& [code, levels] : report.levels) {
        if (levels.count > 0) {
            printField("Measured", names.label(code) + " " + number(levels.lowest, Digits) + " to " +
                                       number(levels.highest, Digits));
        }
    }
}

void printExtent(const InfoReport& report)
{
    printField("Size", grouped(static_cast<std::uint64_t>(report.summary.fileSize)) + " bytes");
    printField("Records", grouped(report.all.records));
    printField("Times", span(report));
}

void printHeader(const InfoReport& report)
{
    const Inspection::Header& header = report.summary.header;
    if (report.isBeingWritten && header.majorVersion == 0) {
        printField("Started", utc(header.startMs) + " by its name; more is known when it is closed");
        printExtent(report);
        return;
    }
    const std::string name = oneLine(fromLatin1(header.deviceName));
    const std::string type = oneLine(fromLatin1(header.deviceType));
    printField("Version", std::to_string(header.majorVersion) + "." + std::to_string(header.minorVersion));
    printField("Device", (name.empty() ? "without name" : name) + (type.empty() ? "" : " (" + type + ")"));
    printField("Job", header.jobId.empty() ? "none" : oneLine(fromLatin1(header.jobId)));
    printField("Started", utc(header.startMs) + (header.automatic ? ", automatically" : ", by an operator"));
    printField(report.isBeingWritten ? "So far to" : "Stopped", utc(header.stopMs));
    printField("Duration", duration(report.lengthMs()));
    printFrequencies(report);
    printLevels(report);
    printExtent(report);
}

void printTypes(const InfoReport& report)
{
    if (report.perType.empty()) {
        return;
    }
    const TypeNames names(report.summary.types);
    Table table("rlrrl", {"Type", "Keyword", "Records", "Bytes", "Path"});
    for (const auto& [code, count] : report.perType) {
        const Inspection::TypeEntry* type = names.find(code);
        table.add({std::to_string(code),
                   type == nullptr ? "(not in the type table)" : oneLine(fromLatin1(type->keyword)),
                   grouped(count.records), grouped(count.bytes),
                   type == nullptr ? "" : oneLine(fromLatin1(type->valuePath))});
    }
    std::cout << '\n';
    table.print("  ");
}

void printBlocks(const InfoReport& report)
{
    Table table("lrr", {"Table", "Position", "Entries"});
    for (const InfoBlock& block : report.blocks()) {
        const bool absent = block.position == 0;
        table.add({block.name, absent ? "-" : std::to_string(block.position), absent ? "-" : grouped(block.entries)});
    }
    std::cout << '\n';
    table.print("  ");
}

void printFindings(const std::vector<Inspection::Finding>& findings, bool isBeingWritten)
{
    constexpr std::size_t Most = 20;
    if (findings.empty()) {
        std::cout << "\n  "
                  << styled(isBeingWritten ? "What was accepted so far is sound." : "The file is sound.", Style::Good)
                  << '\n';
        return;
    }
    std::cout << "\n  " << styled("The file is damaged:", Style::Bad) << '\n';
    for (std::size_t i = 0; i < std::min(findings.size(), Most); ++i) {
        std::cout << "  at " << findings[i].offset << ": " << oneLine(findings[i].text) << '\n';
    }
    if (findings.size() > Most) {
        std::cout << "  and " << findings.size() - Most << " more; --json lists them all.\n";
    }
}

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

void printReport(const InfoReport& report)
{
    std::cout << printedName(report.file) << (report.isBeingWritten ? ", which is being written\n" : "\n");
    printHeader(report);
    printTypes(report);
    printBlocks(report);
    printFindings(report.findings, report.isBeingWritten);
}

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

}  // namespace

ExitCode overview(const OverviewOptions& options)
{
    if (asksForListing(options)) {
        return listRecordings(options);
    }
    ExitCode result = ExitCode::Fine;
    Json files = Json::array();
    bool first = true;
    for (const std::string& file : options.files) {
        const InfoReport report = makeInfoReport(file, options.levels);
        result = worse(result, (report.summary.readability == Inspection::Readability::Ok ? soundness(report.findings)
                                                                                          : ExitCode::CannotRead));
        if (report.summary.readability != Inspection::Readability::Ok) {
            complain(file, report.summary.problem);
        }
        if (options.json) {
            files.push_back(reportJson(report, options.levels));
        } else if (report.summary.readability == Inspection::Readability::Ok) {
            std::cout << (first ? "" : "\n");
            printReport(report);
            first = false;
        }
    }
    if (options.json) {
        printJson({{"files", std::move(files)}});
    }
    return finish(result);
}

void addInfo(const Syntax& program)
{
    Verb verb(program, "info", "Show what recordings are, of a directory as a table", overview);
    OverviewOptions& options = verb.options();
    verb.describe("FILE", "Recordings, files or archive addresses, or directories");
    verb.flag("--levels", options.levels, "The lowest and highest measured levels as well");
    verb.flag("--table", options.table, "One line a recording, as of a directory; the options below ask for it, too");
    verb.flag("-r,--recursive", options.recursive, "Also what lies in directories of directories");
    verb.flag("--verify", options.verify, "Check every recording, as the verb verify does");
    verb.text("--device", options.device, "Only where the device's name or type holds this text").as("TEXT").notEmpty();
    verb.text("--since", options.since,
              std::string("Only what was recorded at this moment or later. MOMENT: ") + MomentForms)
        .as("MOMENT")
        .notEmpty();
    verb.text("--until", options.until, "Only what was recorded at this moment or earlier").as("MOMENT").notEmpty();
    verb.text("--covers", options.covers, "Only where spectra or bearings reach over this frequency")
        .as("FREQUENCY")
        .notEmpty();
    verb.text("--sort", options.sort, "By this column (default: start)")
        .oneOf({"start", "length", "device", "records", "spectra", "size", "file"});
    verb.flag("--reverse", options.reverse, "The last one first");
    verb.json();
    verb.paged();
    verb.examples({"info recording.rec", "info recording.rec --levels", "info --json *.rec", "info .",
                   "info . --covers 433.5M --since 7d --sort length --reverse",
                   "info -r . --device \"RX 1\" --until \"2026-11-21 UTC\" --verify"});
}

}  // namespace RecTool
