// loyalty_server/bench.h: what the tests of the loyalty server share: a shop with round figures, a clock that
// stands still, requests as a terminal writes them.
#pragma once

#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "loyalty_server/programme.h"

namespace bench {

inline constexpr const char *kShop = R"({
  "protocolVersion": "1",
  "terminals": [{"id": "12345"}, {"id": "54321"}, {"id": "66666", "locked": true}],
  "cards": [
    {"number": "100", "state": "active", "global": 10000, "local": 5000, "discount": 1000},
    {"number": "200", "state": "active"},
    {"number": "300"},
    {"number": "301"},
    {"number": "302"},
    {"number": "400", "state": "locked", "global": 700},
    {"number": "600", "state": "active", "global": 2147483647}
  ],
  "tokens": {"TOKEN-1": "500", "TOKEN-2": "501", "TAKEN": "200"},
  "rates": {"global": 2, "local": 3, "discount": 1, "organizerFee": 4, "spendLimit": 50},
  "activation": {"sum": 5000, "account": "GLOBAL"},
  "referral": {"sum": 700, "account": "LOCAL"},
  "referralLimit": 2,
  "advertisement": "Скидки"
})";

inline constexpr long long kMorning = 1354703430;  // 2012-12-05T10:30:30Z

inline loyalty::Programme MakeProgramme(const std::string &shop = kShop) {
  return loyalty::Programme(loyalty::ShopFromJson(shop), [] { return kMorning; });
}

// The request part; members are changed by name, their values being JSON.
struct Head {
  std::string ver = R"("1.0")";
  std::string type;
  std::string requestId = R"("1234512120500001")";
  std::string terminalId = R"("12345")";
  std::string requestDate = R"("2012-12-05T10:30:30Z")";
  std::string employeeId = R"("7")";
  std::string cardNum = R"("100")";
  std::string isOffline = "false";
  std::string shiftId = R"("1")";

  std::string Text() const {
    return R"({"ver":)" + ver + R"(,"type":)" + type + R"(,"requestId":)" + requestId + R"(,"terminalId":)" +
           terminalId + R"(,"requestDate":)" + requestDate + R"(,"employeeId":)" + employeeId +
           R"(,"cardNum":)" + cardNum + R"(,"isOffline":)" + isOffline + R"(,"shiftId":)" + shiftId + "}";
  }
};

inline std::string Quoted(const std::string &text) {
  return "\"" + text + "\"";
}

// "part":{...} behind the request part, when there is one.
inline std::string Document(const loyalty::OperationNames &operation, Head head,
                            const std::string &part = "") {
  if (head.type.empty()) head.type = Quoted(operation.type);
  std::string text = "{" + Quoted(operation.request) + R"(:{"request":)" + head.Text();
  if (!part.empty()) text += "," + Quoted(operation.part) + ":" + part;
  return text + "}}";
}

inline nlohmann::json AnswerOf(const loyalty::Reply &reply) {
  return nlohmann::json::parse(reply.answer);
}

// Two positions, 100.00 and 9.99.
inline constexpr const char *kGoods =
    R"({"good":[{"title":"Чай","productCode":"008","positionCost":10000,"orderNum":1,"cnt":4},)"
    R"({"title":"Сахар \"Лебедь\"","productCode":"009","positionCost":999,"orderNum":2,"cnt":1}]})";

inline std::string Bill(bool is_spending, const std::string &goods = kGoods, int total = 10999,
                        int count = 2) {
  return R"({"totalSum":)" + std::to_string(total) + R"(,"spendBonus":)" + (is_spending ? "true" : "false") +
         R"(,"orderLen":)" + std::to_string(count) +
         R"(,"billNum":"17","billDate":"2012-12-05T10:30:00Z","partnerFee":1000,"goodList":)" + goods + "}";
}

// Keeps the ids running and reads the answers.
class Terminal {
 public:
  explicit Terminal(loyalty::Programme *programme, std::string id = "12345")
      : programme_(programme), id_(std::move(id)) {}

  // The answer below its name, which is checked by the caller through `name`.
  nlohmann::json Ask(const char *method, const std::string &card, const std::string &part = "",
                     const std::string &request_id = "") {
    const loyalty::OperationNames &operation = *loyalty::FindOperation(method);
    Head head;
    head.cardNum = Quoted(card);
    head.terminalId = Quoted(id_);
    lastId = request_id.empty() ? NextId() : request_id;
    head.requestId = Quoted(lastId);
    const loyalty::Reply reply = programme_->Handle(operation, Document(operation, head, part));
    const nlohmann::json answer = AnswerOf(reply);
    name = answer.begin().key();
    return answer.begin().value();
  }

  std::string Code(const char *method, const std::string &card, const std::string &part = "",
                   const std::string &request_id = "") {
    return Ask(method, card, part, request_id)["response"]["requestStateCode"].get<std::string>();
  }

  std::string NextId() {
    char text[32];
    std::snprintf(text, sizeof text, "%.5s121205%05d", id_.c_str(), ++count_);
    return text;
  }

  std::string lastId;
  std::string name;

 private:
  loyalty::Programme *programme_;
  std::string id_;
  int count_ = 0;
};

// "10000/5000/1000", with "(-500)" behind a purse for what is reserved and "(+20)" for what is expected.
inline std::string Purses(const loyalty::Programme &programme, const std::string &number) {
  std::string text;
  for (const loyalty::Purse &purse : programme.PursesOf(*programme.FindCard(number))) {
    if (!text.empty()) text += "/";
    text += std::to_string(purse.balance);
    if (purse.reserved != 0) text += "(-" + std::to_string(purse.reserved) + ")";
    if (purse.expected != 0) text += "(+" + std::to_string(purse.expected) + ")";
  }
  return text;
}

}  // namespace bench
