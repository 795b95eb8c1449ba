#include <dlfcn.h>
#include <limits.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/posix/posix_internal.h"

namespace lumo {
namespace {

thread_local DWORD last_error;

// Found once, when the loader's notification asks for it: later the host may have changed its current folder.
char library_file[PATH_MAX];

void WriteWide(FILE *out, const WCHAR *wide, int length) {
  char bytes[3];
  for (int i = 0; i < length; ++i) {
    // A surrogate pair is written together; half of one comes out as U+FFFD.
    char pair[4];
    const bool lead = wide[i] >= 0xD800 && wide[i] <= 0xDBFF && i + 1 < length;
    int count =
        lead ? lumo_WideCharToMultiByte(CP_UTF8, 0, wide + i, 2, pair, sizeof pair, nullptr, nullptr) : 0;
    if (count == 4) {
      std::fwrite(pair, 1, 4, out);
      ++i;
      continue;
    }
    count = lumo_WideCharToMultiByte(CP_UTF8, 0, wide + i, 1, bytes, sizeof bytes, nullptr, nullptr);
    std::fwrite(bytes, 1, static_cast<size_t>(count), out);
  }
}

}  // namespace

DWORD lumo_GetLastError() {
  return last_error;
}

void lumo_SetLastError(DWORD error) {
  last_error = error;
}

const char *LibraryFile() {
  if (library_file[0] != 0) return library_file;
  Dl_info info = {};
  const bool found = dladdr(library_file, &info) != 0 && info.dli_fname != nullptr;
  // A program's own code is named as it was called, perhaps without a folder.
  if (!found || std::strchr(info.dli_fname, '/') == nullptr) {
    const ssize_t length = readlink("/proc/self/exe", library_file, sizeof library_file - 1);
    library_file[length < 0 ? 0 : length] = 0;
    return library_file;
  }
  // The name it was loaded by. A link is not followed: terminals in folders of their own may share one file.
  size_t length = 0;
  if (info.dli_fname[0] != '/') {
    if (getcwd(library_file, sizeof library_file) == nullptr) return "";
    length = std::strlen(library_file);
    library_file[length++] = '/';
  }
  if (length + std::strlen(info.dli_fname) >= sizeof library_file) {
    library_file[0] = 0;
    return "";
  }
  std::strcpy(library_file + length, info.dli_fname);
  return library_file;
}

DWORD lumo_GetModuleFileNameW(HMODULE, WCHAR *name, DWORD capacity) {
  const char *const file = LibraryFile();
  if (file[0] == 0) {
    lumo_SetLastError(ERROR_FILE_NOT_FOUND);
    return 0;
  }
  static WCHAR wide[PATH_MAX];
  const auto length = static_cast<DWORD>(lumo_MultiByteToWideChar(CP_UTF8, 0, file, -1, wide, PATH_MAX) - 1);
  if (capacity == 0) {
    lumo_SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  const DWORD copied = length < capacity ? length : capacity - 1;
  std::memcpy(name, wide, copied * sizeof(WCHAR));
  name[copied] = 0;
  lumo_SetLastError(copied == length ? 0 : ERROR_INSUFFICIENT_BUFFER);
  return copied == length ? length : capacity;
}

void lumo_NKDbgPrintfW(const WCHAR *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  for (const WCHAR *at = format; *at != 0; ++at) {
    if (*at != u'%') {
      const WCHAR *end = at;
      while (*end != 0 && *end != u'%') ++end;
      WriteWide(stderr, at, static_cast<int>(end - at));
      at = end - 1;
    } else if (at[1] == u'd') {
      ++at;
      std::fprintf(stderr, "%d", va_arg(arguments, int));
    } else if (at[1] == u's') {
      ++at;
      const WCHAR *text = va_arg(arguments, const WCHAR *);
      if (text == nullptr) text = u"(null)";
      WriteWide(stderr, text, WideLength(text));
    } else {
      if (at[1] == u'%') ++at;
      std::fputc('%', stderr);
    }
  }
  va_end(arguments);
  std::fflush(stderr);
}

void lumo_DebugBreak() {
  raise(SIGTRAP);
}

void PlatformExit(int status) {
  std::exit(status);
}

}  // namespace lumo
