#include <algorithm>
#include <iostream>
#include <map>

#include "commands.h"
#include "json.h"
#include "output.h"
#include "progress.h"
#include "table.h"
#include "text.h"
#include "typenames.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

struct Count {
    std::uint64_t records = 0;
    std::uint64_t bytes = 0;  // of data
};

/// All that is known of a file.
struct Report {
    std::string file;
    Inspection::Summary summary;
    std::map<std::int32_t, Count> perType;
    Count all;
    std::vector<Inspection::Finding> findings;  // of the tables and of the records
};

Report makeReport(const std::string& file)
{
    Report report;
    report.file = file;
    report.summary = Inspection::inspect(file);
    for (const Inspection::TypeEntry& type : report.summary.types) {
        report.perType[type.typeNumber];  // types without records are shown too
    }
    Progress progress(file);
    report.findings = Inspection::walkRecords(
        file, report.summary,
        [&](const Inspection::Record& record) {
            for (Count* count : {&report.perType[record.code], &report.all}) {
                ++count->records;
                count->bytes += record.data.size();
            }
            return true;
        },
        progress.callback());
    report.findings.insert(report.findings.begin(), report.summary.findings.begin(), report.summary.findings.end());
    return report;
}

std::uint64_t lengthMs(const Inspection::Header& header)
{
    return header.stopMs - std::min(header.startMs, header.stopMs);
}

std::string span(const Inspection::Summary& summary)
{
    if (summary.times.empty()) {
        return "none";
    }
    const std::uint64_t first = summary.times.front().timeMs;
    const std::uint64_t last = summary.times.back().timeMs;
    return grouped(first) + " ms to " + grouped(last) + " ms (" + duration(last - first) + ")";
}

void printField(const char* name, const std::string& text)
{
    constexpr std::size_t Width = 12;
    std::cout << "  " << padded(name, Width) << oneLine(text) << '\n';
}

void printHeader(const Report& report)
{
    constexpr int FloatDigits = 6;
    const Inspection::Header& header = report.summary.header;
    const auto range = [](double hz) { return frequency(hz, FloatDigits); };
    const std::string name = oneLine(fromLatin1(header.deviceName));
    const std::string type = oneLine(fromLatin1(header.deviceType));
    printField("Version", std::to_string(header.majorVersion) + "." + std::to_string(header.minorVersion));
    printField("Device", (name.empty() ? "without name" : name) + (type.empty() ? "" : " (" + type + ")"));
    printField("Job", header.jobId.empty() ? "none" : oneLine(fromLatin1(header.jobId)));
    printField("Started", utc(header.startMs) + (header.automatic ? ", automatically" : ", by an operator"));
    printField("Stopped", utc(header.stopMs));
    printField("Duration", duration(lengthMs(header)));
    printField("Frequency", range(header.startFrequencyHz) + " to " + range(header.stopFrequencyHz) + ", step " +
                                range(header.stepWidthHz));
    printField("Level", std::to_string(header.minLevel) + " to " + std::to_string(header.maxLevel));
    printField("Size", grouped(static_cast<std::uint64_t>(report.summary.fileSize)) + " bytes");
    printField("Records", grouped(report.all.records));
    printField("Times", span(report.summary));
}

void printTypes(const Report& report)
{
    if (report.perType.empty()) {
        return;
    }
    const TypeNames names(report.summary.types);
    Table table(
        {Table::Align::Right, Table::Align::Left, Table::Align::Right, Table::Align::Right, Table::Align::Left});
    table.add({"Type", "Keyword", "Records", "Bytes", "Path"});
    for (const auto& [code, count] : report.perType) {
        const Inspection::TypeEntry* type = names.find(code);
        table.add({std::to_string(code),
                   type == nullptr ? "(not in the type table)" : oneLine(fromLatin1(type->keyword)),
                   grouped(count.records), grouped(count.bytes),
                   type == nullptr ? "" : oneLine(fromLatin1(type->valuePath))});
    }
    std::cout << '\n';
    table.print(std::cout, "  ");
}

struct Block {
    const char* name;  // for people
    const char* key;   // for programs
    std::int32_t position;
    std::uint64_t entries;
};

std::vector<Block> blocks(const Report& report)
{
    const Inspection::Summary& s = report.summary;
    const Inspection::Header& h = s.header;
    return {{"Types", "types", h.typeTablePosition, s.types.size()},
            {"Records", "records", h.firstRecordPosition, report.all.records},
            {"Times", "times", h.timeTablePosition, s.times.size()},
            {"Channel ranges", "channelRanges", h.channelRangeTablePosition, s.channelRangeTimes.size()},
            {"Bookmarks", "bookmarks", h.bookmarkTablePosition, s.bookmarks.size()}};
}

void printBlocks(const Report& report)
{
    Table table({Table::Align::Left, Table::Align::Right, Table::Align::Right});
    table.add({"Table", "Position", "Entries"});
    for (const Block& block : blocks(report)) {
        const bool absent = block.position == 0;
        table.add({block.name, absent ? "-" : std::to_string(block.position), absent ? "-" : grouped(block.entries)});
    }
    std::cout << '\n';
    table.print(std::cout, "  ");
}

void printFindings(const std::vector<Inspection::Finding>& findings)
{
    constexpr std::size_t Most = 20;
    if (findings.empty()) {
        std::cout << "\n  The file is sound.\n";
        return;
    }
    std::cout << "\n  The file is damaged:\n";
    for (std::size_t i = 0; i < std::min(findings.size(), Most); ++i) {
        std::cout << "  at " << findings[i].offset << ": " << oneLine(findings[i].text) << '\n';
    }
    if (findings.size() > Most) {
        std::cout << "  and " << findings.size() - Most << " more; --json lists them all.\n";
    }
}

void printReport(const Report& report)
{
    std::cout << printedName(report.file) << '\n';
    printHeader(report);
    printTypes(report);
    printBlocks(report);
    printFindings(report.findings);
}

Json typesJson(const Report& report)
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

Json tablesJson(const Report& report)
{
    Json tables = Json::object();
    for (const Block& block : blocks(report)) {
        tables[block.key] = {{"position", block.position == 0 ? Json() : Json(block.position)},
                             {"entries", block.entries}};
    }
    return tables;
}

Json bookmarksJson(const Inspection::Summary& summary)
{
    Json bookmarks = Json::array();
    for (const Inspection::Bookmark& bookmark : summary.bookmarks) {
        bookmarks.push_back(toJson(bookmark));
    }
    return bookmarks;
}

Json findingsJson(const std::vector<Inspection::Finding>& findings)
{
    Json all = Json::array();
    for (const Inspection::Finding& finding : findings) {
        all.push_back(toJson(finding));
    }
    return all;
}

Json reportJson(const Report& report)
{
    const Inspection::Summary& summary = report.summary;
    Json json = {{"file", shownName(report.file)}, {"readability", name(summary.readability)}};
    if (summary.readability != Inspection::Readability::Ok) {
        json["problem"] = summary.problem;
        return json;
    }
    json["size"] = summary.fileSize;
    json["header"] = toJson(summary.header);
    json["durationMs"] = lengthMs(summary.header);
    json["firstTimeMs"] = summary.times.empty() ? Json() : Json(summary.times.front().timeMs);
    json["lastTimeMs"] = summary.times.empty() ? Json() : Json(summary.times.back().timeMs);
    json["records"] = report.all.records;
    json["bytes"] = report.all.bytes;
    json["types"] = typesJson(report);
    json["tables"] = tablesJson(report);
    json["channelRangeTimesMs"] = summary.channelRangeTimes;
    json["bookmarks"] = bookmarksJson(summary);
    json["sound"] = report.findings.empty();
    json["findings"] = findingsJson(report.findings);
    return json;
}

ExitCode judge(const Report& report)
{
    return report.summary.readability == Inspection::Readability::Ok ? soundness(report.findings)
                                                                     : ExitCode::CannotRead;
}

}  // namespace

ExitCode info(const InfoOptions& options)
{
    ExitCode result = ExitCode::Fine;
    Json files = Json::array();
    bool first = true;
    for (const std::string& file : options.files) {
        const Report report = makeReport(file);
        result = worse(result, judge(report));
        if (report.summary.readability != Inspection::Readability::Ok) {
            complain(file, report.summary.problem);
        }
        if (options.json) {
            files.push_back(reportJson(report));
        } else if (report.summary.readability == Inspection::Readability::Ok) {
            std::cout << (first ? "" : "\n");
            printReport(report);
            first = false;
        }
    }
    if (options.json) {
        std::cout << dump({{"files", std::move(files)}}, 2) << '\n';
    }
    return finish(result);
}

}  // namespace RecTool
