// The overviews of the recordings that somebody looks at: found in the cache or made, one after the other.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "pyramid/cache.h"
#include "pyramid/overview.h"
#include "recordedfile.h"

namespace RecView {

/// How far the overview of a file is.
struct Made {
    std::shared_ptr<Overview> overview;  ///< what there is of it so far; null: nothing yet
    double share = 0;                    ///< 1: all of it
    std::string problem;                 ///< one sentence where it cannot be made
    std::string damage;                  ///< one sentence where not all of the file can be read
};

/// Any thread. What is asked for first is made first; asking does not wait longer than it takes to find what was made
/// before.
class Overviews {
public:
    /// @param told called now and then, by the making thread, with what a file's overview has become
    Overviews(Cache::Options options, std::function<void(const RecordedFile&)> told);
    Overviews(const Overviews&) = delete;
    Overviews& operator=(const Overviews&) = delete;
    ~Overviews();

    /// Ends the making thread: nobody is told any more, and what is not made stays so.
    void stop();

    /// The overview of a finished file. When nothing is there yet it is begun, and waited for a moment: one that was
    /// made before, or of a small file, is there then.
    [[nodiscard]] Made of(const FilePointer& file);
    /// How far it is, without making it.
    [[nodiscard]] Made known(const RecordedFile& file) const;
    /// Takes over the finished overview of a file that was followed while it grew, and keeps it for later.
    void adopt(const FilePointer& file, std::shared_ptr<Overview> overview);
    /// Where the overviews of growing files are kept meanwhile. @throws std::runtime_error where there is no room
    [[nodiscard]] std::unique_ptr<Store> newStore() { return m_cache.newStore(); }

private:
    struct Entry {
        Made made;
        std::uint64_t used = 0;
        bool isQueued = false;
    };
    struct Job {
        FilePointer file;
        std::shared_ptr<Overview> adopted;  ///< null: to be made
    };

    static std::string keyOf(const RecordedFile& file) { return file.path + '\n' + file.content; }
    void run(const std::stop_token& stop);
    void make(const FilePointer& file, const std::stop_token& stop);
    void become(const FilePointer& file, Made made);
    void forgetUnused();

    Cache m_cache;
    std::function<void(const RecordedFile&)> m_told;
    mutable std::mutex m_mutex;  // guards what follows; never held while something is read or made
    std::condition_variable_any m_changed;
    std::map<std::string, Entry> m_entries;
    std::deque<Job> m_jobs;
    std::uint64_t m_used = 0;
    std::jthread m_thread;
};

}  // namespace RecView
