// Private state of CFileAccess: the parts that its copies share, and what each has of its own.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <QString>

#include <values/tree.h>
#include <values/value.h>

#include "archivefile.h"
#include "file/finishedrecording.h"
#include "file/growingrecording.h"
#include "file/recordingtables.h"
#include "fileaccess.h"

namespace Recording2 {

/// Closed with the last copy of a CFileAccess, or by CloseRecording for all.
struct SharedFile {
    explicit SharedFile(Zelvo::ZelvoClient* client) : archive(client) {}

    values::ValuePtr<values::Value<QString>> uncFilePath;
    // In this order: what was written is closed before the archive is told, which is told before reading ends.
    std::unique_ptr<RecordingTables> tables;  // null until a file was to be opened
    std::unique_ptr<FinishedRecording> finished;
    ArchiveFile archive;
    std::int32_t fileGroupResult = -1;
    std::unique_ptr<GrowingRecording> growing;
    bool toldLeftOut = false;
};

struct CFileAccess::Private {
    explicit Private(Zelvo::ZelvoClient* client) : shared(std::make_shared<SharedFile>(client)) {}

    std::shared_ptr<SharedFile> shared;
    CopyState own;
    std::string path;
    CRecording* recorder = nullptr;

    [[nodiscard]] OpenInput* goodInput() const  // null when none is read, or it stands at the end of the file
    {
        return shared->finished == nullptr ? nullptr : shared->finished->goodInput();
    }
    /// The walk through the records from where the file stands. Of a file that is written it knows the times only.
    [[nodiscard]] RecordReader reader() const
    {
        return {shared->finished == nullptr ? nullptr : shared->finished->input(),
                shared->tables == nullptr ? nullptr : shared->tables->index.get(), own.positions};
    }
    void tellLeftOut() const;
    void tellIfFailed(ChangeResult result, const char* failure) const;
};

}  // namespace Recording2
