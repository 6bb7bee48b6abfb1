// The verb "cut": a part of a recording as a recording of its own.
#include <algorithm>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include <values/recordingtext.h>

#include "commandline/verb.h"
#include "commands.h"
#include "making/headerfields.h"
#include "making/newrecording.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/valuetext.h"
#include "replay/inforce.h"
#include "replay/recordingtime.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

/// A part of a recording on its way into a file of its own.
///
/// The state in force just before the span is written first, one record a value. These records take the milliseconds
/// before that moment, so the new recording starts a little before it, and every time is counted from there. The
/// last millisecond before the span stays free: it tells where the state ends. The records of the span follow as
/// they are, so that the parts of a recording can be made that recording again.
class Cut {
public:
    Cut(const Inspection::Summary& summary, const Span& span, NewRecording& output)
        : m_summary(summary),
          m_span(span),
          m_output(output),
          m_names(summary.types),
          m_fields(summary.types),
          m_ranges(summary.channelRangeTimes.begin(), summary.channelRangeTimes.end())
    {
    }

    /// @return false after the span
    bool visit(const Inspection::Record& record)
    {
        if (record.timeMs == 0) {
            ++m_withoutTime;
        } else if (record.timeMs < m_span.from) {
            m_state.apply(record);
            m_fields.follow(record);
            const bool isRange = m_ranges.count(record.timeMs) > 0 && values::CarriesChannelRange(record.data);
            m_rangeCode = isRange ? record.code : m_rangeCode;
        } else if (record.timeMs <= m_span.to) {
            begin();
            m_fields.follow(record);
            m_output.write(record.code, record.data, moved(record.timeMs), false);
        }
        return record.timeMs <= m_span.to && !Interrupt::requested();
    }

    /// To be called when all records were seen.
    ExitCode finish()
    {
        begin();
        for (const std::uint64_t range : m_ranges) {
            if (range != 0 && range >= m_span.from && range <= m_span.to) {
                m_output.addChannelRange(moved(range));
            }
        }
        return m_output.finish(header(), bookmarks());
    }

    [[nodiscard]] std::uint64_t stateRecords() const { return m_stateRecords; }
    [[nodiscard]] std::uint64_t withoutTime() const { return m_withoutTime; }

private:
    struct StateRecord {
        std::int32_t code = 0;
        std::string text;
        bool isRange = false;
    };

    static constexpr std::uint64_t FreeMs = 1;  ///< between the state and the span

    /// @return of the state's records
    [[nodiscard]] static std::uint64_t firstTime(std::uint64_t lead, std::uint64_t records)
    {
        return lead - FreeMs - records;
    }
    [[nodiscard]] std::uint64_t moved(std::uint64_t time) const { return time - m_span.from + m_lead; }

    void begin()
    {
        if (m_begun) {
            return;
        }
        m_begun = true;
        if (m_span.from > 0) {
            const std::vector<StateRecord> records = stateRecordsInOrder();
            m_stateRecords = records.size();
            m_lead = chooseLead(records);
            std::uint64_t time = firstTime(m_lead, m_stateRecords);
            for (const StateRecord& record : records) {
                m_output.write(record.code, record.text, time++, record.isRange);
            }
            m_fields.restart(m_state);
        }
    }

    [[nodiscard]] std::vector<StateRecord> stateRecordsInOrder() const
    {
        const std::optional<std::int32_t> withRange = rangeCode();
        std::vector<StateRecord> records;
        for (const auto& [code, last] : m_state.inOrder()) {
            const std::vector<std::string> texts = m_state.completeTexts(code);
            if (code == withRange) {
                // A tool that reads at the time 0 begins after the first record that the channel range table names, so
                // that the map must be told again.
                records.push_back({code, texts.front(), true});
            }
            for (const std::string& text : texts) {
                records.push_back({code, text, false});
            }
        }
        return records;
    }

    /// The type whose state the channel range table is to name: that of the direction finder, whose map replay
    /// rebuilds, else the one that told the range in force; nothing where no range was in force.
    [[nodiscard]] std::optional<std::int32_t> rangeCode() const
    {
        if (m_ranges.empty() || *m_ranges.begin() >= m_span.from) {
            return std::nullopt;
        }
        const std::optional<std::int32_t> bearings = m_names.numberOf(DirectionFindingKeyword);
        const std::vector<std::string> texts = bearings ? m_state.completeTexts(*bearings) : std::vector<std::string>();
        return !texts.empty() && values::CarriesChannelRange(texts.front()) ? bearings : m_rangeCode;
    }

    /// How many milliseconds the new recording starts before the span. Replay takes a channel range at 11 ms for the
    /// state that a recorder stores at 10 ms, so none may be moved there.
    [[nodiscard]] std::uint64_t chooseLead(const std::vector<StateRecord>& records) const
    {
        constexpr std::uint64_t Misread = 11;
        // The time of the span's first moment; no record has the time 0.
        std::uint64_t lead = records.empty() ? 1 : 1 + records.size() + FreeMs;
        const auto misread = [&] {
            const std::uint64_t index = Misread - firstTime(lead, records.size());  // of the state record at that time
            const bool inState = index < records.size() && records[index].isRange;
            const bool inSpan = lead <= Misread && m_ranges.count(m_span.from + Misread - lead) > 0;
            return inState || inSpan;
        };
        while (misread() && lead < m_summary.header.startMs + m_span.from) {
            ++lead;
        }
        return lead;
    }

    [[nodiscard]] Inspection::Header header() const
    {
        Inspection::Header header = m_summary.header;
        const bool toTheEnd = m_span.to >= lastMoment(m_summary);
        if (m_span.from > 0 || !toTheEnd) {
            m_fields.put(header);
        }
        const std::uint64_t fromMs = m_summary.header.startMs + m_span.from;
        header.startMs = fromMs - std::min(m_lead, fromMs);
        header.stopMs = toTheEnd ? m_summary.header.stopMs : m_summary.header.startMs + m_span.to;
        if (m_span.from > 0) {
            header.stopMs = std::max(header.stopMs, m_summary.header.startMs + m_span.from);
        }
        return header;
    }

    [[nodiscard]] std::map<std::uint64_t, std::string> bookmarks() const
    {
        std::map<std::uint64_t, std::string> kept;
        for (const Inspection::Bookmark& bookmark : m_summary.bookmarks) {
            if (bookmark.timeMs != 0 && bookmark.timeMs >= m_span.from && bookmark.timeMs <= m_span.to) {
                kept.emplace(moved(bookmark.timeMs), bookmark.text);
            }
        }
        return kept;
    }

    const Inspection::Summary& m_summary;
    Span m_span;
    NewRecording& m_output;
    TypeNames m_names;
    HeaderFields m_fields;
    std::set<std::uint64_t> m_ranges;
    InForce m_state;
    std::optional<std::int32_t> m_rangeCode;  // of the last record that the table names
    bool m_begun = false;
    std::uint64_t m_lead = 0;
    std::uint64_t m_stateRecords = 0;
    std::uint64_t m_withoutTime = 0;
};

/// @return false, told, when the span is none of the recording
bool takeCutSpan(const CutOptions& options, const Inspection::Summary& summary, Span& span)
{
    if (!takeSpan(options.file, options.from, options.to, summary, span)) {
        return false;
    }
    if (span.from > lastMoment(summary)) {
        complain(options.file,
                 "--from lies behind the end of the recording, " + std::to_string(lastMoment(summary)) + " ms.");
        return false;
    }
    return true;
}

void printCutSummary(const CutOptions& options, const Span& span, const Cut& cut, const NewRecordingResult& result)
{
    if (options.json) {
        Json json = {{"file", shownName(options.file)},
                     {"fromMs", options.from.empty() ? Json() : Json(span.from)},
                     {"toMs", options.to.empty() ? Json() : Json(span.to)}};
        json.update(toJson(options.output, result));
        json["stateRecords"] = cut.stateRecords();
        json["recordsWithoutTime"] = cut.withoutTime();
        return printJson(json);
    }
    print(options.output, result);
    if (cut.stateRecords() > 0) {
        std::cout << "Records in front that tell the state at --from: " << grouped(cut.stateRecords()) << ".\n";
    }
}

}  // namespace

ExitCode cut(const CutOptions& options)
{
    Inspection::Summary summary;
    if (!readSummary(options.file, summary)) {
        return ExitCode::CannotRead;
    }
    Span span;
    if (!takeCutSpan(options, summary, span)) {
        return ExitCode::Usage;
    }
    NewRecording output(options.output, options.force);
    ExitCode result = output.check({options.file});
    if (result == ExitCode::Fine) {
        result = output.create(summary.types);
    }
    if (result != ExitCode::Fine) {
        return result;
    }
    Cut cut(summary, span, output);
    const std::vector<Inspection::Finding> findings =
        walk(options.file, summary, [&](const Inspection::Record& record) { return cut.visit(record); });
    result = cut.finish();
    complain(options.file, findings);
    if (result != ExitCode::Fine) {
        return result;
    }
    printCutSummary(options, span, cut, output.result());
    tellWithoutTime(options.file, cut.withoutTime());
    return finish(cut.withoutTime() > 0 ? ExitCode::Damaged : soundness(findings));
}

void addCut(const Syntax& program)
{
    Verb verb(program, "cut", "Store a part of a recording as a recording of its own", cut);
    verb.span("Begin with the state at this time", "End at this time, which is kept too");
    verb.newRecording();
    verb.examples({"cut recording.rec --from 60000 --to 65000 -o part.rec",
                   "cut recording.rec --from bookmark:alarm-5000 -o alarm.rec"});
}

}  // namespace RecTool
