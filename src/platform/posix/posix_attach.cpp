#include "lumo.h"

namespace {

// The loader's notification. Part of the library file only: a test program sets its directory itself.
__attribute__((constructor)) void OnLoad() {
  DllAttach(nullptr);
}

}  // namespace
