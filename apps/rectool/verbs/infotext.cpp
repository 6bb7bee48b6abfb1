// The report of a recording as people read it.
#include <algorithm>
#include <iostream>

#include "inforeport.h"
#include "printing/output.h"
#include "printing/style.h"
#include "printing/table.h"
#include "printing/text.h"
#include "printing/typenames.h"

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

}  // namespace

void printReport(const InfoReport& report)
{
    std::cout << printedName(report.file) << (report.isBeingWritten ? ", which is being written\n" : "\n");
    printHeader(report);
    printTypes(report);
    printBlocks(report);
    printFindings(report.findings, report.isBeingWritten);
}

}  // namespace RecTool
