// fuzz/state.cpp: any bytes as STATE. What was loaded and saved loads again, and is saved the same.
#include "config/lumostate.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::EmptyFolder();
  fuzz::WriteFile("STATE", std::string(reinterpret_cast<const char *>(data), size));
  const int code = lumo::LoadState();
  fuzz::Promise(code == 0 || code == -108, "a result of the state's own");
  fuzz::Promise(lumo::SaveState() == 0, "a state that can be saved");
  const std::string saved = fuzz::ReadFile("STATE");
  fuzz::Promise(lumo::LoadState() == 0, "a saved state loads");
  fuzz::Promise(lumo::SaveState() == 0, "and can be saved again");
  fuzz::Promise(fuzz::ReadFile("STATE") == saved, "the same");
  lumo::ReleaseState();
  return 0;
}
