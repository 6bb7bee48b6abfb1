// A new recording while it grows: records as they come, with or without a journal beside them, and its closing.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include <system/nativefile.h>

#include "../format/layout.h"
#include "files.h"
#include "journal.h"
#include "recordingtables.h"

namespace Recording2 {

/// What CFileAccess writes. After a failure nothing more is written, until closing saves what was accepted before it.
class GrowingRecording {
public:
    /// Makes the file; file().good() tells whether it could be made. @param tables must outlive this
    GrowingRecording(const std::filesystem::path& path, OpenMode mode, System::FileMode fileMode,
                     RecordingTables& tables);
    /// Before anything is written. @param fsyncs at least every second
    void keepJournal(std::unique_ptr<Journal> journal, bool fsyncs);

    [[nodiscard]] OutputFile& file() { return m_file; }
    [[nodiscard]] const OutputFile& file() const { return m_file; }

    // In this order; what appends or writes does nothing once that has failed.

    void begin();  ///< the header area: from the first moment the file shows what it is
    void appendTypes(CopyState& own, const std::string& block);
    /// A time that is taken goes to the next free millisecond; without data only the last time goes on.
    void append(CopyState& own, std::int32_t code, std::string_view data, std::uint64_t time, bool channelRange);
    /// Makes readable what was accepted, whatever writing had failed for.
    void resume();
    void writeTables(CopyState& own);
    void writeHeader(const Format::HeaderRecord& header);  ///< its positions included
    void flush();                                          ///< to the system, and with fsyncs to the device
    bool close();                                          ///< whether all reached the system

    // The journal, where there is one.

    /// The header that closing now would write, but for its positions.
    void journalHeader(const Format::Positions& positions, Format::HeaderRecord header);
    /// Its stop time once the next record is written, milliseconds since 1970 UTC.
    void journalStopTime(std::uint64_t milliseconds);
    /// Of a closed file, which has its last name.
    System::Error removeJournal();

private:
    [[nodiscard]] bool fits(std::int64_t bytes) const;
    bool accept();
    void fsyncWhenDue();

    std::filesystem::path m_path;
    RecordingTables& m_tables;
    std::unique_ptr<Journal> m_journal;  // the file uses its memory
    OutputFile m_file;
    std::int64_t m_acceptedEnd = 0;  // of what was appended whole
    bool m_resumed = false;
    bool m_fsyncs = false;
    std::chrono::steady_clock::time_point m_lastFsync;
};

}  // namespace Recording2
