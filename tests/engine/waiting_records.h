// engine/waiting_records.h: records as they wait in OFFLINE, and a shop that holds them.
#pragma once

#include <string>

#include "support/shop.h"

namespace test {

// The parts of the payment of this number, as the terminal wrote them another day.
inline std::string WaitingParts(int number) {
  return R"("request":{"ver":"0.9","type":"PAYMENT","requestId":"TERM01212040000)" + std::to_string(number) +
         R"(","terminalId":"TERM0009","requestDate":"2012-12-04T18:00:0)" + std::to_string(number) +
         R"(Z","employeeId":"cashier1","cardNum":"96430000000000)" + std::to_string(number) +
         R"(","isOffline":true,"shiftId":"11"},"bill":{"totalSum":10000,"spendBonus":false,"orderLen":1,"billNum":"7",)"
         R"("billDate":"2012-12-04T17:59:00Z","partnerFee":1000,"goodList":{"good":[{"title":"ЧАЙ","productCode":"008",)"
         R"("positionCost":10000,"orderNum":1,"cnt":1,"bonus":[{"earned":300,"spend":0,"organizerFee":300,)"
         R"("accountType":"LOCAL"}]}]}})";
}

inline std::string WaitingRecord(int number) {
  return "{" + WaitingParts(number) + "}\n";
}

class ReplayShop : public Shop {
 protected:
  static std::string Taken() { return Reply("putPaymentResponse", R"("bill":{"totalSum":10000})"); }
  static std::string Refused() { return Reply("putPaymentResponse", "", kRefusal); }
  void Open(const std::string &offline, const std::string &members = "") {
    OpenShop(members);
    if (!offline.empty()) folder.Write("OFFLINE", offline);
  }
};

}  // namespace test
