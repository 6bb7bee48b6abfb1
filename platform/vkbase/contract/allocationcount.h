// Counts the allocations of the whole test program, and lets one find no memory.
#pragma once

#include <cstddef>

namespace TestSupport {

[[nodiscard]] std::size_t allocations();
/// The allocation with this number throws std::bad_alloc; 0: none does.
void failAllocation(std::size_t number);

}  // namespace TestSupport
