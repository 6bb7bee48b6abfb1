// Choosing the records by type and time.
#include "catlines.h"

#include <algorithm>
#include <utility>

#include "printing/output.h"
#include "replay/recordingtime.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

RecordPrinter::Form formOf(const CatOptions& options)
{
    return options.json  ? RecordPrinter::Form::Json
           : options.csv ? RecordPrinter::Form::Csv
                         : RecordPrinter::Form::Lines;
}

/// As wide as times are: where there are still to come some, those of a day.
std::uint64_t lastTime(const CatOptions& options, const Inspection::Summary& summary)
{
    constexpr std::uint64_t DayMs = 86'400'000;
    return !summary.times.empty() ? summary.times.back().timeMs : options.follow ? DayMs : 0;
}

}  // namespace

CatLines::CatLines(const CatOptions& options, std::string file, const Inspection::Summary& summary)
    : m_file(std::move(file)),
      m_startMs(summary.header.startMs),
      m_types(summary.types),
      m_names(m_types),
      m_printer(formOf(options), m_names, timeFormOf(options.time), summary.header.startMs, lastTime(options, summary))
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
    if (timeFormOf(options.time) != TimeForm::Offset && summary.header.startMs == 0) {
        complain(file, "It does not tell when it started, so there are only milliseconds (--time offset).");
        return nullptr;
    }
    return lines;
}

void CatLines::startsAt(std::uint64_t startMs)
{
    if (startMs != m_startMs) {
        m_startMs = startMs;
        m_printer.startsAt(startMs);
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

void CatLines::tellLeftOut() const
{
    if (const std::string leftOut = m_printer.leftOut(); !leftOut.empty()) {
        complain(m_file, leftOut);
    }
}

}  // namespace RecTool
