// What the verb "cat" shows of one file: which of its records, and how.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/valuebase.h>

#include "commands.h"
#include "printing/recordjson.h"
#include "printing/text.h"
#include "printing/valuetext.h"
#include "replay/recordedvalues.h"
#include "replay/recordingtime.h"

namespace RecTool {

/// Prints the records that were asked for on standard output.
class CatLines {
public:
    /// @return null, told, when the options do not suit the file
    static std::unique_ptr<CatLines> make(const CatOptions& options, const std::string& file,
                                          const Recording2::Inspection::Summary& summary);
    CatLines(const CatLines&) = delete;
    CatLines& operator=(const CatLines&) = delete;
    ~CatLines() = default;

    /// What stands before the first record.
    void begin() const;
    /// @param beforePrinting called where the record is shown; may be empty
    /// @return false when nothing more is wanted
    template <typename BeforePrinting>
    bool show(const Recording2::Inspection::Record& record, BeforePrinting beforePrinting)
    {
        if (!wantsType(record.code)) {
            return record.timeMs <= m_span.to;
        }
        const values::ValueBase* value = m_recorded.apply(record);  // also before --from, to be complete there
        if (wantsTime(record.timeMs)) {
            beforePrinting();
            print(record, value);
        }
        return record.timeMs <= m_span.to;
    }
    /// The times count from another moment than was known before.
    void startsAt(std::uint64_t startMs);
    /// Goes on with a file in which the times begin anew.
    void takeSpanOf(const CatLines& before, std::uint64_t startMs, std::uint64_t startMsBefore);
    /// Tells of records that have no line, because a line of CSV is one value.
    void tellLeftOut() const;

private:
    /// @param options must outlive the object
    CatLines(const CatOptions& options, std::string file, const Recording2::Inspection::Summary& summary);

    [[nodiscard]] bool wantsType(std::int32_t code) const { return m_codes.empty() || m_codes.count(code) > 0; }
    [[nodiscard]] bool wantsTime(std::uint64_t time) const
    {
        return m_anyTime || (time != 0 && time >= m_span.from && time <= m_span.to);
    }
    /// @param value null when the record's text is not understood
    void print(const Recording2::Inspection::Record& record, const values::ValueBase* value);
    void printCsv(const Recording2::Inspection::Record& record, const values::ValueBase* value);

    const CatOptions& m_options;
    std::string m_file;
    std::vector<Recording2::Inspection::TypeEntry> m_types;
    TypeNames m_names;
    Span m_span;
    bool m_anyTime = true;           // records whose time is lost are shown as well
    std::set<std::int32_t> m_codes;  // empty: all
    RecordedValues m_recorded;
    TimeForm m_times;
    ClockText m_clock;
    std::uint64_t m_startMs;
    std::size_t m_timeWidth;
    std::size_t m_labelWidth;
    RecordJson m_json;
    std::string m_text;
    std::map<std::int32_t, std::uint64_t> m_leftOut;  // records without a line, by type
};

}  // namespace RecTool
