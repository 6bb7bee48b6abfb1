// A file in memory that has a path: the code under test opens files by name.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Fuzzing {

class ScratchFile {
public:
    ScratchFile() : m_descriptor(memfd_create("fuzz", MFD_CLOEXEC)) { check(m_descriptor >= 0); }
    explicit ScratchFile(const std::string& bytes) : ScratchFile() { fill(bytes); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() { close(m_descriptor); }

    void fill(const std::string& bytes) const
    {
        check(ftruncate(m_descriptor, 0) == 0);
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t part =
                pwrite(m_descriptor, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
            check(part > 0);
            done += static_cast<std::size_t>(part);
        }
    }
    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }
    [[nodiscard]] std::int64_t size() const
    {
        struct stat status = {};
        check(fstat(m_descriptor, &status) == 0);
        return status.st_size;
    }

private:
    static void check(bool fine)
    {
        if (!fine) {
            throw std::system_error(errno, std::generic_category(), "a file in memory");
        }
    }

    int m_descriptor;
};

}  // namespace Fuzzing
