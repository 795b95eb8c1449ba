#include "heap_calls.h"

#include <malloc.h>

#include <cstddef>

// The C library's own entry points; ours stand before them for every library in the process.
extern "C" void *__libc_malloc(size_t size);
extern "C" void *__libc_calloc(size_t count, size_t size);
extern "C" void *__libc_realloc(void *pointer, size_t size);
extern "C" void __libc_free(void *pointer);

namespace bench {
namespace {

uint64_t heap_calls;
uint64_t heap_bytes;
uint64_t heap_peak;

void *Count(void *pointer) {
  ++heap_calls;
  heap_bytes += malloc_usable_size(pointer);
  if (heap_bytes > heap_peak) heap_peak = heap_bytes;
  return pointer;
}

}  // namespace

uint64_t HeapCalls() {
  return heap_calls;
}
uint64_t HeapBytes() {
  return heap_bytes;
}
uint64_t HeapPeak() {
  return heap_peak;
}
void ResetPeak() {
  heap_peak = heap_bytes;
}

}  // namespace bench

extern "C" void *malloc(size_t size) noexcept {
  return bench::Count(__libc_malloc(size));
}

extern "C" void *calloc(size_t count, size_t size) noexcept {
  return bench::Count(__libc_calloc(count, size));
}

extern "C" void *realloc(void *pointer, size_t size) noexcept {
  const size_t before = malloc_usable_size(pointer);
  void *moved = __libc_realloc(pointer, size);
  if (moved == nullptr) return nullptr;
  bench::heap_bytes -= before;
  return bench::Count(moved);
}

extern "C" void free(void *pointer) noexcept {
  bench::heap_bytes -= malloc_usable_size(pointer);
  __libc_free(pointer);
}
