// fuzz/log.cpp: any bytes as LOG, to both reports.
#include <cstring>

#include "engine/reports.h"
#include "journal/logger.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  // An activation of a type that lumo never writes breaks into the debugger, as it is meant to.
  const std::string bytes(reinterpret_cast<const char *>(data), size);
  if (bytes.find("ctivationType") != std::string::npos) return 0;
  fuzz::EmptyFolder();
  fuzz::WriteFile("LOG", bytes);
  const int summary = lumo::GenerateSummaryReport("", "~");
  fuzz::Promise(summary >= 0, "a summary's length");
  fuzz::Promise(std::strlen(lumo::GetReportPtr()) <= static_cast<size_t>(summary), "the text of that length");
  fuzz::Promise(lumo::GenerateReport("", "~") >= 0, "a report's length");
  fuzz::Promise(fuzz::ReadFile("LOG") == bytes, "a log that reports leave alone");
  return 0;
}
