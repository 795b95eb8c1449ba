#include "operation.h"

#include <iostream>

#include "progress.h"
#include "slip.h"

namespace reg {
namespace {

// One transaction from its creation to its close, whatever happens in between.
class OneTransaction {
 public:
  OneTransaction(Till &till, const std::string &card, const std::string &cashier) : library_(till.Started()) {
    till.Check(library_.CreateTransaction(card.c_str(), cashier.c_str()));
  }
  ~OneTransaction() { library_.CloseTransaction(); }
  OneTransaction(const OneTransaction &) = delete;
  OneTransaction &operator=(const OneTransaction &) = delete;

 private:
  Library &library_;
};

void ShowAnswer(const Library &library) {
  const std::string state = library.getResponseState();
  const std::string code = library.getResponseStateCode();
  std::cout << "  server " << OrDash(state) << " / " << OrDash(code) << ", RRN " << OrDash(library.getRRN())
            << '\n';
}

void ShowSlip(const Library &library) {
  const char *const pieces[] = {library.getReceiptHeaderPtr(), library.getReceiptBodyPtr(),
                                library.getReceiptFooterPtr()};
  if (pieces[1] == nullptr || *pieces[1] == '\0') return;
  std::string text;
  for (const char *piece : pieces) {
    if (piece == nullptr) continue;
    text += piece;
    if (!text.empty() && text.back() != '\n') text += '\n';  // the deposit's last line has no end of its own
  }
  DrawSlip(std::cout, text);
}

}  // namespace

void Operate(Till &till, const CardOptions &options, const std::function<int(Library &)> &operation,
             const std::function<void(Library &)> &after) {
  const std::string &card = options.card.empty() ? till.card : options.card;
  if (card.empty()) throw Failure(kBadWords, "which card? --card NUMBER");
  Library &library = till.Started();
  const OneTransaction transaction(till, card, options.cashier.empty() ? till.cashier : options.cashier);
  int code = 0;
  {
    const Progress progress(till.TraceFile(), 0, till.showsProgress);
    code = operation(library);
  }
  if (code < 0 && library.getResponseState()[0] != '\0') ShowAnswer(library);
  till.Check(code);
  ShowSlip(library);
  ShowAnswer(library);
  if (after) after(library);
}

}  // namespace reg
