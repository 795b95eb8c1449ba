// bench/heap_calls.h: counts what the whole process asks of the heap.
#pragma once

#include <cstdint>

namespace bench {

// malloc, calloc and realloc since the process began.
uint64_t HeapCalls();

// Bytes in use now, and the most since ResetPeak.
uint64_t HeapBytes();
uint64_t HeapPeak();
void ResetPeak();

}  // namespace bench
