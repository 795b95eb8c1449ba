#include "foundation/module_path.h"

namespace lumo {
namespace {

WCHAR module_directory[kPathUnits];
WCHAR trace_tag[kPathUnits];
WCHAR converted[512];
FileName trace_file_name;
bool trace_file_name_stands;

constexpr int kTagUnits = 259;  // terminator included

// Appends to a path under construction. False when it would not fit with its terminator.
bool Join(WCHAR (&path)[kPathUnits], uint32_t &length, const WCHAR *part) {
  for (; *part != 0; ++part) {
    if (length + 1 >= kPathUnits) return false;
    path[length++] = *part;
  }
  path[length] = 0;
  return true;
}

}  // namespace

void SetModuleDirectory(const WCHAR *directory) {
  trace_file_name_stands = false;
  uint32_t length = 0;
  for (; directory[length] != 0 && length < kPathUnits - 1; ++length) {
    module_directory[length] = directory[length];
  }
  for (; length < kPathUnits; ++length) module_directory[length] = 0;
}

const WCHAR *ModuleDirectory() {
  return module_directory;
}

void SetTraceTag(const char *utf8_tag) {
  trace_file_name_stands = false;
  for (WCHAR &unit : trace_tag) unit = 0;
  if (utf8_tag != nullptr && MultiByteToWideChar(CP_UTF8, 0, utf8_tag, -1, trace_tag, kTagUnits) == 0) {
    trace_tag[0] = 0;
  }
}

const WCHAR *TraceTag() {
  return trace_tag;
}

const WCHAR *Utf8ToWide(const char *text) {
  constexpr int kUnits = static_cast<int>(sizeof converted / sizeof converted[0]);
  if (text == nullptr || MultiByteToWideChar(CP_UTF8, 0, text, -1, converted, kUnits) == 0) return nullptr;
  return converted;
}

bool BuildPath(const char *name, WCHAR (&path)[kPathUnits]) {
  uint32_t length = 0;
  const WCHAR *wide_name = Utf8ToWide(name);
  Join(path, length, module_directory);  // always fits
  if (wide_name != nullptr && Join(path, length, wide_name)) return true;
  path[0] = 0;
  return false;
}

void BuildTracePath(WCHAR (&path)[kPathUnits]) {
  uint32_t length = 0;
  Join(path, length, module_directory);  // always fits
  bool fits = false;
  if (trace_tag[0] != 0) {
    fits = Join(path, length, LUMO_WIDE("TRACE_")) && Join(path, length, trace_tag) &&
           Join(path, length, LUMO_WIDE(".TXT"));
  } else {
    fits = Join(path, length, LUMO_WIDE("TRACE.TXT"));
  }
  if (!fits) path[0] = 0;
}

const FileName &TraceFileName() {
  if (!trace_file_name_stands) {
    WCHAR path[kPathUnits];
    BuildTracePath(path);
    MakeFileName(path, &trace_file_name);
    trace_file_name_stands = true;
  }
  return trace_file_name;
}

}  // namespace lumo
