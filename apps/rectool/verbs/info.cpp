// The verb "info": header, types, tables and findings of recordings, or a table of many.
#include <iostream>
#include <string>

#include "commandline/verb.h"
#include "inforeport.h"
#include "listing.h"
#include "printing/output.h"
#include "replay/recordingtime.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

ExitCode overview(const OverviewOptions& options)
{
    if (asksForListing(options)) {
        return listRecordings(options);
    }
    ExitCode result = ExitCode::Fine;
    Json files = Json::array();
    bool first = true;
    for (const std::string& file : options.files) {
        const InfoReport report = makeInfoReport(file, options.levels);
        result = worse(result, (report.summary.readability == Inspection::Readability::Ok ? soundness(report.findings)
                                                                                          : ExitCode::CannotRead));
        if (report.summary.readability != Inspection::Readability::Ok) {
            complain(file, report.summary.problem);
        }
        if (options.json) {
            files.push_back(reportJson(report, options.levels));
        } else if (report.summary.readability == Inspection::Readability::Ok) {
            std::cout << (first ? "" : "\n");
            printReport(report);
            first = false;
        }
    }
    if (options.json) {
        printJson({{"files", std::move(files)}});
    }
    return finish(result);
}

void addInfo(const Syntax& program)
{
    Verb verb(program, "info", "Show what recordings are, of a directory as a table", overview);
    OverviewOptions& options = verb.options();
    verb.describe("FILE", "Recordings, files or archive addresses, or directories");
    verb.flag("--levels", options.levels, "The lowest and highest measured levels as well");
    verb.flag("--table", options.table, "One line a recording, as of a directory; the options below ask for it, too");
    verb.flag("-r,--recursive", options.recursive, "Also what lies in directories of directories");
    verb.flag("--verify", options.verify, "Check every recording, as the verb verify does");
    verb.text("--device", options.device, "Only where the device's name or type holds this text").as("TEXT").notEmpty();
    verb.text("--since", options.since,
              std::string("Only what was recorded at this moment or later. MOMENT: ") + MomentForms)
        .as("MOMENT")
        .notEmpty();
    verb.text("--until", options.until, "Only what was recorded at this moment or earlier").as("MOMENT").notEmpty();
    verb.text("--covers", options.covers, "Only where spectra or bearings reach over this frequency")
        .as("FREQUENCY")
        .notEmpty();
    verb.text("--sort", options.sort, "By this column (default: start)")
        .oneOf({"start", "length", "device", "records", "spectra", "size", "file"});
    verb.flag("--reverse", options.reverse, "The last one first");
    verb.json();
    verb.paged();
    verb.examples({"info recording.rec", "info recording.rec --levels", "info --json *.rec", "info .",
                   "info . --covers 433.5M --since 7d --sort length --reverse",
                   "info -r . --device \"RX 1\" --until \"2026-11-21 UTC\" --verify"});
}

}  // namespace RecTool
