// Reads a recording while it is being written, without a lock and without costing its recorder anything.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inspection.h"

namespace Recording2::Inspection {

/// Gives every record that was accepted, once and in order, as soon as it was: from "NAME.tmp" and its journal while
/// they are written, and to the last one once the recording is closed. What is given was accepted: entry and record are
/// checked by the journal's checksums, and what does not give its checksum yet is looked at again the next time.
///
/// Looking costs what is new, and a few pages where nothing is. Memory: what is looked at together, the longest record,
/// and for a finished recording its time table. One thread at a time; threads may each have their own.
class Following {
public:
    enum class State : std::uint8_t {
        Growing,    ///< a running program writes it: there may be more
        Closed,     ///< its recorder closed it, or it was finished already: see finalPath
        Abandoned,  ///< its recorder ended without closing it: `rectool recover` makes a recording of it
        Removed,    ///< somebody took the file away while it was written
    };

    /// Opens "NAME.tmp" that is being written or was left behind, or a finished recording. "NAME.tmp" that is gone
    /// because it was just closed is its "NAME.rec".
    /// @param path as for inspect()
    /// @param problem one sentence when there is nothing to be read
    static std::optional<Following> open(const std::string& path, std::string& problem);
    Following(Following&& other) noexcept;
    Following& operator=(Following&& other) noexcept;
    ~Following();

    /// @return false when there is none now; state() then tells whether there may be more later. The record then holds
    /// nothing of use
    bool next(Record& record);
    /// Growing until next() gave the last record.
    [[nodiscard]] State state() const;

    /// As the journal or the finished file has it; the stop time is that of the latest record, and the start moves when
    /// the first measurement that has a time of its own is recorded. Without a journal only
    /// the start, by the name, until the recording is closed.
    [[nodiscard]] const Header& header() const;
    /// Empty until the recorder wrote them, which it does before the first record.
    [[nodiscard]] const std::vector<TypeEntry>& types() const;
    /// False where there is no journal: every record has the time 0 then, and is seen only when its bytes are handed to
    /// the system, up to 256 KiB late, from 8 MiB on 1 MiB.
    [[nodiscard]] bool timesKnown() const;
    /// Records that are damaged in the file and were left out while it was written.
    [[nodiscard]] std::uint64_t unreadable() const;
    /// The same in words; of a finished recording all that is wrong with it.
    [[nodiscard]] std::vector<Finding> findings() const;

    /// How many records came before the one that is next.
    [[nodiscard]] std::uint64_t number() const;
    /// Goes on with the record of that number, 0 being the first, which must have been accepted. @return false where
    /// that cannot be: without a journal, and for a finished recording
    bool startAt(std::uint64_t number);

    /// Where the recording lies: once it is closed by its final name, empty when that was taken away meanwhile.
    [[nodiscard]] const std::string& finalPath() const;

private:
    struct Private;
    explicit Following(std::unique_ptr<Private> parts);
    std::unique_ptr<Private> d;
};

}  // namespace Recording2::Inspection
