// fuzz/answer.cpp: any bytes as the server's answer.
#include "protocol/answer.h"

#include "record/transaction.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::EmptyFolder();
  const std::string answer(reinterpret_cast<const char *>(data), size);
  lumo::Transaction *transaction = lumo::TransactionCreate();
  const int code =
      lumo::ParseOperationResponse(transaction, answer.c_str(), static_cast<uint32_t>(answer.size()));
  fuzz::Promise(code <= 0, "a result code");
  fuzz::Promise(transaction->request.type < lumo::REQUEST_UNKNOWN, "an operation that can be journalled");
  fuzz::Promise(transaction->activation.activationType < lumo::ACTIVATION_UNKNOWN,
                "an activation that reports know");
  lumo::ParseHttpStatus(answer.c_str());
  lumo::TransactionFree(transaction);
  return 0;
}
