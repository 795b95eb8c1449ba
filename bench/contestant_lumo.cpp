#include <algorithm>
#include <cstdlib>

#include "contestants.h"
#include "foundation/lumostring.h"
#include "foundation/memory.h"
#include "json/json_parser.h"
#include "json/json_printer.h"
#include "json/lumojson.h"

namespace bench {
namespace {

using namespace lumo;

int Count(void *user, JsonEvent, const char *, uint32_t length) {
  *static_cast<uint64_t *>(user) += 1 + length;
  return 0;
}

uint64_t Feed(const std::string &text, size_t piece) {
  uint64_t sum = 0;
  JsonParserConfig config{};
  config.callocHook = MemCallocShort;
  config.reallocHook = MemReallocShort;
  JsonParser parser;
  if (JsonParserInit(&parser, &config, Count, &sum) != 0) std::abort();
  for (size_t at = 0; at < text.size(); at += piece) {
    const size_t length = std::min(piece, text.size() - at);
    if (JsonParserFeed(&parser, text.data() + at, static_cast<uint32_t>(length), nullptr) != 0) std::abort();
  }
  JsonParserFree(&parser);
  return sum;
}

uint64_t Events(const Input &input) {
  return Feed(input.text, input.text.size());
}
uint64_t Pieces(const Input &input) {
  return Feed(input.text, kPiece);
}

uint64_t Tree(const Input &input) {
  JsonReader *reader = JsonReaderCreate();
  if (ParseJsonText(reader, input.text.c_str()) != 0) std::abort();
  const uint64_t count = JsonReaderRoot(reader)->count;
  JsonReaderDestroy(reader);
  return count;
}

uint64_t Text(const Input &input) {
  String *text = StringCreate();
  JsonPrinter printer;
  JsonPrinterInit(
      &printer,
      [](void *user, const char *bytes, uint32_t length) {
        StringAppendN(static_cast<String *>(user), bytes, length);
      },
      text);
  for (const Event &event : input.events) {
    JsonPrinterRaw(&printer, static_cast<JsonEvent>(event.type), event.data.data(),
                   static_cast<uint32_t>(event.data.size()));
  }
  const uint64_t length = StringGetLength(text);
  StringFree(text);
  return length;
}

int Keep(void *user, JsonEvent event, const char *data, uint32_t length) {
  static_cast<std::vector<Event> *>(user)->push_back(
      {event, data != nullptr ? std::string(data, length) : ""});
  return 0;
}

}  // namespace

std::vector<Event> ReadEvents(const std::string &text) {
  std::vector<Event> events;
  JsonParserConfig config{};
  config.callocHook = MemCallocShort;
  config.reallocHook = MemReallocShort;
  JsonParser parser;
  if (JsonParserInit(&parser, &config, Keep, &events) != 0) std::abort();
  if (JsonParserFeed(&parser, text.data(), static_cast<uint32_t>(text.size()), nullptr) != 0) std::abort();
  JsonParserFree(&parser);
  return events;
}

extern const Contestant kLumo{"lumo", Events, Pieces, Tree, Text};

}  // namespace bench
