// The two ways to what is left of a recording: its journal, or the records alone.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "../../file/recordingwriter.h"
#include "../../format/layout.h"
#include "journalreader.h"
#include "recovery.h"
#include "salvage.h"

namespace Recording2::Inspection {

/// How often progress is told.
constexpr std::int64_t ProgressBytes = std::int64_t{1} << 20U;

/// What goes into the new file, beside the records.
struct Found {
    Format::HeaderRecord header;
    std::string types;  // the block as it stands in the file
    bool stopKnown = false;
    std::uint64_t lengthMs = 0;  // of the recording, 0 when it is not known
};

/// The new file, and what is known of its records' times.
struct Output {
    RecordingWriter file;
    std::vector<std::optional<std::uint64_t>> times;
    std::vector<bool> ranges;  // whether the channel range table names the record

    void add(const Record& record, std::optional<std::uint64_t> time, bool channelRange)
    {
        file.add(record.code, record.data);
        times.push_back(time);
        ranges.push_back(channelRange);
    }
};

/// Shared by both ways: the user's wishes and the report.
struct Task {
    const std::string& recording;
    const RecoveryOptions& options;
    Recovery& report;
    Output& output;

    [[nodiscard]] bool goOn(std::int64_t done, std::int64_t all) const
    {
        if (options.progress) {
            options.progress(done, all);
        }
        return output.file.good() && !(options.interrupted && options.interrupted());
    }
};

/// Records that the journal knows, and those after them that it lost.
/// @return nothing where the journal is of another recording
std::optional<Found> takeFromJournal(const Task& task, JournalContent journal);
/// Records where no journal can be used.
Found takeFromRecords(const Task& task, const Salvage& salvage);

/// When nobody wrote the recording any more, milliseconds since 1970 UTC; 0 when the file does not tell.
[[nodiscard]] std::uint64_t lastWriteMs(const std::string& path);
/// The length of a recording, 0 where its clock times cannot be true.
[[nodiscard]] std::uint64_t lengthFrom(std::uint64_t startMs, std::uint64_t stopMs);
/// "1 record", "2 records"
[[nodiscard]] std::string counted(std::uint64_t number, const std::string& what);

}  // namespace Recording2::Inspection
