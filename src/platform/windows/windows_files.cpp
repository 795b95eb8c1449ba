// For Windows and for Windows CE: both append through the C library, which ends the lines of a text file.
#include <cstdio>
#include <cstring>
#include <cwchar>

#include "platform/platform.h"

namespace lumo {

void MakeFileName(const WCHAR *name, FileName *out_name) {
  constexpr size_t kUnits = sizeof out_name->units / sizeof out_name->units[0];
  size_t length = 0;
  while (name[length] != 0) ++length;
  if (length >= kUnits) length = 0;
  std::memcpy(out_name->units, name, length * sizeof(WCHAR));
  out_name->units[length] = 0;
}

BOOL AppendToFile(const FileName *name, const char *text, size_t length) {
  FILE *const file = _wfopen(name->units, L"a");
  if (file == nullptr) return 0;
  const bool written = std::fwrite(text, 1, length, file) == length;
  return std::fclose(file) == 0 && written;
}

}  // namespace lumo
