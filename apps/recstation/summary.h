// The result of a run, for people and for machines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <QString>

#include "options.h"
#include "recordedfiles.h"
#include "sources/source.h"
#include "watch/unfinished.h"

namespace RecStation {

/// What became of the recordings of a run in the archive. It stands before Summary because clang 14 makes no
/// std::optional of a class inside another one whose members have defaults.
struct ArchiveSummary {
    std::size_t moved = 0;         ///< recordings of this run that the storage has
    std::size_t waiting = 0;       ///< that stay where they were recorded, and are moved later
    std::size_t unregistered = 0;  ///< that the archive was not told of
    QString problem;               ///< why some wait, if that is known
};

struct Summary {
    using Archive = ArchiveSummary;
    struct File {
        QString recorder;
        FileReport report;
    };
    /// A recorder that was switched on and could not record.
    struct Refusal {
        QString recorder;
        QString problem;  ///< one sentence; it was told when it happened
    };
    struct SourceResult {
        QString name;
        SourceReport report;
        QString failure = {};  ///< what broke it off while others went on; it was told when it happened
    };

    std::vector<UnfinishedRecording> recovered;  ///< that earlier runs had left; they do not change the exit code
    std::vector<File> files;
    std::vector<Refusal> refusals;
    std::optional<Archive> archive;  ///< nothing: there is none
    std::vector<SourceResult> sources;
    unsigned long long recordedMs = 0;  ///< recorded time that the run covered
    std::uint64_t changes = 0;          ///< changes of device values
    QString failure;                    ///< what broke the run off, or why it recorded nothing; else empty

    /// Of live sources: nothing ever came of any.
    [[nodiscard]] bool areAllSilent() const;
    [[nodiscard]] ExitCode exitCode() const;
    /// One JSON object; its shape is described in doc/recstation.md.
    [[nodiscard]] std::string json() const;
    /// The files, one line each, for the standard output.
    [[nodiscard]] QString fileLines() const;
    /// What went wrong and what the sources counted, one sentence each, for the standard error output.
    /// @param counts tell of every source how many lines it used, not only of those with bad ones
    [[nodiscard]] QStringList remarks(bool counts = false) const;
};

}  // namespace RecStation
