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

// Null for what a contestant does not do.
struct Contestant {
  const char *library;
  Task events;                  // a call for each event, numbers as text; adds up events and bytes of data
  Task pieces;                  // the same from pieces of 500 bytes
  Task tree;                    // built and freed; counts the items of the root
  Task text;                    // compact text from events; its length
  bool numbers_as_text = true;  // of the events
};

constexpr size_t kPiece = 500;

extern const Contestant kLumo;
// The same library without and with its own SSE2 and SSE4.2 code; in place means that it is given a copy of
// the text to write into, made and freed each time.
extern const Contestant kRapidJson;
extern const Contestant kRapidJsonInPlace;
extern const Contestant kRapidJsonNumbers;  // numbers read into integers and doubles, which is its default
extern const Contestant kRapidJsonSse2;
extern const Contestant kRapidJsonSse42;
extern const Contestant kRapidJsonSse42InPlace;
extern const Contestant kSimdjson;  // one parser for all documents, as its makers advise
extern const Contestant kYajl;

}  // namespace bench
