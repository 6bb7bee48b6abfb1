// Counts the allocations of the whole test program.
#pragma once

int AllocationCount();
