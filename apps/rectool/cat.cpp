#include <algorithm>
#include <iostream>
#include <limits>
#include <optional>
#include <set>

#include "commands.h"
#include "json.h"
#include "output.h"
#include "progress.h"
#include "recordedvalues.h"
#include "recordingtime.h"
#include "table.h"
#include "text.h"
#include "typenames.h"

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

bool takeTime(const char* option, const std::string& text, std::uint64_t& time)
{
    if (text.empty()) {
        return true;
    }
    const std::optional<std::uint64_t> parsed = parseTime(text);
    if (!parsed) {
        complain(option, "\"" + text + "\" is not a time. Expected: " + TimeForms + ".");
        return false;
    }
    time = *parsed;
    return true;
}

std::optional<Selection> makeSelection(const CatOptions& options, const TypeNames& names)
{
    Selection selection;
    if (!takeTime("--from", options.from, selection.from) || !takeTime("--to", options.to, selection.to)) {
        return std::nullopt;
    }
    selection.anyTime = options.from.empty() && options.to.empty();
    for (const std::string& type : options.types) {
        const std::optional<std::int32_t> number = names.numberOf(type);
        if (!number) {
            complain(options.file,
                     "There is no type \"" + type + "\" in the recording. Its types: " + names.allKeywords() + ".");
            return std::nullopt;
        }
        selection.codes.insert(*number);
    }
    return selection;
}

/// Prints records one a line.
class Printer {
public:
    Printer(const TypeNames& names, bool json, std::uint64_t lastTime)
        : m_names(names),
          m_json(json),
          m_labelWidth(names.longestLabel()),
          m_timeWidth(std::max<std::size_t>(std::to_string(lastTime).size(), 1))
    {
    }

    /// @param value null when the record's text is not understood
    void print(const Inspection::Record& record, const values::ValueBase* value) const
    {
        if (m_json) {
            printJson(record, value);
        } else {
            printLine(record, value);
        }
    }

private:
    void printLine(const Inspection::Record& record, const values::ValueBase* value) const
    {
        constexpr std::size_t MostBytes = 64;
        const std::string time = isKnown(record) ? std::to_string(record.timeMs) : "?";
        std::cout << paddedInFront(time, m_timeWidth) << "  " << padded(m_names.label(record.code), m_labelWidth)
                  << "  " << (value != nullptr ? describe(*value) : escaped(record.data, MostBytes)) << '\n';
    }

    void printJson(const Inspection::Record& record, const values::ValueBase* value) const
    {
        const Inspection::TypeEntry* type = m_names.find(record.code);
        const Json json = {{"timeMs", isKnown(record) ? Json(record.timeMs) : Json()},
                           {"position", record.position},
                           {"code", record.code},
                           {"keyword", type != nullptr ? Json(fromLatin1(type->keyword)) : Json()},
                           {"path", type != nullptr ? Json(fromLatin1(type->valuePath)) : Json()},
                           {"value", value != nullptr ? toJson(*value) : Json()},
                           {"data", dataToJson(record.data)}};
        std::cout << dump(json, -1) << '\n';
    }

    static bool isKnown(const Inspection::Record& record) { return record.timeMs != 0; }

    const TypeNames& m_names;
    bool m_json;
    std::size_t m_labelWidth;
    std::size_t m_timeWidth;
};

}  // namespace

ExitCode cat(const CatOptions& options)
{
    const Inspection::Summary summary = Inspection::inspect(options.file);
    if (summary.readability != Inspection::Readability::Ok) {
        complain(options.file, summary.problem);
        return ExitCode::CannotRead;
    }
    const TypeNames names(summary.types);
    const std::optional<Selection> selection = makeSelection(options, names);
    if (!selection) {
        return ExitCode::Usage;
    }
    const Printer printer(names, options.json, summary.times.empty() ? 0 : summary.times.back().timeMs);
    RecordedValues recorded;
    Progress progress(options.file);
    std::vector<Inspection::Finding> findings = summary.findings;
    const auto inRecords = Inspection::walkRecords(
        options.file, summary,
        [&](const Inspection::Record& record) {
            if (!selection->wantsType(record.code)) {
                return record.timeMs <= selection->to;
            }
            const values::ValueBase* value = recorded.apply(record);  // also in front of --from, to be complete there
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
    return finish(soundness(findings));
}

}  // namespace RecTool
