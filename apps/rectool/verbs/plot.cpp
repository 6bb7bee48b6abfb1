// The verbs that draw: "plot spectrum", "level", "bearings" and "timeline".
#include "plot/plot.h"

#include "commandline/verb.h"

namespace RecTool {

namespace {

constexpr const char* RelativeHelp = "Azimuths relative to the antenna, also where TRUEHEADING is recorded";

/// What all pictures take.
template <typename Options>
void addPicture(Verb<Options>& verb)
{
    verb.output("PICTURE", "Picture to write: .png, .jpg or .pdf").required();
    verb.span("Begin at this time", "End at this time");
    verb.size("Width in pixels", "Height in pixels; without it more where many panels need it");
    verb.json("Print what was drawn as one JSON document");
}

void addSpectrum(const Syntax& plot)
{
    Verb verb(plot, "spectrum", "Draw spectra over time as a waterfall", plotSpectrum);
    PlotSpectrumOptions& options = verb.options();
    addPicture(verb);
    const Option rf = verb.flag("--rf", options.onlyRf, "Only the RF spectrum");
    verb.flag("--if", options.onlyIf, "Only the IF spectrum").excludes(rf);
    verb.types("The spectra of this keyword or type number; may be given several times");
    const Option highest = verb.flag("--max", options.max, "A pixel is the highest of its levels (as without options)");
    verb.flag("--mean", options.mean, "A pixel is the mean of its levels in decibels, over their time")
        .excludes(highest);
    verb.flag("--continuous", options.continuous, "Do not break the frequency axis at wide gaps");
    verb.unit();
    verb.examples({"plot spectrum recording.rec -o waterfall.png",
                   "plot spectrum recording.rec -o alarm.png --rf --from bookmark:alarm-5000 --to bookmark:alarm+5000",
                   "plot spectrum recording.rec -o waterfall.pdf --mean --unit dBm"});
}

void addLevel(const Syntax& plot)
{
    Verb verb(plot, "level", "Draw levels or other numbers over time", plotLevel);
    addPicture(verb);
    verb.types("This keyword or type number instead of LEVEL; may be given several times");
    verb.text("--unit", verb.options().unit, "What the numbers are in, where it is not as usual");
    verb.examples({"plot level recording.rec -o level.png",
                   "plot level recording.rec -o drive.png --type ALTITUDE --type TRUEHEADING --height 600"});
}

void addBearings(const Syntax& plot)
{
    Verb verb(plot, "bearings", "Draw bearings over time and as seen from above", plotBearings);
    addPicture(verb);
    verb.flag("--relative", verb.options().relative, RelativeHelp);
    verb.examples({"plot bearings recording.rec -o bearings.png",
                   "plot bearings recording.rec -o bearings.png --relative --from 60000 --json"});
}

void addTimeline(const Syntax& plot)
{
    Verb verb(plot, "timeline", "Draw spectra, bearings and values over one time axis", plotTimeline);
    addPicture(verb);
    verb.types("A panel for this keyword or type number too; may be given several times");
    verb.flag("--relative", verb.options().relative, RelativeHelp);
    verb.unit("What levels of spectra are in, such as dBm; recordings do not tell");
    verb.examples({"plot timeline receiver.rec df.rec -o station.png",
                   "plot timeline night_1.rec night_2.rec -o night.png --type LEVEL"});
}

}  // namespace

void addPlotVerbs(const Syntax& program)
{
    Syntax plot(program, "plot", "Draw spectra, levels and bearings; several recordings in one picture");
    plot.needsVerb();
    addSpectrum(plot);
    addLevel(plot);
    addBearings(plot);
    addTimeline(plot);
}

}  // namespace RecTool
