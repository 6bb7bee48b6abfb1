// Exporting CSV, long or as sweep programs write it.
#include <utility>

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

}  // namespace

ExitCode exportCsv(const CsvExportOptions& options)
{
    Recordings recordings(options, 1);
    if (recordings.state() != ExitCode::Fine) {
        return recordings.state();
    }
    const auto types = recordings.takeTypes(options.types);
    if (!types) {
        return ExitCode::Usage;
    }
    ExportedRecords records(recordings, *types);
    NewFile file(options.output, options.force);
    const ExitCode made = file.create(options.files);
    if (made != ExitCode::Fine) {
        return made;
    }
    return options.form == "sweep" ? exportSweep(recordings, records, file) : exportLong(recordings, records, file);
}

}  // namespace RecTool
