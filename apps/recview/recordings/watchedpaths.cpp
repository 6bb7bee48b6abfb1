// Listing directories only when they changed.
#include "watchedpaths.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

#include <recording2/inspection/filename.h>

namespace RecView {

namespace fs = std::filesystem;
using Recording2::Inspection::native;
using Recording2::Inspection::utf8;

namespace {

constexpr const char* Finished = ".rec";
constexpr const char* Unfinished = ".tmp";

bool mayBeRecording(const fs::path& path)
{
    return path.extension() == Finished || path.extension() == Unfinished;
}

std::vector<std::string> recordingsOf(const fs::path& directory)
{
    std::error_code error;
    std::vector<std::string> files;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error)) {
        if (mayBeRecording(entry->path())) {
            files.push_back(utf8(entry->path()));
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

void WatchedPaths::addDirectory(const std::string& path, std::vector<WatchedName>& names)
{
    constexpr std::chrono::seconds Settled{1};  // file systems tell times in steps of up to some milliseconds
    std::error_code error;
    Directory& directory = m_directories[path];
    const fs::file_time_type changed = fs::last_write_time(native(path), error);
    if (!directory.settled || changed != directory.changed || error) {
        directory.settled = !error && fs::file_time_type::clock::now() - changed > Settled;
        directory.changed = changed;
        directory.files = recordingsOf(native(path));
    }
    for (const std::string& file : directory.files) {
        names.push_back({file, false});
    }
}

std::vector<WatchedName> WatchedPaths::list()
{
    std::vector<WatchedName> names;
    for (const std::string& path : m_paths) {
        std::error_code error;
        if (fs::is_directory(native(path), error)) {
            addDirectory(path, names);
            continue;
        }
        fs::path finished = native(path);
        if (finished.extension() == Unfinished && !fs::exists(finished, error)) {
            finished.replace_extension(Finished);  // it was closed meanwhile
            if (fs::exists(finished, error)) {
                names.push_back({utf8(finished), true});
                continue;
            }
        }
        names.push_back({path, true});
    }
    return names;
}

}  // namespace RecView
