// Records one a line: for people, as JSON, or as CSV.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <recording2/inspection/inspection.h>
#include <values/valuebase.h>

#include "clocktext.h"
#include "recordjson.h"
#include "typenames.h"

namespace RecTool {

/// Prints on standard output.
class RecordPrinter {
public:
    enum class Form : unsigned char { Lines, Json, Csv };

    /// @param names must outlive the object
    RecordPrinter(Form form, const TypeNames& names, TimeForm times, std::uint64_t startMs, std::uint64_t lastTimeMs);

    /// The start that the times count from, where it was not known before.
    void startsAt(std::uint64_t startMs) { m_clock = ClockText(m_times, startMs); }
    /// What stands before the first record.
    void begin();
    /// @param value null when the record's text is not understood
    void print(const Recording2::Inspection::Record& record, const values::ValueBase* value);
    /// Records that have no line, because a line of CSV is one value: a sentence about them; empty when all have one.
    [[nodiscard]] std::string leftOut() const;

private:
    void printLine(const Recording2::Inspection::Record& record, const values::ValueBase* value);
    void printJson(const Recording2::Inspection::Record& record, const values::ValueBase* value);
    void printCsv(const Recording2::Inspection::Record& record, const values::ValueBase* value);

    Form m_form;
    const TypeNames& m_names;
    TimeForm m_times;
    ClockText m_clock;
    RecordJson m_recordJson;
    std::string m_text;
    std::size_t m_labelWidth;
    std::size_t m_timeWidth;
    std::map<std::int32_t, std::uint64_t> m_leftOut;  // records, by type
};

}  // namespace RecTool
