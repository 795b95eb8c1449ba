#include "foundation/module_path.h"
#include "lumo.h"
#include "platform/platform.h"

namespace lumo {
namespace {

constexpr int kPathTooLong = static_cast<int>(ERROR_INSUFFICIENT_BUFFER);

}  // namespace
}  // namespace lumo

// The reason of the call is not looked at: every one derives the same folder.
int DllAttach(void *module) {
  lumo::WCHAR name[lumo::kPathUnits] = {};
  const lumo::DWORD length =
      lumo::GetModuleFileNameW(static_cast<lumo::HMODULE>(module), name, lumo::kPathUnits);
  if (length == 0) return static_cast<int>(lumo::GetLastError());
  // A path cut short ends in a folder above the file's own. Not every system says that it has cut.
  if (length >= lumo::kPathUnits) return lumo::kPathTooLong;
  uint32_t folder_length = 0;  // the last separator included
  for (uint32_t i = 0; i < length; ++i) {
    if (name[i] == lumo::kPathSeparator) folder_length = i + 1;
  }
  if (folder_length == 0) return 0;
  name[folder_length] = 0;
  lumo::SetModuleDirectory(name);
  return 1;
}
