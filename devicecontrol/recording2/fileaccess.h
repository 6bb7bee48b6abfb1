// CFileAccess: the one reader and writer of recording files.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <QString>

#include <recording2/export.h>
#include <recording2/recordmodel.h>
#include <zelvo/zelvo.h>

namespace Recording2 {

class CRecording;
namespace Format {
struct HeaderRecord;
}

/// A recording file, opened for writing or for reading. The bytes are described in doc/format.md.
///
/// Record times are milliseconds since the start of the recording; 0 means "none" or "end" in every result. Nothing
/// throws: an operation on a file that is not open, or whose stream has failed, returns 0 or false or does nothing.
/// After a failed write nothing more is written. One thread at a time uses an object and its copies.
///
/// Copies have their own positions and flags but share the streams and indexes, which close with the last copy, or for
/// all copies in CloseRecording. The time index takes about 12 bytes of memory a record (three times as much where the
/// table in the file is out of order); definitions and bookmarks are kept besides.
class RECORDING2_EXPORT CFileAccess {
public:
    /// Opens a file. IsValidFile tells whether it could be opened (and, for reading, its header be read);
    /// GetZelvoErrorCode why the archive refused an archive address, whose file is then not opened.
    /// @param path file or, with a name, what stands before it (a directory with its separator); 8-bit, in the
    ///        encoding of file names (Latin-1 on Windows, UTF-8 elsewhere). With a connected client also an archive
    ///        address "zelvo:///GROUP/FILE"
    /// @param prefix path of the values REC_UNCFILEPATH and REC_ZELVOFILEPATH without the last "/"
    /// @param name rest of the path, may be null
    /// @param write true: creates the file, replacing an existing one
    /// @param readTables load the indexes too (reading only)
    /// @param sameGroup the file continues a recording: it joins the archive group of the file before
    /// @param recorder not owned, may be null
    /// @param client archive client, not owned, may be null; must outlive the object and its copies
    CFileAccess(const char* path, const QString& prefix, const char* name, bool write, bool readTables, bool sameGroup,
                CRecording* recorder, Zelvo::ZelvoClient* client);
    CFileAccess(const CFileAccess& other);
    CFileAccess& operator=(const CFileAccess& other);
    virtual ~CFileAccess();

    /// The process-wide object, made by the first call; the arguments of later calls are ignored. One thread only.
    static CFileAccess* instance(const char* path, const QString& prefix, const char* name, bool write,
                                 bool readTables);
    static CFileAccess* instance();  ///< null before the first call and after release
    static void release();

    /// Writes the time table, the channel range table and the header, closes the file for all copies and, where the
    /// path ends in ".tmp", renames it: the name up to its first dot, and ".rec". An existing file is never replaced;
    /// the file then keeps its name.
    /// @param skipHandOff do not hand the file to the archive
    void CloseRecording(CHeaderData& header, bool skipHandOff);

    [[nodiscard]] bool IsValidFile() const;
    [[nodiscard]] std::int32_t fileSize() const;  ///< bytes written so far; 0 when the file is not open for writing
    /// As given to the constructor, also after the file was renamed; where the archive decides, its local path, and a
    /// recorder's file has a number where its name was taken.
    [[nodiscard]] std::string path() const;
    [[nodiscard]] Zelvo::ZelvoError GetZelvoErrorCode() const;  ///< of the request for the file; 0 without one
    [[nodiscard]] QString fullRecordingFilePath() const;        ///< "PATH#zelvo:///GROUP/FILE", for other programs

    // Writing. All return 0 always; positions end at 2,147,483,647, and what would leave no room for the tables before
    // that is refused (traced once).

    /// Appends the type table; readers find only the first one, which must stand before the first record.
    unsigned long long write(CVTTypesData& types);
    /// Appends a record. Times never go backwards: an earlier time is raised to the last one, a time that is taken to
    /// the next free millisecond. A record without data only advances the time.
    /// @param isChannelRangeDef enter the record's time into the channel range table as well
    unsigned long long write(CVTCmdData& record, unsigned long long time, bool isChannelRangeDef);
    /// Writes the header at the start of the file. Only when nothing more is to be appended.
    unsigned long long write(CHeaderData& header);

    // Reading. "The time at" a position is that of the record that begins there, 0 when none does.

    unsigned long long read(CHeaderData& header);  ///< 1, or 0 for a file of the old format (header unchanged)
    unsigned long long read(CVTTypesData& types);  ///< 1, or 0
    void readTables();                             ///< loads the tables and goes to the first record

    /// Reads the record here, without regard to the end of the records. @return the time at the new position
    unsigned long long read(CVTCmdData& record);
    /// The same, but returns the time of the record that was read.
    unsigned long long readAndReturnTimeOfCurrentCmd(CVTCmdData& record);
    /// Goes to the record at the time, else to the first later one, else to the last one (time 0: stays), and reads it.
    /// @return the time of the record that follows; 0 after the last one, and at the end of the records
    unsigned long long read(CVTCmdData& record, unsigned long long time);
    unsigned long long readfirst(CVTCmdData& record);  ///< reads the first record, returns the time of the second
    unsigned long long readnext(CVTCmdData& record);   ///< reads the record here, returns the time of the next

    /// The first record with the code (0: any code) among the first ones only: see doc/format.md. @return its time
    unsigned long long readfirst(CVTCmdData& record, std::int32_t code);
    /// The next record with the code. @return its time; 0 when there is none or it is the very last record
    unsigned long long readnext(CVTCmdData& record, std::int32_t code);
    /// The record before the one at exactly that time. @return its time
    unsigned long long readprev(CVTCmdData& record, unsigned long long time);

    // Bookmarks: at most one a time, 0 is never one. They are stored by writeBookmarks, or when the object is destroyed
    // after a change. A file that was opened without its tables holds none, and storing then replaces those it has.

    void addBookmark(unsigned long long time, std::string text);  ///< a time that has a bookmark keeps its text
    void removeBookmark(unsigned long long time);
    void BookmarkTableToBegin();  ///< lets getNextBookmark begin with the earliest
    /// Delivers the next bookmark. @return whether another follows, so the call that delivers the last returns false;
    /// at the end both arguments are untouched
    bool getNextBookmark(unsigned long long& time, std::string& text);
    [[nodiscard]] bool bookmarksAvailable() const;
    /// Rewrites the bookmark table and the header area of the finished file, all of it or nothing; reading starts anew
    /// at its beginning. Once they are stored the object counts as not changed.
    void writeBookmarks();

    // Channel range definitions: the times of the records that describe the receiver's channels.

    void addChannelRangeDef(unsigned long long time);  ///< 0 is ignored; the file is not touched
    /// Overwrites the table in the file with zeros and forgets the definitions. Only when channelRangeDefAvailable():
    /// without a table it overwrites the file from its start.
    void clearChannelRangeDef();
    [[nodiscard]] bool channelRangeDefAvailable() const;  ///< whether the file has a table
    void CRDTableToBegin();                               ///< lets readNextChannelRangeDef begin with the earliest
    /// Delivers the next definition and its time, looking through the records of its moment for the one with the range.
    /// @return whether another follows, so the call that delivers the last returns false; at the end both arguments are
    /// untouched
    bool readNextChannelRangeDef(CVTCmdData& cmd, unsigned long long& time);
    /// Writes the definitions and the header area into the finished file: in place where it has a table, without regard
    /// to what stands after it (clear first, and add no more than there were).
    void rebuildChannelRangeDef();

    /// Changes the finished file as one: what the three operations that rewrite it do within the change is stored with
    /// its end, all of it or, after a failure or when the process ends, nothing. Waits until no other process changes
    /// the file; the tables are loaded anew before the change and after it.
    /// @param change may read the file too, and sees what it changed so far; what it throws is passed on, and nothing
    /// is
    ///        stored
    /// @param readBack may be empty; called once all is stored, before another process can change the file
    /// @return whether it was stored; an object that is not open for reading a recording only returns false
    bool rewriteTogether(const std::function<void()>& change, const std::function<void()>& readBack);

private:
    friend class CRecording;
    friend class FileAccessTestPeer;
    friend class MappingGenerator;
    struct Private;

    bool OpenRecording(const std::string& path, bool write, bool readTables, bool sameGroup);
    bool OpenForWriting(bool sameGroup);
    bool OpenForReading(bool readTables);
    void CreateOutput();
    void ShowFinalName() const;
    void CloseOutput(bool skipHandOff);
    [[nodiscard]] bool TakeFinalName();

    // For the recorder.
    struct Appended {
        std::int64_t fileBytes = 0;
        bool failed = false;  ///< nothing more is written; not for a file that could not be made
    };
    /// Writes a record as write does. @param stopMs the header's stop time with it, milliseconds since 1970 UTC
    Appended Append(const CVTCmdData& record, std::uint64_t time, bool isChannelRangeDef, std::uint64_t stopMs);
    void AppendRecord(const CVTCmdData& record, std::uint64_t time, bool isChannelRangeDef);
    [[nodiscard]] bool WriteFailed() const;      ///< as Append tells it
    [[nodiscard]] QString WriteFailure() const;  ///< why
    /// The header that closing the file now would be given, for the journal.
    void JournalHeader(Format::HeaderRecord header);
    /// Its stop time once the next record is written, milliseconds since 1970 UTC.
    void JournalStopTime(std::uint64_t milliseconds);
    void Close(const Format::HeaderRecord& header, bool skipHandOff);  ///< CloseRecording

    [[nodiscard]] bool AtEndOfRecords() const;  // or no file is open for reading
    void GoToFirstRecord();

    QString getNewGroupGuid(bool reuse);
    int addFileToFileGroup(const QString& filePath, const QString& guid);
    void moveToNas(const QString& guid, int fileId);

    std::unique_ptr<Private> d;

    static CFileAccess* m_pInstance;
    static QString m_sGuid;
};

}  // namespace Recording2
