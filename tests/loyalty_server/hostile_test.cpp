// loyalty_server/hostile_test.cpp: what a broken or hostile client sends the programme never does harm.
#include <gmock/gmock.h>

#include <limits>
#include <random>

#include "loyalty_server/bench.h"
#include "loyalty_server/programme.h"

namespace {

using bench::Bill;
using bench::Head;
using bench::Terminal;
using loyalty::FindOperation;
using nlohmann::json;

void ExpectSound(const loyalty::Programme &programme) {
  for (const auto &card : programme.cards()) {
    for (const loyalty::Purse &purse : programme.PursesOf(card.second)) {
      ASSERT_GE(purse.reserved, 0);
      ASSERT_GE(purse.expected, 0);
      ASSERT_LE(purse.reserved, purse.balance);
      ASSERT_LE(purse.balance + purse.expected, std::numeric_limits<int32_t>::max());
    }
  }
}

void ExpectAnswer(const loyalty::OperationNames &operation, const loyalty::Reply &reply) {
  const json answer = bench::AnswerOf(reply);
  ASSERT_EQ(answer.size(), 1u);
  ASSERT_EQ(answer.begin().key(), operation.response);
  const json &response = answer.begin().value()["response"];
  ASSERT_EQ(response["requestStateCode"], loyalty::CodeName(reply.code));
  ASSERT_NE(reply.code, loyalty::Code::kInternalError) << reply.details;
}

std::string PartOf(const loyalty::OperationNames &operation) {
  switch (operation.operation) {
    case loyalty::Operation::kActivation:
      return R"({"activationType":"GIFT_CARD","amount":100,"type":"LOCAL","referParentCardNum":"100"})";
    case loyalty::Operation::kPayment:
    case loyalty::Operation::kPaymentAndConfirm:
      return Bill(true);
    case loyalty::Operation::kPaymentConfirm:
      return R"({"requestId":"1234512120500002","isConfirm":true})";
    case loyalty::Operation::kCashBack:
      return R"({"requestId":"1234512120500002","cashBackType":"SEQ","cashBackGood":[{"pos":1,"sum":5,"cnt":1}]})";
    case loyalty::Operation::kLink:
      return R"({"linkedCardNum":"200"})";
    case loyalty::Operation::kExchange:
      return R"({"token":"TOKEN-1"})";
    case loyalty::Operation::kDeposit:
      return R"({"amount":100})";
    default:
      return "";
  }
}

TEST(HostileRequests, CutAnywhereAreParsingErrors) {
  loyalty::Programme programme = bench::MakeProgramme();
  for (const auto &operation : loyalty::kOperations) {
    const std::string document = bench::Document(operation, Head(), PartOf(operation));
    for (size_t size = 0; size < document.size(); ++size) {
      const loyalty::Reply reply = programme.Handle(operation, std::string_view(document).substr(0, size));
      ASSERT_EQ(reply.code, loyalty::Code::kRequestParsingError) << document.substr(0, size);
      ExpectAnswer(operation, reply);
    }
  }
  EXPECT_TRUE(programme.payments().empty());
}

TEST(HostileRequests, EveryMemberReplacedByEveryKindOfValueIsJudged) {
  const char *values[] = {"null",
                          "true",
                          "-1",
                          "0",
                          "2147483648",
                          "-9223372036854775808",
                          "18446744073709551615",
                          "1e308",
                          "\"\"",
                          "\"\\u0000\"",
                          "\"\xf0\x9f\x98\x80\"",
                          "[]",
                          "[[[]]]",
                          "{}",
                          "{\"\":{}}"};
  for (const auto &operation : loyalty::kOperations) {
    const json document = json::parse(bench::Document(operation, Head(), PartOf(operation)));
    const json flat = document.flatten();
    for (const auto &member : flat.items()) {
      // The member itself and every object or list around it.
      json::json_pointer place(member.key());
      for (; !place.empty(); place = place.parent_pointer()) {
        for (const char *value : values) {
          json changed = document;
          changed[place] = json::parse(value);
          loyalty::Programme programme = bench::MakeProgramme();
          const loyalty::Reply reply = programme.Handle(operation, changed.dump());
          ExpectAnswer(operation, reply);
          ExpectSound(programme);
        }
      }
    }
  }
}

TEST(HostileRequests, WithFlippedBytesNeverBreakTheProgramme) {
  std::mt19937 random(20121205);
  loyalty::Programme programme = bench::MakeProgramme();
  for (int round = 0; round < 4000; ++round) {
    const auto &operation = loyalty::kOperations[random() % loyalty::kOperations.size()];
    std::string document = bench::Document(operation, Head(), PartOf(operation));
    for (auto flips = 1 + random() % 3; flips > 0; --flips) {
      document[random() % document.size()] = static_cast<char>(random() % 256);
    }
    ExpectAnswer(operation, programme.Handle(operation, document));
    ExpectSound(programme);
  }
}

TEST(HostileRequests, NestedAHundredThousandDeepAreAnswered) {
  loyalty::Programme programme = bench::MakeProgramme();
  const size_t depth = 100000;
  const auto &balance = *FindOperation("balance");
  ExpectAnswer(balance, programme.Handle(balance, std::string(depth, '[')));
  const loyalty::Reply reply = programme.Handle(balance, std::string(depth, '[') + std::string(depth, ']'));
  EXPECT_EQ(reply.code, loyalty::Code::kIncorrectRequest);
}

TEST(HostileRequests, ABillOfTenThousandGoodsIsPaidAndReturned) {
  loyalty::Programme programme = bench::MakeProgramme();
  Terminal terminal(&programme);
  std::string goods;
  std::string returned;
  for (int i = 1; i <= 10000; ++i) {
    goods += (i == 1 ? "" : ",") + (R"({"title":"Чай","productCode":"008","positionCost":100,"orderNum":)" +
                                    std::to_string(i) + R"(,"cnt":1})");
    returned += (i == 1 ? "" : ",") + (R"({"pos":)" + std::to_string(i) + R"(,"sum":100,"cnt":1})");
  }
  EXPECT_EQ(
      terminal.Code("paymentAndConfirm", "200", Bill(false, R"({"good":[)" + goods + "]}", 1000000, 10000)),
      "OK");
  EXPECT_EQ(bench::Purses(programme, "200"), "20000/30000/10000");
  EXPECT_EQ(terminal.Code("cashBack", "200",
                          R"({"requestId":")" + terminal.lastId +
                              R"(","cashBackType":"SEQ","cashBackGood":[)" + returned + "]}"),
            "OK");
  EXPECT_EQ(bench::Purses(programme, "200"), "0/0/0");
}

// Days of random operations: whatever the order, no purse goes wrong, and a shop that undoes everything is
// where it was.
TEST(HostileRequests, RandomDaysLeaveThePursesSound) {
  for (unsigned seed = 1; seed <= 30; ++seed) {
    std::mt19937 random(seed);
    loyalty::Programme programme = bench::MakeProgramme();
    Terminal terminal(&programme);
    std::vector<std::string> ids = {"1234512120599998"};
    const char *cards[] = {"100", "200", "300", "301", "302", "400", "500", "501", "600", "999"};
    const auto any_card = [&] { return std::string(cards[random() % std::size(cards)]); };
    const auto any_id = [&] { return ids[random() % ids.size()]; };
    for (int step = 0; step < 200; ++step) {
      const std::string card = any_card();
      const char *method = loyalty::kOperations[random() % loyalty::kOperations.size()].method;
      const loyalty::OperationNames &operation = *FindOperation(method);
      std::string part = PartOf(operation);
      switch (operation.operation) {
        case loyalty::Operation::kPayment:
        case loyalty::Operation::kPaymentAndConfirm:
          part = Bill(random() % 2 == 0);
          break;
        case loyalty::Operation::kPaymentConfirm:
          part =
              R"({"requestId":")" + any_id() + R"(","isConfirm":)" + (random() % 2 == 0 ? "true}" : "false}");
          break;
        case loyalty::Operation::kCashBack:
          part = random() % 2 == 0 ? R"({"requestId":")" + any_id() + R"(","cashBackType":"FULL"})"
                                   : R"({"requestId":")" + any_id() +
                                         R"(","cashBackType":"SEQ","cashBackGood":[{"pos":1,"sum":)" +
                                         std::to_string(random() % 6000) + R"(,"cnt":1}]})";
          break;
        case loyalty::Operation::kLink:
          part = R"({"linkedCardNum":")" + any_card() + R"("})";
          break;
        default:
          break;
      }
      const json answer = terminal.Ask(method, card, part);
      ASSERT_NE(answer["response"]["requestStateCode"], "INTERNAL_ERROR");
      if (operation.part != nullptr && std::string(operation.part) == "bill") ids.push_back(terminal.lastId);
      ExpectSound(programme);
    }
    for (const auto &payment : programme.payments()) {
      for (const loyalty::Position &position : payment.second.positions) {
        ASSERT_LE(position.returnedSum, position.cost);
        ASSERT_LE(position.returnedCount, position.count);
      }
    }
  }
}

}  // namespace
