#include "protocol/answer.h"

#include <cstring>

#include "foundation/arithmetic.h"
#include "foundation/format.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "protocol/transaction_json.h"
#include "record/enumerations.h"
#include "record/transaction.h"

namespace lumo {
namespace {

struct ResponseForm {
  const char *name;
  uint32_t parts;
};

constexpr ResponseForm kResponses[] = {
    {"cardActivationResponse", PART_RESPONSE | PART_ACTIVATION_RESULT},
    {"getBalanceResponse", PART_RESPONSE | PART_BALANCE},
    {"putPaymentResponse", PART_RESPONSE | PART_BILL},
    {"putPaymentConfirmResponse", PART_RESPONSE},
    {"putDepositResponse", PART_RESPONSE},
    {"cardExchangeResponse", PART_RESPONSE},
    {"putCashBackResponse", PART_RESPONSE | PART_CASH_BACK_RESULT},
    {"putPaymentAndConfirmResponse", PART_RESPONSE | PART_BILL},
    {"linkedCardResponse", PART_RESPONSE},
    {"getAdResponse", PART_RESPONSE | PART_AD},
    {"getLastRrnResponse", PART_RESPONSE | PART_RRN},
};

}  // namespace

int ParseOperationResponse(Transaction *transaction, const char *answer) {
  Trace("ParseOperationResponse\n");
  const int status = ParseHttpStatus(answer);
  if (status != 0) {
    TraceError("HTTP status %d\n", status);
    if (status == 400) return ERR_SERVER_REJECTED;
    if (status == 500) return ERR_SERVER_FAILURE;
  }
  const ScopedReader reader(JsonReaderCreate());
  const int result = ParseJsonText(reader.get(), TextOrEmpty(answer));
  return result != 0 ? result : CheckDataIntegrity(transaction, JsonReaderRoot(reader.get()));
}

int CheckDataIntegrity(Transaction *transaction, const JsonNode *root) {
  if (root == nullptr) {
    TraceError("no root element in json response\n");
    return ERR_RESPONSE_STRUCTURE;
  }
  if (!JsonIsObject(*root)) {
    TraceError("root element is not an object\n");
    return ERR_RESPONSE_STRUCTURE;
  }
  if (root->count == 0) {
    TraceError("root element is empty!\n");
    return ERR_RESPONSE_STRUCTURE;
  }
  const JsonMember &response = root->members[0];
  uint32_t expected = ResponsePartsMask(response.key);
  if (expected == 0) {
    TraceError("No parts in transaction [%s]\n", response.key);
    return ERR_RESPONSE_TYPE;
  }
  const uint32_t found = LoadParts(transaction, &response.value, PartSource::kAnswer);
  const bool success = transaction->response.requestState == STATE_SUCCESS;
  if (!success) expected &= PART_RESPONSE;
  if ((found & expected) != expected) {
    TraceError("Response is not full [0x%04X | 0x%04X] [%s]\n", expected, found, response.key);
    return ERR_RESPONSE_CONTENT;
  }
  if ((found & ~expected) != 0) {
    TraceWarning("Response has extra parts [0x%04X | 0x%04X] [%s]\n", expected, found, response.key);
  }
  return success ? 0 : ERR_SERVER_ERROR;
}

int ParseHttpStatus(const char *answer) {
  constexpr char kTitle[] = "HTTP Status";
  const char *title = std::strstr(TextOrEmpty(answer), kTitle);
  return title != nullptr ? ParseInt32(title + sizeof kTitle - 1) : 0;
}

uint32_t ResponsePartsMask(const char *response_name) {
  if (response_name == nullptr || std::strlen(response_name) > kLongestName) return 0;
  for (const ResponseForm &response : kResponses) {
    if (std::strcmp(response.name, response_name) == 0) return response.parts;
  }
  TraceWarning("Unsupport Response Name: %s\n", response_name);
  return 0;
}

}  // namespace lumo
