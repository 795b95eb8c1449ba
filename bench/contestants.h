// bench/contestants.h: the same tasks done by each library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

// A document as a list of events, for the writers.
struct Event {
  int type;  // lumo::JsonEvent
  std::string data;
};
std::vector<Event> ReadEvents(const std::string &text);

struct Input {
  std::string text;
  std::vector<Event> events;
};

// Does the task once. The result depends on what was read or written, so that none of it can be left out, and
// is the same for every library. Aborts when the library fails.
using Task = uint64_t (*)(const Input &input);

struct Contestant {
  const char *library;
  Task events;  // a call for each event, numbers as text; adds up events and bytes of data
  Task pieces;  // the same from pieces of 500 bytes
  Task tree;    // built and freed; counts the items of the root
  Task text;    // compact text from events; its length
};

constexpr size_t kPiece = 500;

extern const Contestant kLumo;
extern const Contestant kRapidJson;
extern const Contestant kRapidJsonSse2;  // the same library with its own SSE2 code switched on
extern const Contestant kYajl;

}  // namespace bench
