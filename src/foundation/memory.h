// foundation/memory.h: allocation that never fails for the caller: out of memory is traced and ends the host
// process. Pass LUMO_HERE as the last two arguments.
#pragma once

#include <cstddef>

#include "foundation/scoped.h"
#include "foundation/trace.h"

namespace lumo {

void *MemMalloc(size_t size, const char *file, int line);
void *MemCalloc(size_t count, size_t size, const char *file, int line);  // zero-filled
void *MemRealloc(void *pointer, size_t size, const char *file, int line);
void MemFree(void *pointer, const char *file, int line);  // a null pointer is traced and not freed

// The allocator hooks of the JSON parser and tree: no location, so "---" and 0.
void *MemCallocShort(size_t count, size_t size);
void *MemReallocShort(void *pointer, size_t size);

// A copy from MemMalloc, for the caller to free with MemFree; null for null.
char *MemCopyText(const char *text, const char *file, int line);

// Frees the memory, if there is any.
void MemFreeIfAny(void *pointer);

// Frees the text, if there is one, and leaves null.
void MemFreeText(char **text);

using ScopedText = Scoped<char, MemFreeIfAny>;

}  // namespace lumo
