// A change noted in FILE.undo, made, and taken back where it was not finished.
#include "rewriting.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <system_error>
#include <utility>

#include "../format/layout.h"

namespace Recording2 {

namespace {

using Piece = std::pair<const std::int64_t, std::string>;

// All positions of a recording twice: no change is larger.
constexpr std::int64_t MostUndoBytes = 2 * Format::LastPosition;

std::int64_t endOf(const Piece& piece)
{
    return piece.first + static_cast<std::int64_t>(piece.second.size());
}

std::filesystem::path undoOf(const std::filesystem::path& path)
{
    std::filesystem::path name = path;
    return name += ".undo";
}

std::filesystem::path directoryOf(const std::filesystem::path& path)
{
    return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

System::Error readWhole(const System::NativeFile& file, std::int64_t position, std::string& bytes)
{
    return file.readAt(position, bytes.data(), bytes.size()) == bytes.size() ? 0 : System::CannotRead;
}

System::Error write(System::NativeFile& file, std::int64_t position, const std::string& bytes)
{
    std::size_t written = 0;
    return file.writeAt(position, bytes.data(), bytes.size(), written);
}

/// How long a file is at most while the change is made.
std::int64_t greatestSize(const Format::Undo& undo)
{
    std::int64_t size = undo.sizeBefore;
    for (const Format::ChangedBytes& change : undo.changes) {
        size = std::max(size, change.position + static_cast<std::int64_t>(change.after.size()));
    }
    return size;
}

/// Whether a file is one that this change has begun with: each of its bytes is as before or as it should become, and it
/// is no longer than that makes it. Another file may have taken the name since.
System::Error belongs(const Format::Undo& undo, const System::NativeFile& file, bool& itDoes)
{
    itDoes = file.size() >= undo.sizeBefore && file.size() <= greatestSize(undo);
    for (const Format::ChangedBytes& change : undo.changes) {
        if (!itDoes) {
            return 0;
        }
        std::string now(change.before.size(), '\0');
        if (const System::Error error = readWhole(file, change.position, now)) {
            return error;
        }
        for (std::size_t i = 0; i < now.size(); ++i) {
            itDoes = itDoes && (now[i] == change.before[i] || now[i] == change.after[i]);
        }
    }
    return 0;
}

/// The change of a file that was begun and is not finished. Only an ordinary file is one of ours.
System::Error findUndo(const std::filesystem::path& path, const System::NativeFile& file,
                       std::optional<Format::Undo>& undo)
{
    const std::filesystem::path name = undoOf(path);
    std::error_code ignored;  // then opening it tells
    if (std::filesystem::symlink_status(name, ignored).type() != std::filesystem::file_type::regular) {
        return 0;
    }
    if (std::filesystem::file_size(name, ignored) == 0) {
        return 0;  // nor may everybody read it yet who may read the recording
    }
    System::NativeFile journal;
    if (const System::Error error = journal.open(name, System::Access::Read)) {
        const bool gone = !std::filesystem::exists(std::filesystem::symlink_status(name, ignored));
        return gone ? 0 : error;  // the change was finished meanwhile
    }
    if (journal.size() > MostUndoBytes) {
        return 0;
    }
    std::string bytes(static_cast<std::size_t>(journal.size()), '\0');
    if (const System::Error error = readWhole(journal, 0, bytes)) {
        return error;
    }
    undo = Format::decodeUndo(bytes);
    bool itDoes = true;
    const System::Error error = undo ? belongs(*undo, file, itDoes) : 0;
    if (!itDoes) {
        undo.reset();
    }
    return error;
}

System::Error restore(System::NativeFile& file, const Format::Undo& undo)
{
    for (const Format::ChangedBytes& change : undo.changes) {
        if (const System::Error error = write(file, change.position, change.before)) {
            return error;
        }
    }
    const System::Error error = file.size() > undo.sizeBefore ? file.setSize(undo.sizeBefore) : 0;
    return error != 0 ? error : file.fsync();
}

}  // namespace

void Overlay::put(std::int64_t position, std::span<const char> bytes)
{
    auto piece = m_pieces.upper_bound(position);
    if (piece == m_pieces.begin() || endOf(*std::prev(piece)) < position) {
        piece = m_pieces.emplace_hint(piece, position, std::string());
    } else {
        --piece;
    }
    std::string& all = piece->second;
    all.replace(static_cast<std::size_t>(position - piece->first), bytes.size(), bytes.data(), bytes.size());
    for (auto next = std::next(piece); next != m_pieces.end() && next->first <= endOf(*piece);
         next = m_pieces.erase(next)) {
        const auto covered = static_cast<std::size_t>(endOf(*piece) - next->first);
        if (covered < next->second.size()) {
            all.append(next->second, covered);
        }
    }
    m_size = std::max(m_size, endOf(*piece));
}

std::size_t Overlay::readAt(const System::NativeFile& file, std::int64_t offset, char* out, std::size_t size) const
{
    if (offset >= m_size) {
        return 0;
    }
    const std::int64_t end = offset + std::min(static_cast<std::int64_t>(size), m_size - offset);
    std::int64_t known =
        offset + static_cast<std::int64_t>(file.readAt(offset, out, static_cast<std::size_t>(end - offset)));
    for (const Piece& piece : m_pieces) {
        const std::int64_t from = std::max(offset, piece.first);
        const std::int64_t to = std::min(end, endOf(piece));
        if (from < to) {
            std::memcpy(out + (from - offset), piece.second.data() + (from - piece.first),
                        static_cast<std::size_t>(to - from));
            known = from <= known ? std::max(known, to) : known;
        }
    }
    return static_cast<std::size_t>(known - offset);
}

System::Error findEarlierState(const std::filesystem::path& path, const System::NativeFile& file,
                               std::shared_ptr<const Overlay>& earlier)
{
    std::optional<Format::Undo> undo;
    const System::Error error = findUndo(path, file, undo);
    if (error == 0 && undo) {
        const auto overlay = std::make_shared<Overlay>(undo->sizeBefore);
        for (const Format::ChangedBytes& change : undo->changes) {
            if (!change.before.empty()) {
                overlay->put(change.position, change.before);
            }
        }
        earlier = overlay;
    }
    return error;
}

System::Error Rewriting::begin(const std::filesystem::path& path)
{
    m_path = path;
    System::Error error = openAlone();
    if (error == 0) {
        error = putBack();
    }
    m_state = std::make_shared<Overlay>(m_file.isOpen() ? m_file.size() : 0);
    return error;
}

// While this one waited, the file may have been moved away, or another may have taken its name.
System::Error Rewriting::openAlone()
{
    constexpr int MostTries = 10;  // of a file system that does not tell one file from another
    System::Error error = 0;
    bool isOurs = false;
    for (int tries = 0; error == 0 && !isOurs && tries < MostTries; ++tries) {
        error = m_file.open(m_path, System::Access::Update);
        if (error == 0) {
            m_file.waitForLock();
            isOurs = m_file.isReachedBy(m_path);
        }
    }
    return error;
}

// A journal that is not whole, or belongs to another file, tells nothing: the recording is as it should be.
System::Error Rewriting::putBack()
{
    std::optional<Format::Undo> undo;
    System::Error error = findUndo(m_path, m_file, undo);
    if (error == 0 && undo) {
        error = restore(m_file, *undo);
    }
    std::error_code ignored;  // then making it anew tells
    const std::filesystem::path name = undoOf(m_path);
    if (error == 0 && std::filesystem::symlink_status(name, ignored).type() == std::filesystem::file_type::regular) {
        error = System::removeFile(name);
    }
    return error;
}

System::Error Rewriting::store()
{
    if (m_state->pieces().empty()) {
        return 0;
    }
    Format::Undo undo;
    System::Error error = collect(undo);
    if (error == 0) {
        error = writeUndo(undo);
    }
    if (error != 0) {
        return error;
    }
    error = apply();
    if (error == 0) {
        error = System::removeFile(undoOf(m_path));
    }
    if (error == 0) {
        // The change is made. Should forcing this fail, a power failure may undo it, all of it.
        static_cast<void>(System::fsyncDirectory(directoryOf(m_path)));
    } else if (restore(m_file, undo) == 0) {                    // otherwise what was before is read from the journal
        static_cast<void>(System::removeFile(undoOf(m_path)));  // which says the same as the file, should it stay
    }
    m_state = std::make_shared<Overlay>(m_file.size());
    return error;
}

System::Error Rewriting::collect(Format::Undo& undo) const
{
    undo.sizeBefore = m_file.size();
    for (const Piece& piece : m_state->pieces()) {
        const std::int64_t before = std::min(endOf(piece), undo.sizeBefore) - std::min(piece.first, undo.sizeBefore);
        Format::ChangedBytes change{piece.first, std::string(static_cast<std::size_t>(before), '\0'), piece.second};
        if (const System::Error error = readWhole(m_file, change.position, change.before)) {
            return error;
        }
        undo.changes.push_back(std::move(change));
    }
    return 0;
}

// The journal is on the device before the recording is touched. Whoever may read the one may read the other.
System::Error Rewriting::writeUndo(const Format::Undo& undo) const
{
    const std::filesystem::path name = undoOf(m_path);
    System::NativeFile journal;
    System::Error error = journal.open(name, System::Access::New);
    if (error != 0) {
        return error;
    }
    journal.takeAccessOf(m_file);
    error = write(journal, 0, Format::encodeUndo(undo));
    if (error == 0) {
        error = journal.fsync();
    }
    const System::Error closing = journal.close();
    error = error != 0 ? error : closing;
    if (error == 0) {
        error = System::fsyncDirectory(directoryOf(m_path));
    }
    if (error != 0) {
        static_cast<void>(System::removeFile(name));  // should it stay, it says the same as the file
    }
    return error;
}

System::Error Rewriting::apply()
{
    for (const Piece& piece : m_state->pieces()) {
        if (const System::Error error = write(m_file, piece.first, piece.second)) {
            return error;
        }
    }
    return m_file.fsync();
}

}  // namespace Recording2
