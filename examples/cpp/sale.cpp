// A cash register:   sale BILL   with the path of BILL.JSN beside the library file. What is on the counter is
// sold by a line "1000000001", a customer's card, or "1000000001 spend", when bonuses shall pay too. A line
// "send" sends what waits for the server, and the end of the input closes the shift.
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "lumo.hpp"

// The time as the library writes it, such as "2012-12-05T10:00:00Z".
std::string Now() {
  const std::time_t now = std::time(nullptr);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&now));
  return text;
}

lumo::Result WriteBill(const char *path) {
  std::ofstream bill(path, std::ios::binary);
  bill << R"({"totalSum":15000,"orderLen":2,"billNum":"1","billDate":")" << Now() << R"(","partnerFee":0,)"
       << R"("goodList":{"good":[)"
       << R"({"title":"Хлеб","productCode":"001","positionCost":5000,"orderNum":1,"cnt":1},)"
       << R"({"title":"Чай","productCode":"002","positionCost":10000,"orderNum":2,"cnt":2}]}})" << std::flush;
  return bill.good() ? 0 : ERR_BILL_OPEN;
}

void Say(const std::string &what, const char *outcome, lumo::Result result) {
  std::cout << what << " " << outcome;
  if (!result.ok()) std::cout << ": " << result.code() << " ";
  std::cout << (result == ERR_SERVER_ERROR ? lumo::getResponseStateCode() : result.message()) << "\n";
}

// Goods can always be sold without the card.
void Sell(const std::string &card, bool wants_to_spend, const char *bill_path) {
  lumo::TransactionScope transaction;
  lumo::Result result = WriteBill(bill_path);
  if (result.ok()) result = transaction.Create(card, "7");
  if (!result.ok()) return Say(card, "is not sold to", result);
  const std::string before = lumo::getRRN();
  if (lumo::BalanceProc().ok()) {
    std::printf("on the card: %d.%02d\n", lumo::GetBalance() / 100, lumo::GetBalance() % 100);
  }
  if (lumo::getRRN() == before) {  // the server would refuse the sale for ever
    std::cout << "no number: the server was never met, or the clock is behind; sell without the card\n";
    return;
  }
  result = lumo::PaymentProc(wants_to_spend, "BILL.JSN");  // how many, the server decides
  const std::string rrn = lumo::getRRN();
  const bool is_refused = result == ERR_SERVER_ERROR && lumo::getResponseState() == "ERROR";
  const char *outcome = "is not paid";
  if (result.ok() || result == ERR_BILL_OPEN) {  // paid; at worst the bill could not be rewritten
    std::cout << lumo::getReceiptHeaderPtr() << lumo::getReceiptBodyPtr() << lumo::getReceiptFooterPtr();
    result = lumo::PaymentConfirmProc(rrn);  // until now the bonuses were only reserved
    if (!result.ok()) result = lumo::PaymentConfirmProc(rrn);
    if (lumo::getResponseStateCode() == "BILL_INCORRECT_STATE") result = 0;  // the first had arrived
    outcome = lumo::lumoIsOffline() ? "waits for the server" : "is confirmed";
    if (!result.ok()) outcome = "is paid, confirm it later";
  } else if (result.code() <= ERR_JSON_SYNTAX && result.code() >= ERR_REQUEST_SEND && !is_refused) {
    result = lumo::PaymentCancelProc(rrn);  // the answer is lost: paid or not? Undone, it can be sold again
    outcome = result.ok() ? "is cancelled, sell again" : "may be paid, cancel it later";
    if (lumo::getResponseStateCode() == "BILL_NOT_FOUND") outcome = "was never paid, sell again";
  }
  Say(rrn, outcome, result);
}

int main(int argc, char **argv) {
  lumo::Result result = argc == 2 ? lumo::LUMOInit() : ERR_CONFIG_LOAD;
  if (!result.ok()) return Say("sale BILL", "cannot start", result), 1;
  std::cout << "lumo " << lumo::lumoVersion() << "\n";
  const std::string opened = Now().substr(0, 16);  // bounds are texts: before any second of this minute
  lumo::ShiftScope shift;
  result = shift.Open("1");  // one that is open since before a restart goes on
  for (std::string line; std::cout << "ready" << std::endl, std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string card, wish;
    words >> card >> wish;
    if (card == "send") {
      const int waiting = lumo::lumoOfflineCount(), sent = lumo::SendOfflinePayments();
      std::cout << "sent " << sent << " of " << waiting << "\n";
      if (sent == waiting) result = lumo::lumoClearOffline(sent);  // else OFFLINE holds those that failed
    } else if (!card.empty()) {
      Sell(card, wish == "spend", argv[1]);
    }
  }
  if (lumo::GenerateSummaryReport(opened, "9") > 0) std::cout << lumo::GetReportPtr();  // to all dates' end
  return shift.Close().code();
}
