// updater/update_package.h: the reader of the server's update package. No call uses it yet, so it is left out
// of the library file.
#pragma once

#include "json/lumojson.h"

namespace lumo {

struct UpdateResponse {
  void (*destroy)(UpdateResponse *response);  // frees the three texts
  char *responseState;                        // owned, like the next two
  char *responseStateCode;
  char *message;
};

// Reserved for the package's list of files; nothing fills them yet.
struct UpdateFile {
  void (*destroy)(UpdateFile *file);
  char *name;
  char *path;
};

struct UpdateFileList {
  void (*destroy)(UpdateFileList *list);  // frees each entry through its own destroy, then the array
  UpdateFile *files;
  int32_t count;
};

// Always ERR_RESPONSE_STRUCTURE: the reader has no success result yet. What it read stays in *holder, for the
// caller to destroy and free.
int LoadGetUpdatePackReponse(UpdateResponse **holder, const JsonNode *root);

void DestroyUpdateFile(UpdateFile *file);
void DestroyUpdateFileList(UpdateFileList *list);

}  // namespace lumo
