// The operators new and delete of a test program, which count.
#include "vkbase/contract/allocationcount.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t count = 0;
std::size_t failing = 0;

void* allocate(std::size_t size)
{
    if (++count == failing) {
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

}  // namespace

namespace TestSupport {

std::size_t allocations()
{
    return count;
}

void failAllocation(std::size_t number)
{
    failing = number;
}

}  // namespace TestSupport

void* operator new(std::size_t size)
{
    return allocate(size);
}

void* operator new[](std::size_t size)
{
    return allocate(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept
{
    std::free(memory);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
