#include "updater/update_package.h"

#include <cstdio>
#include <cstring>

#include "foundation/format.h"
#include "foundation/memory.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"

namespace lumo {
namespace {

constexpr size_t kComparedKeyBytes = 40;
constexpr char kMissingText[] = "Значение не задано";

bool KeyIs(const JsonMember &member, const char *name) {
  return std::strncmp(member.key, name, kComparedKeyBytes) == 0;
}

void DestroyUpdateResponse(UpdateResponse *response) {
  MemFreeText(&response->responseState);
  MemFreeText(&response->responseStateCode);
  MemFreeText(&response->message);
}

struct ResponseField {
  const char *key;
  char *UpdateResponse::*text;
};

constexpr ResponseField kResponseFields[] = {
    {"responseState", &UpdateResponse::responseState},
    {"responseStateCode", &UpdateResponse::responseStateCode},
    {"message", &UpdateResponse::message},
};

void ReadResponseMember(UpdateResponse *response, const JsonMember &member) {
  if (member.value.type != JSON_STRING) return;
  for (const ResponseField &field : kResponseFields) {
    if (!KeyIs(member, field.key)) continue;
    MemFreeText(&(response->*field.text));
    response->*field.text = MemCopyText(JsonText(member.value), LUMO_HERE);
    Trace(" %s = \"%s\"\n", field.key, response->*field.text);
  }
}

// A value of another type than an object has no members to walk.
uint32_t MemberCount(const JsonNode &node) {
  return node.type == JSON_OBJECT_BEGIN ? node.count : 0;
}

int ReadResponse(UpdateResponse *response, const JsonNode &value) {
  for (uint32_t i = 0; i < MemberCount(value); ++i) {
    const JsonMember &member = value.members[i];
    if (!KeyIs(member, "Response")) {
      TraceError("Expected \"Response\"  found \"%s\"\n", member.key);
      return ERR_RESPONSE_STRUCTURE;
    }
    if (member.value.type != JSON_OBJECT_BEGIN) {
      TraceError("Expected JSON_OBJECT_BEGIN found %d\n", static_cast<int>(member.value.type));
      continue;
    }
    for (uint32_t j = 0; j < member.value.count; ++j) ReadResponseMember(response, member.value.members[j]);
  }
  for (const ResponseField &field : kResponseFields) {
    if (response->*field.text == nullptr) response->*field.text = FormatAlloc("%s", kMissingText);
  }
  return 0;
}

void ReplaceResponse(UpdateResponse **holder) {
  if (*holder != nullptr) {
    (*holder)->destroy(*holder);
  } else {
    *holder = static_cast<UpdateResponse *>(MemCalloc(1, sizeof(UpdateResponse), LUMO_HERE));
    (*holder)->destroy = DestroyUpdateResponse;
  }
}

void ReadPackMember(UpdateResponse **holder, const JsonMember &member, int index) {
  if (KeyIs(member, "response")) {
    std::printf("!1! %d  %s\n", index, member.key);
    ReplaceResponse(holder);
    ReadResponse(*holder, member.value);
  } else if (KeyIs(member, "files")) {
    std::printf("!2! %d  %s\n", index, member.key);
  } else {
    std::printf("!3! %d  %s\n", index, member.key);
    TraceWarning("UNKNOWN TAG: %s", member.key);
  }
}

}  // namespace

int LoadGetUpdatePackReponse(UpdateResponse **holder, const JsonNode *root) {
  Trace("LoadGetUpdatePackReponse\n");
  *holder = nullptr;
  for (uint32_t i = 0; root != nullptr && i < MemberCount(*root); ++i) {
    const JsonMember &pack = root->members[i];
    if (!KeyIs(pack, "UpdatePack")) {
      TraceError("Expected \"UpdatePack\" found \"%s\"\n", pack.key);
      return ERR_RESPONSE_STRUCTURE;
    }
    if (pack.value.type != JSON_OBJECT_BEGIN) {
      TraceError("Expected JSON_OBJECT_BEGIN found %d\n", static_cast<int>(pack.value.type));
      return ERR_RESPONSE_STRUCTURE;
    }
    for (uint32_t j = 0; j < pack.value.count; ++j) {
      ReadPackMember(holder, pack.value.members[j], static_cast<int>(j));
    }
  }
  return ERR_RESPONSE_STRUCTURE;  // a good package too: nothing takes what was read yet
}

void DestroyUpdateFile(UpdateFile *file) {
  MemFreeText(&file->name);
  MemFreeText(&file->path);
}

void DestroyUpdateFileList(UpdateFileList *list) {
  for (int32_t i = 0; i < list->count; ++i) list->files[i].destroy(&list->files[i]);
  if (list->files != nullptr) MemFree(list->files, LUMO_HERE);
  list->files = nullptr;
  list->count = 0;
}

}  // namespace lumo
