// fuzz/config.cpp: any bytes as CONFIG. Settings that were saved load again, and are saved the same.
#include "config/lumoconfig.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::EmptyFolder();
  fuzz::WriteFile("CONFIG", std::string(reinterpret_cast<const char *>(data), size));
  const int code = lumo::LoadConfig();
  fuzz::Promise(code == 0 || code == -111 || code == -303, "a result of the settings' own");
  if (code == 0) {
    fuzz::Promise(lumo::SaveConfig() == 0, "settings that can be saved");
    const std::string saved = fuzz::ReadFile("CONFIG");
    lumo::ReleaseSettings();
    fuzz::Promise(lumo::LoadConfig() == 0, "saved settings load");
    fuzz::Promise(lumo::SaveConfig() == 0, "and can be saved again");
    fuzz::Promise(fuzz::ReadFile("CONFIG") == saved, "the same");
  }
  lumo::ReleaseSettings();
  return 0;
}
