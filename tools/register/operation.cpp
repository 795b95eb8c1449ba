#include "operation.h"

#include <algorithm>
#include <fstream>
#include <iostream>

#include "amount.h"
#include "progress.h"
#include "shop_files.h"
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

// How an operation ended.
struct Ending {
  int code = 0;
  bool isOffline = false;
  bool isDone = false;
  bool isKept = false;    // the record, by OFFLINE
  bool isLogged = false;  // and by LOG
  std::string rrn;        // its own; empty when it had none
  std::string state;      // of the server that answered; empty when none did
  std::string stateCode;
};

std::string LastRrn(const Library &library) {
  const char *rrn = library.getRRN();
  return rrn == nullptr ? "" : rrn;
}

// The library refused it before it asked anybody.
bool IsRefusedHere(int code) {
  return code == ERR_SHIFT_NOT_OPEN || code == ERR_ACTIVATION_TYPE || code == ERR_ACCOUNT_TYPE ||
         code == ERR_BILL_FORMAT || code == ERR_RETURN_LIST_FORMAT || code == ERR_JSON_FILE_OPEN;
}

// The server may have done it or not.
bool IsLost(int code) {
  return code <= ERR_JSON_SYNTAX && code >= ERR_REQUEST_SEND && code != ERR_SERVER_ERROR &&
         !IsRefusedHere(code);
}

// Of OFFLINE; none when it cannot be read.
size_t CountWaiting(const Till &till) {
  std::ifstream stream(till.Folder() / "OFFLINE", std::ios::binary);
  size_t count = 0;
  for (char block[4096]; stream.read(block, sizeof block), stream.gcount() > 0;) {
    count += static_cast<size_t>(std::count(block, block + stream.gcount(), '\n'));
  }
  return count;
}

// Whether LOG ends with the record of this number. Without a number it must end otherwise than before.
bool IsLogged(const JournalEnd &before, const JournalEnd &now, const std::string &rrn) {
  if (!rrn.empty()) return now.line.find("\"requestId\":\"" + rrn + "\"") != std::string::npos;
  return now.bytes != before.bytes || now.line != before.line;
}

Ending Run(Till &till, const Operation &operation) {
  const Library &library = *till.library;
  const std::string rrn_before = LastRrn(library);
  const size_t waiting_before = CountWaiting(till);
  const std::filesystem::path log = till.Folder() / "LOG";
  const JournalEnd log_before = EndOfJournal(log);
  Ending ending;
  {
    const Progress progress(till.TraceFile(), 0, till.showsProgress);
    ending.code = operation.call(*till.library);
  }
  ending.isOffline = library.lumoIsOffline() != 0;
  ending.isDone = ending.code == 0 || ending.code == ERR_OFFLINE_SAVE || ending.code == ERR_BILL_OPEN;
  // A payment returns 0 also when its records could not be written.
  ending.isKept = ending.isOffline && ending.code != ERR_OFFLINE_SAVE && CountWaiting(till) > waiting_before;
  // That of an operation before it is not its own.
  const std::string rrn = LastRrn(library);
  if (rrn != rrn_before) ending.rrn = rrn;
  ending.isLogged = ending.isDone && IsLogged(log_before, EndOfJournal(log), ending.rrn);
  // Before any answer the state is "OK"; and it stays what it was when no answer comes.
  const std::string state = library.getResponseState();
  if (ending.code == ERR_SERVER_ERROR ||
      (operation.asksServer && ending.isDone && !ending.isOffline && state != "OK")) {
    ending.state = state;
    ending.stateCode = library.getResponseStateCode();
  }
  return ending;
}

std::string TextOf(const Operation &operation, const Ending &ending) {
  const std::string rrn = std::string(", RRN ") + OrDash(ending.rrn);
  if (ending.isOffline) {
    return (ending.isKept ? "  OFFLINE: no server was reached, the record waits to be sent"
                          : "  OFFLINE: no server was reached, and the record was NOT kept") +
           rrn;
  }
  if (!operation.asksServer) return "  " + operation.name + " asks no server" + rrn;
  if (IsRefusedHere(ending.code)) return "  no server was asked" + rrn;
  if (ending.state.empty()) return "  no server answered" + rrn;
  return "  server " + ending.state + " / " + ending.stateCode + rrn;
}

Facts FactsOf(const Operation &operation, const Ending &ending) {
  Facts facts;
  facts.Add("operation", operation.name).Add("offline", ending.isOffline);
  if (ending.isOffline) facts.Add("kept", ending.isKept);
  if (operation.isRecorded && ending.isDone) facts.Add("logged", ending.isLogged);
  facts.Add("rrn", ending.rrn.empty() ? nullptr : ending.rrn.c_str());
  if (ending.state.empty()) return std::move(facts.Add("server", nullptr));
  return std::move(facts.Add("server", Facts().Add("state", ending.state).Add("code", ending.stateCode)));
}

std::string Slip(const Library &library) {
  const char *const pieces[] = {library.getReceiptHeaderPtr(), library.getReceiptBodyPtr(),
                                library.getReceiptFooterPtr()};
  std::string text;
  if (pieces[1] == nullptr || *pieces[1] == '\0') return text;
  for (const char *piece : pieces) {
    if (piece == nullptr) continue;
    text += piece;
    if (!text.empty() && text.back() != '\n') text += '\n';  // the deposit's last line has no end of its own
  }
  return text;
}

// What no code of the library tells: which record is missing.
void TellOfRecords(Till &till, const Operation &operation, const Ending &ending) {
  if (ending.isOffline && !ending.isKept) {
    std::cerr << "register: OFFLINE could not be written: no replay will tell the server of this operation\n";
    till.status = kRefused;
  }
  if (operation.isRecorded && ending.isDone && !ending.isLogged) {
    std::cerr << "register: LOG could not be written: this operation is missing from the reports\n";
    till.status = kRefused;
  }
}

}  // namespace

void Operate(Till &till, const CardOptions &options, const Operation &operation) {
  const std::string &card = options.card.empty() ? till.card : options.card;
  if (card.empty()) throw Failure(kBadWords, "which card? --card NUMBER");
  Library &library = till.Started();
  const OneTransaction transaction(till, card, options.cashier.empty() ? till.cashier : options.cashier);
  const Ending ending = Run(till, operation);
  Facts facts = FactsOf(operation, ending);
  if (ending.code < 0) {
    facts.Add("mayBeDone", IsLost(ending.code));
    if (!till.asJson) std::cout << TextOf(operation, ending) << '\n';
    if (!till.asJson && IsLost(ending.code)) {
      std::cout << "  The server may have done it or not: ask by the RRN, as after a lost answer.\n";
    }
    TellOfRecords(till, operation, ending);
    throw Refused{ending.code, library.GetErrorMessage(ending.code), facts};
  }
  const std::string slip = operation.hasSlip ? Slip(library) : "";
  const Amounts amounts = operation.amounts ? operation.amounts(library) : Amounts();
  for (const auto &[name, amount] : amounts) facts.Add(name, amount);
  if (operation.hasSlip) facts.Add("slip", slip);
  till.Show(facts, [&] {
    if (!slip.empty()) DrawSlip(std::cout, slip);
    std::cout << TextOf(operation, ending) << '\n';
    const char *separator = "  ";
    for (const auto &[name, amount] : amounts) {
      std::cout << separator << name << ' ' << ShowAmount(amount);
      separator = ", ";
    }
    if (!amounts.empty()) std::cout << '\n';
  });
  TellOfRecords(till, operation, ending);
}

}  // namespace reg
