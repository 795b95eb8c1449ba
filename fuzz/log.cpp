// fuzz/log.cpp: any bytes as LOG, to both reports.
#include <cstring>

#include "engine/reports.h"
#include "foundation/trace.h"
#include "journal/logger.h"
#include "platform/platform.h"
#include "target.h"

// An activation of a type that lumo never writes prints its line and breaks into the debugger, as it is meant
// to. The linker turns both calls into these, and the report goes on.
extern "C" {

void __wrap_lumo_NKDbgPrintfW(const lumo::WCHAR *format, ...);
void __wrap_lumo_DebugBreak();

void __wrap_lumo_NKDbgPrintfW(const lumo::WCHAR *, ...) {}

void __wrap_lumo_DebugBreak() {}

}  // extern "C"

namespace {

// Longer texts may not fit in a line of the report, which ends the process as it is meant to. More lines take
// time and bring nothing new.
constexpr size_t kLongestLine = 1000;
constexpr size_t kMostLines = 24;

bool IsTooMuch(const std::string &bytes) {
  size_t lines = 0;
  size_t length = 0;
  for (const char byte : bytes) {
    length = byte == '\n' ? 0 : length + 1;
    if (byte == '\n') ++lines;
    if (length > kLongestLine || lines > kMostLines) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string bytes(reinterpret_cast<const char *>(data), size);
  if (IsTooMuch(bytes)) return 0;
  fuzz::EmptyFolder();
  fuzz::WriteFile("LOG", bytes);
  const int summary = lumo::GenerateSummaryReport("", "~");
  fuzz::Promise(summary >= 0, "a summary's length");
  fuzz::Promise(std::strlen(lumo::GetReportPtr()) == static_cast<size_t>(summary), "the text of that length");
  const int whole = lumo::GenerateReport("", "~");
  fuzz::Promise(whole >= 0, "a report's length");
  fuzz::Promise(std::strlen(lumo::GetReportPtr()) == static_cast<size_t>(whole), "the text of that length");
  // No record stands in both halves, and only one of just that date in neither.
  const lumo::QuietTrace quiet;  // its lines were seen, and take most of the time
  const int before = lumo::GenerateReport("", "2026-11-21T12:00:00");
  const int after = lumo::GenerateReport("2026-11-21T12:00:00", "~");
  const bool may_be_cut =
      bytes.find('\\') != std::string::npos || bytes.find("2026-11-21T12:00:00") != std::string::npos;
  fuzz::Promise(before + after <= whole, "no more in two reports than in one");
  fuzz::Promise(may_be_cut || before + after == whole, "two reports that make the whole one");
  fuzz::Promise(fuzz::ReadFile("LOG") == bytes, "a log that reports leave alone");
  return 0;
}
