#include <algorithm>
#include <iostream>
#include <limits>
#include <optional>
#include <set>
#include <utility>

#include "commands.h"
#include "output.h"
#include "progress.h"
#include "recordedvalues.h"
#include "recordingtime.h"
#include "recordjson.h"
#include "style.h"
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

/// Prints records one a line.
class Printer {
public:
    Printer(const TypeNames& names, bool json, std::uint64_t lastTime)
        : m_names(names),
          m_recordJson(names),
          m_json(json),
          m_labelWidth(names.longestLabel()),
          m_timeWidth(std::max<std::size_t>(std::to_string(lastTime).size(), 1))
    {
    }

    /// @param value null when the record's text is not understood
    void print(const Inspection::Record& record, const values::ValueBase* value)
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
        const std::string time = isKnown(record) ? std::to_string(record.timeMs) : "?";
        std::cout << paddedInFront(time, m_timeWidth) << "  "
                  << styled(padded(m_names.label(record.code), m_labelWidth), Style::Name) << "  "
                  << oneLine(describe(record, value)) << '\n';
    }

    void printJson(const Inspection::Record& record, const values::ValueBase* value)
    {
        m_text.clear();
        m_recordJson.append(m_text, record, value);
        m_text += '\n';
        std::cout.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
    }

    static bool isKnown(const Inspection::Record& record) { return record.timeMs != 0; }

    const TypeNames& m_names;
    RecordJson m_recordJson;
    std::string m_text;
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
    const std::optional<Selection> selection = makeSelection(options, summary, names);
    if (!selection) {
        return ExitCode::Usage;
    }
    Printer printer(names, options.json, summary.times.empty() ? 0 : summary.times.back().timeMs);
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
