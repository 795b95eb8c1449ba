// fuzz/bill.cpp: any bytes as a bill file and as a list of returned goods.
#include "engine/bill_files.h"
#include "record/transaction.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const uint8_t options = input.Take();
  fuzz::EmptyFolder();
  fuzz::WriteFile("BILL", input.Rest());
  lumo::Transaction *transaction = lumo::TransactionCreate();
  if ((options & 1) != 0) {
    lumo::CashbackParse(transaction, "BILL");
  } else if (lumo::BillParse(transaction, "BILL", (options & 2) != 0 ? 1 : 0) == 0) {
    fuzz::Promise(lumo::BillModify(transaction, "BILL") == 0, "a bill that was read can be written");
    fuzz::Promise(lumo::BillParse(transaction, "BILL", 1) == 0, "a bill that was written can be read");
  }
  lumo::TransactionFree(transaction);
  return 0;
}
