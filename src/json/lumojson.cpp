#include "json/lumojson.h"

#include <cstring>

#include "foundation/arithmetic.h"
#include "foundation/files.h"
#include "foundation/format.h"
#include "foundation/memory.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "json/json_dom.h"
#include "json/json_parser.h"
#include "json/json_scan.h"

namespace lumo {

// The tree lies in few blocks: nodes grow from a block's low end, where they stay aligned, texts from
// its high end.
struct JsonBlock {
  JsonBlock *next;
};

struct JsonReader {
  bool hasRoot;
  bool readFailed;
  JsonNode root;
  JsonBlock *blocks;  // every block, the newest first
  char *low;          // what is free of the block in use
  char *high;
  size_t blockSize;  // of the next block
};

namespace {

constexpr uint32_t kFileChunk = 1024;
constexpr size_t kSmallestBlock = 1024;
// A heap that has once had to give a large block back to the system keeps as much from then on: what trees
// of up to twice this size need is there when the next one is built.
constexpr size_t kLargestBlock = 1024 * 1024;
constexpr size_t kBlockGrowth = 4;
constexpr size_t kFirstItems = 2048;

int printer_flag;

// Room for a piece that the block in use cannot take: a new block in use or, for a large piece, a block of
// its own, so that what is left of the block in use is not lost. `texts` takes it from the high end.
char *AllocateInNewBlock(JsonReader *reader, size_t size, bool texts) {
  const bool of_its_own = size > reader->blockSize / 2;
  const size_t block_size = of_its_own ? size : reader->blockSize;
  auto *block = static_cast<JsonBlock *>(MemMalloc(sizeof(JsonBlock) + block_size, LUMO_HERE));
  block->next = reader->blocks;
  reader->blocks = block;
  char *bytes = reinterpret_cast<char *>(block + 1);
  if (of_its_own) return bytes;
  reader->blockSize = Smaller(block_size * kBlockGrowth, kLargestBlock);
  reader->low = texts ? bytes : bytes + size;
  reader->high = texts ? bytes + block_size - size : bytes + block_size;
  return texts ? reader->high : bytes;
}

void *AllocateNodes(JsonReader *reader, size_t size) {
  if (size > static_cast<size_t>(reader->high - reader->low)) return AllocateInNewBlock(reader, size, false);
  char *bytes = reader->low;
  reader->low += size;
  return bytes;
}

inline const char *CopyText(JsonReader *reader, const char *text, uint32_t length) {
  const size_t size = size_t{length} + 1;
  char *copy;
  if (size > static_cast<size_t>(reader->high - reader->low)) {
    copy = AllocateInNewBlock(reader, size, true);
  } else {
    reader->high -= size;
    copy = reader->high;
  }
  JsonCopyBytes(copy, text, length);
  copy[length] = 0;
  return copy;
}

// Builds JsonNodes. The items of the open structures lie on one stack; a structure that is closed moves its
// own from the stack's end into a block, so every array of items is written once and lies in one piece.
struct NodeTree {
  struct Structure {
    JsonEvent type;
    size_t start;  // of its items
  };
  using Value = JsonNode;

  JsonReader *reader;
  char *items;
  size_t itemsSize;
  size_t itemsFill;

  bool CreateStructure(uint32_t, bool is_object, Structure *out_created) {
    out_created->type = is_object ? JSON_OBJECT_BEGIN : JSON_ARRAY_BEGIN;
    out_created->start = itemsFill;
    return true;
  }

  bool CreateValue(JsonEvent type, const char *text, uint32_t length, JsonNode *out_created) {
    out_created->type = type;
    out_created->count = length;
    out_created->text = length != 0 ? CopyText(reader, text, length) : "";
    return true;
  }

  JsonNode CloseStructure(const Structure &structure) {
    const size_t size = itemsFill - structure.start;
    const size_t item_size = structure.type == JSON_OBJECT_BEGIN ? sizeof(JsonMember) : sizeof(JsonNode);
    JsonNode node;
    node.type = structure.type;
    node.count = static_cast<uint32_t>(size / item_size);
    void *bytes = nullptr;
    if (size != 0) {
      bytes = AllocateNodes(reader, size);
      std::memcpy(bytes, items + structure.start, size);
    }
    if (structure.type == JSON_OBJECT_BEGIN) {
      node.members = static_cast<JsonMember *>(bytes);
    } else {
      node.elements = static_cast<JsonNode *>(bytes);
    }
    itemsFill = structure.start;
    return node;
  }

  // Room for one more item.
  char *Push(size_t size) {
    if (itemsSize - itemsFill < size) {
      const size_t grown_size = itemsSize != 0 ? itemsSize * 2 : kFirstItems;
      items = static_cast<char *>(MemReallocShort(items, grown_size));
      itemsSize = grown_size;
    }
    itemsFill += size;
    return items + itemsFill - size;
  }

  int Append(const Structure &structure, const char *key, uint32_t key_length, const JsonNode &value) {
    if (structure.type == JSON_OBJECT_BEGIN) {
      auto *member = reinterpret_cast<JsonMember *>(Push(sizeof(JsonMember)));
      member->key = key;
      member->keyLength = key_length;
      member->value = value;
    } else {
      auto *element = reinterpret_cast<JsonNode *>(Push(sizeof(JsonNode)));
      *element = value;
    }
    return 0;
  }

  const char *CopyKey(const char *key, uint32_t length) { return CopyText(reader, key, length); }
};

// One document on its way into a reader. Begins zero-filled.
struct Parse {
  JsonReader *reader;
  NodeTree tree;
  JsonDomBuilder<NodeTree> builder;
  JsonParser parser;

  ~Parse() {
    JsonParserFree(&parser);
    JsonDomFree(&builder);
    MemFreeIfAny(tree.items);
  }
};

int BeginParse(Parse *parse, JsonReader *reader, size_t first_block) {
  parse->reader = reader;
  parse->tree.reader = reader;
  if (reader->blocks == nullptr) reader->blockSize = first_block;
  parse->builder.reallocHook = MemReallocShort;
  int error = JsonDomInit(&parse->builder, &parse->tree);
  if (error != 0) {  // GCOVR_EXCL_START: out of memory ends the process
    TraceError("JSON Parser DOM init failed [%d]\n", error);
    return ERR_JSON_DOM_INIT;
  }  // GCOVR_EXCL_STOP
  JsonParserConfig config = JsonParserConfig();
  config.callocHook = MemCallocShort;
  config.reallocHook = MemReallocShort;
  error = JsonParserInit(&parse->parser, &config, JsonDomCallback<NodeTree>, &parse->builder);
  if (error != 0) {  // GCOVR_EXCL_START: out of memory ends the process
    TraceError("JSON Parser: something wrong happened during init [%d]\n", error);
    return ERR_JSON_PARSER_INIT;
  }  // GCOVR_EXCL_STOP
  return 0;
}

// Hands the root of a document that was read to its end to the reader.
void KeepRoot(Parse *parse) {
  parse->reader->hasRoot = parse->builder.hasRoot;
  if (parse->builder.hasRoot) parse->reader->root = parse->builder.root;
}

// 0 or ERR_JSON_SYNTAX.
int FeedChunk(Parse *parse, const char *chunk, uint32_t length) {
  uint32_t processed = 0;
  const int error = JsonParserFeed(&parse->parser, chunk, length, &processed);
  if (error == 0) return 0;
  TraceError("JSON Parser Error res [%d] last character [%d]\n%1000s\n", error, static_cast<int>(processed),
             chunk);
  return ERR_JSON_SYNTAX;
}

// Reads past a byte order mark, or goes back to the start. 0, ERR_JSON_SYNTAX or ERR_JSON_FILE_OPEN.
int SkipByteOrderMark(Parse *parse, HANDLE file) {
  char mark[4] = {};
  uint32_t length = 0;
  if (!FileReadAll(file, mark, 3, &length)) return ERR_JSON_FILE_OPEN;
  if (length == 0) return 0;
  if (std::memcmp(mark, "\xEF\xBB\xBF", 3) == 0) {
    Trace("Byte Order Mark skipping\n");
    return 0;
  }
  // Note: the bytes are signed, so one of 80 or more prints with FFFFFF before its two digits.
  const auto *bytes = reinterpret_cast<const signed char *>(mark);
  Trace("No BOM found %02X %02X %02X\n", static_cast<unsigned>(bytes[0]), static_cast<unsigned>(bytes[1]),
        static_cast<unsigned>(bytes[2]));
  bool moved = false;
  FileSeek(file, 0, FILE_BEGIN, &moved);
  // A file that cannot go back goes on behind the bytes that are read already.
  return moved ? 0 : FeedChunk(parse, mark, length);
}

// 0, ERR_JSON_SYNTAX or ERR_JSON_FILE_OPEN.
int FeedFile(Parse *parse, HANDLE file) {
  char chunk[kFileChunk + 1];
  for (;;) {
    uint32_t length = 0;
    if (!FileReadPiece(file, chunk, kFileChunk, &length)) return ERR_JSON_FILE_OPEN;
    if (length == 0) return 0;
    chunk[length] = 0;
    const int error = FeedChunk(parse, chunk, length);
    if (error != 0) return error;
  }
}

}  // namespace

JsonReader *JsonReaderCreate() {
  return static_cast<JsonReader *>(MemCalloc(1, sizeof(JsonReader), LUMO_HERE));
}

void JsonReaderDestroy(JsonReader *reader) {
  if (reader == nullptr) return;
  for (JsonBlock *block = reader->blocks; block != nullptr;) {
    JsonBlock *next = block->next;
    MemFree(block, LUMO_HERE);
    block = next;
  }
  MemFree(reader, LUMO_HERE);
}

const JsonNode *JsonReaderRoot(const JsonReader *reader) {
  return reader != nullptr && reader->hasRoot ? &reader->root : nullptr;
}

bool JsonReaderReadFailed(const JsonReader *reader) {
  return reader != nullptr && reader->readFailed;
}

int ParseJsonFile(JsonReader *reader, const char *file_name) {
  Trace("parseJsonFile [%s]\n", file_name);
  if (reader == nullptr) return ERR_JSON_INTERNAL;
  Parse parse = {};
  int result = BeginParse(&parse, reader, kSmallestBlock);
  if (result != 0) return result;  // GCOVR_EXCL_BR_LINE: out of memory ends the process
  const ScopedFile file(FileOpen(file_name, "r"));
  if (!FileIsValid(file.get())) return ERR_JSON_FILE_OPEN;
  result = SkipByteOrderMark(&parse, file.get());
  if (result == 0) result = FeedFile(&parse, file.get());
  reader->readFailed = result == ERR_JSON_FILE_OPEN;
  if (result == 0) KeepRoot(&parse);
  return result;
}

int ParseJsonText(JsonReader *reader, const char *text) {
  if (reader == nullptr) return ERR_JSON_INTERNAL;
  const size_t length = text != nullptr ? std::strlen(text) : 0;
  // A tree takes two to three times the room of its compact text.
  const size_t first_block = kSmallestBlock + 3 * Smaller(length, 16 * kLargestBlock);
  Parse parse = {};
  const int error = BeginParse(&parse, reader, first_block);
  if (error != 0) return error;  // GCOVR_EXCL_BR_LINE: out of memory ends the process
  uint32_t processed = 0;
  const int syntax = JsonParserFeed(&parse.parser, text, static_cast<uint32_t>(length), &processed);
  if (syntax != 0) {
    TraceError("JSON Parser Error %d %d\n", syntax, static_cast<int>(processed));
    return ERR_JSON_SYNTAX;
  }
  KeepRoot(&parse);
  return 0;
}

const char *JsonText(const JsonNode &node) {
  return node.type == JSON_ARRAY_BEGIN || node.type == JSON_OBJECT_BEGIN ? "" : node.text;
}

int32_t JsonInt32(const JsonNode &node) {
  return ParseInt32(JsonText(node));
}

bool KeyIsPrefixOf(const JsonMember &member, const char *name) {
  for (uint32_t i = 0; i < member.keyLength && member.key[i] != 0; ++i) {
    if (member.key[i] != name[i]) return false;
  }
  return true;
}

void WriteKey(JsonPrinter *printer, const char *key) {
  JsonPrinterRaw(printer, JSON_KEY, key, static_cast<uint32_t>(std::strlen(key)));
}

int WriteIntMember(JsonPrinter *printer, const char *key, int32_t value) {
  char text[kIntBytes];
  const uint32_t length = WriteInt(text, value);
  WriteKey(printer, key);
  return JsonPrinterRaw(printer, JSON_INT, text, length);
}

int WriteStringMember(JsonPrinter *printer, const char *key, const char *text) {
  WriteKey(printer, key);
  return JsonPrinterRaw(printer, JSON_STRING, text,
                        text != nullptr ? static_cast<uint32_t>(std::strlen(text)) : 0);
}

int WriteBoolMember(JsonPrinter *printer, const char *key, bool flag) {
  WriteKey(printer, key);
  return JsonPrinterRaw(printer, flag ? JSON_TRUE : JSON_FALSE, nullptr, 0);
}

int SetPrinterFlag(int value) {
  return printer_flag = value;
}

}  // namespace lumo
