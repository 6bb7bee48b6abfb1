// Taking and giving up a lock whose file comes and goes with it.
#include "lockfile.h"

#include <chrono>
#include <thread>

namespace System {

namespace {

constexpr int Patience = 5;
constexpr int MuchPatience = 20;  // whoever looks may be kept from going on by what else the machine does
constexpr std::chrono::milliseconds Moment(1);

}  // namespace

Error lockPatiently(NativeFile& file)
{
    Error error = file.lock();
    for (int refusals = 1; error == LockHeld && refusals < MuchPatience; ++refusals) {
        std::this_thread::sleep_for(Moment);
        error = file.lock();
    }
    return error;
}

LockFile::~LockFile()
{
    if (m_file.isOpen() && m_file.lock() == 0 && m_file.isAt(m_path)) {
        removeFile(m_path);
    }
}

Error LockFile::tryLock(const std::filesystem::path& path, LockMode mode, FileMode fileMode)
{
    // Who gives a lock up holds it alone for a moment.
    m_path = path;
    for (int refusals = 0;;) {
        Error error = m_file.open(path, Access::UpdateOrNew, fileMode);
        if (error == 0) {
            error = m_file.lock(mode);
        }
        // Whoever held the lock last removed the file, and another may lie there now.
        if (error == 0 && m_file.isAt(path)) {
            return 0;
        }
        m_file.close();
        if (error == 0) {
            continue;
        }
        if (error != LockHeld && error != BeingRemoved) {
            return error;
        }
        if (++refusals == Patience) {
            return LockHeld;
        }
        std::this_thread::sleep_for(Moment);
    }
}

Error LockFile::keepAlone()
{
    const Error error = lockPatiently(m_file);
    return error == 0 && !m_file.isAt(m_path) ? LockHeld : error;
}

Error LockFile::look(const std::filesystem::path& path, bool& held)
{
    NativeFile file;
    const Error error = file.open(path, Access::Update);
    held = error == 0 && file.lock() == LockHeld;
    return kindOf(error) == ErrorKind::Missing ? 0 : error;
}

}  // namespace System
