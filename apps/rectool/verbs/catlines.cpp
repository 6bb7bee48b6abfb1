// Choosing the records by type and time, and printing them as lines, CSV or JSON.
#include "catlines.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <optional>
#include <utility>

#include <terminaltext/quantity.h>
#include <values/selection.h>
#include <values/value.h>

#include "printing/output.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using Inspection::Record;
using values::ValueBase;
using values::ValueType;

namespace {

/// Nothing for a map.
std::optional<std::string> csvField(const ValueBase& value)
{
    if (const std::optional<double> number = plainNumber(&value)) {
        return std::isnan(*number) ? std::string() : TerminalText::shortest(*number);  // nothing: not measured
    }
    switch (value.GetType()) {
        case ValueType::Bool:
            return static_cast<const values::Value<bool>&>(value).GetValue() ? "true" : "false";
        case ValueType::String:
            return csvText(static_cast<const values::Value<QString>&>(value).GetValue().toStdString());
        case ValueType::Selection: {
            const auto* item = static_cast<const values::ValueSelection&>(value).GetCurrentItem();
            return item == nullptr ? std::string() : csvText(item->GetName().toStdString());
        }
        default:
            return std::nullopt;
    }
}

/// As wide as times are: where there are still to come some, those of a day.
std::uint64_t lastTime(const CatOptions& options, const Inspection::Summary& summary)
{
    constexpr std::uint64_t DayMs = 86'400'000;
    return !summary.times.empty() ? summary.times.back().timeMs : options.follow ? DayMs : 0;
}

}  // namespace

CatLines::CatLines(const CatOptions& options, std::string file, const Inspection::Summary& summary)
    : m_options(options),
      m_file(std::move(file)),
      m_types(summary.types),
      m_names(m_types),
      m_times(timeFormOf(options.time)),
      m_clock(m_times, summary.header.startMs),
      m_startMs(summary.header.startMs),
      m_timeWidth(m_clock.of(lastTime(options, summary)).size()),
      m_labelWidth(m_names.longestLabel()),
      m_json(m_names)
{
}

std::unique_ptr<CatLines> CatLines::make(const CatOptions& options, const std::string& file,
                                         const Inspection::Summary& summary)
{
    std::unique_ptr<CatLines> lines(new CatLines(options, file, summary));
    if (!takeSpan(file, options.from, options.to, summary, lines->m_span)) {
        return nullptr;
    }
    lines->m_anyTime = options.from.empty() && options.to.empty();
    std::optional<std::set<std::int32_t>> codes = takeTypes(file, options.types, lines->m_names);
    if (!codes) {
        return nullptr;
    }
    lines->m_codes = std::move(*codes);
    if (lines->m_times != TimeForm::Offset && summary.header.startMs == 0) {
        complain(file, "It does not tell when it started, so there are only milliseconds (--time offset).");
        return nullptr;
    }
    return lines;
}

void CatLines::startsAt(std::uint64_t startMs)
{
    if (startMs != m_startMs) {
        m_startMs = startMs;
        m_clock = ClockText(m_times, startMs);
    }
}

void CatLines::takeSpanOf(const CatLines& before, std::uint64_t startMs, std::uint64_t startMsBefore)
{
    const std::uint64_t later = startMs - std::min(startMs, startMsBefore);
    m_anyTime = before.m_anyTime;
    m_span.from = before.m_span.from - std::min(before.m_span.from, later);
    const bool isEndless = before.m_span.to == Span().to;
    m_span.to = isEndless ? before.m_span.to : before.m_span.to - std::min(before.m_span.to, later);
}

void CatLines::begin() const
{
    if (m_options.csv) {
        std::cout << (m_times == TimeForm::Offset ? "timeMs" : "time") << ",keyword,value\n";
    }
}

void CatLines::print(const Record& record, const ValueBase* value)
{
    if (m_options.csv) {
        printCsv(record, value);
    } else if (m_options.json) {
        m_text.clear();
        m_json.append(m_text, record, value);
        m_text += '\n';
        std::cout.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
    } else {
        std::cout << paddedInFront(m_clock.of(record.timeMs), m_timeWidth) << "  "
                  << styled(padded(m_names.label(record.code), m_labelWidth), Style::Name) << "  "
                  << oneLine(describe(record, value)) << '\n';
    }
}

void CatLines::printCsv(const Record& record, const ValueBase* value)
{
    const std::optional<std::string> field = value != nullptr ? csvField(*value) : std::nullopt;
    if (!field) {
        ++m_leftOut[record.code];
        return;
    }
    const std::string time = record.timeMs == 0 ? std::string() : m_clock.of(record.timeMs);
    std::cout << time << ',' << csvText(m_names.label(record.code)) << ',' << *field << '\n';
}

void CatLines::tellLeftOut() const
{
    std::uint64_t records = 0;
    std::string keywords;
    for (const auto& [code, count] : m_leftOut) {
        records += count;
        keywords += (keywords.empty() ? "" : ", ") + m_names.label(code);
    }
    if (records > 0) {
        complain(m_file, "Left out of the CSV, which has only plain values: " + counted(records, "record") + " (" +
                             keywords + "). --json has them.");
    }
}

}  // namespace RecTool
