// Finding the file in which a recorder goes on, by device and time.
#include "nextfile.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <system_error>

#include <recording2/inspection/filename.h>
#include <recording2/inspection/following.h>
#include <recording2/inspection/scan.h>

namespace RecTool {

namespace fs = std::filesystem;
namespace Inspection = Recording2::Inspection;

namespace {

std::optional<Inspection::Header> headerOf(const fs::path& path)
{
    const std::string name = Inspection::utf8(path);
    if (path.extension() == ".rec") {
        const Inspection::Summary head = Inspection::inspectHead(name);
        return head.readability == Inspection::Readability::Ok ? std::optional(head.header) : std::nullopt;
    }
    std::string problem;
    const auto growing = path.extension() == ".tmp" ? Inspection::Following::open(name, problem) : std::nullopt;
    return growing ? std::optional(growing->header()) : std::nullopt;
}

bool goesOn(const Inspection::Header& before, const Inspection::Header& next)
{
    constexpr std::uint64_t LongestGapMs = 10'000;
    return next.deviceName == before.deviceName && next.deviceType == before.deviceType &&
           next.startMs > before.startMs && next.startMs >= before.stopMs &&
           next.startMs - before.stopMs <= LongestGapMs;
}

}  // namespace

std::string nextFileOf(const std::string& file, const Inspection::Header& header)
{
    constexpr std::chrono::minutes Rounding(1);  // of times in directories
    const fs::path own = Inspection::native(file);
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(own, error);
    std::string found;
    std::uint64_t foundMs = 0;
    for (fs::directory_iterator entry(own.parent_path().empty() ? "." : own.parent_path(), error);
         !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code none;
        const bool isOlder = entry->last_write_time(none) + Rounding < written;
        const fs::path path = own.parent_path() / entry->path().filename();
        const auto next = isOlder || path == own ? std::nullopt : headerOf(path);
        if (next && goesOn(header, *next) && (found.empty() || next->startMs < foundMs)) {
            found = Inspection::utf8(path);
            foundMs = next->startMs;
        }
    }
    return found;
}

}  // namespace RecTool
