// fuzz/answer.cpp: any bytes as the server's answer, to the journal record and the slips that follow it.
#include "protocol/answer.h"

#include "engine/slip.h"
#include "record/receipt.h"
#include "transaction_record.h"

namespace {

// A longer text may not fit in a line of the slip, which ends the process as it is meant to.
constexpr size_t kSlipAnswer = 900;

bool IsOutcome(int code) {
  return code == 0 || code == -303 || (code <= -402 && code >= -407);
}

void PrintSlips(lumo::Transaction *transaction) {
  lumo::PrintPayment(transaction);
  lumo::PrintBalance(transaction);
  lumo::PrintCashBack(transaction);
  lumo::PrintActivation(transaction, transaction->activation.activationType, 1);
  const std::string body = lumo::ReceiptGetText(transaction->body);
  fuzz::Promise(body.size() == lumo::ReceiptGetLength(transaction->body), "a slip without zero bytes");
  fuzz::Promise(body.find("  Полагающиеся бонусы   \n") != std::string::npos, "the payment's lines");
  fuzz::Promise(body.find("**** ВОЗВРАТ ТОВАРА ****\n") != std::string::npos, "the return's lines");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::EmptyFolder();
  const std::string answer(reinterpret_cast<const char *>(data), size);
  const lumo::ScopedTransaction scoped(lumo::TransactionCreate());
  lumo::Transaction *transaction = scoped.get();
  transaction->request.type = lumo::REQUEST_PAYMENT;
  const int code = lumo::ParseOperationResponse(transaction, answer.c_str());
  fuzz::Promise(IsOutcome(code), "a code that an answer can have");
  fuzz::Promise((code == 0) <= (transaction->response.requestState == lumo::STATE_SUCCESS),
                "no success that the server did not report");
  fuzz::Promise(transaction->request.type < lumo::REQUEST_UNKNOWN, "an operation that can be journalled");
  fuzz::Promise(transaction->activation.activationType < lumo::ACTIVATION_UNKNOWN,
                "an activation that reports know");
  fuzz::PromiseRecordStays(fuzz::PrintRecord(transaction));
  if (answer.size() <= kSlipAnswer) PrintSlips(transaction);
  const bool has_title = std::string(answer.c_str()).find("HTTP Status") != std::string::npos;
  fuzz::Promise(has_title || lumo::ParseHttpStatus(answer.c_str()) == 0, "no status without its title");
  return 0;
}
