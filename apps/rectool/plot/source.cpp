#include "source.h"

#include <algorithm>
#include <iterator>

#include "../recordingtime.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

PlotSource::PlotSource(const PlotOptions& options, int passes)
    : m_file(options.file),
      m_summary(Inspection::inspect(options.file)),
      m_names(m_summary.types),
      m_progress(options.file),
      m_passes(passes)
{
    if (m_summary.readability != Inspection::Readability::Ok) {
        complain(m_file, m_summary.problem);
        m_state = ExitCode::CannotRead;
    } else {
        m_state = takeSpan(options);
    }
}

ExitCode PlotSource::takeSpan(const PlotOptions& options)
{
    const Inspection::Header& header = m_summary.header;
    const std::vector<Inspection::TimeEntry>& times = m_summary.times;
    const std::uint64_t duration = header.stopMs > header.startMs ? header.stopMs - header.startMs : 0;
    m_span.fromMs = times.empty() ? 0 : times.front().timeMs;
    const std::uint64_t end = std::max(duration, times.empty() ? 0 : times.back().timeMs);
    m_span.toMs = end;
    if (!takeTime("--from", options.from, m_summary, m_span.fromMs) ||
        !takeTime("--to", options.to, m_summary, m_span.toMs)) {
        return ExitCode::Usage;
    }
    if (m_span.fromMs > m_span.toMs) {
        complain(m_file, m_span.fromMs > end    ? "--from lies behind the end of the recording."
                         : options.from.empty() ? "--to lies in front of the first record."
                                                : "--from lies behind --to.");
        return ExitCode::Usage;
    }
    m_span.toMs = std::max(m_span.toMs, m_span.fromMs + 1);
    return ExitCode::Fine;
}

std::vector<Inspection::Bookmark> PlotSource::bookmarks() const
{
    std::vector<Inspection::Bookmark> inSpan;
    std::copy_if(m_summary.bookmarks.begin(), m_summary.bookmarks.end(), std::back_inserter(inSpan),
                 [this](const Inspection::Bookmark& bookmark) {
                     return bookmark.timeMs >= m_span.fromMs && bookmark.timeMs <= m_span.toMs;
                 });
    std::stable_sort(inSpan.begin(), inSpan.end(),
                     [](const Inspection::Bookmark& a, const Inspection::Bookmark& b) { return a.timeMs < b.timeMs; });
    return inSpan;
}

void PlotSource::walk(const std::function<void(const Inspection::Record&)>& visit)
{
    std::function<void(std::int64_t, std::int64_t)> progress = m_progress.callback();
    if (progress) {
        progress = [this, show = m_progress.callback()](std::int64_t done, std::int64_t all) {
            show(m_pass * all + done, m_passes * all);
        };
    }
    m_inRecords = Inspection::walkRecords(
        m_file, m_summary,
        [&](const Inspection::Record& record) {
            const bool timeIsKnown = record.timeMs != 0;
            if (timeIsKnown && record.timeMs <= m_span.toMs) {
                visit(record);
            }
            return record.timeMs <= m_span.toMs;
        },
        progress);
    ++m_pass;
}

ExitCode PlotSource::end(ExitCode drawn)
{
    m_progress.clear();
    std::vector<Inspection::Finding> findings = m_summary.findings;
    findings.insert(findings.end(), m_inRecords.begin(), m_inRecords.end());
    complain(m_file, findings);
    const bool damaged = soundness(findings) == ExitCode::Damaged && drawn != ExitCode::CannotRead;
    return finish(damaged ? ExitCode::Damaged : drawn);
}

ExitCode PlotSource::refuse(const std::string& why)
{
    m_progress.clear();
    complain(m_file, why);
    return end(ExitCode::Usage);
}

}  // namespace RecTool
