// CFileAccess: opening, writing, closing. Reading has a file of its own.
#include "fileaccess.h"

#include <new>

#include <vkbase/trace.h>

#include "file/headerconversion.h"
#include "fileaccess_p.h"
#include "filenames.h"
#include "recording.h"
#include "traces.h"

namespace Recording2 {

namespace {

// Traces the exception being handled.
void traceException(const char* format)
{
    if (Traces::enabled()) {
        _Q_TraceOld(format, Traces::textOfException().c_str());
    }
}

// The name that a file has once it is finished: up to the first dot of its name, then ".rec".
std::string finalName(const std::string& directory, const std::string& path)
{
    return directory + "/" + FileNames::baseName(path) + ".rec";
}

}  // namespace

CFileAccess* CFileAccess::m_pInstance = nullptr;
QString CFileAccess::m_sGuid = QStringLiteral("Initial GUID String");

CFileAccess::CFileAccess(const char* path, const QString& prefix, const char* name, bool write, bool readTables,
                         bool sameGroup, CRecording* recorder, Zelvo::ZelvoClient* client)
    : d(std::make_unique<Private>(client))
{
    d->path = path;
    if (name != nullptr) {
        d->path += name;
    }
    if (!d->shared->archive.request(d->path, write)) {
        return;
    }
    d->recorder = recorder;
    d->shared->uncFilePath.Attach(prefix + QStringLiteral("/REC_UNCFILEPATH"));
    d->shared->archive.showAt(prefix);
    d->own.valid = OpenRecording(d->path, write, readTables, sameGroup);
}

CFileAccess::CFileAccess(const CFileAccess& other) : d(std::make_unique<Private>(*other.d))
{
}

CFileAccess& CFileAccess::operator=(const CFileAccess& other)
{
    if (this != &other) {
        *d = *other.d;
    }
    return *this;
}

CFileAccess::~CFileAccess()
{
    if (d->own.bookmarksChanged) {
        writeBookmarks();
    }
}

CFileAccess* CFileAccess::instance(const char* path, const QString& prefix, const char* name, bool write,
                                   bool readTables)
{
    if (m_pInstance == nullptr) {
        try {
            m_pInstance = new CFileAccess(path, prefix, name, write, readTables, false, nullptr, nullptr);
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    }
    return m_pInstance;
}

CFileAccess* CFileAccess::instance()
{
    return m_pInstance;
}

void CFileAccess::release()
{
    delete m_pInstance;
    m_pInstance = nullptr;
}

bool CFileAccess::OpenRecording(const std::string& path, bool write, bool readTables, bool sameGroup)
{
    bool opened = false;
    try {
        d->path = path;
        d->shared->tables = std::make_unique<RecordingTables>();
        opened = write ? OpenForWriting(sameGroup) : OpenForReading(readTables);
    } catch (...) {
        traceException("Unexpected exception in CFileAccess::OpenRecording: %s");
        return false;
    }
    if (!opened) {
        Traces::tell(Traces::FileAccess,
                     QStringLiteral("CFileAccess: Could not open recording file, probably old format!"), __LINE__);
    }
    return opened;
}

bool CFileAccess::OpenForReading(bool readTables)
{
    SharedFile& shared = *d->shared;
    shared.finished = std::make_unique<FinishedRecording>(FileNames::native(d->path), *shared.tables);
    return shared.finished->begin(d->own, readTables);
}

bool CFileAccess::OpenForWriting(bool sameGroup)
{
    SharedFile& shared = *d->shared;
    m_sGuid = getNewGroupGuid(sameGroup);
    CreateOutput();
    if (!shared.growing->file().good()) {
        return false;
    }
    shared.growing->begin();
    shared.fileGroupResult =
        m_sGuid == ArchiveFile::NoGroup ? -1 : addFileToFileGroup(FileNames::fromBytes(d->path), m_sGuid);
    return true;
}

// A recorder's file is made where there is none; whoever names a file directly wants that one.
void CFileAccess::CreateOutput()
{
    SharedFile& shared = *d->shared;
    if (d->recorder != nullptr) {
        shared.growing = d->recorder->m_files.make(d->path, *shared.tables, [this] { ShowFinalName(); });
        return;
    }
    ShowFinalName();
    shared.growing = std::make_unique<GrowingRecording>(FileNames::native(d->path), OpenMode::Create,
                                                        System::DefaultFileMode, *shared.tables);
}

void CFileAccess::ShowFinalName() const
{
    if (m_sGuid == ArchiveFile::NoGroup && d->shared->uncFilePath) {
        const std::string name = finalName(FileNames::directory(d->path), d->path);
        d->shared->uncFilePath->SetValue(FileNames::fromBytes(name), nullptr);
    }
}

unsigned long long CFileAccess::write(CVTTypesData& types)
{
    if (GrowingRecording* growing = d->shared->growing.get()) {
        growing->appendTypes(d->own, Format::typeTable(types.get_vector()));
        d->tellLeftOut();
    }
    return 0;
}

unsigned long long CFileAccess::write(CVTCmdData& record, unsigned long long time, bool isChannelRangeDef)
{
    AppendRecord(record, time, isChannelRangeDef);
    return 0;
}

void CFileAccess::AppendRecord(const CVTCmdData& record, std::uint64_t time, bool isChannelRangeDef)
{
    if (GrowingRecording* growing = d->shared->growing.get()) {
        growing->append(d->own, record.cmd(), {record.strData(), record.strDataLen()}, time, isChannelRangeDef);
        d->tellLeftOut();
    }
}

unsigned long long CFileAccess::write(CHeaderData& header)
{
    if (GrowingRecording* growing = d->shared->growing.get()) {
        growing->writeHeader(toRecord(header, d->own.positions));
    }
    return 0;
}

// Once: most that follows is left out too.
void CFileAccess::Private::tellLeftOut() const
{
    if (own.leftOut && !shared->toldLeftOut) {
        shared->toldLeftOut = true;
        Traces::tellOfFile(QStringLiteral("recording file is full, what does not fit is left out"), path, __LINE__);
    }
}

CFileAccess::Appended CFileAccess::Append(const CVTCmdData& record, std::uint64_t time, bool isChannelRangeDef,
                                          std::uint64_t stopMs)
{
    JournalStopTime(stopMs);
    AppendRecord(record, time, isChannelRangeDef);
    return {fileSize(), WriteFailed()};
}

bool CFileAccess::WriteFailed() const
{
    const GrowingRecording* growing = d->shared->growing.get();
    return d->own.valid && growing != nullptr && !growing->file().good();
}

QString CFileAccess::WriteFailure() const
{
    return WriteFailed() ? QString::fromStdString(System::errorText(d->shared->growing->file().error())) : QString();
}

void CFileAccess::JournalHeader(Format::HeaderRecord header)
{
    if (GrowingRecording* growing = d->shared->growing.get()) {
        growing->journalHeader(d->own.positions, std::move(header));
    }
}

void CFileAccess::JournalStopTime(std::uint64_t milliseconds)
{
    if (GrowingRecording* growing = d->shared->growing.get()) {
        growing->journalStopTime(milliseconds);
    }
}

void CFileAccess::Close(const Format::HeaderRecord& header, bool skipHandOff)
{
    CHeaderData face;
    fromRecord(header, face);
    CloseRecording(face, skipHandOff);
}

// A recorder's file is made readable as far as it goes, whatever writing failed for.
void CFileAccess::CloseRecording(CHeaderData& header, bool skipHandOff)
{
    try {
        SharedFile& shared = *d->shared;
        if (shared.growing != nullptr) {
            if (d->recorder != nullptr && d->own.valid) {
                shared.growing->resume();
            }
            shared.growing->writeTables(d->own);
            d->tellLeftOut();
            write(header);
            CloseOutput(skipHandOff);
        }
        if (shared.finished != nullptr) {
            shared.finished->close();
        }
        if (shared.tables != nullptr) {
            shared.tables->index.reset();
        }
    } catch (...) {
        d->own.valid = false;
        traceException("Unexpected exception in CFileAccess::CloseRecording: %s");
    }
}

// The journal goes last: until then the file could be made again from it.
void CFileAccess::CloseOutput(bool skipHandOff)
{
    SharedFile& shared = *d->shared;
    shared.growing->flush();
    const bool hasFinalName = TakeFinalName();
    const bool whole = shared.growing->close();
    if (!whole && d->own.valid) {
        Traces::tellOfFile(QStringLiteral("recording file could not be written completely"), d->path, __LINE__);
    }
    const System::Error error = whole ? shared.growing->removeJournal() : 0;
    shared.growing.reset();
    if (error != 0) {
        Traces::tellOfFile(QStringLiteral("the journal of a closed recording cannot be removed"),
                           Journal::pathFor(d->path), __LINE__, error);
    }
    if (m_sGuid != ArchiveFile::NoGroup && !skipHandOff && hasFinalName) {
        moveToNas(m_sGuid, shared.fileGroupResult);
    }
}

// Only of a file that was opened: else another one may stand there. It is still locked, so that nobody takes it for one
// that was left behind; what was put in its place meanwhile keeps its name. @return whether it bears the name that the
// archive knows, which another recording may have where names are cut at a dot
bool CFileAccess::TakeFinalName()
{
    if (!d->own.valid) {
        return false;
    }
    if (!d->shared->growing->file().isReachedBy(FileNames::native(d->path))) {
        Traces::tellOfFile(QStringLiteral("the recording file is no longer under its name"), d->path, __LINE__);
        return false;
    }
    const std::string final = finalName(FileNames::absoluteDirectory(d->path), d->path);
    return FileNames::suffix(d->path) == "tmp" ? FileNames::renameWithoutReplacing(d->path, final)
                                               : FileNames::fileName(d->path) == FileNames::fileName(final);
}

bool CFileAccess::IsValidFile() const
{
    return d->own.valid;
}

std::int32_t CFileAccess::fileSize() const
{
    const GrowingRecording* growing = d->shared->growing.get();
    return growing == nullptr ? 0 : static_cast<std::int32_t>(growing->file().position());
}

std::string CFileAccess::path() const
{
    return d->path;
}

Zelvo::ZelvoError CFileAccess::GetZelvoErrorCode() const
{
    return d->shared->archive.error();
}

QString CFileAccess::fullRecordingFilePath() const
{
    return QStringLiteral("%1#zelvo:///%2/%3")
        .arg(FileNames::fromBytes(d->path), m_sGuid, QString::number(d->shared->fileGroupResult));
}

QString CFileAccess::getNewGroupGuid(bool reuse)
{
    return reuse ? m_sGuid : d->shared->archive.newGroup(d->path);
}

int CFileAccess::addFileToFileGroup(const QString& filePath, const QString& guid)
{
    return d->shared->archive.add(filePath, guid, m_sGuid);
}

void CFileAccess::moveToNas(const QString& guid, int /*fileId*/)
{
    d->shared->archive.move(guid);
}

}  // namespace Recording2
