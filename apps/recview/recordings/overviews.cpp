// Making what is asked for in a thread of its own, and letting go of what nobody looks at any more.
#include "overviews.h"

#include <chrono>
#include <exception>
#include <utility>

#include "keptcolumns.h"

namespace RecView {

namespace {

Cache::Options withVersion(Cache::Options options)
{
    options.version = KeptColumnsVersion;
    return options;
}

/// Of the tables, and of records that could not be read.
std::string damageIn(const RecordedFile& file, const Overview& overview)
{
    const Summary summary = Recording2::Inspection::inspect(file.path);
    if (!summary.findings.empty()) {
        return damageOf(summary);
    }
    const std::uint64_t named = summary.times.size();
    const std::uint64_t read = overview.head().records;
    return named <= read ? "" : std::to_string(named - read) + " of its records are damaged; the others are shown.";
}

}  // namespace

Overviews::Overviews(Cache::Options options, std::function<void(const RecordedFile&)> told)
    : m_cache(withVersion(std::move(options))), m_told(std::move(told))
{
    m_thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

Overviews::~Overviews()
{
    stop();
}

void Overviews::stop()
{
    m_thread.request_stop();
    m_changed.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

Made Overviews::known(const RecordedFile& file) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_entries.find(keyOf(file));
    return found == m_entries.end() ? Made() : found->second.made;
}

Made Overviews::of(const FilePointer& file)
{
    constexpr std::chrono::milliseconds Patience{250};
    std::unique_lock lock(m_mutex);
    const std::string key = keyOf(*file);
    Entry& asked = m_entries[key];
    asked.used = ++m_used;
    if (asked.made.share < 1 && asked.made.problem.empty() && !asked.isQueued) {
        asked.isQueued = true;
        m_jobs.push_back({file, nullptr});
        m_changed.notify_all();
    }
    if (asked.made.overview == nullptr) {
        m_changed.wait_for(lock, Patience, [&] {
            const Entry& entry = m_entries[key];
            return entry.made.share >= 1 || !entry.made.problem.empty();
        });
    }
    return m_entries[key].made;
}

void Overviews::adopt(const FilePointer& file, std::shared_ptr<Overview> overview)
{
    const std::lock_guard lock(m_mutex);
    m_jobs.push_back({file, overview});
    Entry& entry = m_entries[keyOf(*file)];
    entry.made = {std::move(overview), 1, "", ""};
    entry.used = ++m_used;
    m_changed.notify_all();
}

void Overviews::become(const FilePointer& file, Made made)
{
    {
        const std::lock_guard lock(m_mutex);
        Entry& entry = m_entries[keyOf(*file)];
        entry.isQueued = made.share < 1 && made.problem.empty();
        entry.made = std::move(made);
        forgetUnused();
    }
    m_changed.notify_all();
    m_told(*file);
}

/// An overview that is open takes some memory and a file; the cache gives it again at once.
void Overviews::forgetUnused()
{
    constexpr std::size_t Most = 64;
    while (m_entries.size() > Most) {
        auto oldest = m_entries.end();
        for (auto entry = m_entries.begin(); entry != m_entries.end(); ++entry) {
            const bool isOlder = oldest == m_entries.end() || entry->second.used < oldest->second.used;
            oldest = !entry->second.isQueued && isOlder ? entry : oldest;
        }
        if (oldest == m_entries.end()) {
            return;
        }
        m_entries.erase(oldest);
    }
}

void Overviews::make(const FilePointer& file, const std::stop_token& stop)
{
    constexpr std::chrono::milliseconds Often{200};
    auto told = std::chrono::steady_clock::now();
    Made made;
    try {
        made.overview = m_cache.overviewOf(file->path, makeValuePart, made.problem,
                                           [&](double share, const std::shared_ptr<Overview>& soFar) {
                                               const auto now = std::chrono::steady_clock::now();
                                               if (now - told > Often && share < 1) {
                                                   told = now;
                                                   become(file, {soFar, share, "", ""});
                                               }
                                               return !stop.stop_requested();
                                           });
    } catch (const std::exception& error) {
        made.problem = error.what();
    }
    if (made.overview != nullptr) {
        made.share = 1;
        made.damage = damageIn(*file, *made.overview);
    }
    if (!stop.stop_requested()) {
        become(file, std::move(made));
    }
}

void Overviews::run(const std::stop_token& stop)
{
    while (true) {
        Job job;
        {
            std::unique_lock lock(m_mutex);
            if (!m_changed.wait(lock, stop, [this] { return !m_jobs.empty(); })) {
                return;
            }
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        if (job.adopted == nullptr) {
            make(job.file, stop);
        } else {
            m_cache.keep(*job.adopted, job.file->path);
        }
    }
}

}  // namespace RecView
