// What all rewriting of a finished file shares.
#include <exception>
#include <functional>
#include <stdexcept>

#include <vkbase/trace.h>

#include "fileaccess.h"
#include "fileaccess_p.h"
#include "filenames.h"
#include "format/layout.h"

namespace Recording2 {

void seekToTable(OutputFile& output, std::int64_t position, std::int64_t end)
{
    constexpr std::int64_t Nowhere = -1;
    output.seek(position <= end ? position : Nowhere);
}

OutputFile* CFileAccess::OpenForUpdate()
{
    SharedFile& shared = *d->shared;
    if (shared.output == nullptr) {
        shared.input.reset();
        shared.output = std::make_unique<OutputFile>(FileNames::native(d->path), OpenMode::Update);
    }
    return d->goodOutput();
}

void CFileAccess::ReopenForReading()
{
    d->startRanges();
    d->shared->output.reset();
    d->shared->input = std::make_unique<OpenInput>(FileNames::native(d->path));
}

// The header area is written whole with the record in it: one write, so that no moment leaves the file without a
// header.
void CFileAccess::RewriteHeaderArea(const CHeaderData& header)
{
    OutputFile* output = d->goodOutput();
    if (output == nullptr) {
        return;
    }
    std::string record;
    Format::appendHeader(record, toRecord(header, d->positions));
    std::string area = Format::headerArea();
    area.replace(0, record.size(), record);
    output->seek(0);
    output->append(area);
}

bool CFileAccess::RewriteFinishedFile(const char* failure, const std::function<void(OutputFile&)>& rewrite)
{
    bool stored = false;
    if (d->goodInput() == nullptr) {
        return stored;
    }
    try {
        CHeaderData header;
        // Another object may have stored a table meanwhile.
        d->shared->input->cursor.invalidate();
        if (d->readHeader(header) != Format::HeaderStatus::Ok) {  // not a recording: leave it alone
            throw std::runtime_error("no readable header");
        }
        if (OutputFile* output = OpenForUpdate()) {
            rewrite(*output);
            RewriteHeaderArea(header);
            stored = output->close();
        }
        ReopenForReading();
    } catch (const std::exception&) {
        stored = false;  // the state that was reached stays
    }
    if (!stored && FileAccessTrace::enabled()) {
        _Q_TraceOld(failure, FileNames::fromBytes(d->path).toUtf8().constData());
    }
    return stored;
}

}  // namespace Recording2
