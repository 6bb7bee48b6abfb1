// Comparing what is there with what was there a moment ago, and looking at what is new.
#include "catalog.h"

#include <chrono>
#include <utility>

#include <recording2/inspection/filename.h>
#include <recording2/inspection/scan.h>

namespace RecView {

namespace Inspection = Recording2::Inspection;

namespace {

bool isUnfinished(const std::string& path)
{
    return path.ends_with(".tmp");
}

}  // namespace

Catalog::Catalog(std::vector<NamedPath> paths, std::function<void()> changed)
    : m_paths(std::move(paths)), m_changed(std::move(changed))
{
}

Catalog::~Catalog()
{
    m_thread.request_stop();
    m_wake.notify_all();
}

ListingPointer Catalog::listing() const
{
    const std::lock_guard lock(m_mutex);
    return m_listing;
}

void Catalog::lookAtFinished(const WatchedName& name, Entry& entry)
{
    entry.problem.clear();
    entry.file = lookAtFile(name.path, name.shownName, entry.problem);
    if (entry.file == nullptr && isUnfinished(name.path)) {
        entry.problem += " `rectool recover` saves what is in it.";
    } else if (entry.file != nullptr) {
        entry.problem = entry.file->damage;
    }
}

/// @return whether it is another one than before
bool Catalog::lookAtName(const WatchedName& name)
{
    constexpr unsigned EverySoOften = 10;  // finished files hardly ever change
    const auto known = m_entries.find(name.path);
    if (known != m_entries.end() && !isUnfinished(name.path) && m_round % EverySoOften != 0) {
        known->second.seen = true;
        return false;
    }
    System::FileIdentity identity;
    const bool isThere = System::identityOf(Inspection::native(name.path), identity) == 0;
    if (!isThere && !name.wasNamed) {
        return false;
    }
    Entry& entry = m_entries[name.path];
    entry.seen = true;
    if (known != m_entries.end() && entry.identity == identity) {
        return false;
    }
    entry.identity = identity;
    entry.shownName = name.shownName;
    lookAtFinished(name, entry);
    return true;
}

void Catalog::look()
{
    bool changed = false;
    for (auto& [path, entry] : m_entries) {
        entry.seen = false;
    }
    for (const WatchedName& name : m_paths.list()) {
        changed = lookAtName(name) || changed;
    }
    changed = std::erase_if(m_entries, [](const auto& entry) { return !entry.second.seen; }) > 0 || changed;
    ++m_round;
    if (changed) {
        publish();
    }
}

void Catalog::publish()
{
    std::vector<FilePointer> files;
    auto listing = std::make_shared<Listing>();
    for (const auto& [path, entry] : m_entries) {
        if (entry.file != nullptr) {
            files.push_back(entry.file);
        }
        if (!entry.problem.empty()) {
            listing->problems.push_back({validUtf8(entry.shownName), entry.problem});
        }
    }
    listing->timelines = makeTimelines(std::move(files));
    {
        const std::lock_guard lock(m_mutex);
        m_listing = std::move(listing);
    }
    if (m_changed) {
        m_changed();
    }
}

void Catalog::run(const std::stop_token& stop)
{
    constexpr std::chrono::milliseconds Period{200};
    std::unique_lock lock(m_sleep);
    while (!stop.stop_requested()) {
        look();
        m_wake.wait_for(lock, stop, Period, [] { return false; });
    }
}

void Catalog::start()
{
    m_thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

}  // namespace RecView
