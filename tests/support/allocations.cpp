#include "support/allocations.h"

namespace {

test::Allocations counts;
bool fails_next = false;

bool Refused() {
  const bool refused = fails_next;
  fails_next = false;
  return refused;
}

}  // namespace

extern "C" {

void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *pointer, size_t size);

void *__wrap_malloc(size_t size);
void *__wrap_calloc(size_t count, size_t size);
void *__wrap_realloc(void *pointer, size_t size);

void *__wrap_malloc(size_t size) {
  ++counts.mallocs;
  counts.lastSize = size;
  return Refused() ? nullptr : __real_malloc(size);
}

void *__wrap_calloc(size_t count, size_t size) {
  ++counts.callocs;
  counts.lastSize = count * size;
  return Refused() ? nullptr : __real_calloc(count, size);
}

void *__wrap_realloc(void *pointer, size_t size) {
  ++counts.reallocs;
  counts.lastSize = size;
  counts.reallocBytes += size;
  return Refused() ? nullptr : __real_realloc(pointer, size);
}

}  // extern "C"

namespace test {

Allocations CountAllocations() {
  return counts;
}

void FailNextAllocation() {
  fails_next = true;
}

}  // namespace test
