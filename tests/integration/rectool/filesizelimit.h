// A disk that is full: no file of the process can grow past a size.
#pragma once

#include <cstddef>

#if defined(__linux__)
#include <sys/resource.h>
#endif

namespace RecToolTests {

/// Holds while the object lives. Whoever writes must ignore the signal that comes with it.
class FileSizeLimit {
public:
    explicit FileSizeLimit([[maybe_unused]] std::size_t bytes)
    {
#if defined(__linux__)
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        m_works = setrlimit(RLIMIT_FSIZE, &limit) == 0;
#endif
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit()
    {
#if defined(__linux__)
        setrlimit(RLIMIT_FSIZE, &m_before);
#endif
    }
    [[nodiscard]] bool works() const
    {
        return m_works;
    }

private:
    bool m_works = false;
#if defined(__linux__)
    rlimit m_before{};
#endif
};

}  // namespace RecToolTests
