// json/lumojson.h: a JSON file or text as a tree whose values keep their text. The reader owns it whole.
#pragma once

#include "foundation/arithmetic.h"
#include "foundation/scoped.h"
#include "json/json_event.h"
#include "json/json_printer.h"

namespace lumo {

struct JsonMember;

// A value: text of `count` bytes with a terminating zero; true, false and null have the empty text.
// A structure: `count` items.
struct JsonNode {
  JsonEvent type;  // JSON_ARRAY_BEGIN, JSON_OBJECT_BEGIN, or the value's event
  uint32_t count;
  union {
    const char *text;     // values
    JsonNode *elements;   // JSON_ARRAY_BEGIN
    JsonMember *members;  // JSON_OBJECT_BEGIN
  };
};

struct JsonMember {
  const char *key;  // decoded, with a terminating zero
  uint32_t keyLength;
  JsonNode value;
};

struct JsonReader;

JsonReader *JsonReaderCreate();
void JsonReaderDestroy(JsonReader *reader);  // frees every node and text of its tree
using ScopedReader = Scoped<JsonReader, JsonReaderDestroy>;
const JsonNode *JsonReaderRoot(const JsonReader *reader);  // null until a parse brought an object or array
// True when the last ParseJsonFile stopped because a read failed, not because the file ended.
bool JsonReaderReadFailed(const JsonReader *reader);

// Each returns 0, ERR_JSON_DOM_INIT, ERR_JSON_PARSER_INIT, ERR_JSON_SYNTAX or, without a reader,
// ERR_JSON_INTERNAL; for a file also ERR_JSON_FILE_OPEN.
int ParseJsonFile(JsonReader *reader, const char *file_name);
int ParseJsonText(JsonReader *reader, const char *text);

// The text of a value; "" for an object or array.
const char *JsonText(const JsonNode &node);
// The leading digits of the value's text, clamped to 32 bits; 0 for an object or array.
int32_t JsonInt32(const JsonNode &node);
inline bool JsonIsNumber(const JsonNode &node) {
  return node.type == JSON_INT || node.type == JSON_FLOAT;
}
inline bool JsonIsObject(const JsonNode &node) {
  return node.type == JSON_OBJECT_BEGIN;
}

// The items of a structure, for range loops.
template <typename Item>
struct JsonItems {
  const Item *first;
  uint32_t count;
  const Item *begin() const { return first; }
  const Item *end() const { return first + count; }
};

// None when the node is absent or of another kind.
inline JsonItems<JsonMember> JsonMembers(const JsonNode *node) {
  const bool has_members = node != nullptr && JsonIsObject(*node) && node->count > 0;
  return has_members ? JsonItems<JsonMember>{node->members, node->count} : JsonItems<JsonMember>{nullptr, 0};
}
inline JsonItems<JsonNode> JsonElements(const JsonNode &node) {
  const bool has_elements = node.type == JSON_ARRAY_BEGIN && node.count > 0;
  return has_elements ? JsonItems<JsonNode>{node.elements, node.count} : JsonItems<JsonNode>{nullptr, 0};
}

// True when the first `keyLength` bytes of `name` equal the member's key. Note: a key that is the
// beginning of a known name, the empty key included, is taken as that name. A key with a zero byte compares
// up to it.
bool KeyIsPrefixOf(const JsonMember &member, const char *name);

// The member's key for a trace line "%.*s": its first 40 bytes.
constexpr uint32_t kTracedKeyBytes = 40;
inline int TracedKeyLength(const JsonMember &member) {
  return static_cast<int>(Smaller(member.keyLength, kTracedKeyBytes));
}

// Print a key with its value.
int WriteIntMember(JsonPrinter *printer, const char *key, int32_t value);
int WriteStringMember(JsonPrinter *printer, const char *key, const char *text);  // null prints as ""
int WriteBoolMember(JsonPrinter *printer, const char *key, bool flag);
void WriteKey(JsonPrinter *printer, const char *key);

// The process-wide flag of the member writers. Kept for callers that set it: the text is the same with
// it and without.
int SetPrinterFlag(int value);

}  // namespace lumo
