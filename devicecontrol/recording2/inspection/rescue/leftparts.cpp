// Finding unfinished outputs by name, lock and blank header, and removing them.
#include "leftparts.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <system/nativefile.h>
#include "../../format/layout.h"
#include "../filename.h"
#include "../inspection.h"

namespace Recording2::Inspection {

namespace {

namespace fs = std::filesystem;

// "X.rec.part" or "X.rec.part7" of any X.rec.
bool isPartName(std::string_view name)
{
    constexpr std::string_view Ending = ".rec.part";
    const std::size_t end = name.find_last_not_of("0123456789");
    return end != std::string_view::npos && name.substr(0, end + 1).ends_with(Ending);
}

// The header is written last.
bool isUnfinished(const System::NativeFile& file)
{
    const std::string blank = Format::headerArea();
    std::string begin(blank.size(), '\0');
    begin.resize(file.readAt(0, begin.data(), begin.size()));
    return begin == blank.substr(0, begin.size());
}

// Whoever writes one holds its lock.
bool removeIfLeft(const fs::path& path, bool alsoComplete)
{
    std::error_code error;
    if (!fs::is_regular_file(fs::symlink_status(path, error))) {
        return false;
    }
    System::NativeFile file;
    if (file.open(path, System::Access::Read) != 0 || file.lock() != 0) {
        return false;
    }
    const bool ours = isUnfinished(file) || (alsoComplete && inspect(utf8(path)).readability == Readability::Ok);
    return ours && System::removeFile(path) == 0;
}

template <typename Wanted>
std::vector<std::string> removeFrom(const fs::path& directory, bool alsoComplete, const Wanted& wanted)
{
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error)) {
        if (wanted(utf8(entry->path().filename()))) {
            found.push_back(entry->path());
        }
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> removed;
    for (const fs::path& path : found) {
        if (removeIfLeft(path, alsoComplete)) {
            removed.push_back(utf8(path));
        }
    }
    return removed;
}

}  // namespace

std::vector<std::string> removeLeftParts(const std::string& output)
{
    const fs::path path = native(output);
    const std::string begin = utf8(path.filename()) + ".part";
    const fs::path directory = path.parent_path().empty() ? fs::path(".") : path.parent_path();
    return removeFrom(directory, true, [&begin](const std::string& name) {
        return name.starts_with(begin) && name.find_first_not_of("0123456789", begin.size()) == std::string::npos;
    });
}

std::vector<std::string> removeLeftPartsIn(const std::string& directory)
{
    return removeFrom(native(directory), false, isPartName);
}

}  // namespace Recording2::Inspection
