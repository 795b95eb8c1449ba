// fuzz/exchange.cpp: any bytes from the server, in pieces of any size, through the receive loop, over a
// connection that may break.
#include "network.h"
#include "protocol/http_transport.h"
#include "transaction_record.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const size_t piece = 1U + input.Take() * 2U;
  const uint8_t options = input.Take();
  const size_t pieces = options < 128 ? fuzz::kNeverBreaks : options % 8U;
  fuzz::EmptyFolder();
  fuzz::AnswerWith(input.Rest(), piece, pieces);
  fuzz::TakeSent();
  const lumo::ScopedTransaction scoped(lumo::TransactionCreate());
  lumo::Transaction *transaction = scoped.get();
  lumo::TransactionCopyText(transaction, &transaction->serverAddr, "http://127.0.0.1:1/ws");
  transaction->request.type = static_cast<lumo::RequestType>(options % lumo::REQUEST_UNKNOWN);
  const int code = lumo::TransactionProcessJson(transaction);
  fuzz::Promise(code == 0 || code == -303 || (code <= -401 && code >= -407),
                "a result of an exchange that reached the server");
  fuzz::Promise(!fuzz::Broke() || code == -401, "no answer over a connection that broke");
  fuzz::Promise(fuzz::TakeSent().size() == 1, "one request");
  fuzz::PromiseRecordStays(fuzz::PrintRecord(transaction));
  return 0;
}
