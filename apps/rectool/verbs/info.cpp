// The verb "info": header, types, tables and findings of a recording, measured levels on request.
#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>
#include <optional>

#include <recording2/inspection/scan.h>
#include <values/maps.h>
#include <values/recordingtext.h>
#include <values/value.h>

#include "commandline/verb.h"
#include "commands.h"
#include "listing.h"
#include "making/headerfields.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/style.h"
#include "printing/table.h"
#include "printing/text.h"
#include "replay/moment.h"
#include "replay/recordedranges.h"
#include "replay/recordedvalues.h"
#include "replay/typenames.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

struct Count {
    std::uint64_t records = 0;
    std::uint64_t bytes = 0;  // of data
};

/// The lowest and highest of the measured levels; what was not measured is none.
struct LevelSpan {
    std::optional<double> lowest;
    double highest = 0;

    void add(double level)
    {
        if (!std::isnan(level)) {
            highest = lowest ? std::max(highest, level) : level;
            lowest = lowest ? std::min(*lowest, level) : level;
        }
    }
};

/// All that is known of a file.
struct Report {
    std::string file;
    Inspection::Summary summary;
    std::map<std::int32_t, Count> perType;
    Count all;
    RecordedRanges ranges;
    std::optional<double> stepHz;               // as the device told it last
    bool knowsLevelScale = false;               // and does not only hold what a recorder writes that was told none
    std::map<std::int32_t, LevelSpan> levels;   // measured, by type; where they were asked for
    std::vector<Inspection::Finding> findings;  // of the tables and of the records
};

/// What the records say that a header only seems to: a recorder that is not told a step or a level writes its own.
class RecordFacts {
public:
    RecordFacts(Report& report, bool levels)
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
        const auto* number = dynamic_cast<const values::ValueNumeric<double>*>(value);
        if (isStep && number != nullptr && number->GetValue() > 0) {
            m_report.stepHz = number->GetValue();
        } else if (isLevel && number != nullptr) {
            m_report.levels[record.code].add(number->GetValue());
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

    Report& m_report;
    bool m_levels;
    TypeNames m_names;
    HeaderFields m_fields;
    RecordedValues m_recorded;
};

Report makeReport(const std::string& file, bool levels)
{
    Report report;
    report.file = file;
    report.summary = Inspection::inspect(file);
    for (const Inspection::TypeEntry& type : report.summary.types) {
        report.perType[type.typeNumber];  // types without records are shown too
    }
    RecordFacts facts(report, levels);
    report.findings = walk(file, report.summary, [&](const Inspection::Record& record) {
        facts.follow(record);
        for (Count* count : {&report.perType[record.code], &report.all}) {
            ++count->records;
            count->bytes += record.data.size();
        }
        return true;
    });
    facts.finish();
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

/// Of the header where a device told it, else what the spectra cover; nothing where neither is known.
std::optional<RecordedRanges::Span> frequencies(const Report& report)
{
    const Inspection::Header& header = report.summary.header;
    if (header.startFrequencyHz != 0 || header.stopFrequencyHz != 0) {
        return RecordedRanges::Span{double{header.startFrequencyHz}, double{header.stopFrequencyHz}};
    }
    const std::vector<RecordedRanges::Span>& spans = report.ranges.spans();
    return spans.empty() ? std::nullopt : std::optional(RecordedRanges::Span{spans.front().lowHz, spans.back().highHz});
}

/// The step that the device told, or that of the header if a recorder was told it, or those of the maps.
std::vector<double> steps(const Report& report)
{
    constexpr float Recorders = 100'000;  // what one writes that was told none
    const float ofHeader = report.summary.header.stepWidthHz;
    if (report.stepHz) {
        return {*report.stepHz};
    }
    if (ofHeader > 0 && ofHeader != Recorders) {
        return {double{ofHeader}};
    }
    return {report.ranges.steps().begin(), report.ranges.steps().end()};
}

void printFrequencies(const Report& report)
{
    constexpr int FloatDigits = 6;
    const std::optional<RecordedRanges::Span> span = frequencies(report);
    if (!span) {
        return;
    }
    std::string text = frequency(span->lowHz, FloatDigits) + " to " + frequency(span->highHz, FloatDigits);
    const std::vector<double> all = steps(report);
    for (const double step : all) {
        text += step != all.front() ? ", " : all.size() > 1 ? ", steps " : ", step ";
        text += frequency(step, FloatDigits);
    }
    printField("Frequency", text);
}

void printLevels(const Report& report)
{
    constexpr int Digits = 5;  // hundredths of a decibel
    const Inspection::Header& header = report.summary.header;
    if (report.knowsLevelScale) {
        printField("Level scale", std::to_string(header.minLevel) + " to " + std::to_string(header.maxLevel));
    }
    const TypeNames names(report.summary.types);
    for (const auto& [code, levels] : report.levels) {
        if (levels.lowest) {
            printField("Measured", names.label(code) + " " + number(*levels.lowest, Digits) + " to " +
                                       number(levels.highest, Digits));
        }
    }
}

void printHeader(const Report& report)
{
    const Inspection::Header& header = report.summary.header;
    const std::string name = oneLine(fromLatin1(header.deviceName));
    const std::string type = oneLine(fromLatin1(header.deviceType));
    printField("Version", std::to_string(header.majorVersion) + "." + std::to_string(header.minorVersion));
    printField("Device", (name.empty() ? "without name" : name) + (type.empty() ? "" : " (" + type + ")"));
    printField("Job", header.jobId.empty() ? "none" : oneLine(fromLatin1(header.jobId)));
    printField("Started", utc(header.startMs) + (header.automatic ? ", automatically" : ", by an operator"));
    printField("Stopped", utc(header.stopMs));
    printField("Duration", duration(lengthMs(header)));
    printFrequencies(report);
    printLevels(report);
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
    return {{"Types", "types", h.positions.typeTable, s.types.size()},
            {"Records", "records", h.positions.firstRecord, report.all.records},
            {"Times", "times", h.positions.timeTable, s.times.size()},
            {"Channel ranges", "channelRanges", h.positions.channelRangeTable, s.channelRangeTimes.size()},
            {"Bookmarks", "bookmarks", h.positions.bookmarkTable, s.bookmarks.size()}};
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
        std::cout << "\n  " << styled("The file is sound.", Style::Good) << '\n';
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

Json frequencyJson(const Report& report)
{
    const std::optional<RecordedRanges::Span> span = frequencies(report);
    return {{"startHz", span ? Json(span->lowHz) : Json()},
            {"stopHz", span ? Json(span->highHz) : Json()},
            {"stepsHz", steps(report)}};
}

Json levelScaleJson(const Report& report)
{
    const Inspection::Header& header = report.summary.header;
    return report.knowsLevelScale ? Json{{"min", header.minLevel}, {"max", header.maxLevel}} : Json();
}

Json levelsJson(const Report& report)
{
    Json all = Json::array();
    for (const auto& [code, levels] : report.levels) {
        if (levels.lowest) {
            all.push_back({{"code", code}, {"min", *levels.lowest}, {"max", levels.highest}});
        }
    }
    return all;
}

Json reportJson(const Report& report, bool levels)
{
    const Inspection::Summary& summary = report.summary;
    Json json = {{"file", shownName(report.file)}, {"readability", stateName(report.file, summary)}};
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

const char* stateName(const std::string& file, const Inspection::Summary& summary)
{
    const bool open = summary.readability == Inspection::Readability::NeverClosed;
    return open && Inspection::isBeingWritten(file) ? "being-written" : name(summary.readability);
}

ExitCode overview(const OverviewOptions& options)
{
    if (asksForListing(options)) {
        return listRecordings(options);
    }
    ExitCode result = ExitCode::Fine;
    Json files = Json::array();
    bool first = true;
    for (const std::string& file : options.files) {
        const Report report = makeReport(file, options.levels);
        result = worse(result, judge(report));
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
        std::cout << dump({{"files", std::move(files)}}, 2) << '\n';
    }
    return finish(result);
}

ExitCode info(const InfoOptions& options)
{
    OverviewOptions all;
    all.files = options.files;
    all.json = options.json;
    return overview(all);
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
