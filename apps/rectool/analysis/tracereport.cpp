// Columns of levels by frequency, and samples by time.
#include "trace.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iostream>
#include <string>

#include <terminaltext/quantity.h>

#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"

namespace RecTool {

namespace {

/// The fewest digits that give the recorded level again.
std::string levelText(float level)
{
    std::array<char, 64> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), level);
    return {text.data(), written.ptr};
}

std::string meanText(double level)
{
    return TerminalText::shortest(level);
}

std::string inTable(double level)
{
    return fixed(level, 2);
}

std::string percentileName(double percentile)
{
    return percentile == 50 ? "median" : "p" + TerminalText::shortest(percentile);
}

/// Whether there is more than one level a channel.
bool isOfSpan(const TraceOptions& options)
{
    return options.at.empty();
}

std::string quoted(const std::string& text)
{
    return Json(text).dump();
}

void printTraceTable(const TraceOptions& options, const Recordings& recordings, const Trace& trace)
{
    ClockText clock(timeFormOf(options.time), recordings.startMs());
    const bool isSpan = isOfSpan(options);
    std::cout << ofDevice(trace.device, trace.keyword) << ", " << options.unit << ", "
              << (isSpan ? counted(trace.sweeps, "sweep") + " from " + momentText(clock, trace.firstMs) + " to " +
                               momentText(clock, trace.lastMs)
                         : "the sweep of " + momentText(clock, trace.firstMs))
              << '\n';
    std::vector<std::string> heading{"Frequency", isSpan ? "Max" : "Level"};
    if (isSpan) {
        heading.insert(heading.end(), {"Mean", "Min"});
        for (const double percentile : percentilesOf(options)) {
            heading.push_back(percentileName(percentile));
        }
        heading.insert(heading.end(), {"Sweeps", "Max at"});
    }
    Table table(std::string(heading.size(), 'r'), heading);
    for (const ChannelLevels& channel : trace.channels) {
        std::vector<std::string> row{frequency(channel.hz), inTable(channel.highest)};
        if (isSpan) {
            row.insert(row.end(), {inTable(channel.mean), inTable(channel.lowest)});
            std::transform(channel.percentiles.begin(), channel.percentiles.end(), std::back_inserter(row), inTable);
            row.insert(row.end(), {grouped(channel.sweeps), momentText(clock, channel.highestMs)});
        }
        table.add(std::move(row));
    }
    table.print();
}

void printTraceCsv(const TraceOptions& options, const std::vector<Trace>& traces)
{
    std::string text = "device,keyword,frequency_hz,";
    text += isOfSpan(options) ? "max,mean,min" : "level";
    for (const double percentile : isOfSpan(options) ? percentilesOf(options) : std::vector<double>()) {
        text += ',' + percentileName(percentile);
    }
    text += isOfSpan(options) ? ",sweeps,max_ms,min_ms\n" : "\n";
    for (const Trace& trace : traces) {
        const std::string begin = csvText(trace.device) + ',' + csvText(trace.keyword) + ',';
        for (const ChannelLevels& channel : trace.channels) {
            text += begin + TerminalText::shortest(channel.hz) + ',' + levelText(channel.highest);
            if (isOfSpan(options)) {
                text += ',' + meanText(channel.mean) + ',' + levelText(channel.lowest);
                for (const double percentile : channel.percentiles) {
                    text += ',' + meanText(percentile);
                }
                text += ',' + std::to_string(channel.sweeps) + ',' + TerminalText::shortest(channel.highestMs) + ',' +
                        TerminalText::shortest(channel.lowestMs);
            }
            text += '\n';
            std::cout << text;
            text.clear();
        }
    }
    std::cout << text;
}

std::string channelJson(const TraceOptions& options, const ChannelLevels& channel)
{
    std::string text = "{\"frequencyHz\":" + TerminalText::shortest(channel.hz);
    if (!isOfSpan(options)) {
        return text + ",\"level\":" + levelText(channel.highest) + '}';
    }
    text += ",\"max\":" + levelText(channel.highest) + ",\"mean\":" + meanText(channel.mean) +
            ",\"min\":" + levelText(channel.lowest);
    const std::vector<double> percentiles = percentilesOf(options);
    if (!percentiles.empty()) {
        text += ",\"percentiles\":{";
        for (std::size_t i = 0; i < percentiles.size(); ++i) {
            text += (i == 0 ? "\"" : ",\"") + TerminalText::shortest(percentiles[i]) +
                    "\":" + meanText(channel.percentiles[i]);
        }
        text += '}';
    }
    return text + ",\"sweeps\":" + std::to_string(channel.sweeps) +
           ",\"maxMs\":" + TerminalText::shortest(channel.highestMs) +
           ",\"minMs\":" + TerminalText::shortest(channel.lowestMs) + '}';
}

/// What both kinds of traces begin with.
std::string jsonHead(const TraceOptions& options, const Recordings& recordings)
{
    return "{\"files\":" + Json(shownNames(options.files)).dump() +
           ",\"startMsSince1970\":" + std::to_string(recordings.startMs()) + ",\"unit\":" + quoted(options.unit) +
           ",\"traces\":[";
}

std::string traceHead(const std::string& device, const std::string& keyword, std::int32_t code)
{
    return "{\"device\":" + quoted(device) + ",\"keyword\":" + quoted(keyword) + ",\"type\":" + std::to_string(code);
}

void printSamples(const TraceOptions& options, const Recordings& recordings, const ChannelTrace& trace)
{
    ClockText clock(timeFormOf(options.time), recordings.startMs());
    if (options.csv) {
        const std::string end =
            ',' + csvText(trace.device) + ',' + csvText(trace.keyword) + ',' + TerminalText::shortest(trace.hz) + '\n';
        for (const ChannelTrace::Sample& sample : trace.samples) {
            std::cout << momentText(clock, sample.momentMs) << ',' << levelText(sample.level) << end;
        }
        return;
    }
    std::cout << ofDevice(trace.device, trace.keyword) << ", " << frequency(trace.hz) << ", "
              << counted(trace.samples.size(), "sweep") << '\n';
    for (const ChannelTrace::Sample& sample : trace.samples) {
        std::cout << momentText(clock, sample.momentMs) << "  " << inTable(sample.level) << ' ' << options.unit << '\n';
    }
}

}  // namespace

void writeTraceJson(const TraceOptions& options, const Recordings& recordings, const std::vector<Trace>& traces,
                    std::ostream& out)
{
    out << jsonHead(options, recordings);
    const char* comma = "";
    for (const Trace& trace : traces) {
        out << comma << traceHead(trace.device, trace.keyword, trace.code) << ",\"sweeps\":" << trace.sweeps
            << ",\"firstMs\":" << TerminalText::shortest(trace.firstMs)
            << ",\"lastMs\":" << TerminalText::shortest(trace.lastMs) << ",\"channels\":[";
        comma = "";
        for (const ChannelLevels& channel : trace.channels) {
            out << comma << '\n' << channelJson(options, channel);
            comma = ",";
        }
        out << "]}";
        comma = ",";
    }
    out << "]}\n";
}

void printTraces(const TraceOptions& options, const Recordings& recordings, const std::vector<Trace>& traces)
{
    if (options.json) {
        return writeTraceJson(options, recordings, traces, std::cout);
    }
    if (options.csv) {
        return printTraceCsv(options, traces);
    }
    const char* between = "";
    for (const Trace& trace : traces) {
        std::cout << between;
        printTraceTable(options, recordings, trace);
        between = "\n";
    }
}

void printChannelTraces(const TraceOptions& options, const Recordings& recordings,
                        const std::vector<ChannelTrace>& traces)
{
    if (options.json) {
        std::cout << jsonHead(options, recordings);
    } else if (options.csv) {
        std::cout << (options.time == "offset" ? "timeMs" : "time") << ",level,device,keyword,frequency_hz\n";
    }
    const char* comma = "";
    for (const ChannelTrace& trace : traces) {
        if (!options.json) {
            printSamples(options, recordings, trace);
            continue;
        }
        std::cout << comma << traceHead(trace.device, trace.keyword, trace.code)
                  << ",\"frequencyHz\":" << TerminalText::shortest(trace.hz) << ",\"samples\":[";
        comma = "";
        for (const ChannelTrace::Sample& sample : trace.samples) {
            std::cout << comma << "\n[" << TerminalText::shortest(sample.momentMs) << ',' << levelText(sample.level)
                      << ']';
            comma = ",";
        }
        std::cout << "]}";
        comma = ",";
    }
    std::cout << (options.json ? "]}\n" : "");
}

}  // namespace RecTool
