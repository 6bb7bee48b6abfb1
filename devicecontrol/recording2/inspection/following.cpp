// Which of three ways a recording is read - journal, bytes alone, finished file - and how its growing ended.
#include "following.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include <system/nativefile.h>
#include "../format/layout.h"
#include "filename.h"
#include "following/growingjournal.h"
#include "following/unjournaled.h"
#include "recordingname.h"
#include "scan.h"
#include "strict/blocktext.h"

namespace Recording2::Inspection {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view OpenEnding = ".tmp";

/// As closing names a recording: up to its first dot.
std::string finalName(const std::string& path)
{
    const std::size_t file = path.size() - utf8(native(path).filename()).size();
    return path.substr(0, path.find('.', file)).append(".rec");
}

/// Whether a recorder or whoever closes for it holds a file. Where the system cannot tell, somebody may.
///
/// The lock that is held for this moment, where nobody has one, keeps no recorder from its file: a recorder waits for
/// the lock of what it makes, and so does recovering.
bool isHeld(const fs::path& name)
{
    System::NativeFile file;
    return file.open(name, System::Access::Read) == 0 && file.lock(System::LockMode::Shared) != 0;
}

/// The header that closing writes, once it is there.
std::optional<Header> finishedHeader(const System::NativeFile& file)
{
    std::string area(std::size_t{Format::HeaderAreaBytes}, '\0');
    const bool whole = file.readAt(0, area.data(), area.size()) == area.size();
    return whole && area.front() != '0' ? parseHeader(area) : std::nullopt;
}

}  // namespace

struct Following::Private {
    Private(std::string recording, const fs::path& real) : path(std::move(recording)), name(real)
    {
        start.startMs = startInName(path).value_or(0);
    }

    bool next(Record& record)
    {
        while (state == State::Growing && !take(record)) {
            // What was accepted until somebody ended it is still to be read.
            if (ended != State::Growing) {
                state = ended;
            } else {
                ended = look();
                if (ended == State::Growing) {
                    return false;
                }
                end();
            }
        }
        number += state == State::Growing ? 1 : 0;
        return state == State::Growing;
    }

    bool take(Record& record)
    {
        if (finished) {
            return finished->next(record);
        }
        if (ended == State::Growing) {
            choose();
        }
        return journal != nullptr ? journal->next(record, ended != State::Growing)
                                  : unjournaled != nullptr && unjournaled->next(record);
    }

    /// A recorder makes its journal before it writes a byte of the recording. What was closed before the first look is
    /// not walked: the finished file tells the times.
    void choose()
    {
        if (journal != nullptr || (unjournaled != nullptr && number > 0)) {
            return;
        }
        const bool begun = file.size() > 0;
        journal = std::make_unique<GrowingJournal>(file);
        if (journal->open(journalName()) != 0 || !journal->refresh()) {
            journal.reset();
            unjournaled = begun && !finishedHeader(file) ? std::make_unique<Unjournaled>(file) : nullptr;
        }
    }
    [[nodiscard]] fs::path journalName() const { return native(journalOf(utf8(name))); }

    /// A recorder writes the header, gives the recording its name, unlocks it and removes the journal, in this order.
    [[nodiscard]] State look() const
    {
        if (finished) {
            return State::Closed;
        }
        if (file.isAt(name) && (isHeld(journalName()) || isHeld(name))) {
            return State::Growing;
        }
        return finishedHeader(file) ? State::Closed : file.isAt(name) ? State::Abandoned : State::Removed;
    }

    void end()
    {
        if (ended != State::Closed || finished) {
            return;
        }
        closed = finishedHeader(file);
        findFinalPath();
        if (journal != nullptr || (number == 0 && finish())) {
            return;
        }
        if (unjournaled == nullptr) {
            unjournaled = std::make_unique<Unjournaled>(file);
        }
        unjournaled->endAt(closed ? closed->positions.timeTable : 0);
    }

    void findFinalPath()
    {
        if (file.isAt(name)) {
            return;
        }
        const std::string expected = finalName(path);
        if (file.isReachedBy(native(expected))) {
            path = expected;
            return;
        }
        path.clear();
        std::error_code error;
        for (fs::directory_iterator entry(name.parent_path(), error); !error && entry != fs::directory_iterator();
             entry.increment(error)) {
            if (file.isAt(entry->path())) {
                path = utf8(entry->path());
            }
        }
    }

    /// Reads the recording by its tables.
    bool finish()
    {
        summary = std::make_unique<Summary>(inspect(path));
        if (summary->readability != Readability::Ok) {
            return false;
        }
        finished.emplace(path, *summary);
        return true;
    }

    std::string path;
    fs::path name;  // without links
    System::NativeFile file;
    std::unique_ptr<GrowingJournal> journal;
    std::unique_ptr<Unjournaled> unjournaled;
    std::unique_ptr<Summary> summary;
    std::optional<RecordReader> finished;
    Header start;  // as far as the name tells
    std::optional<Header> closed;
    State state = State::Growing;
    State ended = State::Growing;  // once all is read
    std::uint64_t number = 0;
};

std::optional<Following> Following::open(const std::string& path, std::string& problem)
{
    std::string found = path;
    Summary head = inspectHead(found);
    if (head.readability == Readability::Missing && path.ends_with(OpenEnding)) {
        found = finalName(path);
        head = inspectHead(found);
    }
    std::error_code error;
    auto parts = std::make_unique<Private>(found, fs::canonical(native(found), error));
    if (head.readability == Readability::Ok && parts->finish()) {
        return Following(std::move(parts));
    }
    const bool isNew = head.readability == Readability::Empty && path.ends_with(OpenEnding);
    if (head.readability != Readability::NeverClosed && !isNew) {
        problem = head.problem;
        return std::nullopt;
    }
    const System::Error refused = parts->file.open(native(found), System::Access::Read);
    if (refused != 0) {
        problem = "The file cannot be opened: " + System::errorText(refused) + ".";
        return std::nullopt;
    }
    parts->choose();
    return Following(std::move(parts));
}

Following::Following(std::unique_ptr<Private> parts) : d(std::move(parts))
{
}
Following::Following(Following&& other) noexcept = default;
Following& Following::operator=(Following&& other) noexcept = default;
Following::~Following() = default;

bool Following::next(Record& record)
{
    return d->next(record);
}

Following::State Following::state() const
{
    return d->state;
}

const Header& Following::header() const
{
    return d->finished             ? d->summary->header
           : d->closed             ? *d->closed
           : d->journal != nullptr ? d->journal->header()
                                   : d->start;
}

const std::vector<TypeEntry>& Following::types() const
{
    static const std::vector<TypeEntry> none;
    return d->finished                 ? d->summary->types
           : d->journal != nullptr     ? d->journal->types()
           : d->unjournaled != nullptr ? d->unjournaled->types()
                                       : none;
}

bool Following::timesKnown() const
{
    return d->finished || d->unjournaled == nullptr;
}

std::uint64_t Following::unreadable() const
{
    return d->journal == nullptr ? 0 : d->journal->unreadable();
}

std::vector<Finding> Following::findings() const
{
    if (d->finished) {
        std::vector<Finding> all = d->summary->findings;
        all.insert(all.end(), d->finished->findings().begin(), d->finished->findings().end());
        return all;
    }
    const std::uint64_t records = unreadable();
    if (records == 0) {
        return {};
    }
    return {{0, std::to_string(records) + (records == 1 ? " record is" : " records are") +
                    " damaged in the file and left out."}};
}

std::uint64_t Following::number() const
{
    return d->journal == nullptr || d->finished ? d->number : d->journal->number();
}

bool Following::startAt(std::uint64_t number)
{
    if (d->finished || d->journal == nullptr) {
        return false;
    }
    d->journal->startAt(number);
    return true;
}

const std::string& Following::finalPath() const
{
    return d->path;
}

}  // namespace Recording2::Inspection
