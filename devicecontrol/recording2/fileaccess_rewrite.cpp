// What all rewriting of a finished file shares.
#include <exception>
#include <functional>
#include <stdexcept>
#include <utility>

#include <vkbase/trace.h>

#include "fileaccess.h"
#include "fileaccess_p.h"
#include "filenames.h"
#include "format/layout.h"

namespace Recording2 {

namespace {

// Who changes the file by what was read of it must not go by less than it holds.
void failIfNotRead(SharedFile& shared)
{
    if (shared.together && (!shared.input->file.good() || shared.input->file.readFailed())) {
        shared.output->fail(System::CannotRead);
    }
}

}  // namespace

void seekToTable(OutputFile& output, std::int64_t position, std::int64_t end)
{
    constexpr std::int64_t Nowhere = -1;
    output.seek(position <= end ? position : Nowhere);
}

// Of changes made together one that cannot be made is the failure of all.
bool CFileAccess::CanRewrite()
{
    SharedFile& shared = *d->shared;
    const bool can = d->goodInput() != nullptr && !shared.tablesCut;
    if (!can && shared.together) {
        shared.output->fail(System::CannotRead);
    }
    return can;
}

// Once it is this object's turn, reading shows the file as it is, with what was changed so far.
OutputFile* CFileAccess::OpenForUpdate()
{
    SharedFile& shared = *d->shared;
    if (!shared.together) {
        shared.input.reset();
        shared.output = std::make_unique<OutputFile>(FileNames::native(d->path), OpenMode::Update);
        ReadAnew();
    }
    return d->goodOutput();
}

// Stores what was changed, or leaves that to whoever changes more.
bool CFileAccess::ReopenForReading()
{
    SharedFile& shared = *d->shared;
    bool stored = d->goodOutput() != nullptr;
    if (!shared.together) {
        stored = stored && shared.output->close();
        shared.output.reset();
    }
    ReadAnew();
    return stored;
}

void CFileAccess::ReadAnew()
{
    SharedFile& shared = *d->shared;
    d->rangeWalk.startAnew();
    failIfNotRead(shared);
    shared.input = std::make_unique<OpenInput>(FileNames::native(d->path));
    failIfNotRead(shared);
    if (d->goodOutput() != nullptr) {
        shared.output->flush();
        shared.input->file.show(shared.output->changed());
    }
}

// The header area is written whole with the record in it.
void CFileAccess::RewriteHeaderArea(const CHeaderData& header)
{
    OutputFile* output = d->goodOutput();
    if (output == nullptr) {
        return;
    }
    output->seek(0);
    output->append(Format::headerArea(toRecord(header, d->positions)));
}

// Not a recording is left alone, and one that is being written is not waited for.
void CFileAccess::RequireHeader(CHeaderData& header)
{
    d->shared->input->cursor.invalidate();
    if (d->readHeader(header) != Format::HeaderStatus::Ok) {
        throw std::runtime_error("no readable header");
    }
}

bool CFileAccess::RewriteFinishedFile(const char* failure, const std::function<void(OutputFile&)>& rewrite)
{
    if (!CanRewrite()) {
        return false;
    }
    const Format::Positions positions = d->positions;
    bool stored = false;
    try {
        CHeaderData header;
        RequireHeader(header);
        if (OutputFile* output = OpenForUpdate()) {
            RequireHeader(header);  // another process may have stored a table meanwhile
            rewrite(*output);
            RewriteHeaderArea(header);
        }
        stored = ReopenForReading();
    } catch (const std::exception&) {
        DiscardChange();
    }
    if (!stored) {
        d->positions = positions;
        if (FileAccessTrace::enabled()) {
            _Q_TraceOld(failure, FileNames::fromBytes(d->path).toUtf8().constData());
        }
    }
    return stored;
}

void CFileAccess::DiscardChange()
{
    SharedFile& shared = *d->shared;
    if (shared.output == nullptr) {
        return;
    }
    if (shared.together) {
        shared.output->fail(System::InvalidPosition);
    } else {
        shared.output.reset();
    }
    ReadAnew();
}

bool CFileAccess::rewriteTogether(const std::function<void()>& change, const std::function<void()>& readBack)
{
    SharedFile& shared = *d->shared;
    if (d->goodInput() == nullptr || shared.together) {
        return false;
    }
    CHeaderData header;
    shared.input->cursor.invalidate();
    if (d->readHeader(header) != Format::HeaderStatus::Ok) {  // one that is being written is not waited for
        return false;
    }
    bool stored = false;
    std::exception_ptr thrown;
    try {
        if (OpenForUpdate() != nullptr) {
            shared.together = true;
            ReadTablesAnew();
            if (CanRewrite()) {
                change();
                failIfNotRead(shared);
                stored = shared.output->store();
            }
            if (stored && readBack) {
                readBack();
            }
        }
    } catch (...) {
        thrown = std::current_exception();
    }
    shared.together = false;
    shared.output.reset();
    ReadAnew();
    ReadTablesAnew();
    if (thrown != nullptr) {
        std::rethrow_exception(thrown);
    }
    return stored;
}

// What the object holds is then what the file holds.
void CFileAccess::ReadTablesAnew()
{
    SharedFile& shared = *d->shared;
    shared.index = std::make_unique<Index::TimeIndex>();
    shared.channelRanges->clear();
    shared.bookmarks->clear();
    d->bookmarksChanged = false;
    readTables();
}

}  // namespace Recording2
