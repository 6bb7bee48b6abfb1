// Verbs that make a recording of others.
#include <terminaltext/optionvalues.h>

#include "printing/units.h"
#include "verb.h"

namespace RecTool::CommandLine {

namespace {

template <typename Options>
void addNewRecording(Verb<Options>& verb)
{
    verb.addOutput("FILE", "The new recording")->required();
    verb.app().add_flag("--force", verb.options().force, "Replace an existing file");
    verb.addJson("Print a summary as JSON");
}

void addCut(CLI::App& app, Action& action)
{
    Verb<CutOptions> verb(app, "cut", "Store a part of a recording as a recording of its own", cut, action);
    verb.addSpan("Begin with the state at this time", "End at this time, which is kept too");
    addNewRecording(verb);
    verb.addExamples({"cut recording.rec --from 60000 --to 65000 -o part.rec",
                      "cut recording.rec --from bookmark:alarm-5000 -o alarm.rec"});
}

void addMerge(CLI::App& app, Action& action)
{
    Verb<MergeOptions> verb(app, "merge", "Make one recording of several, by clock time", merge, action);
    addNewRecording(verb);
    verb.app().add_flag("--separate", verb.options().separate,
                        "Keep values apart that several files recorded at the same time, instead of refusing them");
    verb.addExamples(
        {"merge first.rec second.rec -o whole.rec", "merge receiver.rec df.rec -o station.rec --separate"});
}

void addPeriod(CLI::App& app, std::uint64_t& periodMs)
{
    constexpr double LongestPeriodMs = 86'400'000;
    const auto inMilliseconds = [](const std::string& text) {
        const auto ms = parseMilliseconds(text);
        return ms ? std::optional(static_cast<double>(*ms)) : std::nullopt;
    };
    app.add_option("--period", periodMs,
                   "From record to record where no later time is known, in milliseconds or as 0.5s (default: evenly to "
                   "the end of the recording)")
        ->type_name("DURATION")
        ->transform(TerminalText::withUnit(inMilliseconds, "a time such as 20, 20ms or 0.5s", 1, LongestPeriodMs,
                                           "1ms to 24h"));
}

void addRecover(CLI::App& app, Action& action)
{
    Verb<RecoverOptions> verb(app, "recover", "Close a recording that a crash, a power cut or a full disk left open",
                              recover, action);
    verb.addOutput("FILE", "The new recording (default: NAME.rec beside NAME.tmp, or NAME_recovered.rec)");
    addPeriod(verb.app(), verb.options().periodMs);
    verb.addJson("Print a summary as JSON");
    verb.addExamples({"recover receiver.tmp", "recover receiver.tmp -o saved.rec --period 20ms --json"},
                     "Reads NAME.tmp.journal too. Neither file is changed.\n"
                     "Exit code 0: every record is there; 3: something was lost; 2: nothing could be saved.");
}

void addRepair(CLI::App& app, Action& action)
{
    Verb<RepairOptions> verb(app, "repair", "Store what is whole of a damaged recording as a recording", repair,
                             action);
    addNewRecording(verb);
    addPeriod(verb.app(), verb.options().periodMs);
    verb.addExamples({"repair damaged.rec -o repaired.rec", "repair cut.rec -o repaired.rec --period 20ms --json"},
                     "Exit code 0: nothing was lost; 3: something was lost; 2: nothing could be saved.");
}

void addSelfCheck(CLI::App& app, Action& action)
{
    Verb<SelfCheckOptions> verb(app, "selfcheck", "Record on a disk, let go wrong what can, and see what is lost",
                                selfCheck, action);
    SelfCheckOptions& options = verb.options();
    constexpr double MostRuns = 100'000;
    verb.app()
        .add_option("--runs", options.runs, "How many recordings to kill")
        ->capture_default_str()
        ->transform(TerminalText::wholeNumber(1, MostRuns));
    verb.app().add_flag("--keep", options.keep, "Keep the folder, with what is left of runs that went wrong");
    verb.addJson();
    verb.app().add_flag("--child", options.child)->group("");  // how it starts itself
    verb.app().add_option("--limit", options.limitBytes)->group("");
    verb.addExamples({"selfcheck /var/lib/recordings", "selfcheck . --runs 300 --json"},
                     "Works in a folder of its own, which is removed at the end, and takes about 100 MB meanwhile.\n"
                     "Exit code 0: every promise was held; 3: one was not; 2: it could not be tried.");
}

}  // namespace

void addMakingVerbs(CLI::App& app, Action& action)
{
    addCut(app, action);
    addMerge(app, action);
    addRepair(app, action);
    addRecover(app, action);
    addSelfCheck(app, action);
}

}  // namespace RecTool::CommandLine
