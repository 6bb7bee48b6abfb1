// The verb "cat": the records of a recording, one a line, by time and type.
#include <algorithm>
#include <limits>
#include <optional>
#include <set>
#include <utility>

#include "commandline/verb.h"
#include "commands.h"
#include "printing/output.h"
#include "printing/progress.h"
#include "printing/recordprinter.h"
#include "replay/recordedvalues.h"
#include "replay/recordingtime.h"
#include "replay/typenames.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

/// Which records are shown.
struct Selection {
    std::uint64_t from = 0;
    std::uint64_t to = std::numeric_limits<std::uint64_t>::max();
    bool anyTime = true;           // records whose time is lost are shown as well
    std::set<std::int32_t> codes;  // empty: all

    [[nodiscard]] bool wantsType(std::int32_t code) const { return codes.empty() || codes.count(code) > 0; }
    [[nodiscard]] bool wantsTime(std::uint64_t time) const
    {
        return anyTime || (time != 0 && time >= from && time <= to);
    }
};

std::optional<Selection> makeSelection(const CatOptions& options, const Inspection::Summary& summary,
                                       const TypeNames& names)
{
    Selection selection;
    if (!takeSpan(options.file, options.from, options.to, summary, selection.from, selection.to)) {
        return std::nullopt;
    }
    selection.anyTime = options.from.empty() && options.to.empty();
    std::optional<std::set<std::int32_t>> codes = takeTypes(options.file, options.types, names);
    if (!codes) {
        return std::nullopt;
    }
    selection.codes = std::move(*codes);
    return selection;
}

RecordPrinter::Form formOf(const CatOptions& options)
{
    return options.json  ? RecordPrinter::Form::Json
           : options.csv ? RecordPrinter::Form::Csv
                         : RecordPrinter::Form::Lines;
}

}  // namespace

ExitCode cat(const CatOptions& options)
{
    Inspection::Summary summary;
    if (!readSummary(options.file, summary)) {
        return ExitCode::CannotRead;
    }
    const TypeNames names(summary.types);
    const std::optional<Selection> selection = makeSelection(options, summary, names);
    if (!selection) {
        return ExitCode::Usage;
    }
    const TimeForm times = timeFormOf(options.time);
    if (times != TimeForm::Offset && summary.header.startMs == 0) {
        complain(options.file, "It does not tell when it started, so there are only milliseconds (--time offset).");
        return ExitCode::Usage;
    }
    RecordPrinter printer(formOf(options), names, times, summary.header.startMs,
                          summary.times.empty() ? 0 : summary.times.back().timeMs);
    printer.begin();
    RecordedValues recorded;
    Progress progress(options.file);
    std::vector<Inspection::Finding> findings = summary.findings;
    const auto inRecords = Inspection::walkRecords(
        options.file, summary,
        [&](const Inspection::Record& record) {
            if (!selection->wantsType(record.code)) {
                return record.timeMs <= selection->to;
            }
            const values::ValueBase* value = recorded.apply(record);  // also before --from, to be complete there
            if (selection->wantsTime(record.timeMs)) {
                progress.clear();
                printer.print(record, value);
            }
            return canPrint() && record.timeMs <= selection->to;
        },
        progress.callback());
    progress.clear();
    findings.insert(findings.end(), inRecords.begin(), inRecords.end());
    complain(options.file, findings);
    if (const std::string leftOut = printer.leftOut(); !leftOut.empty()) {
        complain(options.file, leftOut);
    }
    return finish(soundness(findings));
}

void addCat(const Syntax& program)
{
    Verb verb(program, "cat", "Show the records, one a line: time, keyword, value", cat);
    CatOptions& options = verb.options();
    verb.span("Begin at this time", "End at this time, which is shown too");
    verb.types("Only this keyword or type number; may be given several times");
    const Option time = verb.text("--time", options.time,
                                  "Times as milliseconds of the recording (offset), or as the clock showed them in UTC "
                                  "(utc) or here (local)")
                            .oneOf({"offset", "utc", "local"})
                            .showDefault();
    const Option json = verb.json("Print one JSON object a line").excludes(time);  // it has timeMs
    verb.flag("--csv", options.csv, "Print plain values as CSV; maps have no line there").excludes(json);
    verb.paged();
    verb.examples({"cat recording.rec", "cat recording.rec --from 60000 --to 65000 --type LEVEL --type FREQUENCY",
                   "cat recording.rec --time utc --csv --type LEVEL", "cat --json recording.rec"});
}

}  // namespace RecTool
