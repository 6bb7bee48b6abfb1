// Occupancy as tables, CSV and JSON: percentages, intervals, and what is missing for the accuracy asked for.
#include "occupancycount.h"

#include <algorithm>
#include <cmath>
#include <iostream>

#include <terminaltext/quantity.h>

#include "printing/output.h"
#include "printing/text.h"

namespace RecTool {

namespace {

constexpr double InPercent = 100;
using TerminalText::shortest;

/// A part with its interval, in percent.
struct Figures {
    double percent = 0;
    double low = 0;
    double high = 0;
};

template <typename Counted>
Figures figuresOf(const Counted& counted, double confidence)
{
    const Cycles::Interval interval = counted.interval(confidence / InPercent);
    return {counted.part() * InPercent, interval.low * InPercent, interval.high * InPercent};
}

std::string twoDigits(double number)
{
    return QString::number(number, 'f', 2).toStdString();
}

/// How much longer to record for the accuracy asked for, in milliseconds; 0 where there is enough. Below 0: nobody can
/// tell, as the channel hardly ever changed.
double missingMs(const OccupancyOptions& options, const ChannelOccupancy& channel)
{
    const Figures figures = figuresOf(channel.cycles, options.confidence);
    const double reach = (figures.high - figures.low) / 2;
    if (options.accuracy == 0 || reach <= options.accuracy) {
        return 0;
    }
    constexpr std::uint64_t Few = 3;
    const double times = reach / options.accuracy;
    return channel.cycles.emissions() < Few ? -1 : (times * times - 1) * (channel.lastMs - channel.firstMs);
}

std::string missingText(const OccupancyOptions& options, const ChannelOccupancy& channel)
{
    const double missing = missingMs(options, channel);
    return missing == 0  ? ""
           : missing < 0 ? "too few emissions"
                         : "about " + duration(static_cast<std::uint64_t>(missing) / 1000 * 1000) + " more";
}

std::string channelName(const std::vector<NamedChannel>& names, double hz)
{
    const auto found =
        std::find_if(names.begin(), names.end(), [hz](const NamedChannel& channel) { return channel.hz == hz; });
    return found == names.end() ? "" : found->name;
}

void printChannelTable(const OccupancyOptions& options, const TypeOccupancy& type,
                       const std::vector<NamedChannel>& names)
{
    Table table("rrrrrrrl", {"Channel", "Occupied", shortest(options.confidence) + " % from", "to", "Emissions",
                             "Samples", "Revisit", ""});
    for (const ChannelOccupancy& channel : type.channels) {
        const Figures figures = figuresOf(channel.cycles, options.confidence);
        std::string remark = channelName(names, channel.hz);
        const std::string missing = missingText(options, channel);
        remark += (remark.empty() || missing.empty() ? "" : ", ") + missing;
        table.add({frequency(channel.hz), twoDigits(figures.percent) + " %", twoDigits(figures.low),
                   twoDigits(figures.high), grouped(channel.cycles.emissions()), grouped(channel.cycles.samples()),
                   shortest(std::round(channel.revisitMs()) / 1000) + " s", remark});
    }
    table.print();
}

void printHourTable(const OccupancyOptions& options, const TypeOccupancy& type)
{
    Table table("rrrrrr", {"Channel", "Hour", "Occupied", shortest(options.confidence) + " % from", "to", "Samples"});
    for (const ChannelOccupancy& channel : type.channels) {
        for (const auto& [hour, cycles] : channel.byHour) {
            const Figures figures = figuresOf(cycles, options.confidence);
            table.add({frequency(channel.hz), std::to_string(hour), twoDigits(figures.percent) + " %",
                       twoDigits(figures.low), twoDigits(figures.high), grouped(cycles.samples())});
        }
    }
    std::cout << "\nBy hour of the day (" << (options.time == "local" ? "local" : "UTC") << ")\n";
    table.print();
}

void printBandTable(const OccupancyOptions& options, const TypeOccupancy& type)
{
    Table table("lrrrr", {"Band", "Occupied", shortest(options.confidence) + " % from", "to", "Sweeps"});
    for (const BandOccupancy& band : type.bands) {
        if (band.sweeps() > 0) {
            const Figures figures = figuresOf(band, options.confidence);
            table.add({frequency(band.lowHz()) + " to " + frequency(band.highHz()), twoDigits(figures.percent) + " %",
                       twoDigits(figures.low), twoDigits(figures.high), grouped(band.sweeps())});
        }
    }
    std::cout << '\n';
    table.print();
}

void printTables(const OccupancyOptions& options, const TypeOccupancy& type, const std::vector<NamedChannel>& names)
{
    std::cout << ofDevice(type.device, type.keyword) << ", " << counted(type.sweeps, "sweep") << ", occupied: "
              << (options.hasThreshold ? "from " + shortest(options.thresholdDb) + " dB on"
                                       : shortest(options.aboveDb) + " dB above the noise floor")
              << '\n';
    printChannelTable(options, type, names);
    if (options.byHour) {
        printHourTable(options, type);
    }
    if (!type.bands.empty()) {
        printBandTable(options, type);
    }
}

void printCsvLine(const std::string& begin, const std::string& hour, const Figures& figures, std::uint64_t samples,
                  const std::string& end)
{
    std::cout << begin << hour << ',' << shortest(figures.percent) << ',' << shortest(figures.low) << ','
              << shortest(figures.high) << ',' << samples << ',' << end << '\n';
}

void printCsv(const OccupancyOptions& options, const std::vector<TypeOccupancy>& types,
              const std::vector<NamedChannel>& names)
{
    std::cout << "device,keyword,low_hz,high_hz,name,hour,percent,low,high,samples,emissions,revisit_ms,missing_ms\n";
    for (const TypeOccupancy& type : types) {
        const std::string begin = csvText(type.device) + ',' + csvText(type.keyword) + ',';
        for (const ChannelOccupancy& channel : type.channels) {
            const std::string hz = shortest(channel.hz);
            std::string named = begin;
            named.append(hz).append(1, ',').append(hz).append(1, ',');
            named.append(csvText(channelName(names, channel.hz))).append(1, ',');
            std::string end = std::to_string(channel.cycles.emissions()).append(1, ',');
            end.append(shortest(channel.revisitMs())).append(1, ',').append(shortest(missingMs(options, channel)));
            printCsvLine(named, "", figuresOf(channel.cycles, options.confidence), channel.cycles.samples(), end);
            for (const auto& [hour, cycles] : channel.byHour) {
                printCsvLine(named, std::to_string(hour), figuresOf(cycles, options.confidence), cycles.samples(),
                             std::to_string(cycles.emissions()) + ",,");
            }
        }
        for (const BandOccupancy& band : type.bands) {
            if (band.sweeps() > 0) {
                printCsvLine(begin + shortest(band.lowHz()) + ',' + shortest(band.highHz()) + ",,", "",
                             figuresOf(band, options.confidence), band.sweeps(), ",,");
            }
        }
    }
}

Json cyclesJson(const OccupancyOptions& options, const Cycles& cycles)
{
    const Figures figures = figuresOf(cycles, options.confidence);
    return {{"percent", figures.percent},
            {"low", figures.low},
            {"high", figures.high},
            {"samples", cycles.samples()},
            {"occupied", cycles.on()},
            {"emissions", cycles.emissions()},
            {"independentSamples", cycles.independentSamples()}};
}

Json occupiedJson(const OccupancyOptions& options, const ChannelOccupancy& channel,
                  const std::vector<NamedChannel>& names)
{
    Json json = {{"frequencyHz", channel.hz}};
    const std::string name = channelName(names, channel.hz);
    if (!name.empty()) {
        json["name"] = name;
    }
    json.update(cyclesJson(options, channel.cycles));
    json.update({{"firstMs", channel.firstMs},
                 {"lastMs", channel.lastMs},
                 {"revisitMs", channel.revisitMs()},
                 {"longestRevisitMs", channel.longestMs},
                 {"enough", missingMs(options, channel) == 0}});
    for (const auto& [hour, cycles] : channel.byHour) {
        Json inHour = {{"hour", hour}};
        inHour.update(cyclesJson(options, cycles));
        json["hours"].push_back(std::move(inHour));
    }
    return json;
}

}  // namespace

Json occupancyJson(const OccupancyOptions& options, const Recordings& recordings,
                   const std::vector<TypeOccupancy>& types, const std::vector<NamedChannel>& names)
{
    Json document = {{"files", shownNames(options.files)}, {"startMsSince1970", recordings.startMs()}};
    options.hasThreshold ? document["thresholdDb"] = options.thresholdDb : document["aboveDb"] = options.aboveDb;
    document.update({{"confidence", options.confidence}, {"types", Json::array()}});
    for (const TypeOccupancy& type : types) {
        Json json = {{"device", type.device}, {"keyword", type.keyword}, {"type", type.code}, {"sweeps", type.sweeps}};
        json["channels"] = Json::array();
        for (const ChannelOccupancy& channel : type.channels) {
            json["channels"].push_back(occupiedJson(options, channel, names));
        }
        json["bands"] = Json::array();
        for (const BandOccupancy& band : type.bands) {
            const Figures figures = band.sweeps() > 0 ? figuresOf(band, options.confidence) : Figures{};
            json["bands"].push_back({{"lowHz", band.lowHz()},
                                     {"highHz", band.highHz()},
                                     {"percent", figures.percent},
                                     {"low", figures.low},
                                     {"high", figures.high},
                                     {"sweeps", band.sweeps()}});
        }
        document["types"].push_back(std::move(json));
    }
    return document;
}

void printOccupancy(const OccupancyOptions& options, const Recordings& recordings,
                    const std::vector<TypeOccupancy>& types, const std::vector<NamedChannel>& names)
{
    if (options.json) {
        return printJson(occupancyJson(options, recordings, types, names));
    }
    if (options.csv) {
        return printCsv(options, types, names);
    }
    const char* between = "";
    for (const TypeOccupancy& type : types) {
        std::cout << between;
        printTables(options, type, names);
        between = "\n";
    }
}

}  // namespace RecTool
