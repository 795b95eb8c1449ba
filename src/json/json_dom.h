// json/json_dom.h: turns the parser's events into calls that build a tree. What the tree is made of is
// the caller's choice.
#pragma once

#include "foundation/memory.h"
#include "json/json_event.h"
#include "json/json_parser.h"

namespace lumo {

// The tree's side. It is a type and not a record of pointers, so that building costs one call an event and
// not three. A Tree has
//   Structure, Value                                  handles; may be copied
//   bool CreateStructure(depth, is_object, Structure *out_created)
//                                                     false: cannot be made; depth counts from 0
//   bool CreateValue(type, text, length, Value *out_created)
//                                                     false: no memory
//   Value CloseStructure(structure)                   all its items have been appended
//   int Append(structure, key, key_length, value)     in an array the key is null, of length 0; 0 or an error
//   const char *CopyKey(key, length)                  the tree owns the copy; null: no memory
template <class Tree>
struct JsonDomBuilder {
  struct Level {
    typename Tree::Structure structure;
    const char *key;  // of the member whose value comes next
    uint32_t keyLength;
  };

  JsonReallocHook reallocHook;  // to be set before init
  Tree *tree;
  Level *stack;  // one for each open structure; memory alone limits the depth
  uint32_t stackSize;
  uint32_t stackFill;
  bool hasRoot;
  typename Tree::Value root;
};

constexpr uint32_t kJsonDomFirstLevels = 1024;

// 0, or 1 when the stack cannot be allocated.
template <class Tree>
int JsonDomInit(JsonDomBuilder<Tree> *builder, Tree *tree) {
  builder->tree = tree;
  builder->stack = nullptr;
  builder->stackSize = kJsonDomFirstLevels;
  builder->stackFill = 0;
  builder->hasRoot = false;
  if (builder->reallocHook == nullptr) return kJsonNoMemory;  // GCOVR_EXCL_BR_LINE: always given
  using Level = typename JsonDomBuilder<Tree>::Level;
  builder->stack = static_cast<Level *>(builder->reallocHook(nullptr, kJsonDomFirstLevels * sizeof(Level)));
  return builder->stack != nullptr ? kJsonNoError : kJsonNoMemory;
}

// Frees the stack, not the tree.
template <class Tree>
void JsonDomFree(JsonDomBuilder<Tree> *builder) {
  MemFreeIfAny(builder->stack);
  builder->stack = nullptr;
}

template <class Tree>
int JsonDomOpen(JsonDomBuilder<Tree> *builder, bool is_object) {
  using Level = typename JsonDomBuilder<Tree>::Level;
  typename Tree::Structure structure;
  const bool created = builder->tree->CreateStructure(builder->stackFill, is_object, &structure);
  if (!created) return kJsonRefused;  // GCOVR_EXCL_BR_LINE: the library's own tree takes every structure
  if (builder->stackFill == builder->stackSize) {
    if (builder->stackSize > UINT32_MAX / 2) return kJsonNoMemory;  // GCOVR_EXCL_BR_LINE: 2^31 levels
    void *stack = builder->reallocHook(builder->stack, size_t{2} * builder->stackSize * sizeof(Level));
    if (stack == nullptr) return kJsonNoMemory;  // GCOVR_EXCL_BR_LINE: the library's hook ends the process
    builder->stack = static_cast<Level *>(stack);
    builder->stackSize *= 2;
  }
  Level &level = builder->stack[builder->stackFill++];
  level.structure = structure;
  level.key = nullptr;
  level.keyLength = 0;
  return kJsonNoError;
}

// Takes one event. A value outside of all structures leaves no trace: only an object or an array becomes the
// root. Nor does a bracket that closes nothing, which is reported here before the parser refuses it.
template <class Tree>
int JsonDomEvent(JsonDomBuilder<Tree> *builder, JsonEvent event, const char *data, uint32_t length) {
  if (event == JSON_ARRAY_BEGIN || event == JSON_OBJECT_BEGIN) {
    return JsonDomOpen(builder, event == JSON_OBJECT_BEGIN);
  }
  if (builder->stackFill == 0) return kJsonNoError;
  auto *top = &builder->stack[builder->stackFill - 1];
  if (event == JSON_KEY) {
    top->key = builder->tree->CopyKey(data, length);
    top->keyLength = length;
    return top->key != nullptr ? kJsonNoError : kJsonNoMemory;
  }
  typename Tree::Value value;
  if (event == JSON_ARRAY_END || event == JSON_OBJECT_END) {
    value = builder->tree->CloseStructure(top->structure);
    if (--builder->stackFill == 0) {
      builder->root = value;
      builder->hasRoot = true;
      return kJsonNoError;
    }
    --top;
  } else if (!builder->tree->CreateValue(event, data, length, &value)) {  // GCOVR_EXCL_START: as above
    return kJsonNoMemory;
  }  // GCOVR_EXCL_STOP
  const char *key = top->key;
  const uint32_t key_length = top->keyLength;
  top->key = nullptr;
  top->keyLength = 0;
  return builder->tree->Append(top->structure, key, key_length, value);
}

// An event callback whose user pointer is the builder.
template <class Tree>
int JsonDomCallback(void *builder, JsonEvent event, const char *data, uint32_t length) {
  return JsonDomEvent(static_cast<JsonDomBuilder<Tree> *>(builder), event, data, length);
}

}  // namespace lumo
