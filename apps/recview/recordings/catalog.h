// Which recordings there are: what is in some paths, looked at every 200 ms.
#pragma once

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <system/names.h>

#include "growingfile.h"
#include "recordedfile.h"

namespace RecView {

/// A name of the file system that may be that of a recording.
struct WatchedName {
    std::string path;       ///< as the system has it
    bool wasNamed = false;  ///< by itself, not found in a directory: that it is missing is to be told
};

/// Looks at the paths, follows what is being written, and keeps what it found. Nothing is locked and nothing written:
/// whoever records does not notice.
///
/// Threads: one looks (start(), or whoever calls look()). listing() is for any thread: what it gives never changes, so
/// that a request works on what there was when it came.
class Catalog {
public:
    /// Called by the looking thread; may be empty.
    struct Listeners {
        std::function<void()> changed;                                   ///< the recordings, or what they hold
        std::function<void(const std::string& id, double endMs)> grown;  ///< a recording that is being written
    };

    /// @param overviews must outlive the catalog
    Catalog(std::vector<std::string> paths, Overviews& overviews, Listeners listeners = {});
    Catalog(const Catalog&) = delete;
    Catalog& operator=(const Catalog&) = delete;
    ~Catalog();

    [[nodiscard]] ListingPointer listing() const;
    /// Looks once. Not while another thread does.
    void look();
    /// Looks every 200 ms in a thread of its own, until the end.
    void start();

private:
    struct Entry {
        System::FileIdentity identity;
        FilePointer file;  ///< null: there is nothing to show
        std::unique_ptr<GrowingFile> growing;
        std::string problem;
        bool seen = false;
    };
    enum class Change : std::uint8_t { None, Grown, Other };
    struct Directory {
        std::filesystem::file_time_type changed;
        bool settled = false;  ///< it did not change for so long that nothing can have been overlooked
        std::vector<std::string> files;
    };

    /// Lists the recordings, finished and not: files that were named, and *.rec and *.tmp of directories. A directory
    /// is read only when it has changed since. What cannot be read is as empty.
    [[nodiscard]] std::vector<WatchedName> names();
    void addDirectory(const std::string& path, std::vector<WatchedName>& names);
    [[nodiscard]] bool isStillFollowed(const std::string& path) const;
    Change lookAtName(const WatchedName& name);
    Change lookAtEntry(const WatchedName& name, Entry& entry, bool isNew);
    void openGrowing(const WatchedName& name, Entry& entry);
    Change followGrowing(Entry& entry);
    void close(Entry& entry);
    void publish(Change change);
    void tellGrown(const Listing& before, const Listing& now) const;
    void run(const std::stop_token& stop);

    std::vector<std::string> m_paths;
    std::map<std::string, Directory> m_directories;
    Overviews& m_overviews;
    Listeners m_listeners;
    std::map<std::string, Entry> m_entries;                            // by path; of the looking thread
    std::map<std::string, std::shared_ptr<Overview>> m_closedJustNow;  // by path
    unsigned m_round = 0;
    bool m_isBehind = false;     // a growing file has more than was taken
    mutable std::mutex m_mutex;  // guards what follows, for no longer than copying a pointer takes
    ListingPointer m_listing = std::make_shared<Listing>();
    std::condition_variable_any m_wake;
    std::mutex m_sleep;
    std::jthread m_thread;
};

}  // namespace RecView
