// Files as the operating system gives them, where the standard library has no word for what is needed: writing at a
// position, keeping space free, forcing to the device, locking, mapping. One implementation for each platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

#include "error.h"
#include "names.h"

namespace System {

/// Create replaces an existing file. New makes one, and takes no name that is there in any form: not even a link that
/// leads nowhere. Update and Read take an ordinary file that is there, also through a link; ReadItself and UpdateOrNew
/// through none, and the latter makes one where there is none.
enum class Access : std::uint8_t { Create, New, Update, UpdateOrNew, Read, ReadItself };

/// A file is locked by one, or by any number of those who share it.
enum class LockMode : std::uint8_t { Shared, Exclusive };

/// An open file, shared with other processes for reading and writing. One thread at a time.
class NativeFile {
public:
    NativeFile() = default;
    NativeFile(const NativeFile&) = delete;
    NativeFile& operator=(const NativeFile&) = delete;
    ~NativeFile();  ///< closes

    Error open(const std::filesystem::path& path, Access access, FileMode mode = DefaultFileMode);
    [[nodiscard]] bool isOpen() const { return m_handle != NoHandle; }
    Error close();  ///< The file is closed in any case.

    /// Writes all bytes at a position. @param written how many were before the error
    Error writeAt(std::int64_t position, const char* bytes, std::size_t size, std::size_t& written);
    /// Reads up to size bytes. @param read how many; fewer only at the end, or before an error
    Error readAt(std::int64_t position, char* bytes, std::size_t size, std::size_t& read) const;
    /// The same. @return how many
    [[nodiscard]] std::size_t readAt(std::int64_t position, char* bytes, std::size_t size) const
    {
        std::size_t read = 0;
        readAt(position, bytes, size, read);
        return read;
    }
    /// Lets what is read from now on come from the device, where the system can be asked to.
    void forgetCached() const;
    [[nodiscard]] std::int64_t size() const;
    Error setSize(std::int64_t size);
    /// Takes the space for so many bytes after a position from the device now, so that writing them cannot fail for
    /// want of it. The file grows as far; new bytes are 0.
    Error allocate(std::int64_t position, std::int64_t bytes);
    /// Takes space for so many bytes after a position, as much as there is, where writing into it is faster then and
    /// the file stays in one piece. The file does not grow. Only faster, never an error.
    void allocateAhead(std::int64_t position, std::int64_t bytes);
    /// Gives back what was allocated after the file's end.
    void giveBackAhead();
    /// Makes the device keep what was written, and what is needed to find it.
    Error fsync();
    /// Locks the file until it is closed or the process ends, however it ends; another mode takes the place of the
    /// one before. Keeps nobody from reading or writing who does not ask for the lock. @return LockHeld when somebody
    /// has it; another error where the file system has no locks
    [[nodiscard]] Error lock(LockMode mode = LockMode::Exclusive);
    /// The same for one alone, after everybody else. Where the file system has no locks nobody is waited for.
    void waitForLock();
    Error identity(FileIdentity& identity) const;  ///< NoOrdinaryFile for what is none
    /// Whether a name is that of this very file: not of another that was put there, nor of a link to it.
    [[nodiscard]] bool isAt(const std::filesystem::path& path) const;
    /// Whether a path leads to this file, also through links.
    [[nodiscard]] bool isReachedBy(const std::filesystem::path& path) const;
    [[nodiscard]] FileMode mode() const;
    /// Gives the file to whom the other one belongs, as far as this process may, and lets the same people read it.
    void takeAccessOf(const NativeFile& other);

private:
    friend class Mapping;
    static constexpr std::intptr_t NoHandle = -1;
    std::intptr_t m_handle = NoHandle;
};

/// The beginning of a file as memory that outlives the process: what was stored there is in the file, also after the
/// process was killed. The space must have been allocated.
class Mapping {
public:
    Mapping() = default;
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    ~Mapping() { unmap(); }

    Error map(const NativeFile& file, std::size_t bytes);
    [[nodiscard]] char* data() const { return m_data; }  ///< page aligned; null before map
    Error fsync();                                       ///< makes the device keep it
    void unmap();                                        ///< before the file is removed

private:
    char* m_data = nullptr;
    std::size_t m_bytes = 0;
};

/// Says that all of this memory, which nothing stands in yet, will be used: a system that knows large pages then gives
/// some of them at once. Only faster, never an error.
void expectUse(std::span<std::byte> memory);

}  // namespace System
