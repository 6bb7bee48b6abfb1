// A finished recording: read, and its tables and header changed in place, all of a change or nothing.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

#include "../recordmodel.h"
#include "files.h"
#include "recordingtables.h"
#include "recordreader.h"

namespace Recording2 {

/// What a change of the file came to.
enum class ChangeResult : std::uint8_t {
    None,  ///< there is no file that is read, or not all of it could be
    Failed,
    Stored,
};

/// What CFileAccess reads. All its copies share it; each brings its own state.
class FinishedRecording {
public:
    /// Opens the file. @param tables must outlive this
    FinishedRecording(std::filesystem::path path, RecordingTables& tables);

    /// Null while none is open.
    [[nodiscard]] OpenInput* input() const { return m_input.get(); }
    /// Null as well when it stands at the end of the file.
    [[nodiscard]] OpenInput* goodInput() const { return m_input != nullptr && m_input->good() ? input() : nullptr; }
    void close() { m_input.reset(); }

    /// Reads header and, if wanted, tables as they belong together. @return whether there is a header
    bool begin(CopyState& own, bool readTables);
    /// @return false for a file of the old format and one that cannot be read; an exception makes the copy invalid
    bool readHeader(CopyState& own, CHeaderData& header);
    /// Loads the tables as they are now, and goes to the first record.
    void readTables(CopyState& own);

    /// Rewrite the table from memory. Once bookmarks are stored the copy counts as not changed.
    [[nodiscard]] ChangeResult storeBookmarks(CopyState& own);
    [[nodiscard]] ChangeResult storeChannelRanges(CopyState& own);
    /// Overwrites the table in the file with zeros, and empties that in memory. Without a table its position is 0 and
    /// the file is overwritten from its start: callers know that there is one.
    void clearChannelRanges(CopyState& own);
    /// All changes that are made within one call, stored with its end. See CFileAccess::rewriteTogether.
    bool changeTogether(CopyState& own, const std::function<void()>& change, const std::function<void()>& readBack);

private:
    Format::HeaderStatus tryHeader(CopyState& own, CHeaderData& header);
    void requireHeader(CopyState& own, CHeaderData& header);
    void loadTables(CopyState& own);
    void readTablesAnew(CopyState& own);

    [[nodiscard]] OutputFile* goodOutput() const
    {
        return m_output != nullptr && m_output->good() ? m_output.get() : nullptr;
    }
    [[nodiscard]] bool canChange();
    OutputFile* openForUpdate(CopyState& own);
    bool reopenForReading(CopyState& own);
    void readAnew(CopyState& own);
    void failIfNotRead();
    void discardChange(CopyState& own);
    ChangeResult rewrite(CopyState& own, const std::function<void(OutputFile&)>& write);
    void writeBookmarks(CopyState& own, OutputFile& output);
    void writeChannelRanges(CopyState& own, OutputFile& output);

    std::filesystem::path m_path;
    RecordingTables& m_tables;
    std::unique_ptr<OpenInput> m_input;
    std::unique_ptr<OutputFile> m_output;  // while a change is made
    bool m_together = false;               // changes are collected
    bool m_tablesCut = false;              // reading them failed: they are not to be stored
};

}  // namespace Recording2
