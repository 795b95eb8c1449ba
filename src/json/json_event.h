// json/json_event.h: the events that a JSON text is made of, shared by parser, printer and tree.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumo {

// The numbers show in trace lines and are kept.
enum JsonEvent : int32_t {
  JSON_ARRAY_BEGIN = 1,
  JSON_OBJECT_BEGIN = 2,
  JSON_ARRAY_END = 3,
  JSON_OBJECT_END = 4,
  JSON_INT = 5,     // data: the number's text
  JSON_FLOAT = 6,   // data: the number's text; it has a fraction or an exponent
  JSON_STRING = 7,  // data: the decoded bytes
  JSON_KEY = 8,     // data: the decoded bytes
  JSON_TRUE = 9,
  JSON_FALSE = 10,
  JSON_NULL = 11,
};

// Takes one event. `data` is zero-terminated and valid only during the call; null for events without data. A
// result other than 0 stops the feed and becomes its result.
using JsonCallback = int (*)(void *user, JsonEvent event, const char *data, uint32_t length);

using JsonCallocHook = void *(*)(size_t count, size_t size);  // zero-filled
using JsonReallocHook = void *(*)(void *pointer, size_t size);

}  // namespace lumo
