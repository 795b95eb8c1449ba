// foundation/module_path.h: where the library's files lie. Every file name is relative to moduleDirectory.
#pragma once

#include <cstdint>

#include "platform/platform.h"

namespace lumo {

constexpr uint32_t kPathUnits = MAX_PATH;  // of a path, terminator included

// Stores the folder of the library file, at most kPathUnits - 1 units, ending with its separator.
void SetModuleDirectory(const WCHAR *directory);
const WCHAR *ModuleDirectory();

// Names the trace file "TRACE_" + tag + ".TXT". Without a tag, and with one that does not fit: "TRACE.TXT".
void SetTraceTag(const char *utf8_tag);
const WCHAR *TraceTag();

// Converts into one shared buffer of 512 units that the next call overwrites. Null when the text is null, is
// not convertible or does not fit.
const WCHAR *Utf8ToWide(const char *text);

// Joins moduleDirectory and `name` in `path`. False for a null name, and for one that cannot be converted or
// does not fit; `path` is then an empty text, which no file call can open.
bool BuildPath(const char *name, WCHAR (&path)[kPathUnits]);
void BuildTracePath(WCHAR (&path)[kPathUnits]);

// The same for AppendToFile; made anew only when the directory or the tag has changed.
const FileName &TraceFileName();

}  // namespace lumo
