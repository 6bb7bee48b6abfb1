// Inspecting a recording and walking its records, for the verbs that look at one.
#include "walk.h"

#include <recording2/inspection/scan.h>

#include "printing/output.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

bool PresentRecording::open(const std::string& file)
{
    m_file = file;
    m_summary = Inspection::inspect(file);
    if (m_summary.readability == Inspection::Readability::Ok) {
        return true;
    }
    const bool mayGrow = m_summary.readability == Inspection::Readability::NeverClosed ||
                         m_summary.readability == Inspection::Readability::Empty;
    std::string problem;
    if (mayGrow && Inspection::isBeingWritten(file)) {
        m_following = Inspection::Following::open(file, problem);
    }
    if (!m_following) {
        return false;
    }
    m_summary.readability = Inspection::Readability::Ok;
    m_summary.problem.clear();
    m_summary.header = m_following->header();
    m_summary.types = m_following->types();
    return true;
}

std::vector<Inspection::Finding> PresentRecording::walk(const std::function<bool(const Inspection::Record&)>& visit,
                                                        const std::function<void(std::int64_t, std::int64_t)>& progress)
{
    if (!m_following) {
        return RecTool::walk(m_file, m_summary, visit, progress);
    }
    Inspection::Record record;
    while (m_following->next(record) && visit(record)) {
    }
    m_summary.header = m_following->header();
    return m_following->findings();
}

void PresentRecording::tellWhetherBeingWritten() const
{
    if (m_following) {
        complain(m_file, "This recording is being written: this is what was accepted so far.");
    }
    if (m_following && !m_following->timesKnown()) {
        complain(m_file, withoutTimes());
    }
}

std::string withoutTimes()
{
    return "It has no journal, so the times of its records are missing, and the last of them are not in the file yet.";
}

bool readSummary(const std::string& file, Inspection::Summary& summary)
{
    summary = Inspection::inspect(file);
    const bool readable = summary.readability == Inspection::Readability::Ok;
    if (!readable) {
        complain(file, summary.problem);
    }
    return readable;
}

std::vector<Inspection::Finding> walk(const std::string& file, const Inspection::Summary& summary,
                                      const std::function<bool(const Inspection::Record&)>& visit,
                                      const std::function<void(std::int64_t, std::int64_t)>& progress)
{
    Progress ownProgress(file);
    std::vector<Inspection::Finding> findings = summary.findings;
    const auto inRecords = Inspection::walkRecords(file, summary, visit, progress ? progress : ownProgress.callback());
    findings.insert(findings.end(), inRecords.begin(), inRecords.end());
    return findings;
}

}  // namespace RecTool
