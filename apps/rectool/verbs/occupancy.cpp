// The verb "occupancy": how often channels and bands were occupied, and how sure that is.
#include <fstream>
#include <optional>

#include <terminaltext/quantity.h>

#include "analysis/occupancycount.h"
#include "commandline/verb.h"
#include "printing/output.h"
#include "replay/spectra.h"

namespace RecTool {

namespace {

constexpr double MostPercent = 100;

std::string trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// A name as CSV has it: in quotes, which are doubled within it, or as it is.
std::string unquoted(const std::string& text)
{
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') {
        return text;
    }
    std::string name;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        name += text[i];
        const bool isDoubled = text[i] == '"' && text[i + 1] == '"' && i + 2 < text.size();
        i += isDoubled ? 1U : 0U;
    }
    return name;
}

/// "FREQUENCY,WIDTH[,NAME]"; nothing when it is not.
std::optional<NamedChannel> channelOfLine(const std::string& line)
{
    const std::size_t first = line.find(',');
    if (first == std::string::npos) {
        return std::nullopt;
    }
    const std::size_t second = line.find(',', first + 1);
    const std::size_t width = second == std::string::npos ? second : second - first - 1;
    const auto hz = parseHertz(trimmed(line.substr(0, first)));
    const auto widthHz = parseHertz(trimmed(line.substr(first + 1, width)));
    if (!hz || !widthHz) {
        return std::nullopt;
    }
    return NamedChannel{*hz, *widthHz, second == std::string::npos ? "" : unquoted(trimmed(line.substr(second + 1)))};
}

/// @return nothing, told, when the file is none of channels
std::optional<std::vector<NamedChannel>> readChannels(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        complain(path, "It cannot be read.");
        return std::nullopt;
    }
    std::vector<NamedChannel> channels;
    std::size_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        line = trimmed(line);
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const std::optional<NamedChannel> channel = channelOfLine(line);
        if (!channel || channels.size() == MostOccupancyChannels) {
            complain(path,
                     "Line " + std::to_string(number) +
                         (channel ? " is one channel too many." : " is not FREQUENCY,WIDTH or FREQUENCY,WIDTH,NAME."));
            return std::nullopt;
        }
        channels.push_back(*channel);
    }
    if (channels.empty()) {
        complain(path, "There is no channel in it.");
        return std::nullopt;
    }
    return channels;
}

/// @return nothing, told, when one is no band
std::optional<std::vector<FrequencySpan>> bandsOf(const OccupancyOptions& options)
{
    std::vector<FrequencySpan> bands;
    for (const std::string& text : options.bands) {
        const std::size_t dash = text.find('-');
        const auto low = parseHertz(trimmed(text.substr(0, dash)));
        const auto high = dash == std::string::npos ? std::nullopt : parseHertz(trimmed(text.substr(dash + 1)));
        if (!low || !high || *high <= *low) {
            complain(options.files.front(), "--band takes LOW-HIGH, such as 430M-440M, not " + text + '.');
            return std::nullopt;
        }
        bands.push_back({*low, *high});
    }
    return bands;
}

/// Whether the options go together; told if not.
bool isUsable(const OccupancyOptions& options)
{
    const auto refuse = [&](const char* why) {
        complain(options.files.front(), why);
        return false;
    };
    if (!options.channels.empty() && options.rasterHz != 0) {
        return refuse("--channels and --raster exclude each other.");
    }
    if (options.highHz != 0 && options.highHz < options.lowHz) {
        return refuse("--low lies above --high.");
    }
    return true;
}

ExitCode occupancy(const OccupancyOptions& options)
{
    if (!isUsable(options)) {
        return ExitCode::Usage;
    }
    const auto bands = bandsOf(options);
    const auto names =
        options.channels.empty() ? std::optional(std::vector<NamedChannel>()) : readChannels(options.channels);
    if (!bands || !names) {
        return ExitCode::Usage;
    }
    Recordings recordings(options, options.hasThreshold ? 1 : 2);
    if (recordings.state() != ExitCode::Fine) {
        return recordings.state();
    }
    const auto spectra = wantedSpectra(recordings, options.types, options.types.empty());
    if (!spectra) {
        return ExitCode::Usage;
    }
    const auto types = countOccupancy(options, recordings, *spectra, *names, *bands);
    if (!types) {
        return recordings.refuse("There are more than " + std::to_string(MostOccupancyChannels) +
                                 " channels: take some with --low and --high, or wider ones with --raster.");
    }
    if (types->empty()) {
        return recordings.refuse("No sweep of the span has a level in any of these channels.");
    }
    printOccupancy(options, recordings, *types, *names);
    return recordings.end(ExitCode::Fine);
}

}  // namespace

void addOccupancy(const Syntax& program)
{
    constexpr double MostDb = 1000;
    Verb verb(program, "occupancy", "Show how often channels were occupied, and how sure that is", occupancy);
    OccupancyOptions& options = verb.options();
    verb.span("Only sweeps from this time on", "Only sweeps up to this time");
    const Option fixed = verb.number("--threshold", options.thresholdDb, "A channel is occupied from this level on")
                             .as("DB")
                             .sets(options.hasThreshold)
                             .inUnit({"dB", "dBm"}, -MostDb, MostDb);
    verb.number("--above", options.aboveDb,
                "A channel is occupied so much above the noise floor, which is measured by channel and time")
        .as("DB")
        .inUnit({"dB"}, 0, MostDb)
        .showDefault()
        .excludes(fixed);
    verb.text("--channels", options.channels,
              "Channels of a file, a line each: FREQUENCY,WIDTH or FREQUENCY,WIDTH,NAME")
        .as("FILE")
        .notEmpty();
    verb.frequency("--raster", options.rasterHz,
                   "Channels as wide as this at its multiples, instead of those of the sweeps");
    verb.frequency("--low", options.lowHz, "Only from this frequency on");
    verb.frequency("--high", options.highHz, "Only up to this frequency");
    verb.eachAlone("--band", options.bands, "A band, too, such as 430M-440M; may be given several times")
        .as("LOW-HIGH");
    verb.types("The spectra of this keyword or type number instead of the RF spectrum; may be given several times");
    verb.flag("--hours", options.byHour, "By hour of the day, too");
    verb.text("--time", options.time, "Whose hours: utc or local").oneOf({"utc", "local"}).showDefault();
    verb.number("--accuracy", options.accuracy, "Tell which channels are known less well than to this, to either side")
        .as("PERCENT")
        .inUnit({"%"}, 1e-3, MostPercent / 2);
    verb.number("--confidence", options.confidence, "Of the intervals")
        .as("PERCENT")
        .inUnit({"%"}, 50, 99.99)
        .showDefault();
    const Option json = verb.json();
    verb.flag("--csv", options.csv, "Print lines of CSV").excludes(json);
    verb.paged();
    verb.examples({"occupancy night_1.rec night_2.rec",
                   "occupancy recording.rec --raster 25k --low 430M --high 440M --accuracy 1",
                   "occupancy recording.rec --channels channels.csv --hours --time local --csv",
                   "occupancy recording.rec --threshold -95 --band 430M-440M --json"},
                  "The interval holds what would be found in the long run; successive sweeps that show the same "
                  "emission count little.");
}

}  // namespace RecTool
