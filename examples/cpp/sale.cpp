// A cash register with the loyalty programme:   sale BILL   with the path of BILL.JSN beside the library
// file. It reads what the cashier does, a line each, and ends each answer with the line "ready":
//   CARD          sells what is on the counter to the customer with this card
//   CARD spend    the same; the customer wants to pay with bonuses
//   send          sends what waits for the server
// The end of the input closes the shift.
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#ifdef _WIN32
#include <windows.h>
#endif

#include "lumo.hpp"

// The time as the library writes it, such as "2012-12-05T10:00:00Z".
std::string Now() {
  const std::time_t now = std::time(nullptr);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&now));
  return text;
}

void Say(const std::string &what, const char *outcome, lumo::Result result) {
  std::cout << what << " " << outcome << ": " << result.code() << " "
            << (result == ERR_SERVER_ERROR ? lumo::getResponseStateCode() : result.message()) << "\n";
}

// The goods on the counter.
lumo::Result WriteBill(const char *path) {
  std::ofstream bill(path, std::ios::binary);
  bill << R"({"totalSum":15000,"orderLen":2,"billNum":"1","billDate":")" << Now() << R"(","partnerFee":0,)"
       << R"("goodList":{"good":[)"
       << R"({"title":"Хлеб","productCode":"001","positionCost":5000,"orderNum":1,"cnt":1},)"
       << R"({"title":"Чай","productCode":"002","positionCost":10000,"orderNum":2,"cnt":2}]}})" << std::flush;
  return bill.good() ? 0 : ERR_BILL_OPEN;
}

// The server may have carried it out: only its answer is missing.
bool IsLost(lumo::Result result) {
  return result.code() <= ERR_JSON_SYNTAX && result.code() >= ERR_REQUEST_SEND && result != ERR_SERVER_ERROR;
}

// A sale in the current transaction. Goods can always be sold without the card.
void Sell(bool wants_to_spend) {
  const std::string before = lumo::getRRN();
  if (lumo::BalanceProc().ok())
    std::printf("on the card: %d.%02d\n", lumo::GetBalance() / 100, lumo::GetBalance() % 100);
  if (lumo::getRRN() == before) {  // the server would refuse the sale for ever
    std::cout << "no number: the server was never met, or the clock is behind; sell without the card\n";
    return;
  }
  lumo::Result result = lumo::PaymentProc(wants_to_spend, "BILL.JSN");  // how many, the server decides
  const std::string rrn = lumo::getRRN();
  if (result.ok() || result == ERR_BILL_OPEN) {  // paid; at worst the bill could not be rewritten
    std::cout << lumo::getReceiptHeaderPtr() << lumo::getReceiptBodyPtr() << lumo::getReceiptFooterPtr();
    result = lumo::PaymentConfirmProc(rrn);  // until now the bonuses were only reserved
    if (IsLost(result)) result = lumo::PaymentConfirmProc(rrn);
    if (result.ok() || lumo::getResponseStateCode() == "BILL_INCORRECT_STATE")  // it had arrived
      std::cout << rrn << (lumo::lumoIsOffline() ? " waits for the server\n" : " is confirmed\n");
    else
      Say(rrn, "is paid, confirm it later", result);
  } else if (IsLost(result)) {  // paid or not? Undone, it can be sold again
    result = lumo::PaymentCancelProc(rrn);
    if (result.ok() || lumo::getResponseStateCode() == "BILL_NOT_FOUND")
      std::cout << rrn << (result.ok() ? " is cancelled" : " was never paid") << ": sell again\n";
    else
      Say(rrn, "may be paid, cancel it later", result);
  } else {
    Say(rrn, "is not paid", result);
  }
}

int main(int argc, char **argv) {
  lumo::ShiftScope shift;
  lumo::Result result = argc == 2 ? lumo::LUMOInit() : ERR_CONFIG_LOAD;
  if (result.ok()) result = shift.Open("1");
  if (!result.ok() && result != ERR_SHIFT_ALREADY_OPEN) return Say("sale BILL", "cannot start", result), 1;
#ifdef _WIN32
  SetConsoleOutputCP(CP_UTF8);
#endif
  const std::string opened =
      Now().substr(0, 16);  // report bounds are texts: before any second of this minute
  for (std::string line; std::cout << "ready" << std::endl, std::getline(std::cin, line);) {
    std::string word, wish;
    std::istringstream(line) >> word >> wish;
    if (word == "send") {
      const int waiting = lumo::lumoOfflineCount(), sent = lumo::SendOfflinePayments();
      std::cout << "sent " << sent << " of " << waiting << "\n";
      if (sent == waiting) result = lumo::lumoClearOffline(sent);  // else OFFLINE holds those that failed
    } else if (!word.empty()) {
      lumo::TransactionScope transaction;
      result = WriteBill(argv[1]);
      if (result.ok()) result = transaction.Create(word, "7");
      if (result.ok())
        Sell(wish == "spend");
      else
        Say(word, "is not sold to", result);
    }
  }
  if (lumo::GenerateSummaryReport(opened, "9") > 0)
    std::cout << lumo::GetReportPtr();  // "9": behind all dates
  if (result = shift.Close(); !result.ok()) Say("the shift", "is not closed", result);
  return lumo::LUMOClean().code();
}
