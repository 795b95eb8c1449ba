#include <yajl/yajl_gen.h>
#include <yajl/yajl_parse.h>
#include <yajl/yajl_tree.h>

#include <algorithm>
#include <cstdlib>

#include "contestants.h"
#include "json/json_event.h"

namespace bench {
namespace {

int Add(void *user, size_t length) {
  *static_cast<uint64_t *>(user) += 1 + length;
  return 1;
}
int Plain(void *user) {
  return Add(user, 0);
}
int Boolean(void *user, int) {
  return Add(user, 0);
}
int Number(void *user, const char *, size_t length) {
  return Add(user, length);
}
int Bytes(void *user, const unsigned char *, size_t length) {
  return Add(user, length);
}

const yajl_callbacks kCallbacks = {Plain, Boolean, nullptr, nullptr, Number, Bytes,
                                   Plain, Bytes,   Plain,   Plain,   Plain};

const unsigned char *Unsigned(const char *text) {
  return reinterpret_cast<const unsigned char *>(text);
}

uint64_t Feed(const std::string &text, size_t piece) {
  uint64_t sum = 0;
  yajl_handle parser = yajl_alloc(&kCallbacks, nullptr, &sum);
  yajl_config(parser, yajl_dont_validate_strings, 1);  // nor do the others look whether strings are UTF-8
  for (size_t at = 0; at < text.size(); at += piece) {
    const size_t length = std::min(piece, text.size() - at);
    if (yajl_parse(parser, Unsigned(text.data() + at), length) != yajl_status_ok) std::abort();
  }
  if (yajl_complete_parse(parser) != yajl_status_ok) std::abort();
  yajl_free(parser);
  return sum;
}

uint64_t Events(const Input &input) {
  return Feed(input.text, input.text.size());
}
uint64_t Pieces(const Input &input) {
  return Feed(input.text, kPiece);
}

uint64_t Tree(const Input &input) {
  char error[256];
  yajl_val root = yajl_tree_parse(input.text.c_str(), error, sizeof error);
  if (root == nullptr) std::abort();
  const uint64_t count = YAJL_IS_ARRAY(root) ? YAJL_GET_ARRAY(root)->len : YAJL_GET_OBJECT(root)->len;
  yajl_tree_free(root);
  return count;
}

uint64_t Text(const Input &input) {
  yajl_gen generator = yajl_gen_alloc(nullptr);
  for (const Event &event : input.events) {
    const size_t length = event.data.size();
    switch (event.type) {
      case lumo::JSON_ARRAY_BEGIN:
        yajl_gen_array_open(generator);
        break;
      case lumo::JSON_OBJECT_BEGIN:
        yajl_gen_map_open(generator);
        break;
      case lumo::JSON_ARRAY_END:
        yajl_gen_array_close(generator);
        break;
      case lumo::JSON_OBJECT_END:
        yajl_gen_map_close(generator);
        break;
      case lumo::JSON_INT:
      case lumo::JSON_FLOAT:
        yajl_gen_number(generator, event.data.data(), length);
        break;
      case lumo::JSON_STRING:
      case lumo::JSON_KEY:
        yajl_gen_string(generator, Unsigned(event.data.data()), length);
        break;
      case lumo::JSON_NULL:
        yajl_gen_null(generator);
        break;
      default:
        yajl_gen_bool(generator, event.type == lumo::JSON_TRUE);
        break;
    }
  }
  const unsigned char *text = nullptr;
  size_t length = 0;
  if (yajl_gen_get_buf(generator, &text, &length) != yajl_gen_status_ok) std::abort();
  yajl_gen_free(generator);
  return length;
}

}  // namespace

extern const Contestant kYajl{"yajl", Events, Pieces, Tree, Text};

}  // namespace bench
