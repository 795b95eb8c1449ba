#include "foundation/debug_check.h"

#include "foundation/module_path.h"
#include "platform/platform.h"

namespace lumo {

void DebugCheckFailed(const char *file, int line) {
  const WCHAR *wide_file = Utf8ToWide(file);
  NKDbgPrintfW(LUMO_WIDE("%s: DEBUGCHK failed in file %s at line %d \r\n"), LUMO_WIDE("Unknown"),
               wide_file != nullptr ? wide_file : LUMO_WIDE(""), line);
  DebugBreak();
}

}  // namespace lumo
