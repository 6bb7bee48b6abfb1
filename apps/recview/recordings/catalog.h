// Which recordings there are: what is in some paths, looked at every 200 ms.
#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <system/names.h>

#include "timeline.h"
#include "watchedpaths.h"

namespace RecView {

/// Looks at the paths and keeps what it found. Nothing is locked and nothing written: whoever records does not notice.
///
/// Threads: one looks (start(), or whoever calls look()). listing() is for any thread: what it gives never changes, so
/// that a request works on what there was when it came.
class Catalog {
public:
    /// @param changed called by the looking thread after the listing has become another one; may be empty
    explicit Catalog(std::vector<NamedPath> paths, std::function<void()> changed = {});
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
        std::string shownName;
        std::string problem;
        bool seen = false;
    };

    bool lookAtName(const WatchedName& name);
    void lookAtFinished(const WatchedName& name, Entry& entry);
    void publish();
    void run(const std::stop_token& stop);

    WatchedPaths m_paths;
    std::function<void()> m_changed;
    std::map<std::string, Entry> m_entries;  // by path; of the looking thread
    unsigned m_round = 0;
    mutable std::mutex m_mutex;  // guards what follows, for no longer than copying a pointer takes
    ListingPointer m_listing = std::make_shared<Listing>();
    std::condition_variable_any m_wake;
    std::mutex m_sleep;
    std::jthread m_thread;
};

}  // namespace RecView
