// Reading records of a finished file again, from any of them on.
#include <algorithm>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

#include <recording2/inspection/filename.h>
#include <recording2/inspection/following.h>
#include <system/names.h>
#include "overview.h"

namespace RecView {

namespace Inspection = Recording2::Inspection;

namespace {

/// Tables of the files that were read last: a large one takes some 14 MB.
class RecentSummaries {
public:
    std::shared_ptr<const Summary> of(const std::string& path)
    {
        constexpr std::size_t Most = 4;
        System::FileIdentity identity;
        static_cast<void>(System::identityOf(Inspection::native(path), identity));
        const std::scoped_lock lock(m_mutex);
        const auto known = std::find_if(m_recent.begin(), m_recent.end(), [&](const Entry& entry) {
            return entry.path == path && entry.identity == identity;
        });
        Entry entry;
        if (known != m_recent.end()) {
            entry = *known;
            m_recent.erase(known);
        } else {
            entry = {path, identity, std::make_shared<const Summary>(Inspection::inspect(path))};
        }
        m_recent.push_front(entry);
        m_recent.resize(std::min(m_recent.size(), Most));
        return entry.summary;
    }

private:
    struct Entry {
        std::string path;
        System::FileIdentity identity;
        std::shared_ptr<const Summary> summary;
    };
    std::mutex m_mutex;
    std::deque<Entry> m_recent;
};

// In stretches, each with its part of the time table.
void readFinished(const std::string& path, const RecordPlace& place, const std::function<bool(const Record&)>& visit)
{
    const std::int64_t position = place.position;
    static RecentSummaries recent;
    constexpr std::size_t StretchEntries = 2048;
    const std::shared_ptr<const Summary> summary = recent.of(path);
    const std::vector<Inspection::TimeEntry>& times = summary->times;
    Summary stretch;
    stretch.readability = summary->readability;
    stretch.fileSize = summary->fileSize;
    stretch.header = summary->header;
    auto entry =
        std::lower_bound(times.begin(), times.end(), position,
                         [](const Inspection::TimeEntry& time, std::int64_t at) { return time.position < at; });
    bool goesOn = true;
    stretch.header.positions.firstRecord =
        position > 0 ? static_cast<std::int32_t>(position) : summary->header.positions.firstRecord;
    while (goesOn) {
        const auto left = static_cast<std::size_t>(times.end() - entry);
        const auto end = entry + static_cast<std::ptrdiff_t>(std::min(left, StretchEntries));
        const bool isLast = end == times.end();
        stretch.times.assign(entry, end);
        stretch.header.positions.timeTable = isLast ? summary->header.positions.timeTable : end->position;
        Inspection::walkRecords(path, stretch, [&](const Record& record) { return goesOn = visit(record); });
        entry = end;
        goesOn = goesOn && !isLast;
        stretch.header.positions.firstRecord = stretch.header.positions.timeTable;
    }
}

void readGrowing(const std::string& path, const RecordPlace& place, const std::function<bool(const Record&)>& visit)
{
    std::string problem;
    std::optional<Inspection::Following> following = Inspection::Following::open(path, problem);
    if (!following) {
        return;
    }
    std::uint64_t toSkip = following->startAt(place.number) ? 0 : place.number;
    Record record;
    while (following->next(record)) {
        if (toSkip > 0) {
            --toSkip;
        } else if (!visit(record)) {
            return;
        }
    }
}

}  // namespace

RecordSource growingRecords(const std::string& path)
{
    return [path](const RecordPlace& place, const auto& visit) { readGrowing(path, place, visit); };
}

RecordSource recordsOf(const std::string& path)
{
    return [path](const RecordPlace& place, const auto& visit) { readFinished(path, place, visit); };
}

}  // namespace RecView
