// Joining files to timelines, and finding the file of a moment.
#include "timeline.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <tuple>
#include <utility>

namespace RecView {

namespace {

constexpr std::uint64_t LongestPauseMs = 10'000;  // a new file takes less than a second
constexpr std::uint64_t ClockStepMs = 1'000;      // a split begins while the last records of the file are stamped

bool follows(const RecordedFile& file, const RecordedFile& before)
{
    return file.device == before.device && file.deviceType == before.deviceType && file.folder == before.folder &&
           before.startMs != 0 && !before.live && file.startMs > before.startMs &&
           file.startMs + ClockStepMs >= before.endMs && file.startMs <= before.endMs + LongestPauseMs;
}

std::string idOf(const RecordedFile& file, std::set<std::string>& taken)
{
    std::string base = file.name;
    for (const char* suffix : {".rec", ".tmp"}) {
        if (base.ends_with(suffix)) {
            base.resize(base.size() - std::string(suffix).size());
            break;
        }
    }
    std::string id = base;
    for (int number = 2; !taken.insert(id).second; ++number) {
        id = base + '~' + std::to_string(number);
    }
    return id;
}

}  // namespace

double Timeline::endMs() const
{
    std::uint64_t end = 0;
    for (const FilePointer& file : files) {
        end = std::max(end, file->endMs);
    }
    return static_cast<double>(end);
}

bool Timeline::timesKnown() const
{
    return std::all_of(files.begin(), files.end(), [](const FilePointer& file) { return file->timesKnown; });
}

RecordedTypes Timeline::recorded() const
{
    RecordedTypes all;
    for (const FilePointer& file : files) {
        for (const auto& [code, type] : file->recorded) {
            const auto [place, isNew] = all.try_emplace(code, type);
            if (!isNew) {
                place->second.widen(type.lowHz, type.highHz);
            }
        }
    }
    return all;
}

std::size_t Timeline::fileAt(double ms) const
{
    const auto after = std::upper_bound(files.begin(), files.end(), ms, [](double moment, const FilePointer& file) {
        return moment < static_cast<double>(file->startMs);
    });
    return after == files.begin() ? 0 : static_cast<std::size_t>(after - files.begin()) - 1;
}

std::vector<Timeline> makeTimelines(std::vector<FilePointer> files)
{
    std::sort(files.begin(), files.end(), [](const FilePointer& a, const FilePointer& b) {
        return std::tie(a->startMs, a->path) < std::tie(b->startMs, b->path);
    });
    std::vector<Timeline> timelines;
    std::set<std::string> taken;
    for (FilePointer& file : files) {
        const auto before = std::find_if(timelines.rbegin(), timelines.rend(), [&](const Timeline& timeline) {
            return follows(*file, *timeline.files.back());
        });
        if (before != timelines.rend()) {
            before->files.push_back(std::move(file));
        } else {
            std::string id = idOf(*file, taken);
            timelines.push_back({std::move(id), {std::move(file)}});
        }
    }
    return timelines;
}

const Timeline* Listing::find(const std::string& id) const
{
    const auto found =
        std::find_if(timelines.begin(), timelines.end(), [&](const Timeline& timeline) { return timeline.id == id; });
    return found == timelines.end() ? nullptr : &*found;
}

}  // namespace RecView
