// Compiled three times: as the library comes, with SSE2 code (BENCH_SSE2) and with SSE4.2 code (BENCH_SSE42).
#ifdef BENCH_SSE2
#define RAPIDJSON_SSE2
#define RAPIDJSON_NAMESPACE rapidjson_sse2
#define RAPIDJSON_NAMESPACE_BEGIN namespace rapidjson_sse2 {
#define RAPIDJSON_NAMESPACE_END }
#endif
#ifdef BENCH_SSE42
#define RAPIDJSON_SSE42
#define RAPIDJSON_NAMESPACE rapidjson_sse42
#define RAPIDJSON_NAMESPACE_BEGIN namespace rapidjson_sse42 {
#define RAPIDJSON_NAMESPACE_END }
#endif

#include <rapidjson/document.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cstdlib>

#include "contestants.h"
#include "json/json_event.h"

namespace bench {
namespace {

namespace library = RAPIDJSON_NAMESPACE;

struct Counter {
  uint64_t sum = 0;
  bool Add(uint64_t length) {
    sum += 1 + length;
    return true;
  }
  bool Null() { return Add(0); }
  bool Bool(bool) { return Add(0); }
  bool Int(int) { return Add(0); }
  bool Uint(unsigned) { return Add(0); }
  bool Int64(int64_t) { return Add(0); }
  bool Uint64(uint64_t) { return Add(0); }
  bool Double(double) { return Add(0); }
  bool RawNumber(const char *, library::SizeType length, bool) { return Add(length); }
  bool String(const char *, library::SizeType length, bool) { return Add(length); }
  bool StartObject() { return Add(0); }
  bool Key(const char *, library::SizeType length, bool) { return Add(length); }
  bool EndObject(library::SizeType) { return Add(0); }
  bool StartArray() { return Add(0); }
  bool EndArray(library::SizeType) { return Add(0); }
};

// The library pulls its input, so it cannot be fed. The nearest is a stream that goes on to the next piece.
class PieceStream {
 public:
  using Ch = char;
  explicit PieceStream(const std::string &text)
      : begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {
    Refill();
  }
  char Peek() const { return at_ != piece_end_ ? *at_ : '\0'; }
  char Take() {
    const char byte = Peek();
    if (at_ != piece_end_ && ++at_ == piece_end_) Refill();
    return byte;
  }
  size_t Tell() const { return static_cast<size_t>(at_ - begin_); }
  char *PutBegin() { return nullptr; }
  void Put(char) {}
  void Flush() {}
  size_t PutEnd(char *) { return 0; }

 private:
  void Refill() { piece_end_ = at_ + std::min<size_t>(kPiece, static_cast<size_t>(end_ - at_)); }

  const char *begin_;
  const char *at_;
  const char *end_;
  const char *piece_end_ = nullptr;
};

template <unsigned flags = library::kParseNumbersAsStringsFlag, class Stream>
uint64_t Read(Stream stream) {
  Counter counter;
  library::Reader reader;
  if (!reader.Parse<flags>(stream, counter)) std::abort();
  return counter.sum;
}

uint64_t Events(const Input &input) {
  return Read(library::StringStream(input.text.c_str()));
}
uint64_t Pieces(const Input &input) {
  return Read(PieceStream(input.text));
}

uint64_t RootItems(const library::Document &document) {
  if (document.HasParseError()) std::abort();
  return document.IsArray() ? document.Size() : document.MemberCount();
}

uint64_t Tree(const Input &input) {
  library::Document document;
  document.Parse(input.text.c_str());
  return RootItems(document);
}

#ifndef BENCH_SSE2
uint64_t EventsInPlace(const Input &input) {
  std::string copy = input.text;
  return Read<library::kParseNumbersAsStringsFlag | library::kParseInsituFlag>(
      library::InsituStringStream(copy.data()));
}

uint64_t TreeInPlace(const Input &input) {
  std::string copy = input.text;
  library::Document document;
  document.ParseInsitu(copy.data());
  return RootItems(document);
}
#endif

uint64_t Text(const Input &input) {
  library::StringBuffer buffer;
  library::Writer<library::StringBuffer> writer(buffer);
  for (const Event &event : input.events) {
    const char *data = event.data.data();
    const auto length = static_cast<library::SizeType>(event.data.size());
    switch (event.type) {
      case lumo::JSON_ARRAY_BEGIN:
        writer.StartArray();
        break;
      case lumo::JSON_OBJECT_BEGIN:
        writer.StartObject();
        break;
      case lumo::JSON_ARRAY_END:
        writer.EndArray();
        break;
      case lumo::JSON_OBJECT_END:
        writer.EndObject();
        break;
      case lumo::JSON_INT:
      case lumo::JSON_FLOAT:
        writer.RawValue(data, length, library::kNumberType);
        break;
      case lumo::JSON_STRING:
        writer.String(data, length);
        break;
      case lumo::JSON_KEY:
        writer.Key(data, length);
        break;
      case lumo::JSON_NULL:
        writer.Null();
        break;
      default:
        writer.Bool(event.type == lumo::JSON_TRUE);
        break;
    }
  }
  return buffer.GetSize();
}

}  // namespace

#if defined(BENCH_SSE2)
extern const Contestant kRapidJsonSse2{"RapidJSON, SSE2", Events, Pieces, Tree, Text};
#elif defined(BENCH_SSE42)
extern const Contestant kRapidJsonSse42{"RapidJSON, SSE4.2", Events, Pieces, Tree, Text};
extern const Contestant kRapidJsonSse42InPlace{"RapidJSON, SSE4.2, in place", EventsInPlace, nullptr,
                                               TreeInPlace, nullptr};
#else
uint64_t EventsWithNumbers(const Input &input) {
  return Read<library::kParseDefaultFlags>(library::StringStream(input.text.c_str()));
}

extern const Contestant kRapidJson{"RapidJSON", Events, Pieces, Tree, Text};
extern const Contestant kRapidJsonInPlace{"RapidJSON, in place", EventsInPlace, nullptr, TreeInPlace,
                                          nullptr};
extern const Contestant kRapidJsonNumbers{
    "RapidJSON, its numbers", EventsWithNumbers, nullptr, nullptr, nullptr, false};
#endif

}  // namespace bench
