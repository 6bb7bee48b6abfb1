// Exporting CSV, long or as sweep programs write it.
#include <cmath>
#include <utility>

#include <terminaltext/quantity.h>

#include "csvlong.h"
#include "csvsweep.h"
#include "printing/output.h"
#include "printing/text.h"

namespace RecTool {

namespace {

ExitCode exportLong(Recordings& recordings, ExportedRecords& records, NewFile& file)
{
    CsvLong csv(file, records, ExportTime(recordings.startMs()));
    records.walk([&] { return file.good(); },
                 [&](const PlacedRecord& placed, const values::ValueBase& value) { csv.add(placed, value); });
    if (csv.lines() == 0 && file.good()) {
        return recordings.refuse("There is no record of a spectrum or plain value in the span. Nothing was written.");
    }
    return endExport(recordings, records, file, counted(csv.lines(), "line"));
}

ExitCode exportSweep(Recordings& recordings, ExportedRecords& records, NewFile& file)
{
    ExportTime time(recordings.startMs());
    if (!time.isKnown()) {
        return recordings.refuse("The recording does not tell when it began, and the sweep form needs clock times.");
    }
    CsvSweep csv(file, records, std::move(time));
    records.walk([&] { return file.good() && csv.problem().empty(); },
                 [&](const PlacedRecord& placed, const values::ValueBase& value) { csv.add(placed, value); });
    if (!csv.problem().empty()) {
        return recordings.refuse(csv.problem() + " Nothing was written.");
    }
    if (csv.sweeps() == 0 && file.good()) {
        return recordings.refuse("There is no spectrum with a level in the span. Nothing was written.");
    }
    if (csv.joined() != 0) {
        complain(recordings.file(),
                 counted(csv.joined(), "time") +
                     " a sweep lies above the one before it: readers of the form take the two for one.");
    }
    return endExport(recordings, records, file, counted(csv.sweeps(), "sweep"));
}

ExitCode exportBearingLines(Recordings& recordings, ExportedRecords& records, NewFile& file)
{
    ExportTime time(recordings.startMs());
    file.write("time,device,frequency_hz,azimuth_deg,heading_deg,elevation_deg,level,quality,latitude,longitude\n");
    records.lookAtBearings([&](const PlacedRecord& placed, const ExportedRecords::BearingRow& row) {
        std::string line = time.iso(placed.momentMs) + ',' + csvText(records.device(placed.type));
        for (const double number : row) {
            line += ',' + (std::isfinite(number) ? TerminalText::shortest(number) : std::string());
        }
        file.write(line + '\n');
    });
    records.walk([&] { return file.good(); },
                 [&](const PlacedRecord& /*placed*/, const values::ValueBase& /*value*/) {});
    if (records.bearings() == 0 && file.good()) {
        return recordings.refuse("There is no bearing in the span. Nothing was written.");
    }
    return endExport(recordings, records, file, counted(records.bearings(), "bearing"));
}

}  // namespace

ExitCode exportCsv(const CsvExportOptions& options)
{
    return exportTo(options, options.form == "sweep"      ? exportSweep
                             : options.form == "bearings" ? exportBearingLines
                                                          : exportLong);
}

}  // namespace RecTool
