// protocol/answer.h: the server's answer: an error page or a document, and the parts that a document of its
// name must hold.
#pragma once

#include <cstdint>

#include "json/lumojson.h"

namespace lumo {

struct Transaction;

int ParseOperationResponse(Transaction *transaction, const char *answer);
int CheckDataIntegrity(Transaction *transaction, const JsonNode *root);
int ParseHttpStatus(const char *answer);  // the number after "HTTP Status"; 0 without one

// The parts, as bits of PartBit, that the answer must hold; 0 for an unknown name.
uint32_t ResponsePartsMask(const char *response_name);

}  // namespace lumo
