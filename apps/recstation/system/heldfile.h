// A file that somebody else writes, held open: known again, and readable, when its name is gone.
#pragma once

#include <cstdint>
#include <memory>

#include <QString>

namespace RecStation {

/// Windows holds nothing: there nobody can remove, move or cut a file that is being written.
class HeldFile {
public:
    explicit HeldFile(const QString& path);
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;
    ~HeldFile();

    [[nodiscard]] bool isHeld() const;
    [[nodiscard]] bool isAt(const QString& path) const;  ///< whether the path names this file
    [[nodiscard]] bool isDeleted() const;                ///< no path names it any more
    /// Where it was moved to; empty when it was deleted or the system does not tell.
    [[nodiscard]] QString pathNow() const;
    /// A path that reads it whatever became of its name, as long as this lives.
    [[nodiscard]] QString readablePath() const;
    /// Whether it lost bytes since it was made: for a file that only grows, and holds no run of 0.
    [[nodiscard]] bool isCut();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// The memory of a journal that the recorder of this process maps. When somebody cuts the journal, the memory after
/// its new end is gone, and touching it would end the process: it is replaced by empty memory. Linux.
class JournalGuard {
public:
    /// Looks for the mapping among those of the process.
    explicit JournalGuard(const QString& journal);
    JournalGuard(const JournalGuard&) = delete;
    JournalGuard& operator=(const JournalGuard&) = delete;
    ~JournalGuard();  ///< before the mapping may be one of another file

    /// Whether memory was lost; what is missing is replaced by then.
    [[nodiscard]] bool isCut();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace RecStation
