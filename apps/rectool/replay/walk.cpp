// Inspecting a recording and walking its records, for the verbs that look at one.
#include "walk.h"

#include "printing/output.h"
#include "printing/progress.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

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
