#include "lumo.h"
#include "platform/platform.h"

// The loader's notification, run between the C runtime's own start and end. Part of the library file only.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD, LPVOID) {
  return DllAttach(module);
}
