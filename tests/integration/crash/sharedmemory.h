// Memory that a process shares with those it made.
#pragma once

#include <sys/mman.h>

#include <new>

namespace CrashTests {

/// @tparam Numbers what it holds, made by the first process
template <typename Numbers>
class SharedMemory {
public:
    SharedMemory()
        : m_memory(::mmap(nullptr, sizeof(Numbers), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
          m_numbers(new (m_memory) Numbers)
    {
    }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;
    ~SharedMemory() { ::munmap(m_memory, sizeof(Numbers)); }
    Numbers& operator*() const { return *m_numbers; }
    Numbers* operator->() const { return m_numbers; }

private:
    void* m_memory;
    Numbers* m_numbers;
};

}  // namespace CrashTests
