// support/allocations.h: the runtime's malloc, calloc and realloc as the library calls them, counted and
// failing on request. For programs of lumo_test(... WATCH ALLOCATIONS).
#pragma once

#include <cstddef>

namespace test {

struct Allocations {
  int mallocs = 0;
  int callocs = 0;
  int reallocs = 0;
  size_t lastSize = 0;      // of the latest of them; count times size for calloc
  size_t reallocBytes = 0;  // asked for in all reallocations together
};

// Since the process began. Take the difference of two.
Allocations CountAllocations();

// The next allocation is refused with a null pointer, and the ones after it are served again.
void FailNextAllocation();

}  // namespace test
