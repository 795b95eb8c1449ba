// fuzz/exchange.cpp: any bytes from the server, in pieces of any size, through the receive loop.
#include "network.h"
#include "protocol/http_transport.h"
#include "record/transaction.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const size_t piece = 1U + input.Take() * 2U;
  const auto type = static_cast<lumo::RequestType>(input.Take() % lumo::REQUEST_UNKNOWN);
  fuzz::EmptyFolder();
  fuzz::AnswerWith(input.Rest(), piece);
  fuzz::TakeSent();
  lumo::Transaction *transaction = lumo::TransactionCreate();
  lumo::TransactionCopyText(transaction, &transaction->serverAddr, "http://127.0.0.1:1/ws");
  transaction->request.type = type;
  const int code = lumo::TransactionProcessJson(transaction);
  fuzz::Promise(code <= 0 && code != -501, "a result of an exchange that reached the server");
  fuzz::Promise(fuzz::TakeSent().size() == 1, "one request");
  fuzz::Promise(transaction->request.type < lumo::REQUEST_UNKNOWN, "an operation that can be journalled");
  lumo::TransactionFree(transaction);
  return 0;
}
