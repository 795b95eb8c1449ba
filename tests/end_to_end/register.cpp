#include "end_to_end/register.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace test {

Forgetting::Forgetting() {
#if defined(__SANITIZE_ADDRESS__)
  __lsan_disable();
#endif
}

Forgetting::~Forgetting() {
#if defined(__SANITIZE_ADDRESS__)
  __lsan_enable();
#endif
}

std::string RequestPart(const std::string &type, const std::string &rrn, bool is_offline,
                        const std::string &shift_id) {
  return R"("request":{"ver":"1.0","type":")" + type + R"(","requestId":")" + rrn +
         R"(","terminalId":"12345","requestDate":"2012-12-05T10:00:00Z","employeeId":"7",)" +
         R"("cardNum":"9000000001","isOffline":)" + (is_offline ? "true" : "false") + R"(,"shiftId":")" +
         shift_id + "\"}";
}

std::string Request(const std::string &name, const std::string &type, const std::string &part,
                    const std::string &rrn) {
  return "{\"" + name + "\":{" + RequestPart(type, rrn) + (part.empty() ? "" : ",") + part + "}}";
}

std::string Record(const std::string &type, const std::string &part, const std::string &rrn, bool is_offline,
                   const std::string &shift_id) {
  return "{" + RequestPart(type, rrn, is_offline, shift_id) + (part.empty() ? "" : ",") + part + "}\n";
}

std::string Success(const std::string &name, const std::string &part, const std::string &rrn) {
  return "{\"" + name + R"(":{"response":{"ver":"1.0","requestId":")" + rrn +
         R"(","responseId":"r1","responseDate":"2012-12-05T10:00:01Z","requestState":"SUCCESS",)" +
         R"("requestStateCode":"OK","message":"Принято","isNeedUpdate":false})" + (part.empty() ? "" : ",") +
         part + "}}";
}

std::string Refusal(const std::string &name, const std::string &state_code, const std::string &rrn) {
  return "{\"" + name + R"(":{"response":{"ver":"1.0","requestId":")" + rrn +
         R"(","requestState":"ERROR","requestStateCode":")" + state_code + R"(","isNeedUpdate":true}}})";
}

std::string State(const std::string &rrn, int offline, int update) {
  return R"({"reqId":")" + rrn + R"(","offline":)" + std::to_string(offline) +
         R"(,"shiftState":0,"update":)" + std::to_string(update) + "}";
}

void Register::Open(const std::vector<Answer> &answers, const std::string &more) {
  server = std::make_unique<ScriptedServer>(answers);
  address = server->address();
  shop.Start(address, more);
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  shop.ClearTrace();
}

void Register::Open(const std::vector<std::string> &answers, const std::string &more) {
  std::vector<Answer> whole;
  for (const std::string &answer : answers) whole.push_back(Answer{{answer}, Answer::End::kClose});
  Open(whole, more);
}

void Register::OpenAlone(const std::string &more) {
  address = "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/ws";
  shop.Start(address, more);
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  shop.ClearTrace();
}

}  // namespace test
