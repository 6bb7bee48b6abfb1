// All checks of a file in their order; those of the types and of the time span are here.
#include "verification.h"

#include <algorithm>

#include "../filename.h"
#include "checks.h"
#include "recordchecks.h"

namespace Recording2::Inspection {

namespace {

void checkTypes(const Summary& summary, Remarks& remarks)
{
    const auto nameless = std::count_if(summary.types.begin(), summary.types.end(),
                                        [](const TypeEntry& type) { return type.keyword.empty(); });
    if (nameless > 0) {
        remarks.note(summary.header.positions.typeTable,
                     numbered(static_cast<std::uint64_t>(nameless), "type has", "types have") + " no keyword.");
    }
    if (summary.header.positions.typeTable == 0 && summary.header.positions.firstRecord != 0) {
        remarks.note(summary.header.positions.firstRecord, "There are records but no type table.");
    }
}

/// Nothing keeps records and bookmarks within the time from start to stop, but a recorder's lie there, apart from
/// records that were moved to a free millisecond.
void checkSpan(const Summary& summary, Remarks& remarks)
{
    constexpr std::uint64_t Moved = 1000;
    const Header& h = summary.header;
    const std::uint64_t last = summary.times.empty() ? 0 : summary.times.back().timeMs;
    const std::uint64_t length = h.stopMs - std::min(h.startMs, h.stopMs);
    if (h.stopMs != 0 && last > length && last - length > Moved) {
        remarks.note(h.positions.timeTable, "The last record is " + std::to_string(last - length) +
                                                " ms later than the end of the recording.");
    }
    const std::uint64_t end = std::max(last, length);
    const auto behind = std::count_if(summary.bookmarks.begin(), summary.bookmarks.end(),
                                      [&](const Bookmark& bookmark) { return bookmark.timeMs > end; });
    if (behind > 0) {
        remarks.note(h.positions.bookmarkTable,
                     numbered(static_cast<std::uint64_t>(behind), "bookmark is", "bookmarks are") +
                         " later than the end of the recording.");
    }
}

void checkTables(const std::string& path, const Summary& summary, Remarks& remarks)
{
    InputFile source(native(path), InputFile::Size::AtOpening);
    if (!source.good()) {
        remarks.damage(0, "The file cannot be opened any more.");
        return;
    }
    remarks.damage(summary.findings);
    checkHeader(source, summary, remarks);
    checkGaps(source, summary, remarks);
    checkTypes(summary, remarks);
    checkSpan(summary, remarks);
}

}  // namespace

std::size_t Verification::count(Severity severity) const
{
    return static_cast<std::size_t>(std::count_if(remarks.begin(), remarks.end(),
                                                  [&](const Remark& remark) { return remark.severity == severity; }));
}

Verification verify(const std::string& path, const Progress& progress)
{
    const Summary summary = inspect(path);
    Verification result;
    result.readability = summary.readability;
    result.problem = summary.problem;
    result.fileSize = summary.fileSize;
    if (summary.readability != Readability::Ok) {
        return result;
    }
    Remarks remarks(result.remarks);
    checkTables(path, summary, remarks);
    UnnamedTypes types(summary.types);
    RangeCheck ranges(summary);
    remarks.damage(walkRecords(
        path, summary,
        [&](const Record& record) {
            ++result.records;
            types.visit(record);
            ranges.visit(record);
            return true;
        },
        progress));
    types.report(remarks);
    ranges.report(remarks);
    std::stable_sort(result.remarks.begin(), result.remarks.end(),
                     [](const Remark& a, const Remark& b) { return a.offset < b.offset; });
    return result;
}

}  // namespace Recording2::Inspection
