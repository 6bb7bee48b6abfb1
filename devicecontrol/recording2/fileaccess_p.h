// Private state of CFileAccess.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include <values/tree.h>
#include <zelvo/zelvo.h>

#include "file/bookmarks.h"
#include "file/channelranges.h"
#include "file/files.h"
#include "file/journal.h"
#include "file/recordreader.h"
#include "fileaccess.h"
#include "format/layout.h"
#include "index/timeindex.h"

namespace Recording2 {

namespace FileAccessTrace {
inline const QString Source = QStringLiteral("devicecontrol\\recording2\\fileaccess");
bool enabled();
void failure(const QString& what, const std::string& path, System::Error error, std::uint16_t line);
}  // namespace FileAccessTrace

/// The name that a file has once it is finished: up to the first dot of its name, then ".rec".
std::string finalName(const std::string& directory, const std::string& path);

/// Between the interface's header and the file's. Times are cut to milliseconds.
Format::HeaderRecord toRecord(const CHeaderData& header, const Format::Positions& positions);
void fromRecord(const Format::HeaderRecord& record, CHeaderData& header);

/// Goes to a table that is to be rewritten. A position after the end of the file is a failure: everything between
/// would have to be filled.
void seekToTable(OutputFile& output, std::int64_t position, std::int64_t end);

struct RecorderFiles;

/// The archive's address of the file, if it has one: the archive is told when the file is no longer used.
class ArchiveHold {
public:
    ArchiveHold() = default;
    ArchiveHold(const ArchiveHold&) = delete;
    ArchiveHold& operator=(const ArchiveHold&) = delete;
    ~ArchiveHold();
    void take(Zelvo::ZelvoClient* client, const Zelvo::ZelvoUrl& url)
    {
        m_client = client;
        m_url = url;
    }

private:
    Zelvo::ZelvoClient* m_client = nullptr;
    Zelvo::ZelvoUrl m_url;
};

/// What all copies of a CFileAccess share: it is closed with the last of them, or by CloseRecording for all.
struct SharedFile {
    // In this order: what was written is closed before the archive is told, which is told before reading ends. The
    // output uses the journal's memory.
    std::unique_ptr<Journal> journal;  // of a recorder's file
    std::int64_t acceptedEnd = 0;      // of what was appended whole
    bool resumed = false;              // closing goes on where writing had failed
    bool forced = false;               // to the device, at least every second
    std::chrono::steady_clock::time_point lastForced;
    std::unique_ptr<OpenInput> input;
    ArchiveHold archiveHold;
    std::unique_ptr<OutputFile> output;
    bool together = false;                    // changes of the finished file are collected
    bool tablesCut = false;                   // reading them failed: they are not to be stored
    std::unique_ptr<Index::TimeIndex> index;  // by time, and when reading by position
    std::unique_ptr<ChannelRanges> channelRanges;
    std::unique_ptr<Bookmarks> bookmarks;
    values::ValuePtr<values::Value<QString>> archiveFilePath;
    values::ValuePtr<values::Value<QString>> uncFilePath;
    bool positionsExhausted = false;  // a record was refused; traced once
};

/// Every copy has its own.
struct CFileAccess::Private {
    std::shared_ptr<SharedFile> shared = std::make_shared<SharedFile>();
    Format::Positions positions;
    RangeWalk rangeWalk;
    KeyCursor bookmarkPlace;
    bool valid = false;
    bool bookmarksChanged = false;
    Zelvo::ZelvoError zelvoError = Zelvo::ZelvoError::None;
    std::uint64_t lastTime = 0;
    std::string path;
    Zelvo::ZelvoClient* client = nullptr;
    std::int32_t fileGroupResult = -1;
    CRecording* recorder = nullptr;

    /// Where the path is an archive address, asks for the file and takes over its local path. @return false when the
    /// archive refused it
    bool requestFromArchive(bool write);
    void showArchivePath(const QString& address) const;

    [[nodiscard]] OutputFile* goodOutput() const;  // null when there is none, or it has failed
    [[nodiscard]] OpenInput* goodInput() const;    // null when there is none, or it stands at the end of the file
    template <typename Read>
    void readTable(std::int32_t position, const Read& read);

    /// Makes the recorder's file, locked and with its journal. @return NameTaken when somebody has one of the names
    System::Error makeNew(RecorderFiles& files);
    System::Error lockOutput(bool& toldWithoutLocks);
    System::Error keepJournal(JournalMode mode, System::FileMode fileMode);
    void removeJournal();
    void forceWhenDue();
    /// Whether what was appended since a position is whole; it is then part of the recording.
    bool accept();
    [[nodiscard]] bool fits(std::int64_t bytes);  // whether so many more bytes end within the last position
    void refuse();
    /// Notes the output's position as that of a block written for the first time; false when no header could name it.
    bool begin(std::int32_t& position);
    Format::HeaderStatus readHeader(CHeaderData& header);
    [[nodiscard]] RecordReader reader() const;
};

}  // namespace Recording2
