// The operators new and delete of the test program, which count.
#include "allocationcount.h"

#include <cstdlib>
#include <new>

namespace {

int g_allocations = 0;

}  // namespace

int AllocationCount()
{
    return g_allocations;
}

void* operator new(std::size_t size)
{
    ++g_allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
