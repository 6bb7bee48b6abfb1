// Looking for a free name, and the lock and the journal of the file that got it.
#include "recorderfiles.h"

#include <filesystem>
#include <utility>

#include "../filenames.h"
#include "../traces.h"

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
std::unique_ptr<GrowingRecording> RecorderFiles::make(std::string& path, RecordingTables& tables,
                                                      const std::function<void()>& onName)
{
    constexpr int MostNames = 10'000;
    const std::string wanted = path;
    number = wanted == lastName ? number + 1 : 1;
    lastName = wanted;
    std::unique_ptr<GrowingRecording> made;
    const auto tryNext = [&] {
        path = numbered(wanted, number);
        if (number < MostNames && looksTaken(path)) {
            return System::NameTaken;
        }
        onName();
        made = std::make_unique<GrowingRecording>(FileNames::native(path), OpenMode::New, mode, tables);
        return tryName(path, *made);
    };
    System::Error error = tryNext();
    while (error == System::NameTaken && number < MostNames) {
        ++number;
        error = tryNext();
    }
    if (error != 0) {
        Traces::tellOfFile(QStringLiteral("the recording file cannot be made"), path, __LINE__, error);
    }
    return made;
}

// Once the ".tmp" is there, nobody else can come by the ".rec" of its name; before, somebody may just have closed it.
System::Error RecorderFiles::tryName(const std::string& path, GrowingRecording& made)
{
    OutputFile& file = made.file();
    if (!file.good()) {
        return file.error();
    }
    System::Error error = finishedNameIsTaken(path) ? System::NameTaken : lock(path, file);
    if (error == 0) {
        error = keepJournal(path, made);
    }
    if (error != 0) {
        const std::filesystem::path name = FileNames::native(path);
        const bool named = file.isAt(name);
        file.fail(error);
        file.close();
        if (named) {
            System::removeFile(name);
        }
    }
    return error;
}

// The lock tells others that somebody is still writing.
System::Error RecorderFiles::lock(const std::string& path, OutputFile& file)
{
    const System::Error error = file.lock();
    if (error == 0 || error == System::LockHeld) {
        return error;
    }
    if (!toldWithoutLocks) {
        toldWithoutLocks = true;
        Traces::tellOfFile(QStringLiteral("recording goes on without a lock, the file system has none"), path, __LINE__,
                           error);
    }
    return 0;
}

System::Error RecorderFiles::keepJournal(const std::string& path, GrowingRecording& made) const
{
    if (journal == JournalMode::Off) {
        return 0;
    }
    System::Error error = 0;
    auto kept = Journal::create(FileNames::native(Journal::pathFor(path)), journal, mode, error);
    if (error == System::NameTaken || error == System::LockHeld) {
        return error;
    }
    if (kept == nullptr) {
        Traces::tellOfFile(QStringLiteral("recording goes on without a journal, it cannot be made"),
                           Journal::pathFor(path), __LINE__, error);
        return 0;
    }
    made.keepJournal(std::move(kept), journal == JournalMode::Power);
    error = journal == JournalMode::Power ? System::fsyncDirectory(FileNames::native(FileNames::directory(path))) : 0;
    if (error != 0) {
        Traces::tellOfFile(QStringLiteral("the directory cannot be forced to the device"), path, __LINE__, error);
    }
    return 0;
}

}  // namespace Recording2
