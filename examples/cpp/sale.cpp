// A cash register with the loyalty programme: sales, a server that goes away and comes back, answers that are
// lost, a shift's report.
//
//   sale FOLDER      the folder of the library file; the bills lie there too
//
// It reads what the cashier does, a line each, and ends its answer to each with the line "ready":
//   CARD          sells what is on the counter to the customer with this card
//   CARD spend    the same; the customer wants to pay with bonuses, as far as the programme lets her
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

void Say(const std::string &step, lumo::Result result) {
  std::cout << step << ": " << result.code() << " " << result.message() << "\n";
  if (result == ERR_SERVER_ERROR) std::cout << "the server says " << lumo::getResponseStateCode() << "\n";
}

// The goods on the counter.
bool WriteBill(const std::string &folder) {
  std::ofstream bill(folder + "/BILL.JSN", std::ios::binary);
  bill << R"({"totalSum":15000,"orderLen":2,"billNum":"1","billDate":")" << Now()
       << R"(","partnerFee":0,"goodList":{"good":[)"
       << R"({"title":"Хлеб","productCode":"001","positionCost":5000,"orderNum":1,"cnt":1},)"
       << R"({"title":"Чай","productCode":"002","positionCost":10000,"orderNum":2,"cnt":2}]}})" << std::flush;
  return bill.good();
}

// Whether the server may have carried out what it was sent, and only its answer did not arrive.
bool IsLost(lumo::Result result) {
  for (const int code : {ERR_REQUEST_SEND, ERR_NO_RESPONSE, ERR_JSON_SYNTAX, ERR_RESPONSE_STRUCTURE,
                         ERR_RESPONSE_TYPE, ERR_RESPONSE_CONTENT, ERR_SERVER_FAILURE}) {
    if (result == code) return true;
  }
  return false;
}

bool IsRefused(lumo::Result result, const std::string &reason) {
  return result == ERR_SERVER_ERROR && lumo::getResponseStateCode() == reason;
}

// Finds out whether a payment was made whose answer was lost. Whatever it was, afterwards it is not.
void SettleLost(const std::string &rrn) {
  const lumo::Result result = lumo::PaymentCancelProc(rrn);
  if (result.ok() && lumo::lumoIsOffline()) {
    std::cout << rrn << ": its cancellation waits for the server; sell again\n";
  } else if (result.ok()) {
    std::cout << rrn << " had been paid and is cancelled; sell again\n";
  } else if (IsRefused(result, "BILL_NOT_FOUND")) {
    std::cout << rrn << " was never paid; sell again\n";
  } else {
    Say("cancellation", result);
    std::cout << rrn << " may be paid: cancel it later; sell without the card\n";
  }
}

// Without it the bonuses are neither spent nor earned.
void Confirm(const std::string &rrn) {
  lumo::Result result = lumo::PaymentConfirmProc(rrn);
  if (IsLost(result))
    result = lumo::PaymentConfirmProc(rrn);  // one that has arrived is refused the second time
  if (result.ok() || IsRefused(result, "BILL_INCORRECT_STATE")) {
    std::cout << rrn << (lumo::lumoIsOffline() ? " waits for the server\n" : " is confirmed\n");
  } else {
    Say("confirmation", result);
    std::cout << rrn << " is not confirmed: confirm it later\n";
  }
}

// One sale in the current transaction. Goods can always be sold without the card.
void Sell(const std::string &folder, bool spend) {
  const std::string before = lumo::getRRN();
  if (lumo::BalanceProc().ok()) {  // good to know, and no reason to stop
    char amount[20];
    std::snprintf(amount, sizeof amount, "%d.%02d", lumo::GetBalance() / 100, lumo::GetBalance() % 100);
    std::cout << "on the card: " << amount << "\n";
  }
  if (lumo::getRRN() == before) {
    std::cout << "sell without the card: the server was never met or the clock is behind, "
                 "and would refuse the sale for ever\n";
    return;
  }
  if (!WriteBill(folder)) {
    std::cout << "sell without the card: the bill cannot be written\n";
    return;
  }
  // `spend` says whether; how much is the server's to decide.
  const lumo::Result result = lumo::PaymentProc(spend ? 1 : 0, "BILL.JSN");
  const std::string rrn = lumo::getRRN();
  if (IsLost(result)) {
    SettleLost(rrn);
  } else if (result.ok() || result == ERR_BILL_OPEN) {  // paid; at worst the bill could not be written back
    std::cout << lumo::getReceiptHeaderPtr() << lumo::getReceiptBodyPtr() << lumo::getReceiptFooterPtr();
    Confirm(rrn);
  } else {
    Say("payment", result);
    std::cout << "sell without the card\n";
  }
}

void SendWaiting() {
  const int waiting = lumo::lumoOfflineCount();
  const int sent = lumo::SendOfflinePayments();
  std::cout << "sent " << sent << " of " << waiting << "\n";
  // OFFLINE keeps the records that failed. When none did, it keeps them all, until it is cleared.
  if (sent == waiting && !lumo::lumoClearOffline(sent).ok()) std::cout << "OFFLINE could not be cleared\n";
}

int main(int argc, char **argv) {
  if (argc != 2) {
    std::cerr << "usage: sale FOLDER\n";
    return 2;
  }
#ifdef _WIN32
  SetConsoleOutputCP(CP_UTF8);
#endif
  if (const lumo::Result result = lumo::LUMOInit(); !result.ok()) return Say("start", result), 1;
  const std::string opened = Now();
  lumo::ShiftScope shift;
  const lumo::Result result = shift.Open("1");
  if (!result.ok() && result != ERR_SHIFT_ALREADY_OPEN) return Say("shift", result), 1;

  for (std::string line; std::cout << "ready" << std::endl, std::getline(std::cin, line);) {
    std::string word, wish;
    std::istringstream(line) >> word >> wish;
    if (word.empty()) continue;
    if (word == "send") {
      SendWaiting();
      continue;
    }
    lumo::TransactionScope transaction;
    if (const lumo::Result created = transaction.Create(word, "7"); created.ok()) {
      Sell(argv[1], wish == "spend");
    } else {
      Say("transaction", created);
    }
  }

  // Report bounds are texts: the minute stands before each of its seconds, "9" behind all dates.
  if (lumo::GenerateSummaryReport(opened.substr(0, 16), "9") > 0) std::cout << lumo::GetReportPtr();
  if (const lumo::Result closed = shift.Close(); !closed.ok()) Say("shift", closed);
  return lumo::LUMOClean().code();
}
