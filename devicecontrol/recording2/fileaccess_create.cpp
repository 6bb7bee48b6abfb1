// Makes a recorder's file under a name that nobody else has, in a directory that many processes may record into.
#include <memory>
#include <string>

#include "fileaccess.h"
#include "fileaccess_p.h"
#include "filenames.h"
#include "recording.h"

namespace Recording2 {

namespace {

const std::string OpenEnding = ".tmp";

std::string withoutOpenEnding(const std::string& path)
{
    return FileNames::suffix(path) == "tmp" ? path.substr(0, path.size() - OpenEnding.size()) : path;
}

// "NAME.tmp", "NAME_2.tmp", "NAME_3.tmp", ...
std::string numbered(const std::string& path, int number)
{
    const std::string stem = withoutOpenEnding(path);
    return number == 1 ? path : stem + "_" + std::to_string(number) + path.substr(stem.size());
}

// Closing cuts a name at its first dot, and many recordings share what is left: the first to be closed gets it.
bool finishedNameIsTaken(const std::string& path)
{
    const std::string stem = withoutOpenEnding(path);
    return FileNames::fileName(stem).find('.') == std::string::npos && FileNames::exists(stem + ".rec");
}

bool looksTaken(const std::string& path)
{
    return FileNames::exists(path) || finishedNameIsTaken(path) || FileNames::exists(Journal::pathFor(path));
}

}  // namespace

// Others look for a free name at the same moment; who gets one is decided by who makes the file. A name that is free
// again, since its recording was moved or cut at a dot, stays that recording's.
void CFileAccess::CreateForRecorder()
{
    constexpr int MostNames = 10'000;
    RecorderFiles& files = d->recorder->m_files;
    const std::string wanted = d->path;
    int& number = files.number;
    number = wanted == files.lastName ? number + 1 : 1;
    files.lastName = wanted;
    const auto tryNext = [&] {
        d->path = numbered(wanted, number);
        if (number < MostNames && looksTaken(d->path)) {
            return System::NameTaken;
        }
        ShowFinalName();
        return d->makeNew(files);
    };
    System::Error error = tryNext();
    while (error == System::NameTaken && number < MostNames) {
        ++number;
        error = tryNext();
    }
    if (error != 0) {
        FileAccessTrace::failure(QStringLiteral("the recording file cannot be made"), d->path, error, __LINE__);
    }
}

// Once the ".tmp" is there, nobody else can come by the ".rec" of its name; before, somebody may just have closed it.
System::Error CFileAccess::Private::makeNew(RecorderFiles& files)
{
    const std::filesystem::path name = FileNames::native(path);
    shared->output = std::make_unique<OutputFile>(name, OpenMode::New, files.mode);
    if (!shared->output->good()) {
        return shared->output->error();
    }
    System::Error error = finishedNameIsTaken(path) ? System::NameTaken : lockOutput(files.toldWithoutLocks);
    if (error == 0) {
        error = keepJournal(files.journal, files.mode);
    }
    if (error != 0) {
        const bool named = shared->output->isAt(name);
        shared->output->fail(error);
        shared->output->close();
        if (named) {
            System::removeFile(name);
        }
    }
    return error;
}

// The lock tells others that somebody is still writing.
System::Error CFileAccess::Private::lockOutput(bool& toldWithoutLocks)
{
    const System::Error error = shared->output->lock();
    if (error == 0 || error == System::LockHeld) {
        return error;
    }
    if (!toldWithoutLocks) {
        toldWithoutLocks = true;
        FileAccessTrace::failure(QStringLiteral("recording goes on without a lock, the file system has none"), path,
                                 error, __LINE__);
    }
    return 0;
}

}  // namespace Recording2
