// Printing one record as a line, a JSON object or a CSV row.
#include "recordprinter.h"

#include <cmath>
#include <iostream>
#include <optional>

#include <terminaltext/quantity.h>
#include <values/selection.h>
#include <values/value.h>

#include "style.h"
#include "table.h"
#include "text.h"
#include "valuetext.h"

namespace RecTool {

using Recording2::Inspection::Record;
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

}  // namespace

RecordPrinter::RecordPrinter(Form form, const TypeNames& names, TimeForm times, std::uint64_t startMs,
                             std::uint64_t lastTimeMs)
    : m_form(form),
      m_names(names),
      m_times(times),
      m_clock(times, startMs),
      m_recordJson(names),
      m_labelWidth(names.longestLabel()),
      m_timeWidth(m_clock.of(lastTimeMs).size())
{
}

void RecordPrinter::begin()
{
    if (m_form == Form::Csv) {
        std::cout << (m_times == TimeForm::Offset ? "timeMs" : "time") << ",keyword,value\n";
    }
}

void RecordPrinter::print(const Record& record, const ValueBase* value)
{
    switch (m_form) {
        case Form::Lines:
            return printLine(record, value);
        case Form::Json:
            return printJson(record, value);
        case Form::Csv:
            return printCsv(record, value);
    }
}

void RecordPrinter::printLine(const Record& record, const ValueBase* value)
{
    std::cout << paddedInFront(m_clock.of(record.timeMs), m_timeWidth) << "  "
              << styled(padded(m_names.label(record.code), m_labelWidth), Style::Name) << "  "
              << oneLine(describe(record, value)) << '\n';
}

void RecordPrinter::printJson(const Record& record, const ValueBase* value)
{
    m_text.clear();
    m_recordJson.append(m_text, record, value);
    m_text += '\n';
    std::cout.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
}

void RecordPrinter::printCsv(const Record& record, const ValueBase* value)
{
    const std::optional<std::string> field = value != nullptr ? csvField(*value) : std::nullopt;
    if (!field) {
        ++m_leftOut[record.code];
        return;
    }
    const std::string time = record.timeMs == 0 ? std::string() : m_clock.of(record.timeMs);
    std::cout << time << ',' << csvText(m_names.label(record.code)) << ',' << *field << '\n';
}

std::string RecordPrinter::leftOut() const
{
    std::uint64_t records = 0;
    std::string keywords;
    for (const auto& [code, count] : m_leftOut) {
        records += count;
        keywords += (keywords.empty() ? "" : ", ") + m_names.label(code);
    }
    return records == 0 ? ""
                        : "Left out of the CSV, which has only plain values: " + grouped(records) +
                              (records == 1 ? " record (" : " records (") + keywords + "). --json has them.";
}

}  // namespace RecTool
