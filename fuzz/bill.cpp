// fuzz/bill.cpp: any bytes as a bill file and as a list of returned goods. A bill that was read, written and
// read again is written the same.
#include "engine/bill_files.h"
#include "record/transaction.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const uint8_t options = input.Take();
  fuzz::EmptyFolder();
  fuzz::WriteFile("BILL", input.Rest());
  const lumo::ScopedTransaction scoped(lumo::TransactionCreate());
  lumo::Transaction *transaction = scoped.get();
  if ((options & 1) != 0) {
    const int code = lumo::CashbackParse(transaction, "BILL");
    fuzz::Promise(code == 0 || code == -303 || code == -402, "a result of a return list's own");
    fuzz::Promise((transaction->cashBack.goodCount == 0) >= (transaction->cashBack.goods == nullptr),
                  "goods where they are counted");
    return 0;
  }
  const int code = lumo::BillParse(
      transaction, "BILL", (options & 2) != 0 ? lumo::GoodBonuses::kLoad : lumo::GoodBonuses::kPassOver);
  fuzz::Promise(code == 0 || code == -303 || code == -402, "a result of a bill's own");
  if (code == 0) {
    fuzz::Promise(lumo::BillModify(transaction, "BILL") == 0, "a bill that was read can be written");
    const std::string written = fuzz::ReadFile("BILL");
    const int32_t goods = transaction->bill.goodCount;
    fuzz::Promise(lumo::BillParse(transaction, "BILL", lumo::GoodBonuses::kLoad) == 0,
                  "a bill that was written can be read");
    fuzz::Promise(transaction->bill.goodCount == goods, "all its goods");
    fuzz::Promise(lumo::BillModify(transaction, "BILL") == 0, "and written again");
    fuzz::Promise(fuzz::ReadFile("BILL") == written, "the same");
  }
  return 0;
}
