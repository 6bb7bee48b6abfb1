// Verbs that show what is in recordings.
#include <string>

#include "verb.h"

namespace RecTool::CommandLine {

namespace {

void addInfo(CLI::App& app, Action& action)
{
    Verb<InfoOptions> verb(app, "info", "Show the header, the tables and the number of records of recordings", info,
                           action);
    verb.addJson();
    verb.addExamples({"info recording.rec", "info --json *.rec"});
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
    Verb<CatOptions> verb(app, "cat", "Show the records, one a line: time in milliseconds, keyword, value", cat,
                          action);
    verb.addSpan("Begin at this time", "End at this time, which is shown too");
    verb.addTypes("Only this keyword or type number; may be given several times");
    verb.addJson("Print one JSON object a line");
    verb.addExamples({"cat recording.rec", "cat recording.rec --from 60000 --to 65000 --type LEVEL --type FREQUENCY",
                      "cat --json recording.rec"});
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
