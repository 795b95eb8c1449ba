#include "foundation/module_path.h"
#include "lumo.h"
#include "platform/platform.h"

// The reason of the call is not looked at: every one derives the same folder.
int DllAttach(void *module) {
  lumo::WCHAR name[lumo::kPathUnits] = {};
  if (lumo::GetModuleFileNameW(static_cast<lumo::HMODULE>(module), name, lumo::kPathUnits) == 0) {
    return static_cast<int>(lumo::GetLastError());
  }
  uint32_t folder_length = 0;  // the last separator included
  for (uint32_t i = 0; i < lumo::kPathUnits && name[i] != 0; ++i) {
    if (name[i] == lumo::kPathSeparator) folder_length = i + 1;
  }
  if (folder_length == 0) return 0;
  if (folder_length < lumo::kPathUnits) name[folder_length] = 0;
  lumo::SetModuleDirectory(name);
  return 1;
}
