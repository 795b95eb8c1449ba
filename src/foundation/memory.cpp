#include "foundation/memory.h"

#include <cstdlib>
#include <cstring>

namespace lumo {
namespace {

// Runtimes may answer a request for nothing with a null pointer, which callers would take for a failure.
size_t AtLeastOne(size_t size) {
  return size != 0 ? size : 1;
}

}  // namespace

void *MemMalloc(size_t size, const char *file, int line) {
  void *pointer = std::malloc(AtLeastOne(size));
  if (pointer == nullptr) Fatal("Memory allocation failed! (malloc)\n", file, line);
  return pointer;
}

void *MemCalloc(size_t count, size_t size, const char *file, int line) {
  void *pointer = std::calloc(AtLeastOne(count), AtLeastOne(size));
  if (pointer == nullptr) Fatal("Memory allocation failed! (calloc)\n", file, line);
  return pointer;
}

void *MemRealloc(void *pointer, size_t size, const char *file, int line) {
  void *moved = std::realloc(pointer, AtLeastOne(size));
  if (moved == nullptr) Fatal("Memory allocation failed! (realloc)\n", file, line);
  return moved;
}

void MemFree(void *pointer, const char *file, int line) {
  if (pointer == nullptr) {
    TraceError("ERROR IN %s AT %d:  free null pointer\n", file, line);
    return;
  }
  std::free(pointer);
}

void *MemCallocShort(size_t count, size_t size) {
  return MemCalloc(count, size, "---", 0);
}

void *MemReallocShort(void *pointer, size_t size) {
  return MemRealloc(pointer, size, "---", 0);
}

char *MemCopyText(const char *text, const char *file, int line) {
  if (text == nullptr) return nullptr;
  const size_t size = std::strlen(text) + 1;
  return static_cast<char *>(std::memcpy(MemMalloc(size, file, line), text, size));
}

void MemFreeIfAny(void *pointer) {
  if (pointer != nullptr) MemFree(pointer, LUMO_HERE);
}

void MemFreeText(char **text) {
  MemFreeIfAny(*text);
  *text = nullptr;
}

}  // namespace lumo
