// The verb "state": the value of everything recorded at a moment.
#include <algorithm>
#include <iostream>
#include <limits>

#include "commandline/verb.h"
#include "commands.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/valuetext.h"
#include "replay/inforce.h"
#include "replay/recordingtime.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

void printTable(const InForce& state, const TypeNames& names)
{
    if (state.entries().empty()) {
        std::cout << "Nothing is recorded up to that time.\n";
        return;
    }
    Table table("rlrl", {"Type", "Keyword", "Since", "Value"});
    for (const auto& [code, entry] : state.entries()) {
        table.add({std::to_string(code), names.label(code), std::to_string(entry.record.timeMs),
                   describe(entry.record, entry.value)});
    }
    table.print();
}

void printStateAsJson(const std::string& file, std::uint64_t at, const InForce& state, const TypeNames& names)
{
    const auto entryJson = [&](const auto& entry) { return toJson(entry.second.record, entry.second.value, names); };
    printJson({{"file", shownName(file)}, {"atMs", at}, {"state", Json::arrayOf(state.entries(), entryJson)}});
}

}  // namespace

ExitCode state(const StateOptions& options)
{
    PresentRecording recording;
    if (!recording.open(options.file)) {
        complain(options.file, recording.summary().problem);
        return ExitCode::CannotRead;
    }
    const bool atEnd = options.at == "end";
    std::uint64_t at = std::numeric_limits<std::uint64_t>::max();
    if (!atEnd && !requireTime("--at", options.at, recording.summary(), at)) {
        return ExitCode::Usage;
    }
    InForce inForce;
    std::uint64_t last = 0;
    const std::vector<Inspection::Finding> findings = recording.walk([&](const Inspection::Record& record) {
        if (record.timeMs <= at) {
            inForce.apply(record);
            last = std::max(last, record.timeMs);
        }
        return record.timeMs <= at;
    });
    const Inspection::Summary& summary = recording.summary();
    at = !atEnd ? at : recording.isBeingWritten() ? last : lastMoment(summary);
    const TypeNames names(summary.types);
    recording.tellWhetherBeingWritten();
    options.json ? printStateAsJson(options.file, at, inForce, names) : printTable(inForce, names);
    complain(options.file, findings);
    return finish(soundness(findings));
}

void addState(const Syntax& program)
{
    Verb verb(program, "state", "Show the value of everything recorded at a moment", state);
    verb.time("--at", verb.options().at, std::string("TIME: ") + TimeForms + "; or end, the last one so far")
        .required();
    verb.json();
    verb.paged();
    verb.examples({"state recording.rec --at 61500", "state recording.rec --at \"2023-11-14 22:13:21 UTC\" --json",
                   "state --at end running.tmp"});
}

}  // namespace RecTool
