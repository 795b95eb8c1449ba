// fuzz/printer.cpp: what the printer writes reads back as the same events.
#include "json/json_printer.h"
#include "json_outcome.h"
#include "target.h"

namespace {

std::string Print(const std::vector<fuzz::Event> &events, lumo::JsonPrinterFunction print) {
  std::string text;
  lumo::JsonPrinter printer;
  lumo::JsonPrinterInit(
      &printer,
      [](void *user, const char *bytes, uint32_t length) {
        static_cast<std::string *>(user)->append(bytes, length);
      },
      &text);
  for (const fuzz::Event &event : events) {
    print(&printer, event.type, event.data.data(), static_cast<uint32_t>(event.data.size()));
  }
  lumo::JsonPrinterFree(&printer);
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  // The line feed ends a number at top level, here and below.
  const fuzz::Outcome read = fuzz::Read(text + "\n", text.size() + 1, fuzz::PlainConfig());
  if (read.code != 0) return 0;
  const std::string compact = Print(read.events, lumo::JsonPrinterRaw);
  const fuzz::Outcome again = fuzz::Read(compact + "\n", compact.size() + 1, fuzz::PlainConfig());
  fuzz::Promise(again.code == 0 && again.events == read.events, "compact text reads back");
  fuzz::Promise(Print(again.events, lumo::JsonPrinterRaw) == compact,
                "compact text is settled after one round");
  const std::string pretty = Print(read.events, lumo::JsonPrinterPretty);
  const fuzz::Outcome third = fuzz::Read(pretty + "\n", pretty.size() + 1, fuzz::PlainConfig());
  fuzz::Promise(third.code == 0 && third.events == read.events, "pretty text reads back");
  return 0;
}
