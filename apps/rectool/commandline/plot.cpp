// Verbs that draw.
#include <terminaltext/optionvalues.h>

#include "plot/plot.h"
#include "verb.h"

namespace RecTool::CommandLine {

namespace {

/// What all pictures take.
template <typename Options>
void addPicture(Verb<Options>& verb)
{
    constexpr int Smallest = 400;  // in less the texts have no room
    constexpr int Largest = 5000;
    Options& options = verb.options();
    verb.addOutput("PICTURE", "Picture to write: .png, .jpg or .pdf")->required();
    verb.addSpan("Begin at this time", "End at this time");
    verb.app()
        .add_option("--width", options.width, "Width in pixels")
        ->transform(TerminalText::wholeNumber(Smallest, Largest, "px"))
        ->capture_default_str();
    verb.app()
        .add_option("--height", options.height, "Height in pixels; without it more where many panels need it")
        ->each([&options](const std::string& /*height*/) { options.heightIsAsked = true; })
        ->transform(TerminalText::wholeNumber(Smallest, Largest, "px"))
        ->capture_default_str();
    verb.addJson("Print what was drawn as one JSON document");
}

void addSpectrum(CLI::App& plot, Action& action)
{
    Verb<PlotSpectrumOptions> verb(plot, "spectrum", "Draw spectra over time as a waterfall", plotSpectrum, action);
    PlotSpectrumOptions& options = verb.options();
    addPicture(verb);
    CLI::Option* rf = verb.app().add_flag("--rf", options.onlyRf, "Only the RF spectrum");
    verb.app().add_flag("--if", options.onlyIf, "Only the IF spectrum")->excludes(rf);
    verb.addTypes("The spectra of this keyword or type number; may be given several times");
    CLI::Option* highest =
        verb.app().add_flag("--max", options.max, "A pixel is the highest of its levels (as without options)");
    verb.app()
        .add_flag("--mean", options.mean, "A pixel is the mean of its levels in decibels, over their time")
        ->excludes(highest);
    verb.app().add_flag("--continuous", options.continuous, "Do not break the frequency axis at wide gaps");
    verb.app()
        .add_option("--unit", options.unit, "What levels are in, such as dBm; recordings do not tell")
        ->capture_default_str();
    verb.addExamples(
        {"plot spectrum recording.rec -o waterfall.png",
         "plot spectrum recording.rec -o alarm.png --rf --from bookmark:alarm-5000 --to bookmark:alarm+5000",
         "plot spectrum recording.rec -o waterfall.pdf --mean --unit dBm"});
}

void addLevel(CLI::App& plot, Action& action)
{
    Verb<PlotLevelOptions> verb(plot, "level", "Draw levels or other numbers over time", plotLevel, action);
    addPicture(verb);
    verb.addTypes("This keyword or type number instead of LEVEL; may be given several times");
    verb.app().add_option("--unit", verb.options().unit, "What the numbers are in, where it is not as usual");
    verb.addExamples({"plot level recording.rec -o level.png",
                      "plot level recording.rec -o drive.png --type ALTITUDE --type TRUEHEADING --height 600"});
}

void addBearings(CLI::App& plot, Action& action)
{
    Verb<PlotBearingsOptions> verb(plot, "bearings", "Draw bearings over time and as seen from above", plotBearings,
                                   action);
    addPicture(verb);
    verb.app().add_flag("--relative", verb.options().relative,
                        "Azimuths relative to the antenna, also where TRUEHEADING is recorded");
    verb.addExamples({"plot bearings recording.rec -o bearings.png",
                      "plot bearings recording.rec -o bearings.png --relative --from 60000 --json"});
}

void addTimeline(CLI::App& plot, Action& action)
{
    Verb<PlotTimelineOptions> verb(plot, "timeline", "Draw spectra, bearings and values over one time axis",
                                   plotTimeline, action);
    PlotTimelineOptions& options = verb.options();
    addPicture(verb);
    verb.addTypes("A panel for this keyword or type number too; may be given several times");
    verb.app().add_flag("--relative", options.relative,
                        "Azimuths relative to the antenna, also where TRUEHEADING is recorded");
    verb.app()
        .add_option("--unit", options.unit, "What levels of spectra are in, such as dBm; recordings do not tell")
        ->capture_default_str();
    verb.addExamples({"plot timeline receiver.rec df.rec -o station.png",
                      "plot timeline night_1.rec night_2.rec -o night.png --type LEVEL"});
}

}  // namespace

void addPlotVerbs(CLI::App& app, Action& action)
{
    CLI::App& plot =
        *app.add_subcommand("plot", "Draw spectra, levels and bearings; several recordings in one picture");
    plot.require_subcommand(1);
    addSpectrum(plot, action);
    addLevel(plot, action);
    addBearings(plot, action);
    addTimeline(plot, action);
}

}  // namespace RecTool::CommandLine
