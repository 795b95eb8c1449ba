// loyalty_server/api_test.cpp: the running server as JSON.
#include "loyalty_server/api.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <thread>

#include "loyalty_server/bench.h"
#include "loyalty_server/client.h"

namespace {

using bench::Head;
using loyalty::FindOperation;
using nlohmann::json;
using nlohmann::ordered_json;

class Api : public testing::Test {
 protected:
  loyalty::ApiAnswer Call(const std::string &method, const std::string &path, const std::string &body = "",
                          const std::map<std::string, std::string> &query = {}) {
    return loyalty::CallApi(&server, {method, path, query, body}, [this] { return isEnding; });
  }
  std::string Get(const std::string &path, const std::map<std::string, std::string> &query = {}) {
    const loyalty::ApiAnswer answer = Call("GET", path, "", query);
    EXPECT_EQ(answer.status, 200) << answer.body;
    return answer.body;
  }
  std::string Put(const std::string &path, const std::string &body) {
    const loyalty::ApiAnswer answer = Call("PUT", path, body);
    EXPECT_EQ(answer.status, 200) << answer.body;
    return answer.body;
  }

  std::string Ask(const char *method, const std::string &part = "", const std::string &card = "100",
                  const std::string &id = "1234512120500001") {
    Head head;
    head.requestId = bench::Quoted(id);
    head.cardNum = bench::Quoted(card);
    return bench::Exchange(server.port(), method, bench::Document(*FindOperation(method), head, part));
  }

  loyalty::Server server{bench::MakeProgramme()};
  bool isEnding = false;
};

TEST_F(Api, TellsTheStateInOneObject) {
  const uint64_t revision = server.revision();
  EXPECT_EQ(Get("state"),
            "{\"revision\":" + std::to_string(revision) + ",\"address\":\"" + server.address() +
                R"(","exchanges":0,"fault":"off","step":1,"steps":1,"update":"none","ad":"Скидки"})"
                "\n");
}

TEST_F(Api, ShowsACardWithWhatAPaymentHolds) {
  Ask("payment", bench::Bill(true));
  EXPECT_EQ(
      Get("cards/100"),
      R"({"number":"100","state":"active","account":1,"GLOBAL":{"amount":10000,"reserved":499,"expected":110},)"
      R"("LOCAL":{"amount":5000,"reserved":5000,"expected":165},)"
      R"("DISCOUNT":{"amount":1000,"reserved":0,"expected":55}})"
      "\n");
  const json cards = json::parse(Get("cards"));
  ASSERT_EQ(cards["cards"].size(), 9u);
  EXPECT_EQ(cards["cards"][0], json::parse(Get("cards/100")));
  EXPECT_EQ(Call("GET", "cards/999").status, 404);
  EXPECT_EQ(Call("GET", "cards/999").body, "{\"error\":\"no such card\"}\n");
}

TEST_F(Api, ShowsThePaymentsTheLastOneFirst) {
  Ask("payment", bench::Bill(true), "100", "1234512120500009");
  Ask("paymentAndConfirm", bench::Bill(false), "200", "1234512120500002");
  Ask("cashBack",
      R"({"requestId":"1234512120500002","cashBackType":"SEQ","cashBackGood":[{"pos":2,"sum":500,"cnt":1}]})",
      "200", "1234512120500010");
  const std::string second =
      R"({"requestId":"1234512120500002","number":2,"time":"2012-12-05T10:30:30Z","terminal":"12345","card":"200",)"
      R"("state":"confirmed","sum":10999,"spent":0,"earned":657,"returned":500})";
  EXPECT_EQ(
      Get("payments"),
      "{\"payments\":[" + second +
          R"(,{"requestId":"1234512120500009","number":1,"time":"2012-12-05T10:30:30Z","terminal":"12345",)"
          R"("card":"100","state":"held","sum":10999,"spent":5499,"earned":330,"returned":0}]})"
          "\n");
  EXPECT_EQ(Get("payments", {{"most", "1"}}), "{\"payments\":[" + second + "]}\n");
}

TEST_F(Api, ShowsTheExchanges) {
  const std::string answer = Ask("deposit", R"({"amount":5})", "200");
  server.SetFault(loyalty::ParseFault("http 500"));
  Ask("ad");
  bench::Exchange(server.port(), "teapot", "{}");
  const json exchanges = json::parse(Get("exchanges"))["exchanges"];
  ASSERT_EQ(exchanges.size(), 3u);
  EXPECT_EQ(exchanges[0]["number"], 1);
  EXPECT_EQ(exchanges[0]["time"], "2012-12-05T10:30:30Z");
  EXPECT_EQ(exchanges[0]["terminal"], "12345");
  EXPECT_EQ(exchanges[0]["operation"], "deposit");
  EXPECT_EQ(exchanges[0]["card"], "200");
  EXPECT_EQ(exchanges[0]["requestId"], "1234512120500001");
  EXPECT_EQ(exchanges[0]["code"], "OK");
  EXPECT_EQ(exchanges[0]["details"], "amount 0.05");
  EXPECT_EQ(exchanges[0]["fault"], "");
  EXPECT_EQ(json::parse(exchanges[0]["request"].get<std::string>())["putDepositRequest"]["deposit"]["amount"],
            5);
  EXPECT_EQ(exchanges[0]["answer"], answer);
  EXPECT_EQ(exchanges[0]["answerBytes"], answer.size());
  EXPECT_EQ(exchanges[1]["code"], "") << "nobody judged it";
  EXPECT_EQ(exchanges[1]["fault"], "http 500");
  EXPECT_EQ(exchanges[2], json::parse(R"({"number":3,"time":"2012-12-05T10:30:30Z",)"
                                      R"("note":"request refused: no operation teapot, HTTP Status 404"})"));
  EXPECT_EQ(json::parse(Get("exchanges", {{"after", "2"}}))["exchanges"].size(), 1u);
  EXPECT_EQ(Get("exchanges", {{"after", "3"}}), "{\"exchanges\":[]}\n");
}

TEST_F(Api, ShowsBytesThatAreNoTextAllTheSame) {
  bench::Exchange(server.port(), "ad", "\xff\xfe");
  EXPECT_THAT(Get("exchanges"), testing::HasSubstr(R"("request":"��")"));
}

TEST_F(Api, WaitsForTheNextExchange) {
  std::string body;
  std::thread waiting([&] { body = Get("exchanges", {{"after", "0"}, {"wait", "60"}}); });
  server.SetFault(loyalty::ParseFault("off"));  // a change, but no exchange
  Ask("ad");
  waiting.join();
  EXPECT_EQ(json::parse(body)["exchanges"].size(), 1u);
}

TEST_F(Api, WaitsForTheNextChange) {
  const uint64_t revision = server.revision();
  std::string body;
  std::thread waiting([&] { body = Get("state", {{"after", std::to_string(revision)}, {"wait", "60"}}); });
  server.SetFault(loyalty::ParseFault("cut 5"));
  waiting.join();
  EXPECT_EQ(json::parse(body)["fault"], "cut 5");
}

TEST_F(Api, WaitsForNothingAtTheEnd) {
  isEnding = true;
  Get("state", {{"after", std::to_string(server.revision())}, {"wait", "60"}});
  Get("exchanges", {{"wait", "60"}});
}

TEST_F(Api, SetsFaults) {
  EXPECT_EQ(Put("fault", R"({"fault":"cut  120 times 2"})"),
            "{\"fault\":\"cut 120 times 2\",\"step\":1,\"steps\":1}\n");
  EXPECT_EQ(Ask("ad").size(), 120u);
  EXPECT_EQ(Get("fault"), "{\"fault\":\"cut 120 times 1\",\"step\":1,\"steps\":1}\n");
  EXPECT_EQ(Put("fault", R"({"script":"cut 5\noff\nsilence\n"})"),
            "{\"fault\":\"cut 5 times 1\",\"step\":1,\"steps\":3}\n");
  EXPECT_EQ(Ask("ad").size(), 5u);
  EXPECT_EQ(Get("fault"), "{\"fault\":\"off times 1\",\"step\":2,\"steps\":3}\n");
  EXPECT_EQ(Put("fault", R"({"fault":"off"})"), "{\"fault\":\"off\",\"step\":1,\"steps\":1}\n");
}

TEST_F(Api, TellsWhichFaultsThereAre) {
  const json faults = json::parse(Get("faults"));
  EXPECT_EQ(faults["faults"][0]["fault"], "off");
  EXPECT_EQ(faults["faults"].size(), loyalty::FaultForms().size());
  EXPECT_EQ(faults["operations"].size(), loyalty::kOperations.size());
  EXPECT_EQ(faults["operations"][1], "payment");
}

TEST_F(Api, ChangesCardsTerminalsUpdateAndAdvertisement) {
  EXPECT_THAT(Put("cards/200", R"({"state":"locked"})"), testing::HasSubstr(R"("state":"locked")"));
  EXPECT_THAT(Ask("balance", "", "200"), testing::HasSubstr("LOCKED_CARD"));
  EXPECT_EQ(Put("update", R"({"update":"offered"})"), "{\"update\":\"offered\"}\n");
  EXPECT_EQ(Get("update"), "{\"update\":\"offered\"}\n");
  EXPECT_EQ(Put("ad", R"({"ad":"Чай \"Лебедь\""})"), "{\"ad\":\"Чай \\\"Лебедь\\\"\"}\n");
  EXPECT_EQ(Get("ad"), "{\"ad\":\"Чай \\\"Лебедь\\\"\"}\n");
  const std::string answer = Ask("ad");
  EXPECT_THAT(answer, testing::HasSubstr(R"("isNeedUpdate":true)"));
  EXPECT_THAT(answer, testing::HasSubstr(R"("text":"Чай \"Лебедь\"")"));
  EXPECT_EQ(Put("terminals/12345", R"({"locked":true})"),
            "{\"id\":\"12345\",\"lastId\":\"1234512120500001\",\"locked\":true}\n");
  EXPECT_THAT(Ask("balance", "", "100", "1234512120500005"), testing::HasSubstr("LOCKED_TERMINAL"));
  EXPECT_EQ(Put("terminals/12345", R"({"locked":false})"),
            "{\"id\":\"12345\",\"lastId\":\"1234512120500001\",\"locked\":false}\n");
  EXPECT_EQ(Get("terminals"),
            R"({"terminals":[{"id":"12345","lastId":"1234512120500001","locked":false},)"
            R"({"id":"54321","lastId":"","locked":false},{"id":"66666","lastId":"","locked":true}]})"
            "\n");
}

TEST_F(Api, SaysWhatIsWrongAndChangesNothing) {
  struct Row {
    const char *method;
    const char *path;
    const char *body;
    int status;
    const char *error;
  };
  const Row rows[] = {
      {"GET", "", "", 404, "no such thing: "},
      {"GET", "teapot", "", 404, "no such thing: teapot"},
      {"GET", "terminals/77777", "", 404, "no such terminal"},
      {"POST", "fault", R"({"fault":"off"})", 405, "only GET and PUT are served"},
      {"DELETE", "cards/100", "", 405, "only GET and PUT are served"},
      {"PUT", "state", "{}", 405, "state: cannot be changed"},
      {"PUT", "exchanges", "{}", 405, "exchanges: cannot be changed"},
      {"PUT", "cards", "{}", 405, "cards: cannot be changed"},
      {"PUT", "payments", "{}", 405, "payments: cannot be changed"},
      {"PUT", "terminals", "{}", 405, "terminals: cannot be changed"},
      {"PUT", "faults", "{}", 405, "faults: cannot be changed"},
      {"PUT", "fault", "", 400, "the body is not a JSON object"},
      {"PUT", "fault", "[]", 400, "the body is not a JSON object"},
      {"PUT", "fault", "{}", 400, "fault: is missing"},
      {"PUT", "fault", R"({"fault":5})", 400, "fault: a text is expected"},
      {"PUT", "fault", R"({"fault":"explode"})", 400, "no such fault: explode"},
      {"PUT", "fault", R"({"fault":"off","more":1})", 400, "more: no such member"},
      {"PUT", "fault", R"({"script":"off\nexplode"})", 400, "line 2: no such fault: explode"},
      {"PUT", "cards/200", R"({"state":"lost"})", 400, "state: sold, active or locked is expected"},
      {"PUT", "cards/999", R"({"state":"locked"})", 404, "no such card"},
      {"PUT", "terminals/12345", R"({"locked":"yes"})", 400, "locked: true or false is expected"},
      {"PUT", "update", R"({"update":"soon"})", 400, "update: none, offered or required is expected"},
      {"PUT", "ad", R"({"ad":null})", 400, "ad: a text is expected"},
  };
  for (const Row &row : rows) {
    const loyalty::ApiAnswer answer = Call(row.method, row.path, row.body);
    EXPECT_EQ(answer.status, row.status) << row.method << " " << row.path << " " << row.body;
    EXPECT_EQ(json::parse(answer.body), (json{{"error", row.error}})) << row.path << " " << row.body;
  }
  const std::string deep = std::string(300000, '[') + std::string(300000, ']');
  for (const char *path : {"ad", "fault", "terminals/12345", "cards/200"}) {
    EXPECT_EQ(Call("PUT", path, "{\"ad\":" + deep + "}").body,
              "{\"error\":\"the body is nested too deep\"}\n");
  }
  EXPECT_EQ(Call("PUT", "fault", "{\"fault\":\"extra ad " + deep + "\"}").body,
            "{\"error\":\"extra: the value is nested too deep\"}\n");
  for (const char *number : {"x", "-1", "", "1.5", "99999999999999999999"}) {
    EXPECT_EQ(Call("GET", "exchanges", "", {{"after", number}}).status, 400) << number;
    EXPECT_EQ(Call("GET", "exchanges", "", {{"wait", number}}).status, 400) << number;
  }
  EXPECT_EQ(Call("GET", "state", "", {{"wait", "61"}}).body, "{\"error\":\"wait: at most 60 seconds\"}\n");
  EXPECT_EQ(loyalty::FaultText(server.fault()), "off");
  EXPECT_THAT(Get("cards/200"), testing::HasSubstr("active"));
}

}  // namespace
