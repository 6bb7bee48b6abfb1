// The verb "export": what recordings hold, for other programs.
#include "export/export.h"

#include "commandline/verb.h"

namespace RecTool {

namespace {

template <typename Options>
void addNewFile(Verb<Options>& verb)
{
    verb.output("OUT", "The new file").required();
    verb.flag("--force", verb.options().force, "Replace an existing file, never a recording");
}

template <typename Options>
void addChoice(Verb<Options>& verb)
{
    verb.span("Only what was measured from this time on", "Only what was measured up to this time");
    verb.types("Only this keyword or type number; may be given several times");
}

void addCsvExport(const Syntax& program)
{
    Verb verb(program, "csv", "Levels and values as CSV", exportCsv);
    addNewFile(verb);
    verb.text("--form", verb.options().form, "A line a level, a sweep as sweep programs write it, or a line a bearing")
        .oneOf({"long", "sweep", "bearings"})
        .showDefault();
    addChoice(verb);
    verb.examples({"export csv recording.rec -o levels.csv --type RFSPECTRUM",
                   "export csv recording.rec --form sweep --type RFSPECTRUM -o sweeps.csv",
                   "export csv finder.rec --form bearings -o bearings.csv"},
                  "recstation sweep records what --form sweep writes.");
}

void addHdf5Export(const Syntax& program)
{
    constexpr double StrongestDeflate = 9;
    Verb verb(program, "hdf5", "Levels and values as HDF5, for h5py and xarray", exportHdf5);
    addNewFile(verb);
    addChoice(verb);
    verb.unit();
    verb.number("--deflate", verb.options().deflate, "How strongly levels are compressed, 0 not at all")
        .as("0-9")
        .wholeNumber(0, StrongestDeflate)
        .showDefault();
    verb.examples({"export hdf5 recording.rec -o recording.h5",
                   "export hdf5 night_1.rec night_2.rec -o night.h5 --type RFSPECTRUM --unit dBm"});
}

void addTrackExports(const Syntax& program)
{
    Verb gpx(program, "gpx", "The track of the position as GPX 1.1", exportGpx);
    addNewFile(gpx);
    gpx.span("Only positions from this time on", "Only positions up to this time");
    gpx.examples({"export gpx recording.rec -o drive.gpx"});
    Verb kml(program, "kml", "The track of the position as KML 2.2", exportKml);
    addNewFile(kml);
    kml.span("Only positions from this time on", "Only positions up to this time");
    kml.examples({"export kml recording.rec -o drive.kml"});
}

void addSigMfExport(const Syntax& program)
{
    constexpr double LowestRate = 1e-3;
    constexpr double HighestRate = 1e12;
    Verb verb(program, "sigmf", "Bookmarks and settings as annotations of IQ samples", exportSigMf);
    SigMfExportOptions& options = verb.options();
    addNewFile(verb);
    addChoice(verb);
    verb.text("--samples", options.samples, "The IQ samples (default: those beside OUT, with .sigmf-data in its name)")
        .as("FILE")
        .notEmpty();
    verb.text("--format", options.format, "Of the samples, such as cu8, ci16_le or cf32_le (default: as beside them)")
        .notEmpty();
    verb.number("--rate", options.rateHz, "Samples a second (default: as beside them)")
        .as("FREQUENCY")
        .withUnit(parseHertz, "a rate such as 2.048M or 48k", LowestRate, HighestRate, "1mHz to 1THz");
    verb.examples({"export sigmf recording.rec --samples capture.cu8 --rate 2M -o capture.sigmf-meta"});
}

}  // namespace

void addExportVerbs(const Syntax& program)
{
    Syntax verb(program, "export", "Write what recordings hold for other programs");
    verb.needsVerb();
    addCsvExport(verb);
    addHdf5Export(verb);
    addTrackExports(verb);
    addSigMfExport(verb);
}

}  // namespace RecTool
