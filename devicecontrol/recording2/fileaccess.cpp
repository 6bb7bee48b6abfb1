// Opening, closing and the small queries; writing, reading and the archive have files of their own.
#include "fileaccess.h"

#include <exception>

#include <QStringList>

#include <vkbase/trace.h>

#include "fileaccess_p.h"
#include "filenames.h"
#include "recording.h"

namespace Recording2 {

namespace {

const QString NoGroup = QStringLiteral("ERROR");

// Traces the exception being handled.
void traceException(const char* format)
{
    if (!FileAccessTrace::enabled()) {
        return;
    }
    try {
        throw;
    } catch (const std::exception& exception) {
        _Q_TraceOld(format, exception.what());
    } catch (...) {  // observers of the values that are set may throw anything
        _Q_TraceOld(format, "unknown exception");
    }
}

}  // namespace

bool FileAccessTrace::enabled()
{
    return (ErrorHandler::Instance().TraceMask() & ErrorHandler::RecordingTraces) != 0;
}

void FileAccessTrace::failure(const QString& what, const std::string& path, System::Error error, std::uint16_t line)
{
    if (enabled()) {
        _Q_Trace(QStringLiteral("CFileAccess: %1: %2: %3")
                     .arg(what, FileNames::fromBytes(path), QString::fromStdString(System::errorText(error))),
                 Source, line);
    }
}

std::string finalName(const std::string& directory, const std::string& path)
{
    return directory + "/" + FileNames::baseName(path) + ".rec";
}

CFileAccess* CFileAccess::m_pInstance = nullptr;
QString CFileAccess::m_sGuid = QStringLiteral("Initial GUID String");

OutputFile* CFileAccess::Private::goodOutput() const
{
    OutputFile* output = shared->output.get();
    return output != nullptr && output->good() ? output : nullptr;
}

OpenInput* CFileAccess::Private::goodInput() const
{
    OpenInput* input = shared->input.get();
    return input != nullptr && input->good() ? input : nullptr;
}

CFileAccess::CFileAccess(const char* path, const QString& prefix, const char* name, bool write, bool readTables,
                         bool sameGroup, CRecording* recorder, Zelvo::ZelvoClient* client)
    : d(std::make_unique<Private>())
{
    d->path = path;
    if (name != nullptr) {
        d->path += name;
    }
    d->client = client;
    if (!d->requestFromArchive(write)) {
        return;
    }
    d->recorder = recorder;
    d->shared->uncFilePath.Attach(prefix + QStringLiteral("/REC_UNCFILEPATH"));
    d->shared->archiveFilePath.Attach(prefix + QStringLiteral("/REC_ZELVOFILEPATH"));
    d->valid = OpenRecording(d->path, write, readTables, sameGroup);
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
    if (d->bookmarksChanged) {
        writeBookmarks();
    }
}

CFileAccess* CFileAccess::instance(const char* path, const QString& prefix, const char* name, bool write,
                                   bool readTables)
{
    if (m_pInstance == nullptr) {
        m_pInstance = new CFileAccess(path, prefix, name, write, readTables, false, nullptr, nullptr);
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
        opened = write ? OpenForWriting(sameGroup) : OpenForReading(readTables);
    } catch (...) {
        traceException("Unexpected exception in CFileAccess::OpenRecording: %s");
        return false;
    }
    if (!opened && FileAccessTrace::enabled()) {
        _Q_Trace(QStringLiteral("CFileAccess: Could not open recording file, probably old format!"),
                 FileAccessTrace::Source, __LINE__);
    }
    return opened;
}

bool CFileAccess::OpenForWriting(bool sameGroup)
{
    m_sGuid = getNewGroupGuid(sameGroup);
    CreateOutput();
    SharedFile& shared = *d->shared;
    shared.index = std::make_unique<Index::TimeIndex>();
    shared.channelRanges = std::make_unique<ChannelRanges>();
    shared.bookmarks = std::make_unique<Bookmarks>();
    if (!shared.output->good()) {
        return false;
    }
    shared.output->append(Format::headerArea());
    shared.output->flush();  // from the first moment the file shows what it is
    shared.acceptedEnd = shared.output->position();
    d->fileGroupResult = m_sGuid == NoGroup ? -1 : addFileToFileGroup(FileNames::fromBytes(d->path), m_sGuid);
    return true;
}

void CFileAccess::ShowFinalName() const
{
    if (m_sGuid == NoGroup && d->shared->uncFilePath) {
        const std::string name = finalName(FileNames::directory(d->path), d->path);
        d->shared->uncFilePath->SetValue(FileNames::fromBytes(name), nullptr);
    }
}

// A recorder's file is made where there is none; whoever names a file directly wants that one.
void CFileAccess::CreateOutput()
{
    if (d->recorder != nullptr) {
        CreateForRecorder();
        return;
    }
    ShowFinalName();
    d->shared->output = std::make_unique<OutputFile>(FileNames::native(d->path), OpenMode::Create);
}

bool CFileAccess::OpenForReading(bool readTables)
{
    constexpr int MostAgain = 10;  // when somebody changes the tables while they are read
    SharedFile& shared = *d->shared;
    shared.input = std::make_unique<OpenInput>(FileNames::native(d->path));
    shared.index = std::make_unique<Index::TimeIndex>();
    shared.channelRanges = std::make_unique<ChannelRanges>();
    shared.bookmarks = std::make_unique<Bookmarks>();
    if (!shared.input->good()) {
        return false;
    }
    CHeaderData header;
    if (read(header) == 0) {
        return false;
    }
    if (readTables) {
        LoadTables();
        for (int again = 0; again < MostAgain && !shared.input->file.isUnchanged(); ++again) {
            ReadAnew();
            ReadTablesAnew();
        }
    }
    return true;
}

void CFileAccess::CloseRecording(CHeaderData& header, bool skipHandOff)
{
    try {
        BeginClosing();
        WriteTimeTable();
        WriteCRDTable();
        SharedFile& shared = *d->shared;
        if (shared.resumed) {
            shared.output->endHere();
        }
        write(header);
        if (shared.output != nullptr) {
            CloseOutput(skipHandOff);
        }
        shared.input.reset();
        shared.index.reset();
    } catch (...) {
        d->valid = false;
        traceException("Unexpected exception in CFileAccess::CloseRecording: %s");
    }
}

// The recorder's file is made readable as far as it goes, whatever writing failed for.
void CFileAccess::BeginClosing()
{
    SharedFile& shared = *d->shared;
    if (shared.output == nullptr || d->recorder == nullptr || !d->valid) {
        return;
    }
    if (shared.journal != nullptr) {
        shared.journal->giveBackReserve();  // should this fail and space be short, writing the tables fails and tells
    }
    if (!shared.output->good()) {
        shared.output->resumeAt(shared.acceptedEnd);
        shared.resumed = true;
    }
}

// The journal goes last: until then the file could be made again from it.
void CFileAccess::CloseOutput(bool skipHandOff)
{
    SharedFile& shared = *d->shared;
    if (shared.forced) {
        shared.output->force();
    }
    shared.output->flush();
    const bool hasFinalName = TakeFinalName();
    const bool whole = shared.output->close();
    if (!whole && d->valid && FileAccessTrace::enabled()) {
        _Q_Trace(QStringLiteral("CFileAccess: recording file could not be written completely: ") +
                     FileNames::fromBytes(d->path),
                 FileAccessTrace::Source, __LINE__);
    }
    shared.output.reset();
    if (whole && shared.journal != nullptr) {
        d->removeJournal();
    }
    if (m_sGuid != NoGroup && !skipHandOff && hasFinalName) {
        moveToNas(m_sGuid, d->fileGroupResult);
    }
}

// Only of a file that was opened: else another one may stand there. It is still locked, so that nobody takes it for one
// that was left behind; what was put in its place meanwhile keeps its name. @return whether it bears the name that the
// archive knows, which another recording may have where names are cut at a dot
bool CFileAccess::TakeFinalName()
{
    if (!d->valid) {
        return false;
    }
    if (!d->shared->output->isAt(FileNames::native(d->path))) {
        if (FileAccessTrace::enabled()) {
            _Q_Trace(QStringLiteral("CFileAccess: the recording file is no longer under its name: ") +
                         FileNames::fromBytes(d->path),
                     FileAccessTrace::Source, __LINE__);
        }
        return false;
    }
    const std::string final = finalName(FileNames::absoluteDirectory(d->path), d->path);
    return FileNames::suffix(d->path) == "tmp" ? FileNames::renameWithoutReplacing(d->path, final)
                                               : FileNames::fileName(d->path) == FileNames::fileName(final);
}

bool CFileAccess::IsValidFile() const
{
    return d->valid;
}

std::int32_t CFileAccess::fileSize() const
{
    const OutputFile* output = d->shared->output.get();
    return output == nullptr ? 0 : static_cast<std::int32_t>(output->position());
}

std::string CFileAccess::path() const
{
    return d->path;
}

Zelvo::ZelvoError CFileAccess::GetZelvoErrorCode() const
{
    return d->zelvoError;
}

}  // namespace Recording2
