// Comparing what is there with what was there a moment ago, and looking at what is new. Directories are listed only
// when they changed.
#include "catalog.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <system_error>
#include <utility>

#include <recording2/inspection/filename.h>

namespace RecView {

namespace fs = std::filesystem;
using Recording2::Inspection::native;
using Recording2::Inspection::utf8;

namespace {

constexpr std::string_view Finished = ".rec";
constexpr std::string_view Unfinished = ".tmp";

std::vector<std::string> recordingsOf(const fs::path& directory)
{
    std::error_code error;
    std::vector<std::string> files;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() == Finished || entry->path().extension() == Unfinished) {
            files.push_back(utf8(entry->path()));
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool isUnfinished(const std::string& path)
{
    return path.ends_with(Unfinished);
}

/// Whether the two tell the same of a growing file but for how far it has come.
bool holdsTheSame(const FilePointer& a, const FilePointer& b)
{
    return a != nullptr && b != nullptr && a->recorded.size() == b->recorded.size() && a->device == b->device &&
           a->startMs == b->startMs && a->timesKnown == b->timesKnown &&
           (a->growing == nullptr) == (b->growing == nullptr);
}

}  // namespace

void Catalog::addDirectory(const std::string& path, std::vector<WatchedName>& names)
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

std::vector<WatchedName> Catalog::names()
{
    std::vector<WatchedName> found;
    for (const std::string& path : m_paths) {
        std::error_code error;
        if (fs::is_directory(native(path), error)) {
            addDirectory(path, found);
            continue;
        }
        fs::path finished = native(path);
        if (finished.extension() == Unfinished && !fs::exists(finished, error)) {
            finished.replace_extension(Finished);  // it was closed meanwhile
            if (fs::exists(finished, error)) {
                found.push_back({utf8(finished), true});
                continue;
            }
        }
        found.push_back({path, true});
    }
    return found;
}

Catalog::Catalog(std::vector<std::string> paths, Overviews& overviews, Listeners listeners)
    : m_paths(std::move(paths)), m_overviews(overviews), m_listeners(std::move(listeners))
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

void Catalog::openGrowing(const WatchedName& name, Entry& entry)
{
    entry.file.reset();
    entry.problem.clear();
    entry.growing = GrowingFile::open(name.path, m_overviews, entry.problem);
    if (entry.growing != nullptr) {
        followGrowing(entry);
    }
}

Catalog::Change Catalog::followGrowing(Entry& entry)
{
    constexpr std::chrono::milliseconds Longest{200};  // one that has been written for long is not taken in one go
    if (!entry.growing->follow(Longest) && entry.growing->state() == GrowingFile::State::Growing && entry.file) {
        return Change::None;
    }
    m_isBehind = m_isBehind || entry.growing->hasMore();
    if (entry.growing->state() != GrowingFile::State::Growing) {
        close(entry);
        return Change::Other;
    }
    const FilePointer before = std::exchange(entry.file, entry.growing->file());
    return holdsTheSame(before, entry.file) ? Change::Grown : Change::Other;
}

/// Its name is looked at as any other one from now on, if it is still there.
void Catalog::close(Entry& entry)
{
    if (entry.growing->state() == GrowingFile::State::Closed) {
        if (std::shared_ptr<Overview> overview = entry.growing->finish()) {
            m_closedJustNow[entry.growing->finalPath()] = std::move(overview);
        }
    } else if (entry.growing->state() == GrowingFile::State::Abandoned) {
        entry.problem = "Its recorder ended without closing it; `rectool recover` saves what is in it.";
    }
    entry.growing.reset();
    entry.file.reset();
    entry.identity = {};
}

Catalog::Change Catalog::lookAtEntry(const WatchedName& name, Entry& entry, bool isNew)
{
    System::FileIdentity identity;
    const bool isThere = System::identityOf(native(name.path), identity) == 0;
    const bool isSame = !isNew && entry.identity == identity;
    if (isThere && isUnfinished(name.path)) {
        if (isSame && m_round % 10 != 0) {
            return Change::None;  // it was looked at: nobody writes it
        }
        entry.identity = identity;
        const std::string before = entry.problem;
        openGrowing(name, entry);
        return isNew || entry.file != nullptr || entry.problem != before ? Change::Other : Change::None;
    }
    if (isSame) {
        return Change::None;
    }
    entry.identity = identity;
    entry.problem.clear();
    entry.file = lookAtFile(name.path, entry.problem);
    if (entry.file != nullptr) {
        entry.problem = entry.file->damage;
        if (auto closed = m_closedJustNow.extract(name.path)) {
            m_overviews.adopt(entry.file, std::move(closed.mapped()));
        }
    }
    return Change::Other;
}

/// It was closed and named a moment ago, and what was made of it while it grew is not complete yet.
bool Catalog::isStillFollowed(const std::string& path) const
{
    if (!path.ends_with(Finished)) {
        return false;
    }
    const auto entry = m_entries.find(path.substr(0, path.size() - Finished.size()) + ".tmp");
    return entry != m_entries.end() && entry->second.growing != nullptr;
}

/// @return whether it is another one than before
Catalog::Change Catalog::lookAtName(const WatchedName& name)
{
    constexpr unsigned EverySoOften = 10;  // finished files hardly ever change
    const auto known = m_entries.find(name.path);
    const bool isNew = known == m_entries.end();
    if (isNew && isStillFollowed(name.path)) {
        return Change::None;
    }
    if (!isNew && !isUnfinished(name.path) && m_round % EverySoOften != 0 && m_closedJustNow.count(name.path) == 0) {
        known->second.seen = true;
        return Change::None;
    }
    System::NameKind kind = System::NameKind::Missing;
    const bool isThere = System::lookAt(native(name.path), kind) == 0 && kind != System::NameKind::Missing;
    if (!isThere && !name.wasNamed) {
        return Change::None;
    }
    Entry& entry = m_entries[name.path];
    entry.seen = true;
    return entry.growing != nullptr ? Change::None : lookAtEntry(name, entry, isNew);
}

void Catalog::look()
{
    Change change = Change::None;
    m_isBehind = false;
    for (auto& [path, entry] : m_entries) {
        entry.seen = false;
        if (entry.growing != nullptr) {
            change = std::max(change, followGrowing(entry));
            entry.seen = entry.growing != nullptr;
        }
    }
    for (const WatchedName& name : names()) {
        change = std::max(change, lookAtName(name));
    }
    if (std::erase_if(m_entries, [](const auto& entry) { return !entry.second.seen; }) > 0) {
        change = Change::Other;
    }
    m_closedJustNow.clear();
    ++m_round;
    if (change != Change::None) {
        publish(change);
    }
}

void Catalog::publish(Change change)
{
    std::vector<FilePointer> files;
    auto listing = std::make_shared<Listing>();
    for (const auto& [path, entry] : m_entries) {
        if (entry.file != nullptr) {
            files.push_back(entry.file);
        }
        if (!entry.problem.empty()) {
            listing->problems.push_back({validUtf8(path), entry.problem});
        }
    }
    listing->timelines = makeTimelines(std::move(files));
    ListingPointer before = listing;
    {
        const std::lock_guard lock(m_mutex);
        before = std::exchange(m_listing, listing);
    }
    if (change == Change::Other && m_listeners.changed) {
        m_listeners.changed();
    }
    if (m_listeners.grown) {
        tellGrown(*before, *listing);
    }
}

void Catalog::tellGrown(const Listing& before, const Listing& now) const
{
    for (const Timeline& timeline : now.timelines) {
        const Timeline* known = before.find(timeline.id);
        if (timeline.isLive() && (known == nullptr || known->endMs() != timeline.endMs())) {
            m_listeners.grown(timeline.id, timeline.endMs());
        }
    }
}

void Catalog::run(const std::stop_token& stop)
{
    constexpr std::chrono::milliseconds Period{200};
    std::unique_lock lock(m_sleep);
    while (!stop.stop_requested()) {
        look();
        if (!m_isBehind) {
            m_wake.wait_for(lock, stop, Period, [] { return false; });
        }
    }
}

void Catalog::start()
{
    m_thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

}  // namespace RecView
