// Verbs that show what is in recordings.
#include <string>

#include <terminaltext/optionvalues.h>

#include "replay/moment.h"
#include "verb.h"
#include "verbs/listing.h"

namespace RecTool::CommandLine {

namespace {

void addInfo(CLI::App& app, Action& action)
{
    Verb<OverviewOptions> verb(app, "info", "Show what recordings are, of a directory as a table", overview, action);
    OverviewOptions& options = verb.options();
    verb.app().get_option("FILE")->description("Recordings, files or archive addresses, or directories");
    verb.app().add_flag("--levels", options.levels, "The lowest and highest measured levels as well");
    verb.app().add_flag("--table", options.table,
                        "One line a recording, as of a directory; the options below ask for it, too");
    verb.app().add_flag("-r,--recursive", options.recursive, "Also what lies in directories of directories");
    verb.app().add_flag("--verify", options.verify, "Check every recording, as the verb verify does");
    verb.app()
        .add_option("--device", options.device, "Only where the device's name or type holds this text")
        ->type_name("TEXT")
        ->check(notEmpty());
    const auto addMoment = [&](const char* name, std::string& moment, const std::string& description) {
        verb.app().add_option(name, moment, description)->type_name("MOMENT")->check(notEmpty());
    };
    addMoment("--since", options.since,
              std::string("Only what was recorded at this moment or later. MOMENT: ") + MomentForms);
    addMoment("--until", options.until, "Only what was recorded at this moment or earlier");
    verb.app()
        .add_option("--covers", options.covers, "Only where spectra or bearings reach over this frequency")
        ->type_name("FREQUENCY")
        ->check(notEmpty());
    verb.app()
        .add_option("--sort", options.sort, "By this column (default: start)")
        ->check(TerminalText::oneOf({"start", "length", "device", "records", "spectra", "size", "file"}));
    verb.app().add_flag("--reverse", options.reverse, "The last one first");
    verb.addJson();
    verb.addExamples({"info recording.rec", "info recording.rec --levels", "info --json *.rec", "info .",
                      "info . --covers 433.5M --since 7d --sort length --reverse",
                      "info -r . --device \"RX 1\" --until \"2026-11-21 UTC\" --verify"});
}

void addTypes(CLI::App& app, Action& action)
{
    Verb<TypesOptions> verb(app, "types", "Show what can be recorded: numbers, keywords, kinds and value paths", types,
                            action);
    verb.addJson();
    verb.addExamples({"types recording.rec"});
}

void addCat(CLI::App& app, Action& action)
{
    Verb<CatOptions> verb(app, "cat", "Show the records, one a line: time, keyword, value", cat, action);
    verb.addSpan("Begin at this time", "End at this time, which is shown too");
    verb.addTypes("Only this keyword or type number; may be given several times");
    CLI::Option* time =
        verb.app()
            .add_option("--time", verb.options().time,
                        "Times as milliseconds of the recording (offset), or as the clock showed them in UTC (utc) or "
                        "here (local)")
            ->check(TerminalText::oneOf({"offset", "utc", "local"}))
            ->capture_default_str();
    verb.addJson("Print one JSON object a line");
    verb.app().get_option("--json")->excludes(time);  // it has timeMs
    verb.app()
        .add_flag("--csv", verb.options().csv, "Print plain values as CSV; maps have no line there")
        ->excludes(verb.app().get_option("--json"));
    verb.addExamples({"cat recording.rec", "cat recording.rec --from 60000 --to 65000 --type LEVEL --type FREQUENCY",
                      "cat recording.rec --time utc --csv --type LEVEL", "cat --json recording.rec"});
}

void addState(CLI::App& app, Action& action)
{
    Verb<StateOptions> verb(app, "state", "Show the value of everything recorded at a moment", state, action);
    verb.addTime("--at", verb.options().at, std::string("TIME: ") + TimeForms)->required();
    verb.addJson();
    verb.addExamples({"state recording.rec --at 61500", "state recording.rec --at \"2023-11-14 22:13:21 UTC\" --json"});
}

void addDiff(CLI::App& app, Action& action)
{
    Verb<DiffOptions> verb(app, "diff", "Show what is different between two moments", diff, action);
    verb.addSpan("The first moment", "The second moment");
    verb.app().get_option("--from")->required();
    verb.app().get_option("--to")->required();
    verb.app().add_flag("--all", verb.options().all, "Show what is the same as well");
    verb.addJson();
    verb.addExamples({"diff recording.rec --from 60000 --to 65000",
                      "diff recording.rec --from bookmark:alarm-5000 --to bookmark:alarm --json"});
}

void addVerify(CLI::App& app, Action& action)
{
    Verb<VerifyOptions> verb(app, "verify", "Check everything in recordings that can be checked", verify, action);
    verb.addJson();
    verb.addExamples({"verify recording.rec", "verify --json *.rec"},
                     "Exit code 0: sound, there may be notes; 3: damaged; 2: a file cannot be read.");
}

}  // namespace

void addLookingVerbs(CLI::App& app, Action& action)
{
    addInfo(app, action);
    addTypes(app, action);
    addCat(app, action);
    addState(app, action);
    addDiff(app, action);
    addVerify(app, action);
}

}  // namespace RecTool::CommandLine
