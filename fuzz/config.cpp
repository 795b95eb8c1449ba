// fuzz/config.cpp: any bytes as CONFIG.
#include "config/lumoconfig.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::EmptyFolder();
  fuzz::WriteFile("CONFIG", std::string(reinterpret_cast<const char *>(data), size));
  const int code = lumo::LoadConfig();
  fuzz::Promise(code == 0 || code == -111 || code == -303, "a result of the settings' own");
  lumo::ReleaseSettings();
  return 0;
}
