#include "heap_calls.h"

#include <cstddef>

// The C library's own entry points; ours stand before them for every library in the process.
extern "C" void *__libc_malloc(size_t size);
extern "C" void *__libc_calloc(size_t count, size_t size);
extern "C" void *__libc_realloc(void *pointer, size_t size);

namespace bench {
namespace {
uint64_t heap_calls;
}  // namespace

uint64_t HeapCalls() {
  return heap_calls;
}

}  // namespace bench

extern "C" void *malloc(size_t size) noexcept {
  ++bench::heap_calls;
  return __libc_malloc(size);
}

extern "C" void *calloc(size_t count, size_t size) noexcept {
  ++bench::heap_calls;
  return __libc_calloc(count, size);
}

extern "C" void *realloc(void *pointer, size_t size) noexcept {
  ++bench::heap_calls;
  return __libc_realloc(pointer, size);
}
