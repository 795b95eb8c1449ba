#include "foundation/files.h"
#include "foundation/module_path.h"

namespace lumo {

int FileCopy(const char *from, const char *to) {
  WCHAR from_path[kPathUnits];
  WCHAR to_path[kPathUnits];
  BuildPath(from, from_path);
  BuildPath(to, to_path);
  return CopyFileW(from_path, to_path, 0) != 0 ? 0 : static_cast<int>(GetLastError());
}

}  // namespace lumo
