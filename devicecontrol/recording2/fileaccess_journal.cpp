// The journal's part in a recording file, and what the recorder asks of both.
#include <chrono>

#include <vkbase/trace.h>

#include "fileaccess.h"
#include "fileaccess_p.h"
#include "filenames.h"
#include "format/layout.h"

namespace Recording2 {

System::Error CFileAccess::Private::keepJournal(JournalMode mode, System::FileMode fileMode)
{
    if (mode == JournalMode::Off) {
        return 0;
    }
    System::Error error = 0;
    shared->journal = Journal::create(FileNames::native(Journal::pathFor(path)), mode, fileMode, error);
    if (error == System::NameTaken || error == System::LockHeld) {
        return error;
    }
    if (shared->journal == nullptr) {
        FileAccessTrace::failure(QStringLiteral("recording goes on without a journal, it cannot be made"),
                                 Journal::pathFor(path), error, __LINE__);
        return 0;
    }
    shared->output->keepTailIn(shared->journal.get());
    shared->forced = mode == JournalMode::Power;
    if (shared->forced) {
        shared->lastForced = std::chrono::steady_clock::now();
        error = System::syncDirectory(FileNames::native(FileNames::directory(path)));
        if (error != 0) {
            FileAccessTrace::failure(QStringLiteral("the directory cannot be forced to the device"), path, error,
                                     __LINE__);
        }
    }
    return 0;
}

void CFileAccess::Private::removeJournal()
{
    System::Error error = shared->forced ? System::syncDirectory(FileNames::native(FileNames::directory(path))) : 0;
    if (error == 0) {
        error = shared->journal->remove();
    }
    if (error != 0) {
        FileAccessTrace::failure(QStringLiteral("the journal of a closed recording cannot be removed"),
                                 Journal::pathFor(path), error, __LINE__);
    }
    shared->journal.reset();
}

void CFileAccess::Private::forceWhenDue()
{
    constexpr std::chrono::seconds Interval(1);
    const auto now = std::chrono::steady_clock::now();
    if (now - shared->lastForced < Interval) {
        return;
    }
    shared->lastForced = now;
    shared->output->force();  // first the data, or the journal would promise what the device does not have
    if (shared->output->good()) {
        shared->output->fail(shared->journal->force());
    }
}

bool CFileAccess::Private::accept()
{
    if (!shared->output->good()) {
        return false;
    }
    shared->acceptedEnd = shared->output->position();
    return true;
}

bool CFileAccess::WriteFailed() const
{
    const OutputFile* output = d->shared->output.get();
    return d->valid && output != nullptr && !output->good();
}

QString CFileAccess::WriteFailure() const
{
    return WriteFailed() ? QString::fromStdString(System::errorText(d->shared->output->error())) : QString();
}

void CFileAccess::JournalHeader(Format::HeaderRecord header)
{
    if (d->shared->journal != nullptr) {
        header.positions = d->positions;
        std::string record;
        Format::appendHeader(record, header);
        d->shared->journal->setHeader(record);
    }
}

void CFileAccess::JournalStopTime(std::uint64_t milliseconds)
{
    if (d->shared->journal != nullptr) {
        d->shared->journal->setStopTime(milliseconds);
    }
}

CFileAccess::Appended CFileAccess::Append(const CVTCmdData& record, std::uint64_t time, bool isChannelRangeDef,
                                          std::uint64_t stopMs)
{
    JournalStopTime(stopMs);
    AppendRecord(record, time, isChannelRangeDef);
    return {fileSize(), WriteFailed()};
}

void CFileAccess::Close(const Format::HeaderRecord& header, bool skipHandOff)
{
    CHeaderData face;
    fromRecord(header, face);
    CloseRecording(face, skipHandOff);
}

}  // namespace Recording2
