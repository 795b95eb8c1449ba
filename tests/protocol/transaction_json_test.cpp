// protocol/transaction_json_test.cpp: parts into the record, member by member.
#include "protocol/transaction_json.h"

#include <cstring>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "record/enumerations.h"
#include "support/record_fixture.h"

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using Load = int (*)(lumo::Transaction *transaction, const lumo::JsonNode *node);

// A value of each JSON kind, with the kind's number in trace lines.
struct Kind {
  const char *json;
  int number;
};
const Kind kKinds[] = {{"[]", 1},    {"{}", 2},   {"12", 5},     {"1.5", 6},
                       {"\"x\"", 7}, {"true", 9}, {"false", 10}, {"null", 11}};

enum class Takes { kText, kNumber, kFlag, kList };

bool IsTaken(Takes takes, int kind) {
  switch (takes) {
    case Takes::kText:
      return kind == 7;
    case Takes::kNumber:
      return kind == 5 || kind == 6;
    case Takes::kFlag:
      return kind == 9 || kind == 10;
    default:
      return kind == 1;
  }
}

struct Member {
  const char *key;
  Takes takes;
  const char *value;  // in JSON
  const char *trace;  // the line it leaves
};

struct Part {
  const char *name;
  Load load;
  const char *before;  // around the object in question
  const char *after;
  const char *unknown;          // the subject of the warning
  std::vector<Member> members;  // in the order of comparison
};

std::ostream &operator<<(std::ostream &out, const Part &part) {
  return out << part.name;
}

const Part kParts[] = {
    {"Request",
     lumo::LoadRequest,
     "",
     "",
     "Unsupported request element",
     {{"ver", Takes::kText, "\"1.2\"", "request.ver = 1.2\n"},
      {"type", Takes::kText, "\"DEPOSIT\"", "request.type = DEPOSIT\n"},
      {"requestId", Takes::kText, "\"R1\"", "request.requestId = R1\n"},
      {"terminalId", Takes::kText, "\"T1\"", "request.terminalId = T1\n"},
      {"requestDate", Takes::kText, "\"D1\"", "request.requestDate = D1\n"},
      {"employeeId", Takes::kText, "\"E1\"", "request.employeeId = E1\n"},
      {"cardNum", Takes::kText, "\"C1\"", "request.cardNum = C1\n"},
      {"shiftId", Takes::kText, "\"S1\"", "request.shiftId = S1\n"},
      {"isOffline", Takes::kFlag, "true", "request.offline = 1\n"}}},
    {"Response",
     lumo::LoadResponse,
     "",
     "",
     "Unsupported response element",
     {{"ver", Takes::kText, "\"1.2\"", "response.ver = 1.2\n"},
      {"requestId", Takes::kText, "\"R1\"", "response.requestId = R1\n"},
      {"responseId", Takes::kText, "\"P1\"", "response.responseId = P1\n"},
      {"responseDate", Takes::kText, "\"D1\"", "response.responseDate = D1\n"},
      {"requestState", Takes::kText, "\"CANCELED\"", "response.state = CANCELED\n"},
      {"requestStateCode", Takes::kText, "\"LOCKED_CARD\"", "response.stateCode = LOCKED_CARD\n"},
      {"message", Takes::kText, "\"Карта\"", "response.message = Карта\n"},
      {"isNeedUpdate", Takes::kFlag, "true", "response.needUpdate = 1\n"}}},
    {"PaymentConfirm",
     lumo::LoadPaymentConfirm,
     "",
     "",
     "Unsupported Payment Confirm element",
     {{"isConfirm", Takes::kFlag, "true", "confirm.isConfirm = 1\n"},
      {"requestId", Takes::kText, "\"R1\"", "confirm.requestId = R1\n"}}},
    {"Account",
     lumo::LoadBalance,
     "{\"account\":[",
     "]}",
     "Unsupported balance account element",
     {{"accountType", Takes::kText, "\"LOCAL\"", "balance.account = LOCAL\n"},
      {"availableAmount", Takes::kNumber, "70", "balance.availableAmount = 70\n"},
      {"amount", Takes::kNumber, "-80", "balance.amount = -80\n"}}},
    {"CashBack",
     lumo::LoadCashBack,
     "",
     "",
     "Unsupported Activation element",
     {{"cashBackType", Takes::kText, "\"SEQ\"", "cashback.cashBackType = SEQ\n"},
      {"requestId", Takes::kText, "\"R1\"", "cashback.requestId = R1\n"},
      {"cashBackGood", Takes::kList, "[]", ""}}},
    {"CashBackGood",
     lumo::LoadCashBack,
     "{\"cashBackGood\":[",
     "]}",
     "Unsupported CashBack Good element",
     {{"pos", Takes::kNumber, "1", "cbgood.pos = 1\n"},
      {"sum", Takes::kNumber, "2", "activation.sum = 2\n"},
      {"cnt", Takes::kNumber, "3", "activation.cnt = 3\n"}}},
    {"CashBackResult",
     lumo::LoadCashBackResult,
     "",
     "",
     "Unsupported Cashback Result element",
     {{"returnedSum", Takes::kNumber, "990", "cashbackResult.returnedSum = 990\n"}}},
    {"Activation",
     lumo::LoadActivation,
     "",
     "",
     "Unsupported Activation element",
     {{"activationType", Takes::kText, "\"GIFT_CARD\"", "activation.activationType = GIFT_CARD\n"},
      {"type", Takes::kText, "\"LOCAL\"", "activation.accountType = LOCAL\n"},
      {"referParentCardNum", Takes::kText, "\"C2\"", "activation.referParentCardNum = C2\n"},
      {"amount", Takes::kNumber, "15000", "activation.amount = 15000\n"}}},
    {"ActivationResult",
     lumo::LoadActivationResult,
     "",
     "",
     "Unsupported Activation Result element",
     {{"activationSumType", Takes::kText, "\"LOCAL\"", "activationResult.activationSumType = LOCAL\n"},
      {"referralSumType", Takes::kText, "\"GLOBAL\"", "activationResult.referralSumType = GLOBAL\n"},
      {"giftSumType", Takes::kText, "\"DISCOUNT\"", "activationResult.giftSumType = DISCOUNT\n"},
      {"activationSum", Takes::kNumber, "1", "activationResult.activationSum = 1\n"},
      {"referralSum", Takes::kNumber, "2", "activationResult.referralSum = 2\n"},
      {"giftSum", Takes::kNumber, "3", "activationResult.giftSum = 3\n"}}},
    {"Deposit",
     lumo::LoadDeposit,
     "",
     "",
     "Unsupported Deposit element",
     {{"amount", Takes::kNumber, "7500", "deposit.amount = 7500\n"}}},
    {"CardExchange",
     lumo::LoadCardExchange,
     "",
     "",
     "Unsupported Card Exchange element",
     {{"token", Takes::kText, "\"tok\"", "exchange.token = tok\n"}}},
    {"LastRrn",
     lumo::LoadLastRrn,
     "",
     "",
     "Unsupported Last Rrn element",
     {{"rrNumber", Takes::kText, "\"N1\"", "last_rrn.last_rrn = N1\n"}}},
    {"Advertising",
     lumo::LoadAdvertising,
     "",
     "",
     "Unsupported Last Rrn element",
     {{"text", Takes::kText, "\"Скидки\"", "ad.ad = Скидки\n"}}},
};

class Loader : public ProtocolTest, public ::testing::WithParamInterface<Part> {
 protected:
  // The trace of loading the part's object with one member.
  std::string TraceOf(const std::string &key, const std::string &value) {
    const Document document(GetParam().before + std::string("{\"") + key + "\":" + value + "}" +
                            GetParam().after);
    folder.ClearTrace();
    EXPECT_EQ(GetParam().load(record, document.root()), 0);
    return TakeTrace();
  }

  std::string Warning(int kind, const std::string &key) const {
    return std::string("WARNING: ") + GetParam().unknown + " [" + std::to_string(kind) + "] [" + key + "]\n";
  }

  // What the two loaders of one text add when it is absent.
  std::string AbsentLine() const {
    if (GetParam().load == lumo::LoadLastRrn) return "last_rrn.last_rrn = (null)\n";
    if (GetParam().load == lumo::LoadAdvertising) return "ad.ad = (null)\n";
    return "";
  }
};

TEST_P(Loader, TracesEachMemberItKnows) {
  std::string members;
  std::string expected;
  for (const Member &member : GetParam().members) {
    EXPECT_EQ(TraceOf(member.key, member.value), member.trace);
    members += std::string(members.empty() ? "{\"" : ",\"") + member.key + "\":" + member.value;
    expected += member.trace;
  }
  const Document document(GetParam().before + members + "}" + GetParam().after);
  EXPECT_EQ(GetParam().load(record, document.root()), 0);
  EXPECT_EQ(TakeTrace(), expected);
}

TEST_P(Loader, TakesAKeyOnlyWithItsKindOfValue) {
  for (const Member &member : GetParam().members) {
    for (const Kind &kind : kKinds) {
      if (IsTaken(member.takes, kind.number)) continue;
      // A shorter key of the part may begin this one. Only the same key of another kind counts here.
      bool other = false;
      for (const Member &rule : GetParam().members) {
        other =
            other || (std::string(rule.key).rfind(member.key, 0) == 0 && IsTaken(rule.takes, kind.number));
      }
      if (other) continue;
      EXPECT_EQ(TraceOf(member.key, kind.json), Warning(kind.number, member.key) + AbsentLine())
          << member.key << " " << kind.json;
    }
  }
}

TEST_P(Loader, TakesABeginningOfAKeyAsTheFirstSuchKeyOfTheKind) {
  for (const Member &member : GetParam().members) {
    for (size_t length = 0; length <= std::strlen(member.key); ++length) {
      const std::string beginning(member.key, length);
      const Member *first = nullptr;
      for (const Member &rule : GetParam().members) {
        const bool fits = rule.takes == member.takes && std::string(rule.key).rfind(beginning, 0) == 0;
        if (fits && first == nullptr) first = &rule;
      }
      ASSERT_NE(first, nullptr);
      EXPECT_EQ(TraceOf(beginning, first->value), first->trace) << beginning << " for " << first->key;
    }
  }
}

TEST_P(Loader, WarnsOfAKeyItDoesNotKnow) {
  for (const Member &member : GetParam().members) {
    const std::string longer = std::string(member.key) + "X";
    EXPECT_EQ(TraceOf(longer, "\"x\""), Warning(7, longer) + AbsentLine());
  }
  for (const Kind &kind : kKinds) {
    EXPECT_EQ(TraceOf("Nobody", kind.json), Warning(kind.number, "Nobody") + AbsentLine());
  }
}

TEST_P(Loader, CutsAnUnknownKeyTo40Bytes) {
  const std::string key(41, 'k');
  EXPECT_EQ(TraceOf(key.substr(0, 39), "1"), Warning(5, key.substr(0, 39)) + AbsentLine());
  EXPECT_EQ(TraceOf(key.substr(0, 40), "1"), Warning(5, key.substr(0, 40)) + AbsentLine());
  EXPECT_EQ(TraceOf(key, "1"), Warning(5, key.substr(0, 40)) + AbsentLine());
  EXPECT_EQ(TraceOf(std::string(100000, 'k'), "1"), Warning(5, key.substr(0, 40)) + AbsentLine());
}

TEST_P(Loader, ComparesAKeyUpToItsZeroByte) {
  const Member &member = GetParam().members[0];
  EXPECT_EQ(TraceOf(std::string(member.key) + "\\u0000tail", member.value), member.trace);
}

TEST_P(Loader, ClampsNumbersAndDropsFractions) {
  for (const Member &member : GetParam().members) {
    if (member.takes != Takes::kNumber) continue;
    const char *const equals = std::strchr(member.trace, '=');
    const std::string line(member.trace, equals + 2);
    EXPECT_EQ(TraceOf(member.key, "2147483647"), line + "2147483647\n");
    EXPECT_EQ(TraceOf(member.key, "-2147483648"), line + "-2147483648\n");
    EXPECT_EQ(TraceOf(member.key, "99999999999999999999"), line + "2147483647\n");
    EXPECT_EQ(TraceOf(member.key, "-99999999999999999999"), line + "-2147483648\n");
    EXPECT_EQ(TraceOf(member.key, "12.99"), line + "12\n");
    EXPECT_EQ(TraceOf(member.key, "-7e3"), line + "-7\n");
  }
}

TEST_P(Loader, TakesTextsOfAnyLength) {
  const std::string text(20000, 't');
  for (const Member &member : GetParam().members) {
    if (member.takes == Takes::kText) {
      EXPECT_THAT(TraceOf(member.key, "\"" + text + "\""), EndsWith("\n"));
      EXPECT_THAT(TraceOf(member.key, "\"\""), EndsWith("= \n"));
    }
  }
}

TEST_P(Loader, PassesOverAnEmptyObject) {
  const Document document(GetParam().before + std::string("{}") + GetParam().after);
  EXPECT_EQ(GetParam().load(record, document.root()), 0);
  EXPECT_EQ(TakeTrace(), AbsentLine());
}

TEST_P(Loader, WarnsOfADeepValueOnlyOnce) {
  const std::string deep = std::string(200, '[') + std::string(200, ']');
  EXPECT_EQ(TraceOf("Nobody", deep), Warning(1, "Nobody") + AbsentLine());
}

INSTANTIATE_TEST_SUITE_P(Parts, Loader, ::testing::ValuesIn(kParts),
                         [](const auto &test_case) { return std::string(test_case.param.name); });

class WholePart : public ProtocolTest {
 protected:
  void LoadFrom(Load load, const std::string &json) {
    const Document document(json);
    EXPECT_EQ(load(record, document.root()), 0);
  }
};

TEST_F(WholePart, RequestFillsItsBlock) {
  LoadFrom(lumo::LoadRequest,
           "{\"shiftId\":\"S\",\"isOffline\":true,\"cardNum\":\"C\",\"employeeId\":\"E\",\"requestDate\":"
           "\"2012-12-05T10:00:00Z\",\"terminalId\":\"T\",\"requestId\":\"R\",\"type\":\"LAST_RRN\",\"ver\":"
           "\"V\"}");
  const lumo::RequestBlock &request = record->request;
  EXPECT_STREQ(request.ver, "V");
  EXPECT_EQ(request.type, 10);
  EXPECT_STREQ(request.requestId, "R");
  EXPECT_STREQ(request.terminalId, "T");
  EXPECT_STREQ(request.requestDate, "2012-12-05T10:00:00Z");
  EXPECT_STREQ(request.employeeId, "E");
  EXPECT_STREQ(request.cardNum, "C");
  EXPECT_STREQ(request.shiftId, "S");
  EXPECT_EQ(request.isOffline, 1);
  LoadFrom(lumo::LoadRequest, "{\"isOffline\":false}");
  EXPECT_EQ(request.isOffline, 0);
}

TEST_F(WholePart, ResponseFillsItsBlock) {
  LoadFrom(
      lumo::LoadResponse,
      "{\"isNeedUpdate\":true,\"message\":\"M\",\"requestStateCode\":\"SMS_AUTH_FAILED\",\"requestState\":"
      "\"SUCCESS\",\"responseDate\":\"2012-12-05T10:00:01Z\",\"responseId\":\"P\",\"requestId\":\"R\","
      "\"ver\":"
      "\"V\"}");
  const lumo::ResponseBlock &response = record->response;
  EXPECT_STREQ(response.ver, "V");
  EXPECT_STREQ(response.requestId, "R");
  EXPECT_STREQ(response.responseId, "P");
  EXPECT_STREQ(response.responseDate, "2012-12-05T10:00:01Z");
  EXPECT_EQ(response.requestState, 1);
  EXPECT_EQ(response.requestStateCode, 32);
  EXPECT_STREQ(response.message, "M");
  EXPECT_EQ(response.isNeedUpdate, 1);
}

TEST_F(WholePart, EchoedEmptyTextIsNotNull) {
  LoadFrom(lumo::LoadResponse, "{\"requestId\":\"\"}");
  EXPECT_STREQ(record->response.requestId, "");
}

TEST_F(WholePart, UnknownEnumerationTextIsStoredAsTheUnknownValue) {
  LoadFrom(lumo::LoadResponse, "{\"requestState\":\"FINE\",\"requestStateCode\":\"fine\"}");
  EXPECT_EQ(record->response.requestState, 5);
  EXPECT_EQ(record->response.requestStateCode, 33);
  EXPECT_EQ(TakeTrace(),
            "ERROR: Unknown enumiratoin for RequestState [FINE]\nresponse.state = FINE\n"
            "ERROR: Unknown enumiratoin for RequestStateCode [fine]\nresponse.stateCode = fine\n");
}

TEST_F(WholePart, DatesAreCutTo31Bytes) {
  const std::string date = "2012-12-05T10:00:00Z and then a tail";
  const std::string cut = "2012-12-05T10:00:00Z and then a";
  ASSERT_EQ(cut.size(), 31U);
  LoadFrom(lumo::LoadRequest, "{\"requestDate\":\"" + date + "\",\"cardNum\":\"C\"}");
  LoadFrom(lumo::LoadResponse, "{\"responseDate\":\"" + date + "\"}");
  EXPECT_EQ(record->request.requestDate, cut);
  EXPECT_EQ(record->response.responseDate, cut);
  EXPECT_STREQ(record->request.cardNum, "C");
  EXPECT_EQ(record->response.requestState, 0);
  LoadFrom(lumo::LoadRequest, "{\"requestDate\":\"short\"}");
  EXPECT_STREQ(record->request.requestDate, "short");
}

TEST_F(WholePart, TextIsCutAtAZeroByte) {
  LoadFrom(lumo::LoadResponse, "{\"message\":\"first\\u0000second\"}");
  EXPECT_STREQ(record->response.message, "first");
  EXPECT_EQ(TakeTrace(), "response.message = first\n");
}

TEST_F(WholePart, LaterMemberOverwritesAnEarlierOne) {
  LoadFrom(lumo::LoadCardExchange, "{\"token\":\"one\",\"tok\":\"two\"}");
  EXPECT_STREQ(record->exchangeToken, "two");
}

TEST_F(WholePart, ConfirmationFillsItsBlock) {
  LoadFrom(lumo::LoadPaymentConfirm, "{\"requestId\":\"R\",\"isConfirm\":true}");
  EXPECT_STREQ(record->paymentConfirm.requestId, "R");
  EXPECT_EQ(record->paymentConfirm.isConfirm, 1);
}

TEST_F(WholePart, BalanceListsItsAccounts) {
  LoadFrom(lumo::LoadBalance,
           "{\"account\":[{\"accountType\":\"GLOBAL\",\"availableAmount\":1,\"amount\":2},7,"
           "{\"amount\":4,\"availableAmount\":3,\"accountType\":\"DISCOUNT\"},[],{\"accountType\":\"?\"}]}");
  ASSERT_EQ(record->balance.count, 3);
  EXPECT_EQ(record->balance.accounts[0].accountType, 0);
  EXPECT_EQ(record->balance.accounts[0].availableAmount, 1);
  EXPECT_EQ(record->balance.accounts[0].amount, 2);
  EXPECT_EQ(record->balance.accounts[1].accountType, 2);
  EXPECT_EQ(record->balance.accounts[1].availableAmount, 3);
  EXPECT_EQ(record->balance.accounts[1].amount, 4);
  EXPECT_EQ(record->balance.accounts[2].accountType, 3);
  EXPECT_EQ(TakeTrace(),
            "balance.account = GLOBAL\nbalance.availableAmount = 1\nbalance.amount = 2\nbalance.amount = 4\n"
            "balance.availableAmount = 3\nbalance.account = DISCOUNT\n"
            "ERROR: Unknown enumiratoin for AccountType [?]\nbalance.account = ?\n");
}

TEST_F(WholePart, BalanceReplacesTheAccountsOfAnEarlierOne) {
  LoadFrom(lumo::LoadBalance, "{\"account\":[{},{}]}");
  EXPECT_EQ(record->balance.count, 2);
  LoadFrom(lumo::LoadBalance, "{\"account\":[{\"amount\":9}]}");
  ASSERT_EQ(record->balance.count, 1);
  EXPECT_EQ(record->balance.accounts[0].amount, 9);
  LoadFrom(lumo::LoadBalance, "{}");
  EXPECT_EQ(record->balance.count, 0);
}

TEST_F(WholePart, BalanceOfTwoListsKeepsTheSecond) {
  LoadFrom(lumo::LoadBalance, "{\"account\":[{},{},{}],\"acc\":[{\"amount\":1}]}");
  EXPECT_EQ(record->balance.count, 1);
}

TEST_F(WholePart, BalanceWarnsOfEverythingButItsList) {
  LoadFrom(lumo::LoadBalance, "{\"account\":{},\"total\":[],\"acc\":1}");
  EXPECT_EQ(TakeTrace(),
            "WARNING: Unsupported balance account element [2] [account]\n"
            "WARNING: Unsupported balance account element [1] [total]\n"
            "WARNING: Unsupported balance account element [5] [acc]\n");
}

TEST_F(WholePart, ReturnListFillsItsBlock) {
  LoadFrom(lumo::LoadCashBack,
           "{\"cashBackGood\":[{\"pos\":1,\"sum\":2,\"cnt\":3},null,{\"cnt\":6,\"sum\":5,\"pos\":4}],"
           "\"requestId\":\"R\",\"cashBackType\":\"FULL\"}");
  EXPECT_EQ(record->cashBack.cashBackType, 0);
  EXPECT_STREQ(record->cashBack.requestId, "R");
  ASSERT_EQ(record->cashBack.goodCount, 2);
  EXPECT_EQ(record->cashBack.goods[0].pos, 1);
  EXPECT_EQ(record->cashBack.goods[0].sum, 2);
  EXPECT_EQ(record->cashBack.goods[0].cnt, 3);
  EXPECT_EQ(record->cashBack.goods[1].pos, 4);
  EXPECT_EQ(record->cashBack.goods[1].sum, 5);
  EXPECT_EQ(record->cashBack.goods[1].cnt, 6);
}

TEST_F(WholePart, ReturnListKeepsTypeAndRrnItDoesNotName) {
  record->cashBack.cashBackType = lumo::CASHBACK_SEQ;
  Store(&record->cashBack.requestId, "R");
  LoadFrom(lumo::LoadCashBack, "{\"cashBackGood\":[{}]}");
  EXPECT_EQ(record->cashBack.cashBackType, 1);
  EXPECT_STREQ(record->cashBack.requestId, "R");
  EXPECT_EQ(record->cashBack.goodCount, 1);
}

TEST_F(WholePart, ReturnListStartsEmpty) {
  LoadFrom(lumo::LoadCashBack, "{\"cashBackGood\":[{},{}]}");
  LoadFrom(lumo::LoadCashBack, "{\"requestId\":\"R\"}");
  EXPECT_EQ(record->cashBack.goodCount, 0);
}

TEST_F(WholePart, ReturnListMustBeAnObject) {
  EXPECT_EQ(lumo::LoadCashBack(record, nullptr), -402);
  const Document list("[{\"pos\":1}]");
  EXPECT_EQ(lumo::LoadCashBack(record, list.root()), -402);
  EXPECT_EQ(TakeTrace(), "");
}

TEST_F(WholePart, ActivationFillsItsBlock) {
  LoadFrom(lumo::LoadActivation,
           "{\"activationType\":\"REFER_A_FRIEND\",\"amount\":7,\"type\":\"DISCOUNT\",\"referParentCardNum\":"
           "\"C\"}");
  EXPECT_EQ(record->activation.activationType, 2);
  EXPECT_EQ(record->activation.amount, 7);
  EXPECT_EQ(record->activation.type, 2);
  EXPECT_STREQ(record->activation.referParentCardNum, "C");
}

TEST_F(WholePart, ActivationResultFillsItsBlock) {
  LoadFrom(lumo::LoadActivationResult,
           "{\"activationSum\":1,\"activationSumType\":\"LOCAL\",\"referralSum\":2,\"referralSumType\":"
           "\"DISCOUNT\","
           "\"giftSum\":3,\"giftSumType\":\"GLOBAL\"}");
  const lumo::ActivationResultBlock &result = record->activationResult;
  EXPECT_EQ(result.activationSum, 1);
  EXPECT_EQ(result.activationSumType, 1);
  EXPECT_EQ(result.referralSum, 2);
  EXPECT_EQ(result.referralSumType, 2);
  EXPECT_EQ(result.giftSum, 3);
  EXPECT_EQ(result.giftSumType, 0);
}

TEST_F(WholePart, SingleValuesFillTheirFields) {
  LoadFrom(lumo::LoadCashBackResult, "{\"returnedSum\":990}");
  LoadFrom(lumo::LoadDeposit, "{\"amount\":7500}");
  LoadFrom(lumo::LoadCardExchange, "{\"token\":\"tok\"}");
  LoadFrom(lumo::LoadLastRrn, "{\"rrNumber\":\"9999912120500007\"}");
  LoadFrom(lumo::LoadAdvertising, "{\"text\":\"Скидки!\"}");
  EXPECT_EQ(record->returnedSum, 990);
  EXPECT_EQ(record->depositAmount, 7500);
  EXPECT_STREQ(record->exchangeToken, "tok");
  EXPECT_STREQ(record->rrNumber, "9999912120500007");
  EXPECT_STREQ(record->adText, "Скидки!");
}

TEST_F(WholePart, NodeThatIsNoObjectHoldsNoMembers) {
  const Load loads[] = {lumo::LoadRequest,        lumo::LoadResponse,   lumo::LoadPaymentConfirm,
                        lumo::LoadBalance,        lumo::LoadActivation, lumo::LoadActivationResult,
                        lumo::LoadCashBackResult, lumo::LoadDeposit,    lumo::LoadCardExchange};
  const Document list("[\"ver\",{\"amount\":1}]");
  for (const Load load : loads) {
    EXPECT_EQ(load(record, nullptr), 0);
    EXPECT_EQ(load(record, list.root()), 0);
    EXPECT_EQ(load(record, &list.root()->elements[0]), 0);
  }
  EXPECT_EQ(TakeTrace(), "");
  EXPECT_EQ(lumo::LoadLastRrn(record, nullptr), 0);
  EXPECT_EQ(lumo::LoadAdvertising(record, list.root()), 0);
  EXPECT_EQ(TakeTrace(), "last_rrn.last_rrn = (null)\nad.ad = (null)\n");
}

class Bill : public ProtocolTest {
 protected:
  int LoadFrom(const std::string &json, lumo::GoodBonuses bonuses = lumo::GoodBonuses::kLoad) {
    const Document document(json);
    folder.ClearTrace();
    return lumo::LoadBill(record, document.root(), bonuses);
  }
};

TEST_F(Bill, FillsTheBlockAndItsGoods) {
  EXPECT_EQ(
      LoadFrom(
          "{\"totalSum\":10000,\"orderLen\":2,\"billNum\":\"B-1\",\"billDate\":\"2012-12-05T09:59:00Z\","
          "\"partnerFee\":250,\"goodList\":{\"good\":["
          "{\"title\":\"Чай\",\"productCode\":\"008\",\"positionCost\":7500,\"orderNum\":1,\"cnt\":3,"
          "\"bonus\":[{\"earned\":225,\"spend\":10,\"organizerFee\":5,\"accountType\":\"LOCAL\"},"
          "{\"accountType\":\"DISCOUNT\"}]},"
          "{\"title\":\"Cup\",\"productCode\":\"009\",\"positionCost\":2500,\"orderNum\":2,\"cnt\":1}]}}"),
      0);
  const lumo::BillBlock &bill = record->bill;
  EXPECT_EQ(bill.totalSum, 10000);
  EXPECT_EQ(bill.orderLen, 2);
  EXPECT_STREQ(bill.billNum, "B-1");
  EXPECT_STREQ(bill.billDate, "2012-12-05T09:59:00Z");
  EXPECT_EQ(bill.partnerFee, 250);
  ASSERT_EQ(bill.goodCount, 2);
  EXPECT_STREQ(bill.goods[0].title, "Чай");
  EXPECT_STREQ(bill.goods[0].productCode, "008");
  EXPECT_EQ(bill.goods[0].positionCost, 7500);
  EXPECT_EQ(bill.goods[0].orderNum, 1);
  EXPECT_EQ(bill.goods[0].cnt, 3);
  ASSERT_EQ(bill.goods[0].bonusCount, 2);
  EXPECT_EQ(bill.goods[0].bonuses[0].earned, 225);
  EXPECT_EQ(bill.goods[0].bonuses[0].spend, 10);
  EXPECT_EQ(bill.goods[0].bonuses[0].organizerFee, 5);
  EXPECT_EQ(bill.goods[0].bonuses[0].accountType, 1);
  EXPECT_EQ(bill.goods[0].bonuses[1].accountType, 2);
  EXPECT_STREQ(bill.goods[1].title, "Cup");
  EXPECT_EQ(bill.goods[1].bonusCount, 0);
  EXPECT_EQ(TakeTrace(),
            " totalSum [10000]\n orderLen [2]\n billNum [B-1]\n billDate [2012-12-05T09:59:00Z]\n partnerFee "
            "[250]\n"
            " title [Чай]\n productCode [008]\n positionCost [7500]\n orderNum [1]\n cnt [3]\n"
            "  earned [225]\n  spend [10]\n  organizerFee [5]\n  accountType [1]\n  accountType [2]\n"
            " title [Cup]\n productCode [009]\n positionCost [2500]\n orderNum [2]\n cnt [1]\n");
}

struct MisshapenBill {
  const char *name;
  const char *json;  // null: no node at all
  int code;
  const char *trace;
  int goods;
};

std::ostream &operator<<(std::ostream &out, const MisshapenBill &bill) {
  return out << bill.name;
}

const MisshapenBill kMisshapenBills[] = {
    {"Absent", nullptr, -402, "ERROR: root element is NULL\n", 0},
    {"List", "[]", -402, "ERROR: root element is not an object\n", 0},
    {"GoodListText", "{\"goodList\":\"x\"}", -402, "ERROR: Goods list is not an object\n", 0},
    {"GoodListNull", "{\"goodList\":null}", -402, "ERROR: Goods list is not an object\n", 0},
    {"GoodListArray", "{\"goodList\":[]}", -402, "ERROR: Goods list is not an object\n", 0},
    {"GoodsObject", "{\"goodList\":{\"good\":{}}}", -402, "ERROR: Goods is not an array\n", 0},
    {"GoodsNull", "{\"goodList\":{\"good\":null}}", -402, "ERROR: Goods is not an array\n", 0},
    {"GoodNumber", "{\"goodList\":{\"good\":[{\"cnt\":1},2,{}]}}", -402,
     " cnt [1]\nERROR: Good is not an object\n", 1},
    {"GoodList", "{\"goodList\":{\"good\":[[]]}}", -402, "ERROR: Good is not an object\n", 0},
    {"NotAGood", "{\"goodList\":{\"goods\":[{}],\"goo\":[{}],\"good\":[{}]},\"totalSum\":1}", 0,
     "ERROR: not a good element [goods]\nERROR: not a good element [goo]\n totalSum [1]\n", 1},
    {"EndsAtOnce", "{\"goodList\":[],\"totalSum\":1}", -402, "ERROR: Goods list is not an object\n", 0},
    {"Empty", "{}", 0, "", 0},
    {"EmptyGoodList", "{\"goodList\":{}}", 0, "", 0},
    {"EmptyGoods", "{\"goodList\":{\"good\":[]}}", 0, "", 0},
};

class BillShape : public ProtocolTest, public ::testing::WithParamInterface<MisshapenBill> {};

TEST_P(BillShape, IsJudgedBeforeItIsRead) {
  if (GetParam().json == nullptr) {
    EXPECT_EQ(lumo::LoadBill(record, nullptr, lumo::GoodBonuses::kLoad), GetParam().code);
  } else {
    const Document document(GetParam().json);
    EXPECT_EQ(lumo::LoadBill(record, document.root(), lumo::GoodBonuses::kLoad), GetParam().code);
  }
  EXPECT_EQ(TakeTrace(), GetParam().trace);
  EXPECT_EQ(record->bill.goodCount, GetParam().goods);
}

INSTANTIATE_TEST_SUITE_P(Shapes, BillShape, ::testing::ValuesIn(kMisshapenBills),
                         [](const auto &test_case) { return std::string(test_case.param.name); });

TEST_F(Bill, CutsTheKeyOfNotAGood) {
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"" + std::string(50, 'g') + "\":1}}"), 0);
  EXPECT_EQ(TakeTrace(), "ERROR: not a good element [" + std::string(40, 'g') + "]\n");
}

TEST_F(Bill, MatchesWholeKeysOfTheRightKindOnly) {
  EXPECT_EQ(LoadFrom("{\"total\":1,\"\":2,\"totalSum2\":3,\"totalSum\":\"4\",\"billNum\":5,\"billDate\":null,"
                     "\"partnerFee\":true,\"orderLen\":[],\"spendBonus\":true,\"" +
                     std::string(60, 'b') + "\":1}"),
            0);
  EXPECT_EQ(record->bill.totalSum, 0);
  EXPECT_EQ(record->bill.billNum, nullptr);
  EXPECT_EQ(TakeTrace(),
            "WARNING: unsupported bill element [total]\nWARNING: unsupported bill element []\n"
            "WARNING: unsupported bill element [totalSum2]\nWARNING: unsupported bill element [totalSum]\n"
            "WARNING: unsupported bill element [billNum]\nWARNING: unsupported bill element [billDate]\n"
            "WARNING: unsupported bill element [partnerFee]\nWARNING: unsupported bill element [orderLen]\n"
            "WARNING: unsupported bill element [spendBonus]\nWARNING: unsupported bill element [" +
                std::string(40, 'b') + "]\n");
}

TEST_F(Bill, NeverReadsTheSpendFlag) {
  record->bill.spendAmount = 5000;
  EXPECT_EQ(LoadFrom("{\"spendBonus\":false}"), 0);
  EXPECT_EQ(record->bill.spendAmount, 5000);
}

TEST_F(Bill, FloatsAreNumbers) {
  EXPECT_EQ(LoadFrom("{\"totalSum\":99.75,\"partnerFee\":1e3,\"orderLen\":-0.5}"), 0);
  EXPECT_EQ(record->bill.totalSum, 99);
  EXPECT_EQ(record->bill.partnerFee, 1);
  EXPECT_EQ(record->bill.orderLen, 0);
}

TEST_F(Bill, DateIsCutTo31Bytes) {
  EXPECT_EQ(LoadFrom("{\"billDate\":\"" + std::string(32, 'd') + "\",\"partnerFee\":3}"), 0);
  EXPECT_EQ(record->bill.billDate, std::string(31, 'd'));
  EXPECT_EQ(record->bill.partnerFee, 3);
  EXPECT_EQ(LoadFrom("{\"billDate\":\"" + std::string(31, 'e') + "\"}"), 0);
  EXPECT_EQ(record->bill.billDate, std::string(31, 'e'));
}

TEST_F(Bill, GoodTakesItsMembersWhateverTheirKind) {
  EXPECT_EQ(
      LoadFrom("{\"goodList\":{\"good\":[{\"title\":12,\"productCode\":true,\"positionCost\":\"75 rub\","
               "\"orderNum\":{},\"cnt\":null},{\"title\":[],\"productCode\":1.50,\"positionCost\":true,"
               "\"orderNum\":\"\",\"cnt\":2.9}]}}"),
      0);
  ASSERT_EQ(record->bill.goodCount, 2);
  const lumo::Good *goods = record->bill.goods;
  EXPECT_STREQ(goods[0].title, "12");
  EXPECT_STREQ(goods[0].productCode, "");
  EXPECT_EQ(goods[0].positionCost, 75);
  EXPECT_EQ(goods[0].orderNum, 0);
  EXPECT_EQ(goods[0].cnt, 0);
  EXPECT_STREQ(goods[1].title, "");
  EXPECT_STREQ(goods[1].productCode, "1.50");
  EXPECT_EQ(goods[1].positionCost, 0);
  EXPECT_EQ(goods[1].orderNum, 0);
  EXPECT_EQ(goods[1].cnt, 2);
  EXPECT_EQ(TakeTrace(),
            " title [12]\n productCode []\n positionCost [75]\n orderNum [0]\n cnt [0]\n"
            " title []\n productCode [1.50]\n positionCost [0]\n orderNum [0]\n cnt [2]\n");
}

TEST_F(Bill, GoodMatchesWholeKeysOnly) {
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"good\":[{\"tit\":\"x\",\"\":1,\"titles\":\"y\",\"bonu\":[{}],\"" +
                     std::string(41, 'g') + "\":1}]}}"),
            0);
  EXPECT_EQ(record->bill.goods[0].title, nullptr);
  EXPECT_EQ(record->bill.goods[0].bonusCount, 0);
  EXPECT_EQ(TakeTrace(),
            "WARNING: Unsupported GOOD element [tit]\nWARNING: Unsupported GOOD element []\n"
            "WARNING: Unsupported GOOD element [titles]\nWARNING: Unsupported GOOD element [bonu]\n"
            "WARNING: Unsupported GOOD element [" +
                std::string(40, 'g') + "]\n");
}

TEST_F(Bill, PassesOverBonusesSilentlyWhenNotAsked) {
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"good\":[{\"bonus\":[{\"earned\":1}],\"cnt\":2},{\"bonus\":7}]}}",
                     lumo::GoodBonuses::kPassOver),
            0);
  EXPECT_EQ(record->bill.goods[0].bonusCount, 0);
  EXPECT_EQ(TakeTrace(), " cnt [2]\n");
}

TEST_F(Bill, BonusMatchesBeginningsOfKeysWithTheirKind) {
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"good\":[{\"bonus\":[{\"\":1,\"s\":2,\"org\":3,\"acc\":\"LOCAL\"},"
                     "{\"earned\":\"1\",\"accountType\":1,\"fee\":4}]}]}}"),
            0);
  ASSERT_EQ(record->bill.goods[0].bonusCount, 2);
  const lumo::Bonus *bonuses = record->bill.goods[0].bonuses;
  EXPECT_EQ(bonuses[0].earned, 1);
  EXPECT_EQ(bonuses[0].spend, 2);
  EXPECT_EQ(bonuses[0].organizerFee, 3);
  EXPECT_EQ(bonuses[0].accountType, 1);
  EXPECT_EQ(bonuses[1].earned, 0);
  EXPECT_EQ(TakeTrace(),
            "  earned [1]\n  spend [2]\n  organizerFee [3]\n  accountType [1]\n"
            "WARNING: Unsupported BONUS element [earned]\nWARNING: Unsupported BONUS element [accountType]\n"
            "WARNING: Unsupported BONUS element [fee]\n");
}

TEST_F(Bill, BonusOfAnUnknownAccountIsKept) {
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"good\":[{\"bonus\":[{\"accountType\":\"PRIVATE\",\"earned\":5}]}]}}"),
            0);
  EXPECT_EQ(record->bill.goods[0].bonuses[0].accountType, 3);
  EXPECT_EQ(record->bill.goods[0].bonuses[0].earned, 5);
  EXPECT_EQ(TakeTrace(),
            "ERROR: Unknown enumiratoin for AccountType [PRIVATE]\n  accountType [3]\n  earned [5]\n");
}

TEST_F(Bill, BonusThatIsNoObjectIsSkipped) {
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"good\":[{\"bonus\":[1,{\"spend\":2},null,[{}]]},{\"bonus\":{}}]}}"),
            0);
  EXPECT_EQ(record->bill.goods[0].bonusCount, 1);
  EXPECT_EQ(record->bill.goods[0].bonuses[0].spend, 2);
  EXPECT_EQ(record->bill.goods[1].bonusCount, 0);
  EXPECT_EQ(TakeTrace(), "  spend [2]\n");
}

TEST_F(Bill, SecondListOfBonusesOfAGoodReplacesTheFirst) {
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"good\":[{\"bonus\":[{\"earned\":1},{\"earned\":2}],\"bonus\":[{"
                     "\"earned\":3}]}]}}"),
            0);
  ASSERT_EQ(record->bill.goods[0].bonusCount, 1);
  EXPECT_EQ(record->bill.goods[0].bonuses[0].earned, 3);
}

TEST_F(Bill, SecondListOfGoodsReplacesTheFirst) {
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"good\":[{},{}],\"good\":[{\"cnt\":3}]},\"goodList\":{}}"), 0);
  ASSERT_EQ(record->bill.goodCount, 1);
  EXPECT_EQ(record->bill.goods[0].cnt, 3);
}

TEST_F(Bill, GoodsReplaceThoseOfAnEarlierBill) {
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"good\":[{},{},{}]}}"), 0);
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"good\":[{\"cnt\":4}]}}"), 0);
  ASSERT_EQ(record->bill.goodCount, 1);
  EXPECT_EQ(record->bill.goods[0].cnt, 4);
  EXPECT_EQ(record->bill.goods[0].title, nullptr);
}

TEST_F(Bill, WithoutGoodListKeepsItsGoods) {
  EXPECT_EQ(LoadFrom("{\"goodList\":{\"good\":[{\"cnt\":4}]}}"), 0);
  EXPECT_EQ(LoadFrom("{\"totalSum\":5}"), 0);
  ASSERT_EQ(record->bill.goodCount, 1);
  EXPECT_EQ(record->bill.goods[0].cnt, 4);
}

TEST_F(Bill, HoldsTenThousandGoods) {
  constexpr int kGoods = 10000;
  std::string json = "{\"goodList\":{\"good\":[";
  std::string trace;
  for (int i = 0; i < kGoods; ++i) {
    json += std::string(i > 0 ? "," : "") + "{\"title\":\"t" + std::to_string(i) + "\"}";
    trace += " title [t" + std::to_string(i) + "]\n";
  }
  EXPECT_EQ(LoadFrom(json + "]}}"), 0);
  ASSERT_EQ(record->bill.goodCount, kGoods);
  EXPECT_STREQ(record->bill.goods[0].title, "t0");
  EXPECT_STREQ(record->bill.goods[kGoods - 1].title, "t9999");
  EXPECT_TRUE(TakeTrace() == trace);
}

class PartReader : public ProtocolTest {
 protected:
  uint32_t Load(const std::string &json) {
    const Document document(json);
    folder.ClearTrace();
    return lumo::LoadParts(record, document.root(), lumo::PartSource::kRecord);
  }
};

TEST_F(PartReader, EveryKeyHasItsBit) {
  const std::pair<const char *, uint32_t> parts[] = {
      {"response", 0x0001}, {"request", 0x0002},        {"bill", 0x0004},       {"paymentConfirm", 0x0008},
      {"balance", 0x0010},  {"cashBackResult", 0x0040}, {"activation", 0x0080}, {"activationResult", 0x0100},
      {"deposit", 0x0200},  {"cardExchange", 0x0400},   {"rrn", 0x1000},        {"ad", 0x2000},
  };
  std::string all;
  for (const auto &[key, bit] : parts) {
    EXPECT_EQ(Load(std::string("{\"") + key + "\":{}}"), bit) << key;
    all += (all.empty() ? "{\"" : ",\"") + std::string(key) + "\":{}";
  }
  EXPECT_EQ(Load(all + "}"), 0x37DFU);
}

TEST_F(PartReader, BeginningOfANameSelectsTheFirstInTheOrder) {
  const std::pair<const char *, uint32_t> parts[] = {
      {"", 0x0002},         {"r", 0x0002},  {"re", 0x0002},          {"req", 0x0002},
      {"res", 0x0001},      {"b", 0x0004},  {"bal", 0x0010},         {"p", 0x0008},
      {"a", 0x0080},        {"ac", 0x0080}, {"activationR", 0x0100}, {"c", 0x0040},
      {"cashBack", 0x0040}, {"ca", 0x0040}, {"car", 0x0400},         {"d", 0x0200},
      {"ad", 0x2000},       {"rr", 0x1000},
  };
  for (const auto &[key, bit] : parts) EXPECT_EQ(Load(std::string("{\"") + key + "\":{}}"), bit) << key;
}

TEST_F(PartReader, UnknownPartIsTracedCutTo40Bytes) {
  EXPECT_EQ(Load("{\"linkedCard\":{},\"cashBackGood\":1,\"Bill\":{},\"" + std::string(100, 'p') +
                 "\":{},\"deposit\":{}}"),
            0x0200U);
  EXPECT_EQ(
      TakeTrace(),
      "ERROR: Unsupported part of activation [linkedCard]\n"
      "ERROR: Unsupported part of activation [cashBackGood]\nERROR: Unsupported part of activation [Bill]\n"
      "ERROR: Unsupported part of activation [" +
          std::string(40, 'p') + "]\n");
}

TEST_F(PartReader, KeyOf101BytesEndsTheWalk) {
  EXPECT_EQ(
      Load("{\"deposit\":{\"amount\":7},\"" + std::string(101, 'p') + "\":{},\"rrn\":{\"rrNumber\":\"N\"}}"),
      0U);
  EXPECT_EQ(record->depositAmount, 7);
  EXPECT_EQ(record->rrNumber, nullptr);
  EXPECT_EQ(TakeTrace(), "deposit.amount = 7\n");
}

TEST_F(PartReader, NodeThatIsNoObjectHoldsNoPart) {
  EXPECT_EQ(lumo::LoadParts(record, nullptr, lumo::PartSource::kRecord), 0U);
  EXPECT_EQ(Load("[{\"deposit\":{}}]"), 0U);
  EXPECT_EQ(TakeTrace(), "");
}

TEST_F(PartReader, LoadsTheBonusesOfABill) {
  EXPECT_EQ(Load("{\"bill\":{\"goodList\":{\"good\":[{\"bonus\":[{}]}]}}}"), 0x0004U);
  EXPECT_EQ(record->bill.goods[0].bonusCount, 1);
}

TEST_F(PartReader, LaterPartLoadsOverAnEarlierOne) {
  EXPECT_EQ(Load("{\"deposit\":{\"amount\":1},\"dep\":{\"amount\":2}}"), 0x0200U);
  EXPECT_EQ(record->depositAmount, 2);
}

}  // namespace
