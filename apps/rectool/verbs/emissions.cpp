// The verb "emissions": a list of what was on the air.
#include "analysis/emissions.h"

#include <cmath>
#include <map>
#include <memory>
#include <string>

#include <terminaltext/quantity.h>
#include <QString>

#include "commandline/verb.h"
#include "making/newrecording.h"
#include "making/savedfile.h"
#include "printing/output.h"
#include "printing/text.h"
#include "replay/recordingtime.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

ExitCode refuseEmissions(const EmissionsOptions& options, const std::string& why)
{
    complain(options.files.front(), why);
    return ExitCode::Usage;
}

/// Whether the options go together; told if not.
ExitCode checkEmissions(const EmissionsOptions& options)
{
    if (!options.threshold.empty() &&
        !TerminalText::parseInUnits(options.threshold, {{"", 1}, {"dB", 1}, {"dBm", 1}})) {
        return refuseEmissions(options, "--threshold takes a level in dB such as -90, not " + options.threshold + '.');
    }
    if (options.highHz != 0 && options.highHz < options.lowHz) {
        return refuseEmissions(options, "--low lies above --high.");
    }
    if (options.bookmark && options.files.size() > 1) {
        return refuseEmissions(options, "--bookmark copies one recording: give it one at a time.");
    }
    if (options.bookmark && options.output.empty()) {
        return refuseEmissions(options, "--bookmark writes a copy, whose name -o gives.");
    }
    if (!options.output.empty() && !options.bookmark && !options.geoJson) {
        return refuseEmissions(options, "-o goes with --bookmark or --geojson.");
    }
    return options.geoJson && !options.output.empty() && !mayReplace(options.output) ? ExitCode::Usage : ExitCode::Fine;
}

ExitCode printFeatures(const EmissionsOptions& options, const Recordings& recordings,
                       const std::vector<Spectrum>& spectra, const FoundEmissions& found)
{
    std::size_t left = 0;
    const ExitCode result = saveText(options.output, [&](const TextSink& write) {
        left = writeEmissionFeatures(options, recordings, spectra, found, write);
    });
    if (left > 0) {
        complain(recordings.file(),
                 "Emissions left out because where they were received is not recorded: " + grouped(left) + '.');
    }
    return result;
}

std::string bookmarkText(const FoundEmission& emission, const std::string& unit)
{
    const std::string text = frequency(emission.centreHz()) + ", " + frequency(emission.band.width(), 4) + ", " +
                             number(emission.highest) + ' ' + unit + ", " +
                             duration(static_cast<std::uint64_t>(std::llround(emission.stopMs - emission.startMs)));
    return QString::fromStdString(text).toLatin1().toStdString();
}

/// The next time that is free, from 1 ms to the end of the recording; nothing where there is none.
std::optional<std::uint64_t> freeTime(const std::map<std::uint64_t, std::string>& bookmarks, std::uint64_t time,
                                      std::uint64_t last)
{
    time = std::max<std::uint64_t>(time, 1);
    for (auto next = bookmarks.lower_bound(time); next != bookmarks.end() && next->first == time; ++next) {
        ++time;
    }
    return time <= last ? std::optional(time) : std::nullopt;
}

/// Copies the recording, record by record, with a bookmark at the first sweep of each emission besides those that it
/// has; where there is one already, at the next free millisecond. What is wrong is told.
ExitCode bookmarkEmissions(const std::string& file, const std::string& unit, const FoundEmissions& found,
                           NewRecording& copy)
{
    Inspection::Summary summary;
    if (!readSummary(file, summary)) {
        return ExitCode::CannotRead;
    }
    ExitCode result = copy.create(summary.types);
    if (result != ExitCode::Fine) {
        return result;
    }
    std::uint64_t withoutTime = 0;
    const std::vector<Inspection::Finding> findings = walk(file, summary, [&](const Inspection::Record& record) {
        if (record.timeMs == 0) {
            ++withoutTime;
        } else {
            copy.write(record.code, record.data, record.timeMs, false);
        }
        return !Interrupt::requested();
    });
    for (const std::uint64_t time : summary.channelRangeTimes) {
        copy.addChannelRange(time);
    }
    std::map<std::uint64_t, std::string> bookmarks;
    for (const Inspection::Bookmark& bookmark : summary.bookmarks) {
        bookmarks.emplace(bookmark.timeMs, bookmark.text);
    }
    std::uint64_t withoutPlace = 0;
    for (const FoundEmission& emission : found.all) {
        const auto time = freeTime(bookmarks, emission.first.timeMs, lastMoment(summary));
        time ? static_cast<void>(bookmarks.emplace(*time, bookmarkText(emission, unit)))
             : static_cast<void>(++withoutPlace);
    }
    result = copy.finish(summary.header, bookmarks);
    if (result != ExitCode::Fine) {
        return result;
    }
    tellWithoutTime(file, withoutTime);
    if (withoutPlace > 0) {
        complain(file,
                 "Bookmarks left out because every millisecond up to the end has one: " + grouped(withoutPlace) + '.');
    }
    return withoutTime + withoutPlace > 0 ? ExitCode::Damaged : soundness(findings);
}

ExitCode showEmissions(const EmissionsOptions& options, Recordings& recordings, const std::vector<Spectrum>& spectra,
                       NewRecording* copy)
{
    const FoundEmissions found = findEmissions(recordings, spectra, options);
    if (!found.problem.empty()) {
        return recordings.refuse(found.problem);
    }
    if (found.sweeps == 0) {
        return recordings.refuse(noSweep(options, spectra, options.lowHz, options.highHz));
    }
    ExitCode result = ExitCode::Fine;
    if (copy != nullptr) {
        result = bookmarkEmissions(options.files.front(), options.unit, found, *copy);
        if (result != ExitCode::Fine && result != ExitCode::Damaged) {
            return recordings.end(result);
        }
    }
    if (options.geoJson) {
        result = printFeatures(options, recordings, spectra, found);
    } else {
        printEmissions(options, recordings, spectra, found);
        if (copy != nullptr && !options.json && !options.csv) {
            print(options.output, copy->result());
        }
    }
    return recordings.end(result);
}

ExitCode emissions(const EmissionsOptions& options)
{
    ExitCode checked = checkEmissions(options);
    std::unique_ptr<NewRecording> copy;
    if (options.bookmark && checked == ExitCode::Fine) {
        copy = std::make_unique<NewRecording>(options.output, false);
        checked = copy->check(options.files);
    }
    Recordings recordings(options, 1, checked);
    if (recordings.state() != ExitCode::Fine) {
        return recordings.state();
    }
    const auto spectra = wantedSpectra(recordings, options.types);
    return spectra ? showEmissions(options, recordings, *spectra, copy.get()) : ExitCode::Usage;
}

void addEmissionFrequencies(Verb<EmissionsOptions>& verb)
{
    EmissionsOptions& options = verb.options();
    verb.frequency("--low", options.lowHz, "Only channels from this frequency on");
    verb.frequency("--high", options.highHz, "Only channels up to this frequency");
    verb.frequency(
        "--apart", options.apartHz,
        "Channels above the threshold that are no further apart are one signal (default: two widths of a channel)");
}

void addEmissionRules(Verb<EmissionsOptions>& verb)
{
    constexpr double LongestSeconds = 1e9;
    constexpr double MostDb = 200;
    EmissionsOptions& options = verb.options();
    const Option fixed = verb.text("--threshold", options.threshold, "A channel is on above this level, such as -90")
                             .as("DB")
                             .notEmpty();
    verb.number("--above", options.aboveDb,
                "A channel is on so much above the noise, which is measured every 5 minutes from the lower quartile of "
                "the levels of the channel and its neighbours: 64 on each side, within 5 % or 1 MHz")
        .as("DB")
        .inUnit({"dB"}, 0, MostDb)
        .showDefault()
        .excludes(fixed);
    verb.number("--gap", options.gapSeconds, "An emission may be off for so long, such as 500ms or 10s (default: 1s)")
        .as("DURATION")
        .inSeconds(0, LongestSeconds);
    verb.number("--unseen", options.unseenSeconds,
                "An emission has ended when nobody measured its channels for longer (default: 60s)")
        .as("DURATION")
        .inSeconds(0, LongestSeconds);
    verb.number("--min-duration", options.minDurationSeconds, "Leave shorter ones out, from their first to last sweep")
        .as("DURATION")
        .inSeconds(0, LongestSeconds);
    verb.number("--min-sweeps", options.minSweeps, "Leave those out that fewer sweeps show")
        .as("N")
        .wholeNumber(1, 1e9);
    const Option part = verb.number("--power", options.percent, "The band holds this part of the power, in percent")
                            .as("PERCENT")
                            .inUnit({"%"}, 1, 100)
                            .showDefault();
    verb.number("--below", options.belowDb, "The band is where levels are at most so much below the highest, instead")
        .as("DB")
        .inUnit({"dB"}, 0.01, MostDb)
        .excludes(part);
}

}  // namespace

void addEmissions(const Syntax& program)
{
    Verb verb(program, "emissions", "List what was on the air: when, where, how wide and how strong", emissions);
    EmissionsOptions& options = verb.options();
    verb.span("Only sweeps from this time on", "Only sweeps up to this time");
    addEmissionFrequencies(verb);
    verb.types("The spectra of this keyword or type number; may be given several times");
    addEmissionRules(verb);
    verb.timeForms();
    verb.unit();
    const Option json = verb.json("Print one JSON document, which names the records of every emission");
    const Option csv = verb.flag("--csv", options.csv, "Print lines of CSV").excludes(json);
    const Option geoJson =
        verb.flag("--geojson", options.geoJson, "Print those with a position as GeoJSON").excludes(json).excludes(csv);
    verb.flag("--bookmark", options.bookmark, "Also write a copy of the recording that has them as bookmarks")
        .excludes(geoJson);
    verb.output("FILE", "The copy, or the file for --geojson");
    verb.paged();
    verb.examples({"emissions recording.rec --min-duration 2s --time utc",
                   "emissions night_1.rec night_2.rec finder.rec --low 433M --high 435M --above 15 --csv",
                   "emissions recording.rec --threshold -95 --below 26 --json",
                   "emissions recording.rec finder.rec --geojson -o emissions.geojson",
                   "emissions recording.rec --min-sweeps 3 --bookmark -o marked.rec"},
                  "Channels that are on side by side are followed from sweep to sweep: what drifts by no more than "
                  "half its width "
                  "and a channel is one emission, what hops further is several.");
}

}  // namespace RecTool
