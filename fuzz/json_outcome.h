// fuzz/json_outcome.h: what the parser made of a text, in a form that can be compared.
#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "json/json_parser.h"

namespace fuzz {

struct Event {
  lumo::JsonEvent type;
  std::string data;
};

inline bool operator==(const Event &a, const Event &b) {
  return a.type == b.type && a.data == b.data;
}

struct Outcome {
  std::vector<Event> events;
  int code = 0;
  size_t taken = 0;
};

inline bool operator==(const Outcome &a, const Outcome &b) {
  return a.code == b.code && a.taken == b.taken && a.events == b.events;
}

inline lumo::JsonParserConfig PlainConfig() {
  lumo::JsonParserConfig config{};
  config.callocHook = std::calloc;
  config.reallocHook = std::realloc;
  return config;
}

inline Outcome Read(const std::string &text, size_t piece, const lumo::JsonParserConfig &config) {
  Outcome outcome;
  lumo::JsonParser parser;
  outcome.code = lumo::JsonParserInit(
      &parser, &config,
      [](void *user, lumo::JsonEvent type, const char *data, uint32_t length) {
        static_cast<Outcome *>(user)->events.push_back(
            {type, data != nullptr ? std::string(data, length) : ""});
        return 0;
      },
      &outcome);
  for (size_t at = 0; at < text.size() && outcome.code == 0; at += piece) {
    const std::string bytes = text.substr(at, piece);
    uint32_t processed = 0;
    outcome.code =
        lumo::JsonParserFeed(&parser, bytes.data(), static_cast<uint32_t>(bytes.size()), &processed);
    outcome.taken += processed;
  }
  lumo::JsonParserFree(&parser);
  return outcome;
}

}  // namespace fuzz
