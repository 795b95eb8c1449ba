// fuzz/state.cpp: any bytes as STATE.
#include "config/lumostate.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::EmptyFolder();
  fuzz::WriteFile("STATE", std::string(reinterpret_cast<const char *>(data), size));
  const int code = lumo::LoadState();
  fuzz::Promise(code == 0 || code == -108 || code == -109, "a result of the state's own");
  lumo::SaveState();
  fuzz::Promise(lumo::LoadState() == 0, "a saved state loads");
  lumo::ReleaseState();
  return 0;
}
