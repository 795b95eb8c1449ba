// protocol/answer.h: the server's answer: an error page or a document, and the parts that a document of its
// name must hold.
#pragma once

#include <cstdint>

#include "json/lumojson.h"

namespace lumo {

struct Transaction;

// Loads the answer into the record: 0 for a success. ERR_SERVER_REJECTED or ERR_SERVER_FAILURE for an error
// page, a code of ParseJsonText, or one of CheckDataIntegrity.
int ParseOperationResponse(Transaction *transaction, const char *answer);

// The same for an answer that is parsed. ERR_RESPONSE_STRUCTURE when it is no object with a member,
// ERR_RESPONSE_TYPE when its name is unknown, ERR_RESPONSE_CONTENT when a part is missing, ERR_SERVER_ERROR
// when the operation did not succeed. What was loaded until then stays in the record.
int CheckDataIntegrity(Transaction *transaction, const JsonNode *root);
int ParseHttpStatus(const char *answer);  // the number after "HTTP Status"; 0 without one

// The parts, as bits of PartBit, that the answer must hold; 0 for an unknown name.
uint32_t ResponsePartsMask(const char *response_name);

}  // namespace lumo
