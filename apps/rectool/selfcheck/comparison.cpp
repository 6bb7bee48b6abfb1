// Reading the reference recording, and finding its records again in a recovered one.
#include "comparison.h"

#include <algorithm>
#include <utility>

namespace RecTool::SelfCheck {

namespace Inspection = Recording2::Inspection;

Reference Reference::read(const std::string& path, std::uint64_t steps)
{
    Reference reference;
    const Inspection::Summary summary = Inspection::inspect(path);
    if (summary.readability != Inspection::Readability::Ok || !summary.findings.empty()) {
        reference.problem = summary.findings.empty() ? summary.problem : summary.findings.front().text;
        return reference;
    }
    reference.header = summary.header;
    Inspection::RecordReader reader(path, summary);
    for (Inspection::Record record; reader.next(record);) {
        reference.records.push_back(record);
    }
    if (reference.records.size() <= steps) {
        reference.problem = "It holds " + std::to_string(reference.records.size()) + " records of " +
                            std::to_string(steps) + " changes.";
        return reference;
    }
    reference.states = reference.records.size() - steps;
    return reference;
}

std::uint64_t Reference::timeOf(std::uint64_t count) const
{
    return count == 0 || records.empty() ? 0 : records[std::min<std::uint64_t>(count, records.size()) - 1].timeMs;
}

Comparison compare(const std::string& path, const Reference& reference)
{
    Comparison comparison;
    const Inspection::Summary summary = Inspection::inspect(path);
    if (summary.readability != Inspection::Readability::Ok || !summary.findings.empty()) {
        comparison.problem = summary.findings.empty() ? summary.problem : summary.findings.front().text;
        return comparison;
    }
    Inspection::RecordReader reader(path, summary);
    std::uint64_t next = 0;  // of the reference's records
    for (Inspection::Record record; reader.next(record); ++next) {
        const auto isSame = [&record](const Inspection::Record& known) {
            return known.code == record.code && known.data == record.data;
        };
        const auto from = reference.records.begin() +
                          static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(next, reference.records.size()));
        const auto found = std::find_if(from, reference.records.end(), isSame);
        if (found == reference.records.end()) {
            comparison.problem = "The record at " + std::to_string(record.position) + " was never recorded.";
            return comparison;
        }
        next = static_cast<std::uint64_t>(found - reference.records.begin());
        ++comparison.records;
        comparison.exactTimes += found->timeMs == record.timeMs ? 1U : 0U;
    }
    comparison.isBeginning = next == comparison.records && comparison.exactTimes == comparison.records;
    if (!reader.findings().empty()) {
        comparison.problem = reader.findings().front().text;
    }
    return comparison;
}

}  // namespace RecTool::SelfCheck
