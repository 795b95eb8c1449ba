#include "lumo.h"
#include "platform/platform.h"

// The file's entry point: the loader calls it at every notification. There is no C runtime to start before
// it, so nothing in this library may need one.
extern "C" int LumoEntry(lumo::HMODULE module, lumo::DWORD, void *) {
  return DllAttach(module);
}
