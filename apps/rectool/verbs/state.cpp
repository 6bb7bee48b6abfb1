// The verb "state": the value of everything recorded at a moment.
#include <iostream>

#include "commandline/verb.h"
#include "commands.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/table.h"
#include "replay/inforce.h"
#include "replay/recordedvalues.h"
#include "replay/recordingtime.h"
#include "replay/typenames.h"
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
    Table table({Table::Align::Right, Table::Align::Left, Table::Align::Right, Table::Align::Left});
    table.add({"Type", "Keyword", "Since", "Value"});
    for (const auto& [code, entry] : state.entries()) {
        table.add({std::to_string(code), names.label(code), std::to_string(entry.record.timeMs),
                   describe(entry.record, entry.value)});
    }
    table.print(std::cout, "");
}

void printStateAsJson(const std::string& file, std::uint64_t at, const InForce& state, const TypeNames& names)
{
    Json entries = Json::array();
    for (const auto& [code, entry] : state.entries()) {
        entries.push_back(toJson(entry.record, entry.value, names));
    }
    std::cout << dump({{"file", shownName(file)}, {"atMs", at}, {"state", std::move(entries)}}, 2) << '\n';
}

}  // namespace

ExitCode state(const StateOptions& options)
{
    Inspection::Summary summary;
    if (!readSummary(options.file, summary)) {
        return ExitCode::CannotRead;
    }
    std::uint64_t at = 0;
    if (!requireTime("--at", options.at, summary, at)) {
        return ExitCode::Usage;
    }
    InForce inForce;
    const std::vector<Inspection::Finding> findings =
        walk(options.file, summary, [&](const Inspection::Record& record) {
            if (record.timeMs <= at) {
                inForce.apply(record);
            }
            return record.timeMs <= at;
        });
    const TypeNames names(summary.types);
    options.json ? printStateAsJson(options.file, at, inForce, names) : printTable(inForce, names);
    complain(options.file, findings);
    return finish(soundness(findings));
}

void addState(const Syntax& program)
{
    Verb verb(program, "state", "Show the value of everything recorded at a moment", state);
    verb.time("--at", verb.options().at, std::string("TIME: ") + TimeForms).required();
    verb.json();
    verb.paged();
    verb.examples({"state recording.rec --at 61500", "state recording.rec --at \"2023-11-14 22:13:21 UTC\" --json"});
}

}  // namespace RecTool
