// loyalty_server/programme_test.cpp: the rules of the programme, operation by operation.
#include "loyalty_server/programme.h"

#include <gmock/gmock.h>

#include "loyalty_server/bench.h"

namespace {

using bench::Bill;
using bench::Head;
using bench::Purses;
using bench::Quoted;
using bench::Terminal;
using loyalty::FindOperation;
using nlohmann::json;

class ProgrammeRules : public testing::Test {
 protected:
  loyalty::Programme programme = bench::MakeProgramme();
  Terminal terminal{&programme};

  std::string Confirm(const std::string &id, bool is_confirm, const std::string &card = "100") {
    return terminal.Code("confirm", card,
                         R"({"requestId":")" + id + R"(","isConfirm":)" + (is_confirm ? "true}" : "false}"));
  }

  // Pays and confirms the two positions; gives the id of the payment.
  std::string Buy(bool is_spending, const std::string &card = "100") {
    EXPECT_EQ(terminal.Code("paymentAndConfirm", card, Bill(is_spending)), "OK");
    return terminal.lastId;
  }

  std::string Return(const std::string &id, const std::string &goods, const std::string &card = "100") {
    return terminal.Code(
        "cashBack", card,
        R"({"requestId":")" + id + R"(","cashBackType":"SEQ","cashBackGood":)" + goods + "}");
  }

  json ReturnAll(const std::string &id, const std::string &card = "100") {
    return terminal.Ask("cashBack", card, R"({"requestId":")" + id + R"(","cashBackType":"FULL"})");
  }
};

// ---- The answer ----

TEST_F(ProgrammeRules, AnAnswerIsWrittenPartByPart) {
  Head head;
  const loyalty::Reply reply = programme.Handle(*FindOperation("payment"),
                                                bench::Document(*FindOperation("payment"), head, Bill(true)));
  EXPECT_EQ(
      reply.answer,
      R"({"putPaymentResponse":{"response":{"ver":"1.0","requestId":"1234512120500001","responseId":"1",)"
      R"("responseDate":"2012-12-05T10:30:30Z","requestState":"SUCCESS","requestStateCode":"OK",)"
      R"("message":"Операция выполнена","isNeedUpdate":false},"bill":{"totalSum":10999,"billNum":"17","orderLen":2,)"
      R"("billDate":"2012-12-05T10:30:00Z","partnerFee":1000,"goodList":{"good":[)"
      R"({"title":"Чай","productCode":"008","positionCost":10000,"orderNum":1,"cnt":4,"bonus":[)"
      R"({"earned":100,"spend":0,"organizerFee":50,"accountType":"GLOBAL"},)"
      R"({"earned":150,"spend":5000,"organizerFee":150,"accountType":"LOCAL"},)"
      R"({"earned":50,"spend":0,"organizerFee":0,"accountType":"DISCOUNT"}]},)"
      R"({"title":"Сахар \"Лебедь\"","productCode":"009","positionCost":999,"orderNum":2,"cnt":1,"bonus":[)"
      R"({"earned":10,"spend":499,"organizerFee":5,"accountType":"GLOBAL"},)"
      R"({"earned":15,"spend":0,"organizerFee":15,"accountType":"LOCAL"},)"
      R"({"earned":5,"spend":0,"organizerFee":0,"accountType":"DISCOUNT"}]}]}}}})");
  EXPECT_EQ(reply.terminal, "12345");
  EXPECT_EQ(reply.card, "100");
  EXPECT_EQ(reply.requestId, "1234512120500001");
  EXPECT_EQ(reply.details, "sum 109.99, spent 54.99, earned 3.30");
}

TEST_F(ProgrammeRules, ARefusalHoldsTheResponsePartAlone) {
  Head head;
  head.cardNum = R"("999")";
  const loyalty::Reply reply =
      programme.Handle(*FindOperation("balance"), bench::Document(*FindOperation("balance"), head));
  EXPECT_EQ(
      reply.answer,
      R"({"getBalanceResponse":{"response":{"ver":"1.0","requestId":"1234512120500001","responseId":"1",)"
      R"("responseDate":"2012-12-05T10:30:30Z","requestState":"ERROR","requestStateCode":"CARD_NOT_FOUND",)"
      R"("message":"Карта не найдена","isNeedUpdate":false}}})");
}

TEST_F(ProgrammeRules, EveryOperationAnswersWithItsOwnNameAndParts) {
  struct Row {
    const char *method;
    const char *card;
    std::string part;
    const char *name;
    std::vector<std::string> parts;
  };
  const std::string paid = Buy(false);
  const Row rows[] = {
      {"activate",
       "300",
       R"({"activationType":"SIMPLE_ACTIVATION","amount":0,"type":"GLOBAL"})",
       "cardActivationResponse",
       {"activationResult", "response"}},
      {"payment", "100", Bill(false), "putPaymentResponse", {"bill", "response"}},
      {"paymentAndConfirm", "100", Bill(false), "putPaymentAndConfirmResponse", {"bill", "response"}},
      {"confirm",
       "100",
       R"({"requestId":"1234512120500003","isConfirm":true})",
       "putPaymentConfirmResponse",
       {"response"}},
      {"balance", "100", "", "getBalanceResponse", {"balance", "response"}},
      {"cashBack",
       "100",
       R"({"requestId":")" + paid + R"(","cashBackType":"FULL"})",
       "putCashBackResponse",
       {"cashBackResult", "response"}},
      {"linkCard", "301", R"({"linkedCardNum":"100"})", "linkedCardResponse", {"response"}},
      {"cardExchange", "100", R"({"token":"TOKEN-1"})", "cardExchangeResponse", {"response"}},
      {"deposit", "200", R"({"amount":1})", "putDepositResponse", {"response"}},
      {"ad", "100", "", "getAdResponse", {"ad", "response"}},
      {"rrn", "100", "", "getLastRrnResponse", {"response", "rrn"}},
  };
  for (const Row &row : rows) {
    const json answer = terminal.Ask(row.method, row.card, row.part);
    EXPECT_EQ(terminal.name, row.name);
    EXPECT_EQ(answer["response"]["requestStateCode"], "OK") << row.method;
    EXPECT_EQ(answer["response"]["requestState"], "SUCCESS") << row.method;
    std::vector<std::string> parts;
    for (const auto &part : answer.items()) parts.push_back(part.key());
    EXPECT_EQ(parts, row.parts) << row.method;
  }
}

// ---- What every request must be ----

TEST_F(ProgrammeRules, ADocumentThatIsNoRequestIsRefusedWithItsCode) {
  const auto request = [](const char *member, const std::string &value) {
    json document = json::parse(bench::Document(*FindOperation("balance"), Head()));
    json &head = document["getBalanceRequest"]["request"];
    if (value.empty()) {
      head.erase(member);
    } else {
      head[member] = json::parse(value);
    }
    return document.dump();
  };
  struct Row {
    std::string document;
    const char *code;
  };
  const Row rows[] = {
      {"", "REQUEST_PARSING_ERROR"},
      {"rubbish", "REQUEST_PARSING_ERROR"},
      {R"({"getBalanceRequest":{)", "REQUEST_PARSING_ERROR"},
      {"{\"getBalanceRequest\":\"\xff\"}", "REQUEST_PARSING_ERROR"},
      {std::string("{}\0", 3), "REQUEST_PARSING_ERROR"},
      {"{}{}", "REQUEST_PARSING_ERROR"},
      {"null", "INCORRECT_REQUEST"},
      {"[]", "INCORRECT_REQUEST"},
      {"7", "INCORRECT_REQUEST"},
      {"{}", "INCORRECT_REQUEST"},
      {R"({"getBalanceRequest":{"request":{}},"x":1})", "INCORRECT_REQUEST"},
      {R"({"getAdRequest":{"request":{}}})", "INCORRECT_REQUEST"},
      {R"({"getBalanceRequest":[]})", "INCORRECT_REQUEST"},
      {R"({"getBalanceRequest":{}})", "INCORRECT_REQUEST"},
      {R"({"getBalanceRequest":{"request":null}})", "INCORRECT_REQUEST"},
      {R"({"getBalanceRequest":{"request":{}}})", "INCORRECT_REQUEST_PARAM"},
      {request("type", R"("PAYMENT")"), "INCORRECT_REQUEST"},
      {request("type", R"("balance")"), "INCORRECT_REQUEST"},
      {request("type", "4"), "INCORRECT_REQUEST_PARAM"},
      {request("ver", ""), "INCORRECT_REQUEST_PARAM"},
      {request("requestId", ""), "INCORRECT_REQUEST_PARAM"},
      {request("requestId", "null"), "INCORRECT_REQUEST_PARAM"},
      {request("terminalId", "12345"), "INCORRECT_REQUEST_PARAM"},
      {request("requestDate", ""), "INCORRECT_REQUEST_PARAM"},
      {request("requestDate", R"("")"), "INCORRECT_REQUEST_PARAM"},
      {request("requestDate", R"("2012-12-05 10:30:30Z")"), "INCORRECT_REQUEST_PARAM"},
      {request("employeeId", ""), "INCORRECT_REQUEST_PARAM"},
      {request("isOffline", "0"), "INCORRECT_REQUEST_PARAM"},
      {request("shiftId", ""), "INCORRECT_REQUEST_PARAM"},
      {request("cardNum", "[1]"), "INCORRECT_REQUEST_PARAM"},
      {request("ver", R"("2.0")"), "UNSUPPORTED_PROTOCOL_VERSION"},
      {request("ver", R"("10")"), "UNSUPPORTED_PROTOCOL_VERSION"},
      {request("ver", R"("")"), "UNSUPPORTED_PROTOCOL_VERSION"},
      {request("terminalId", R"("00000")"), "UNKNOWN_TERMINAL"},
      {request("terminalId", R"("")"), "UNKNOWN_TERMINAL"},
      {request("terminalId", R"("66666")"), "LOCKED_TERMINAL"},
      {request("requestId", R"("")"), "REQUEST_ID_EMPTY"},
      {request("requestId", R"("123451212050000")"), "INCORRECT_REQUEST_ID"},
      {request("requestId", R"("123451212050000000000")"), "INCORRECT_REQUEST_ID"},
      {request("requestId", R"("12345121205A0001")"), "INCORRECT_REQUEST_ID"},
      {request("requestId", R"("0000000000000000")"), "INCORRECT_REQUEST_ID"},
      {request("requestId", R"("1234512130500001")"), "INCORRECT_REQUEST_ID"},
      {request("requestId", R"("1234512123200001")"), "INCORRECT_REQUEST_ID"},
      {request("cardNum", R"("")"), "CARD_NUMBER_INCORRECT"},
      {request("cardNum", R"("1 2")"), "CARD_NUMBER_INCORRECT"},
      {request("cardNum", R"("1\u00002")"), "CARD_NUMBER_INCORRECT"},
      {request("cardNum", Quoted(std::string(65, '1'))), "CARD_NUMBER_INCORRECT"},
      {request("cardNum", R"("999")"), "CARD_NOT_FOUND"},
      {request("cardNum", R"("300")"), "ACTIVATION_REQUIRED"},
      {request("cardNum", R"("400")"), "LOCKED_CARD"},
      {request("ver", R"("1")"), "OK"},
      {request("requestId", R"("12345121205100000")"), "OK"},
  };
  for (const Row &row : rows) {
    const loyalty::Reply reply = programme.Handle(*FindOperation("balance"), row.document);
    EXPECT_EQ(bench::AnswerOf(reply)["getBalanceResponse"]["response"]["requestStateCode"], row.code)
        << row.document;
  }
}

TEST_F(ProgrammeRules, AnIdThatCannotBeReadIsNotEchoed) {
  const auto response = [this](const std::string &document) {
    return bench::AnswerOf(
        programme.Handle(*FindOperation("balance"), document))["getBalanceResponse"]["response"];
  };
  EXPECT_FALSE(response("{").contains("requestId"));
  Head head;
  head.requestId = R"("")";
  EXPECT_FALSE(response(bench::Document(*FindOperation("balance"), head)).contains("requestId"));
  head.requestId = R"("odd")";
  EXPECT_EQ(response(bench::Document(*FindOperation("balance"), head))["requestId"], "odd");
}

TEST_F(ProgrammeRules, OnlyListedCashiersMayWorkOnceThereIsAList) {
  programme = bench::MakeProgramme(R"({"users":["7"],"cards":[{"number":"100","state":"active"}]})");
  Head head;
  const auto &balance = *FindOperation("balance");
  EXPECT_EQ(programme.Handle(balance, bench::Document(balance, head)).code, loyalty::Code::kOk);
  head.requestId = R"("1234512120500002")";
  head.employeeId = R"("8")";
  EXPECT_EQ(programme.Handle(balance, bench::Document(balance, head)).code, loyalty::Code::kUnknownUser);
}

TEST_F(ProgrammeRules, APartThatIsMissingOrMisshapenIsRefused) {
  struct Row {
    const char *method;
    const char *card;
    const char *part;
    const char *code;
  };
  const Row rows[] = {
      {"activate", "300", "", "ACTIVATION_BLOCK_REQUIRED"},
      {"activate", "300", "[]", "ACTIVATION_BLOCK_REQUIRED"},
      {"payment", "100", "", "INCORRECT_REQUEST_PARAM"},
      {"payment", "100", "5", "INCORRECT_REQUEST_PARAM"},
      {"payment", "100", "{}", "INCORRECT_REQUEST_PARAM"},
      {"paymentAndConfirm", "100", "", "INCORRECT_REQUEST_PARAM"},
      {"confirm", "100", "", "INCORRECT_REQUEST_PARAM"},
      {"confirm", "100", R"({"requestId":"1"})", "INCORRECT_REQUEST_PARAM"},
      {"confirm", "100", R"({"requestId":"1","isConfirm":1})", "INCORRECT_REQUEST_PARAM"},
      {"cashBack", "100", "", "INCORRECT_REQUEST_PARAM"},
      {"cashBack", "100", R"({"cashBackType":"FULL"})", "INCORRECT_REQUEST_PARAM"},
      {"linkCard", "100", "", "INCORRECT_REQUEST_PARAM"},
      {"linkCard", "100", R"({"linkedCardNum":200})", "INCORRECT_REQUEST_PARAM"},
      {"cardExchange", "100", "null", "INCORRECT_REQUEST_PARAM"},
      {"deposit", "100", R"({"amount":"1"})", "INCORRECT_REQUEST_PARAM"},
      {"deposit", "100", "", "INCORRECT_REQUEST_PARAM"},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(terminal.Code(row.method, row.card, row.part), row.code) << row.method << " " << row.part;
  }
  EXPECT_EQ(Purses(programme, "100"), "10000/5000/1000");
}

// ---- Request ids ----

TEST_F(ProgrammeRules, AnIdIsGoodForOneOperation) {
  EXPECT_EQ(terminal.Code("deposit", "200", R"({"amount":500})"), "OK");
  const std::string id = terminal.lastId;
  EXPECT_EQ(terminal.Code("deposit", "200", R"({"amount":500})", id), "DUPLICATE_REQUEST_ID");
  EXPECT_EQ(terminal.Code("balance", "100", "", id), "DUPLICATE_REQUEST_ID");
  EXPECT_EQ(Purses(programme, "200"), "500/0/0");
}

TEST_F(ProgrammeRules, AReplayedOfflineRecordIsTakenOnceAndChangesNothingTheSecondTime) {
  const auto &operation = *FindOperation("paymentAndConfirm");
  Head head;
  head.isOffline = "true";
  const std::string record = bench::Document(operation, head, Bill(false));
  EXPECT_EQ(programme.Handle(operation, record).code, loyalty::Code::kOk);
  EXPECT_EQ(Purses(programme, "100"), "10219/5329/1109");
  EXPECT_EQ(programme.Handle(operation, record).code, loyalty::Code::kDuplicateRequestId);
  EXPECT_EQ(Purses(programme, "100"), "10219/5329/1109");
  EXPECT_EQ(programme.payments().size(), 1u);
}

TEST_F(ProgrammeRules, AnOfflineRecordEarnsAtTheProgrammesRatesWhateverTheTerminalCounted) {
  const auto &operation = *FindOperation("payment");
  Head head;
  head.isOffline = "true";
  const std::string goods =
      R"({"good":[{"title":"a","productCode":"b","positionCost":1000,"orderNum":1,"cnt":1,)"
      R"("bonus":[{"earned":999,"spend":0,"organizerFee":0,"accountType":"GLOBAL"}]}]})";
  EXPECT_EQ(programme.Handle(operation, bench::Document(operation, head, Bill(false, goods, 1000, 1))).code,
            loyalty::Code::kOk);
  EXPECT_EQ(Purses(programme, "100"), "10000(+20)/5000(+30)/1000(+10)");
}

TEST_F(ProgrammeRules, ARefusedIdMayComeAgain) {
  EXPECT_EQ(terminal.Code("deposit", "300", R"({"amount":500})"), "ACTIVATION_REQUIRED");
  const std::string id = terminal.lastId;
  ASSERT_TRUE(programme.SetCardState("300", loyalty::CardState::kActive));
  EXPECT_EQ(terminal.Code("deposit", "300", R"({"amount":500})", id), "OK");
}

TEST_F(ProgrammeRules, TheLastIdOfATerminalIsTheHighestItSent) {
  const auto last = [&](const char *terminal_id) {
    Head head;
    head.terminalId = Quoted(terminal_id);
    head.requestId = R"("0000000000000000")";
    head.cardNum = R"("")";
    const auto &rrn = *FindOperation("rrn");
    const loyalty::Reply reply = programme.Handle(rrn, bench::Document(rrn, head));
    EXPECT_EQ(reply.code, loyalty::Code::kOk);
    EXPECT_EQ(bench::AnswerOf(reply)["getLastRrnResponse"]["response"]["requestId"], "0000000000000000");
    return bench::AnswerOf(reply)["getLastRrnResponse"]["rrn"]["rrNumber"].get<std::string>();
  };
  EXPECT_EQ(last("12345"), "");
  struct Row {
    const char *id;
    const char *code;
    const char *last;
  };
  const Row rows[] = {
      {"1234512120500007", "OK", "1234512120500007"},
      {"1234512120500003", "OK", "1234512120500007"},  // an older record, replayed
      {"1234512120500003", "DUPLICATE_REQUEST_ID", "1234512120500007"},
      {"12345121205100000", "OK", "12345121205100000"},  // the counter outgrew its columns
      {"1234512120599999", "OK", "12345121205100000"},
      {"1234512120600000", "OK", "1234512120600000"},  // a new day begins at 0
      {"1234512120500009", "OK", "1234512120600000"},
      {"1234513010100000", "OK", "1234513010100000"},
      {"nonsense", "INCORRECT_REQUEST_ID", "1234513010100000"},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(terminal.Code("balance", "100", "", row.id), row.code) << row.id;
    EXPECT_EQ(last("12345"), row.last) << row.id;
  }
  EXPECT_EQ(last("54321"), "");
  EXPECT_EQ(terminal.Code("balance", "999", "", "1234513010100001"), "CARD_NOT_FOUND");
  EXPECT_EQ(last("12345"), "1234513010100001") << "a refused id is seen all the same";
}

TEST_F(ProgrammeRules, ServiceRequestsMayRepeatTheirZeroIdAndAskNoCard) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(terminal.Code("rrn", "", "", "0000000000000000"), "OK");
    EXPECT_EQ(terminal.Ask("ad", "", "", "0000000000000000")["ad"]["text"], "Скидки");
  }
  EXPECT_EQ(programme.LastRequestId("12345"), "");
}

// The id in the answer to an offline payment.
std::string Echo(loyalty::Programme *shop, const std::string &id,
                 loyalty::Code refusal = loyalty::Code::kOk) {
  Head head;
  head.isOffline = "true";
  head.requestId = Quoted(id);
  const auto &payment = *FindOperation("payment");
  return bench::AnswerOf(shop->Handle(payment, bench::Document(payment, head, Bill(false)),
                                      refusal))["putPaymentResponse"]["response"]["requestId"]
      .get<std::string>();
}

TEST_F(ProgrammeRules, AReplayedRecordIsAnsweredWithTheHighestIdOfItsTerminal) {
  EXPECT_EQ(Echo(&programme, "1234512120500001"), "1234512120500001") << "the first one there is";
  terminal.Code("balance", "100", "", "1234512120500009");
  EXPECT_EQ(Echo(&programme, "1234512120500002"), "1234512120500009");
  EXPECT_EQ(Echo(&programme, "1234512120500002"), "1234512120500009") << "the second time";
  EXPECT_EQ(Echo(&programme, "1234512120500010"), "1234512120500010");
  EXPECT_EQ(Echo(&programme, "nonsense"), "1234512120500010");
  Terminal other(&programme, "54321");
  other.Code("balance", "100", "", "5432112120600001");
  EXPECT_EQ(Echo(&programme, "1234512120500003"), "1234512120500010");
}

TEST_F(ProgrammeRules, ARecordRefusedBeforeItsIdIsJudgedNeverSendsTheTerminalBack) {
  terminal.Code("balance", "100", "", "1234512120500004");
  EXPECT_EQ(Echo(&programme, "1234512120500005", loyalty::Code::kLockedCard), "1234512120500005");
  programme.LockTerminal("12345", true);
  EXPECT_EQ(Echo(&programme, "1234512120500007"), "1234512120500007");
  EXPECT_EQ(Echo(&programme, "1234512120500003"), "1234512120500004");
}

TEST_F(ProgrammeRules, AReplayedRecordIsAnsweredWithItsOwnIdWhereTheShopWantsIt) {
  json shop = json::parse(bench::kShop);
  shop["resumeIds"] = false;
  loyalty::Programme other = bench::MakeProgramme(shop.dump());
  Terminal(&other).Code("balance", "100", "", "1234512120500009");
  EXPECT_EQ(Echo(&other, "1234512120500001"), "1234512120500001");
}

TEST_F(ProgrammeRules, AnAnswerToATerminalThatIsOnlineCarriesTheIdOfItsRequest) {
  terminal.Code("balance", "100", "", "1234512120500009");
  EXPECT_EQ(terminal.Ask("balance", "100", "", "1234512120500001")["response"]["requestId"],
            "1234512120500001");
}

// ---- Activation ----

TEST_F(ProgrammeRules, ASimpleActivationOpensASoldCardWithTheWelcomeSum) {
  const json answer = terminal.Ask(
      "activate", "300", R"({"activationType":"SIMPLE_ACTIVATION","amount":12345,"type":"GLOBAL"})");
  EXPECT_EQ(answer["activationResult"],
            json::parse(R"({"activationSum":5000,"activationSumType":"GLOBAL","referralSum":0,)"
                        R"("referralSumType":"LOCAL","giftSum":0,"giftSumType":"GLOBAL"})"));
  EXPECT_EQ(Purses(programme, "300"), "5000/0/0");
  EXPECT_EQ(terminal.Code("balance", "300"), "OK");
}

TEST_F(ProgrammeRules, AGiftCardIsWorthItsAmountOnTheAccountAskedFor) {
  const json answer =
      terminal.Ask("activate", "300", R"({"activationType":"GIFT_CARD","amount":70000,"type":"LOCAL"})");
  EXPECT_EQ(answer["activationResult"],
            json::parse(R"({"activationSum":0,"activationSumType":"GLOBAL","referralSum":0,)"
                        R"("referralSumType":"LOCAL","giftSum":70000,"giftSumType":"LOCAL"})"));
  EXPECT_EQ(Purses(programme, "300"), "0/70000/0");
  EXPECT_EQ(
      terminal.Code("activate", "301", R"({"activationType":"GIFT_CARD","amount":1,"type":"DISCOUNT"})"),
      "OK");
  EXPECT_EQ(Purses(programme, "301"), "0/0/1");
}

TEST_F(ProgrammeRules, AFriendAndTheCardThatBroughtItBothGetTheirSums) {
  const json answer = terminal.Ask(
      "activate", "300",
      R"({"activationType":"REFER_A_FRIEND","amount":0,"type":"GLOBAL","referParentCardNum":"200"})");
  EXPECT_EQ(answer["activationResult"],
            json::parse(R"({"activationSum":5000,"activationSumType":"GLOBAL","referralSum":700,)"
                        R"("referralSumType":"LOCAL","giftSum":0,"giftSumType":"GLOBAL"})"));
  EXPECT_EQ(Purses(programme, "300"), "5000/0/0");
  EXPECT_EQ(Purses(programme, "200"), "0/700/0");
}

TEST_F(ProgrammeRules, ACardBringsAsManyFriendsAsTheLimitAllows) {
  const std::string part =
      R"({"activationType":"REFER_A_FRIEND","amount":0,"type":"GLOBAL","referParentCardNum":"200"})";
  EXPECT_EQ(terminal.Code("activate", "300", part), "OK");
  EXPECT_EQ(terminal.Code("activate", "301", part), "OK");
  EXPECT_EQ(terminal.Code("activate", "302", part), "REFERRAL_LIMIT_REACHED");
  EXPECT_EQ(Purses(programme, "200"), "0/1400/0");
  EXPECT_EQ(programme.FindCard("302")->state, loyalty::CardState::kSold);
}

TEST_F(ProgrammeRules, AnActivationIsRefusedWithItsCode) {
  struct Row {
    const char *card;
    const char *part;
    const char *code;
  };
  const Row rows[] = {
      {"999", R"({"activationType":"SIMPLE_ACTIVATION","amount":0,"type":"GLOBAL"})", "CARD_NOT_FOUND"},
      {"100", R"({"activationType":"SIMPLE_ACTIVATION","amount":0,"type":"GLOBAL"})", "ALREADY_ACTIVATED"},
      {"400", R"({"activationType":"SIMPLE_ACTIVATION","amount":0,"type":"GLOBAL"})", "LOCKED_CARD"},
      {"300", R"({"activationType":"SIMPLE_ACTIVATION","amount":-1,"type":"GLOBAL"})", "INCORRECT_SUM"},
      {"300", R"({"activationType":"SIMPLE_ACTIVATION","type":"GLOBAL"})", "INCORRECT_REQUEST_PARAM"},
      {"300", R"({"activationType":"SIMPLE","amount":0,"type":"GLOBAL"})", "INCORRECT_REQUEST_PARAM"},
      {"300", R"({"activationType":"GIFT_CARD","amount":5})", "ACTIVATION_SUM_TYPE_REQUIRED"},
      {"300", R"({"activationType":"GIFT_CARD","amount":5,"type":""})", "ACTIVATION_SUM_TYPE_REQUIRED"},
      {"300", R"({"activationType":"GIFT_CARD","amount":5,"type":1})", "ACTIVATION_SUM_TYPE_REQUIRED"},
      {"300", R"({"activationType":"GIFT_CARD","amount":0,"type":"LOCAL"})", "ZERO_ACTIVATION_ERROR"},
      {"300", R"({"activationType":"GIFT_CARD","amount":2147483648,"type":"LOCAL"})", "INCORRECT_SUM"},
      {"300", R"({"activationType":"REFER_A_FRIEND","amount":0,"type":"GLOBAL"})", "REFERRAL_NOT_FOUND"},
      {"300", R"({"activationType":"REFER_A_FRIEND","amount":0,"type":"GLOBAL","referParentCardNum":"999"})",
       "REFERRAL_NOT_FOUND"},
      {"300", R"({"activationType":"REFER_A_FRIEND","amount":0,"type":"GLOBAL","referParentCardNum":"300"})",
       "REFERRAL_NOT_FOUND"},
      {"300", R"({"activationType":"REFER_A_FRIEND","amount":0,"type":"GLOBAL","referParentCardNum":"400"})",
       "REFERRAL_NOT_FOUND"},
      {"300", R"({"activationType":"REFER_A_FRIEND","amount":0,"type":"GLOBAL","referParentCardNum":7})",
       "INCORRECT_REQUEST_PARAM"},
  };
  for (const Row &row : rows) EXPECT_EQ(terminal.Code("activate", row.card, row.part), row.code) << row.part;
  EXPECT_EQ(programme.FindCard("300")->state, loyalty::CardState::kSold);
  EXPECT_EQ(Purses(programme, "300"), "0/0/0");
}

TEST_F(ProgrammeRules, AReferrerWhoseAccountIsFullCannotTakeItsReward) {
  programme = bench::MakeProgramme(
      R"({"cards":[{"number":"1","state":"active","global":2147483647},{"number":"2"}],"referral":{"sum":1}})");
  EXPECT_EQ(terminal.Code(
                "activate", "2",
                R"({"activationType":"REFER_A_FRIEND","amount":0,"type":"GLOBAL","referParentCardNum":"1"})"),
            "INCORRECT_SUM");
  EXPECT_EQ(Purses(programme, "2"), "0/0/0");
  EXPECT_EQ(programme.FindCard("1")->friends, 0);
}

// ---- Payment ----

TEST_F(ProgrammeRules, APaymentThatSpendsNothingEarnsOnTheWholeCost) {
  const json answer = terminal.Ask("payment", "100", Bill(false));
  const json &goods = answer["bill"]["goodList"]["good"];
  EXPECT_EQ(goods[0]["bonus"],
            json::parse(R"([{"earned":200,"spend":0,"organizerFee":100,"accountType":"GLOBAL"},)"
                        R"({"earned":300,"spend":0,"organizerFee":300,"accountType":"LOCAL"},)"
                        R"({"earned":100,"spend":0,"organizerFee":0,"accountType":"DISCOUNT"}])"));
  EXPECT_EQ(goods[1]["bonus"],
            json::parse(R"([{"earned":19,"spend":0,"organizerFee":10,"accountType":"GLOBAL"},)"
                        R"({"earned":29,"spend":0,"organizerFee":29,"accountType":"LOCAL"},)"
                        R"({"earned":9,"spend":0,"organizerFee":0,"accountType":"DISCOUNT"}])"));
}

TEST_F(ProgrammeRules, AnUnconfirmedPaymentReservesWhatItSpendsAndEarnsNothingYet) {
  EXPECT_EQ(terminal.Code("payment", "100", Bill(true)), "OK");
  EXPECT_EQ(Purses(programme, "100"), "10000(-499)(+110)/5000(-5000)(+165)/1000(+55)");
  const json balance = terminal.Ask("balance", "100");
  EXPECT_EQ(balance["balance"],
            json::parse(R"({"account":[{"accountType":"GLOBAL","availableAmount":9501,"amount":10000},)"
                        R"({"accountType":"LOCAL","availableAmount":0,"amount":5000},)"
                        R"({"accountType":"DISCOUNT","availableAmount":1000,"amount":1000}]})"));
}

TEST_F(ProgrammeRules, ReservedBonusesAreNotSpentTwice) {
  EXPECT_EQ(terminal.Code("payment", "100", Bill(true)), "OK");
  const json answer = terminal.Ask("payment", "100", Bill(true));
  EXPECT_EQ(answer["bill"]["goodList"]["good"][0]["bonus"][0]["spend"], 5000);  // GLOBAL
  EXPECT_EQ(answer["bill"]["goodList"]["good"][0]["bonus"][1]["spend"], 0);     // LOCAL is all reserved
  EXPECT_EQ(Purses(programme, "100"), "10000(-5998)(+220)/5000(-5000)(+330)/1000(+110)");
}

TEST_F(ProgrammeRules, SpendingTakesLocalThenGlobalThenDiscountBonuses) {
  programme = bench::MakeProgramme(
      R"({"cards":[{"number":"1","state":"active","global":200,"local":100,"discount":1000}],)"
      R"("rates":{"global":0,"local":0,"discount":0,"organizerFee":0,"spendLimit":100}})");
  const std::string goods =
      R"({"good":[{"title":"a","productCode":"b","positionCost":700,"orderNum":1,"cnt":1}]})";
  const json answer = terminal.Ask("paymentAndConfirm", "1", Bill(true, goods, 700, 1));
  EXPECT_EQ(answer["bill"]["goodList"]["good"][0]["bonus"],
            json::parse(R"([{"earned":0,"spend":200,"organizerFee":0,"accountType":"GLOBAL"},)"
                        R"({"earned":0,"spend":100,"organizerFee":0,"accountType":"LOCAL"},)"
                        R"({"earned":0,"spend":400,"organizerFee":0,"accountType":"DISCOUNT"}])"));
  EXPECT_EQ(Purses(programme, "1"), "0/0/600");
}

TEST_F(ProgrammeRules, AGoodThatMovesNoBonusesHasNoBonusList) {
  programme =
      bench::MakeProgramme(R"({"cards":[{"number":"100","state":"active"}],"rates":{"global":0,"local":0,)"
                           R"("organizerFee":0}})");
  const json answer = terminal.Ask("payment", "100", Bill(true));
  EXPECT_FALSE(answer["bill"]["goodList"]["good"][0].contains("bonus"));
}

TEST_F(ProgrammeRules, ABillWithoutGoodsIsPaidAndEarnsNothing) {
  const json answer =
      terminal.Ask("paymentAndConfirm", "100",
                   R"({"totalSum":5000,"spendBonus":true,"orderLen":0,"billNum":"","billDate":"",)"
                   R"("partnerFee":0})");
  EXPECT_EQ(answer["bill"],
            json::parse(R"({"totalSum":5000,"billNum":"","orderLen":0,"billDate":"","partnerFee":0})"));
  EXPECT_EQ(Purses(programme, "100"), "10000/5000/1000");
  EXPECT_EQ(ReturnAll(terminal.lastId)["cashBackResult"]["returnedSum"], 0);
}

TEST_F(ProgrammeRules, ABillIsRefusedWithItsCode) {
  struct Row {
    std::string bill;
    const char *code;
  };
  const std::string good = R"({"title":"a","productCode":"b","positionCost":100,"orderNum":1,"cnt":1})";
  const auto list = [](const std::string &goods) { return R"({"good":[)" + goods + "]}"; };
  const auto with = [](const char *member, const char *value) {
    json bill = json::parse(Bill(false));
    bill[member] = json::parse(value);
    return bill.dump();
  };
  const auto with_good = [](const char *member, const char *value) {
    json bill = json::parse(Bill(false));
    bill["goodList"]["good"][0][member] = json::parse(value);
    return bill.dump();
  };
  const Row rows[] = {
      {with("totalSum", "-1"), "INCORRECT_SUM"},
      {with("totalSum", "2147483648"), "INCORRECT_SUM"},
      {with("totalSum", "1e3"), "INCORRECT_SUM"},
      {with("totalSum", "1.5"), "INCORRECT_SUM"},
      {with("totalSum", "99999999999999999999"), "INCORRECT_SUM"},
      {with("totalSum", R"("100")"), "INCORRECT_REQUEST_PARAM"},
      {with("spendBonus", "1"), "INCORRECT_REQUEST_PARAM"},
      {with("billNum", "17"), "INCORRECT_REQUEST_PARAM"},
      {with("partnerFee", "null"), "INCORRECT_REQUEST_PARAM"},
      {with("orderLen", "3"), "INCORRECT_BILL"},
      {with("orderLen", "-2"), "INCORRECT_BILL"},
      {with("totalSum", "10998"), "INCORRECT_BILL"},
      {with("goodList", "[]"), "INCORRECT_BILL"},
      {with("goodList", "{}"), "INCORRECT_BILL"},
      {with("goodList", R"({"good":{}})"), "INCORRECT_BILL"},
      {with("goodList", R"({"good":[5]})"), "INCORRECT_BILL"},
      {with_good("positionCost", "-1"), "INCORRECT_SUM"},
      {with_good("positionCost", "4294967296"), "INCORRECT_SUM"},
      {with_good("orderNum", "2"), "INCORRECT_BILL"},
      {with_good("orderNum", "3000000000"), "INCORRECT_BILL"},
      {with_good("cnt", "0"), "INCORRECT_BILL"},
      {with_good("title", "7"), "INCORRECT_REQUEST_PARAM"},
      {with_good("productCode", "null"), "INCORRECT_REQUEST_PARAM"},
      {Bill(false, list(good + "," + good), 200, 2), "INCORRECT_BILL"},
      {Bill(false, list(good), 100, 1), "OK"},
  };
  for (const Row &row : rows) EXPECT_EQ(terminal.Code("payment", "100", row.bill), row.code) << row.bill;
  EXPECT_EQ(programme.payments().size(), 1u);
}

TEST_F(ProgrammeRules, BillsThatDoNotAddUpAreTakenWhereTheShopAllowsIt) {
  programme = bench::MakeProgramme(R"({"cards":[{"number":"100","state":"active"}],"checkBills":false})");
  const std::string goods =
      R"({"good":[{"title":"a","productCode":"b","positionCost":100,"orderNum":0,"cnt":0},)"
      R"({"title":"a","productCode":"b","positionCost":100,"orderNum":0,"cnt":0}]})";
  EXPECT_EQ(terminal.Code("paymentAndConfirm", "100", Bill(false, goods, 7, 9)), "OK");
  EXPECT_EQ(ReturnAll(terminal.lastId)["response"]["requestStateCode"], "OK");
}

TEST_F(ProgrammeRules, RatesThatContradictEachOtherAreAShopsMistake) {
  programme = bench::MakeProgramme(
      R"({"cards":[{"number":"100","state":"active"}],"rates":{"global":2,"local":3,"organizerFee":6}})");
  EXPECT_EQ(terminal.Code("payment", "100", Bill(false)), "RETAIL_POINT_CONFIG_ERROR");
}

TEST_F(ProgrammeRules, APaymentWhoseEarningHasNoRoomIsRefused) {
  EXPECT_EQ(terminal.Code("payment", "600", Bill(false)), "INCORRECT_SUM");
  EXPECT_EQ(Purses(programme, "600"), "2147483647/0/0");
}

TEST_F(ProgrammeRules, TheLargestSumsAreCountedWithoutOverflow) {
  const std::string goods =
      R"({"good":[{"title":"a","productCode":"b","positionCost":2147483647,"orderNum":1,"cnt":2147483647}]})";
  const json answer = terminal.Ask("paymentAndConfirm", "200", Bill(true, goods, 2147483647, 1));
  EXPECT_EQ(answer["bill"]["goodList"]["good"][0]["bonus"],
            json::parse(R"([{"earned":42949672,"spend":0,"organizerFee":21474836,"accountType":"GLOBAL"},)"
                        R"({"earned":64424509,"spend":0,"organizerFee":64424509,"accountType":"LOCAL"},)"
                        R"({"earned":21474836,"spend":0,"organizerFee":0,"accountType":"DISCOUNT"}])"));
  EXPECT_EQ(Return(terminal.lastId, R"([{"pos":1,"sum":2147483647,"cnt":2147483647}])", "200"), "OK");
  EXPECT_EQ(Purses(programme, "200"), "0/0/0");
}

// ---- Confirmation and cancellation ----

TEST_F(ProgrammeRules, AConfirmationDoesWhatThePaymentPromised) {
  EXPECT_EQ(terminal.Code("payment", "100", Bill(true)), "OK");
  EXPECT_EQ(Confirm(terminal.lastId, true), "OK");
  EXPECT_EQ(Purses(programme, "100"), "9611/165/1055");
}

TEST_F(ProgrammeRules, ACancellationGivesBackWhatWasReserved) {
  EXPECT_EQ(terminal.Code("payment", "100", Bill(true)), "OK");
  EXPECT_EQ(Confirm(terminal.lastId, false), "OK");
  EXPECT_EQ(Purses(programme, "100"), "10000/5000/1000");
}

TEST_F(ProgrammeRules, PaymentAndConfirmIsBothAtOnce) {
  Buy(true);
  EXPECT_EQ(Purses(programme, "100"), "9611/165/1055");
}

TEST_F(ProgrammeRules, APaymentIsConfirmedOrCanceledOnce) {
  for (const bool is_first : {true, false}) {
    for (const bool is_second : {true, false}) {
      ASSERT_EQ(terminal.Code("payment", "200", Bill(false)), "OK");
      const std::string id = terminal.lastId;
      ASSERT_EQ(Confirm(id, is_first, "200"), "OK");
      const std::string before = Purses(programme, "200");
      EXPECT_EQ(Confirm(id, is_second, "200"), "BILL_INCORRECT_STATE");
      EXPECT_EQ(Purses(programme, "200"), before);
    }
  }
  EXPECT_EQ(Confirm(Buy(false), false), "BILL_INCORRECT_STATE");
}

TEST_F(ProgrammeRules, OnlyTheAccountThatPaidCanConfirm) {
  EXPECT_EQ(Confirm("1234512120509999", true), "BILL_NOT_FOUND");
  EXPECT_EQ(Confirm("", true), "BILL_NOT_FOUND");
  EXPECT_EQ(terminal.Code("payment", "100", Bill(true)), "OK");
  EXPECT_EQ(Confirm(terminal.lastId, true, "200"), "BILL_NOT_FOUND");
}

TEST_F(ProgrammeRules, AnotherTerminalOfTheShopMayConfirm) {
  EXPECT_EQ(terminal.Code("payment", "100", Bill(true)), "OK");
  Terminal other(&programme, "54321");
  EXPECT_EQ(other.Code("confirm", "100", R"({"requestId":")" + terminal.lastId + R"(","isConfirm":true})"),
            "OK");
}

// ---- Returns ----

TEST_F(ProgrammeRules, AFullReturnUndoesThePayment) {
  const std::string id = Buy(true);
  const json answer = ReturnAll(id);
  EXPECT_EQ(answer["cashBackResult"], json::parse(R"({"returnedSum":5499})"));
  EXPECT_EQ(Purses(programme, "100"), "10000/5000/1000");
  EXPECT_EQ(ReturnAll(id)["response"]["requestStateCode"], "BILL_INCORRECT_STATE");
  EXPECT_EQ(Purses(programme, "100"), "10000/5000/1000");
}

TEST_F(ProgrammeRules, AReturnByPositionGivesBackItsShare) {
  const std::string id = Buy(true);  // position 1: spent 5000 LOCAL, earned 100/150/50
  ASSERT_EQ(Purses(programme, "100"), "9611/165/1055");
  const json answer = terminal.Ask(
      "cashBack", "100",
      R"({"requestId":")" + id + R"(","cashBackType":"SEQ","cashBackGood":[{"pos":1,"sum":3333,"cnt":1}]})");
  EXPECT_EQ(answer["cashBackResult"]["returnedSum"], 1666);
  // LOCAL 165 + 1666 - 49, GLOBAL 9611 - 33, DISCOUNT 1055 - 16
  EXPECT_EQ(Purses(programme, "100"), "9578/1782/1039");
}

TEST_F(ProgrammeRules, ReturnsInPartsAddUpToTheWhole) {
  const std::string id = Buy(true);
  EXPECT_EQ(Return(id, R"([{"pos":1,"sum":3333,"cnt":1},{"pos":2,"sum":500,"cnt":1}])"), "OK");
  EXPECT_EQ(Return(id, R"([{"pos":1,"sum":1,"cnt":1},{"pos":1,"sum":3333,"cnt":1}])"), "OK");
  EXPECT_EQ(Return(id, R"([{"pos":1,"sum":3333,"cnt":1}])"), "OK");
  EXPECT_EQ(programme.payments().at(id).state, loyalty::PaymentState::kConfirmed)
      << "4.99 of position 2 remain";
  EXPECT_EQ(ReturnAll(id)["response"]["requestStateCode"], "OK");
  EXPECT_EQ(programme.payments().at(id).state, loyalty::PaymentState::kReturned);
  EXPECT_EQ(Purses(programme, "100"), "10000/5000/1000");
}

TEST_F(ProgrammeRules, ThePositionsReturnedOneByOneCloseThePayment) {
  const std::string id = Buy(true);
  EXPECT_EQ(Return(id, R"([{"pos":2,"sum":999,"cnt":1}])"), "OK");
  EXPECT_EQ(Return(id, R"([{"pos":1,"sum":10000,"cnt":4}])"), "OK");
  EXPECT_EQ(Return(id, R"([{"pos":1,"sum":1,"cnt":1}])"), "BILL_INCORRECT_STATE");
  EXPECT_EQ(Purses(programme, "100"), "10000/5000/1000");
}

TEST_F(ProgrammeRules, NeverMoreComesBackThanWasPaid) {
  const std::string id = Buy(true);
  struct Row {
    const char *goods;
    const char *code;
  };
  const Row rows[] = {
      {R"([{"pos":3,"sum":1,"cnt":1}])", "INCORRECT_BILL"},
      {R"([{"pos":0,"sum":1,"cnt":1}])", "INCORRECT_BILL"},
      {R"([{"pos":1,"sum":10001,"cnt":1}])", "INCORRECT_SUM"},
      {R"([{"pos":1,"sum":-1,"cnt":1}])", "INCORRECT_SUM"},
      {R"([{"pos":1,"sum":0,"cnt":1}])", "INCORRECT_SUM"},
      {R"([{"pos":1,"sum":1.5,"cnt":1}])", "INCORRECT_SUM"},
      {R"([{"pos":1,"sum":2147483648,"cnt":1}])", "INCORRECT_SUM"},
      {R"([{"pos":1,"sum":1,"cnt":5}])", "INCORRECT_BILL"},
      {R"([{"pos":1,"sum":1,"cnt":0}])", "INCORRECT_BILL"},
      {R"([{"pos":1,"sum":1,"cnt":-1}])", "INCORRECT_BILL"},
      {R"([{"pos":1,"sum":6000,"cnt":1},{"pos":1,"sum":6000,"cnt":1}])", "INCORRECT_SUM"},
      {R"([{"pos":1,"sum":1,"cnt":3},{"pos":1,"sum":1,"cnt":2}])", "INCORRECT_BILL"},
      {R"([{"pos":2,"sum":999,"cnt":1},{"pos":9,"sum":1,"cnt":1}])", "INCORRECT_BILL"},
      {R"([{"pos":"1","sum":1,"cnt":1}])", "INCORRECT_REQUEST_PARAM"},
      {R"([{"sum":1,"cnt":1}])", "INCORRECT_REQUEST_PARAM"},
      {R"([7])", "INCORRECT_REQUEST_PARAM"},
      {R"([])", "INCORRECT_REQUEST_PARAM"},
      {R"({})", "INCORRECT_REQUEST_PARAM"},
  };
  for (const Row &row : rows) EXPECT_EQ(Return(id, row.goods), row.code) << row.goods;
  EXPECT_EQ(Purses(programme, "100"), "9611/165/1055") << "a refused return changes nothing";
  EXPECT_EQ(Return(id, R"([{"pos":1,"sum":10000,"cnt":4},{"pos":2,"sum":999,"cnt":1}])"), "OK");
}

TEST_F(ProgrammeRules, AReturnNeedsAConfirmedPaymentOfTheSameAccount) {
  EXPECT_EQ(ReturnAll("1234512120509999")["response"]["requestStateCode"], "BILL_NOT_FOUND");
  EXPECT_EQ(terminal.Code("payment", "100", Bill(false)), "OK");
  const std::string held = terminal.lastId;
  EXPECT_EQ(ReturnAll(held)["response"]["requestStateCode"], "UNPROCESSED_BILL");
  EXPECT_EQ(ReturnAll(held, "200")["response"]["requestStateCode"], "BILL_NOT_FOUND");
  EXPECT_EQ(Confirm(held, false), "OK");
  EXPECT_EQ(ReturnAll(held)["response"]["requestStateCode"], "BILL_INCORRECT_STATE");
  EXPECT_EQ(terminal.Code("cashBack", "100", R"({"requestId":"1","cashBackType":"HALF"})"),
            "UNKNOWN_CASH_BACK_TYPE");
  EXPECT_EQ(terminal.Code("cashBack", "100", R"({"requestId":"1","cashBackType":"SEQ"})"), "BILL_NOT_FOUND");
}

TEST_F(ProgrammeRules, AReturnNeverLeavesTheCustomerOwingBonuses) {
  const std::string first = Buy(false, "200");  // earns 219/329/109
  ASSERT_EQ(Purses(programme, "200"), "219/329/109");
  Buy(true, "200");  // spends them all, earns on the rest
  const std::string before = Purses(programme, "200");
  ASSERT_EQ(before, "205/309/102");  // 93.43 and 9.99 in money
  EXPECT_EQ(ReturnAll(first, "200")["response"]["requestStateCode"], "OK");
  EXPECT_EQ(Purses(programme, "200"), "0/0/0");
}

TEST_F(ProgrammeRules, AFreePositionGoesBackByItsCount) {
  const std::string goods =
      R"({"good":[{"title":"a","productCode":"b","positionCost":0,"orderNum":1,"cnt":2},)"
      R"({"title":"c","productCode":"d","positionCost":0,"orderNum":2,"cnt":1}]})";
  EXPECT_EQ(terminal.Code("paymentAndConfirm", "100", Bill(true, goods, 0, 2)), "OK");
  const std::string id = terminal.lastId;
  EXPECT_EQ(Return(id, R"([{"pos":1,"sum":0,"cnt":1}])"), "OK");
  EXPECT_EQ(Return(id, R"([{"pos":1,"sum":0,"cnt":1}])"), "OK");
  EXPECT_EQ(Return(id, R"([{"pos":1,"sum":0,"cnt":1}])"), "INCORRECT_BILL");
  EXPECT_EQ(Return(id, R"([{"pos":2,"sum":0,"cnt":1}])"), "OK");
  EXPECT_EQ(Return(id, R"([{"pos":2,"sum":0,"cnt":1}])"), "BILL_INCORRECT_STATE");
}

// ---- Cards ----

TEST_F(ProgrammeRules, ADepositIsCredited) {
  EXPECT_EQ(terminal.Code("deposit", "200", R"({"amount":2500})"), "OK");
  EXPECT_EQ(terminal.Code("deposit", "200", R"({"amount":0})"), "OK");
  EXPECT_EQ(Purses(programme, "200"), "2500/0/0");
}

TEST_F(ProgrammeRules, ADepositNeverPassesThirtyTwoBits) {
  EXPECT_EQ(terminal.Code("deposit", "200", R"({"amount":2147483647})"), "OK");
  for (const char *amount : {"1", "2147483647", "-1", "-2147483648", "2147483648", "1e2", "0.5",
                             "18446744073709551615", "99999999999999999999999"}) {
    EXPECT_EQ(terminal.Code("deposit", "200", R"({"amount":)" + std::string(amount) + "}"), "INCORRECT_SUM")
        << amount;
  }
  EXPECT_EQ(Purses(programme, "200"), "2147483647/0/0");
}

TEST_F(ProgrammeRules, ADepositLeavesRoomForWhatIsExpected) {
  EXPECT_EQ(terminal.Code("payment", "200", Bill(false)), "OK");  // will bring 219 GLOBAL
  const std::string id = terminal.lastId;
  EXPECT_EQ(terminal.Code("deposit", "200", R"({"amount":2147483429})"), "INCORRECT_SUM");
  EXPECT_EQ(terminal.Code("deposit", "200", R"({"amount":2147483428})"), "OK");
  EXPECT_EQ(Confirm(id, true, "200"), "OK");
  EXPECT_EQ(Purses(programme, "200"), "2147483647/329/109");
}

TEST_F(ProgrammeRules, AnExchangeMovesTheAccountToTheTokensCard) {
  EXPECT_EQ(terminal.Code("payment", "100", Bill(true)), "OK");
  const std::string held = terminal.lastId;
  EXPECT_EQ(terminal.Code("cardExchange", "100", R"({"token":"TOKEN-1"})"), "OK");
  EXPECT_EQ(Purses(programme, "500"), "10000(-499)(+110)/5000(-5000)(+165)/1000(+55)");
  EXPECT_EQ(terminal.Code("balance", "100"), "LOCKED_CARD");
  EXPECT_EQ(Confirm(held, true, "500"), "OK") << "the new card goes on with the old one's payments";
  EXPECT_EQ(terminal.Code("cardExchange", "500", R"({"token":"TOKEN-1"})"), "INCORRECT_TOKEN");
  EXPECT_EQ(terminal.Code("cardExchange", "500", R"({"token":"TOKEN-2"})"), "OK");
  EXPECT_EQ(Purses(programme, "501"), "9611/165/1055");
}

TEST_F(ProgrammeRules, AnExchangeNeedsAGoodTokenAndAnActiveCard) {
  EXPECT_EQ(terminal.Code("cardExchange", "100", R"({"token":""})"), "INCORRECT_TOKEN");
  EXPECT_EQ(terminal.Code("cardExchange", "100", R"({"token":"TOKEN"})"), "INCORRECT_TOKEN");
  EXPECT_EQ(terminal.Code("cardExchange", "100", R"({"token":"TAKEN"})"), "INCORRECT_TOKEN");
  EXPECT_EQ(terminal.Code("cardExchange", "300", R"({"token":"TOKEN-1"})"), "ACTIVATION_REQUIRED");
  EXPECT_EQ(terminal.Code("cardExchange", "400", R"({"token":"TOKEN-1"})"), "LOCKED_CARD");
  EXPECT_EQ(terminal.Code("cardExchange", "100", R"({"token":"TOKEN-1"})"), "OK");
}

TEST_F(ProgrammeRules, WhatTheNewCardHeldIsNotLostInAnExchange) {
  programme = bench::MakeProgramme(R"({"cards":[{"number":"1","state":"active","global":5},)"
                                   R"({"number":"2","global":7,"local":8}],"tokens":{"T":"2"}})");
  EXPECT_EQ(terminal.Code("cardExchange", "1", R"({"token":"T"})"), "OK");
  EXPECT_EQ(Purses(programme, "2"), "12/8/0");
}

TEST_F(ProgrammeRules, ALinkedCardIsActivatedAndSharesTheAccount) {
  EXPECT_EQ(terminal.Code("linkCard", "300", R"({"linkedCardNum":"100"})"), "OK");
  EXPECT_EQ(Purses(programme, "300"), "10000/5000/1000");
  EXPECT_EQ(terminal.Code("paymentAndConfirm", "300", Bill(true)), "OK");
  EXPECT_EQ(Purses(programme, "100"), "9611/165/1055");
  EXPECT_EQ(ReturnAll(terminal.lastId, "100")["cashBackResult"]["returnedSum"], 5499);
}

TEST_F(ProgrammeRules, AnActiveCardBringsItsBonusesAndPaymentsAlong) {
  EXPECT_EQ(terminal.Code("payment", "100", Bill(true)), "OK");
  const std::string held = terminal.lastId;
  EXPECT_EQ(terminal.Code("deposit", "200", R"({"amount":77})"), "OK");
  EXPECT_EQ(terminal.Code("linkCard", "100", R"({"linkedCardNum":"200"})"), "OK");
  EXPECT_EQ(Purses(programme, "200"), "10077(-499)(+110)/5000(-5000)(+165)/1000(+55)");
  EXPECT_EQ(Confirm(held, true, "200"), "OK");
  EXPECT_EQ(Purses(programme, "100"), "9688/165/1055");
}

TEST_F(ProgrammeRules, ALinkIsRefusedWithItsCode) {
  struct Row {
    const char *card;
    const char *linked;
    const char *code;
  };
  const Row rows[] = {
      {"999", "100", "CARD_NOT_FOUND"},          {"400", "100", "LOCKED_CARD"},
      {"300", "999", "CARD_NOT_FOUND"},          {"300", "400", "LOCKED_CARD"},
      {"300", "301", "ACTIVATION_REQUIRED"},     {"300", "", "CARD_NUMBER_INCORRECT"},
      {"100", "100", "INCORRECT_REQUEST_PARAM"}, {"100", "600", "INCORRECT_SUM"},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(
        terminal.Code("linkCard", row.card, R"({"linkedCardNum":")" + std::string(row.linked) + R"("})"),
        row.code)
        << row.card << " to " << row.linked;
  }
  EXPECT_EQ(programme.FindCard("300")->state, loyalty::CardState::kSold);
}

TEST_F(ProgrammeRules, EveryCardOperationMindsTheStateOfTheCard) {
  const std::pair<const char *, std::string> operations[] = {
      {"payment", Bill(false)},
      {"paymentAndConfirm", Bill(false)},
      {"confirm", R"({"requestId":"1","isConfirm":true})"},
      {"balance", ""},
      {"cashBack", R"({"requestId":"1","cashBackType":"FULL"})"},
      {"cardExchange", R"({"token":"TOKEN-1"})"},
      {"deposit", R"({"amount":1})"},
  };
  for (const auto &operation : operations) {
    EXPECT_EQ(terminal.Code(operation.first, "999", operation.second), "CARD_NOT_FOUND") << operation.first;
    EXPECT_EQ(terminal.Code(operation.first, "300", operation.second), "ACTIVATION_REQUIRED")
        << operation.first;
    EXPECT_EQ(terminal.Code(operation.first, "400", operation.second), "LOCKED_CARD") << operation.first;
  }
}

// ---- What the bench changes ----

TEST_F(ProgrammeRules, AnUpdateIsAnnouncedInEveryAnswerAndMayBeDemanded) {
  programme.SetUpdate(loyalty::Update::kOffered);
  json response = terminal.Ask("balance", "100")["response"];
  EXPECT_EQ(response["isNeedUpdate"], true);
  EXPECT_EQ(response["requestStateCode"], "OK");
  programme.SetUpdate(loyalty::Update::kRequired);
  response = terminal.Ask("balance", "100")["response"];
  EXPECT_EQ(response["isNeedUpdate"], true);
  EXPECT_EQ(response["requestStateCode"], "UPDATE_REQUIRED");
  EXPECT_EQ(terminal.Code("rrn", "100"), "OK") << "a terminal can always ask where it stands";
  programme.SetUpdate(loyalty::Update::kNone);
  response = terminal.Ask("balance", "100")["response"];
  EXPECT_EQ(response["isNeedUpdate"], false);
}

TEST_F(ProgrammeRules, TerminalsAndCardsAreLockedAndOpened) {
  programme.LockTerminal("12345", true);
  EXPECT_EQ(terminal.Code("rrn", "100"), "LOCKED_TERMINAL");
  programme.LockTerminal("12345", false);
  EXPECT_EQ(terminal.Code("rrn", "100"), "OK");
  EXPECT_TRUE(programme.SetCardState("100", loyalty::CardState::kLocked));
  EXPECT_EQ(terminal.Code("balance", "100"), "LOCKED_CARD");
  EXPECT_FALSE(programme.SetCardState("999", loyalty::CardState::kLocked));
}

TEST_F(ProgrammeRules, ARefusalOnDemandIsEchoedAndDoesNothing) {
  const auto &deposit = *FindOperation("deposit");
  const loyalty::Reply reply = programme.Handle(deposit, bench::Document(deposit, Head(), R"({"amount":5})"),
                                                loyalty::Code::kSmsAuthFailed);
  const json response = bench::AnswerOf(reply)["putDepositResponse"]["response"];
  EXPECT_EQ(response["requestId"], "1234512120500001");
  EXPECT_EQ(response["requestState"], "ERROR");
  EXPECT_EQ(response["requestStateCode"], "SMS_AUTH_FAILED");
  EXPECT_EQ(Purses(programme, "100"), "10000/5000/1000");
}

TEST_F(ProgrammeRules, TheSameRequestsGetTheSameAnswers) {
  const auto day = [] {
    loyalty::Programme other = bench::MakeProgramme();
    Terminal register_of_day(&other);
    std::string text;
    text += register_of_day.Ask("payment", "100", Bill(true)).dump();
    text += register_of_day.Ask("balance", "100").dump();
    text += register_of_day.Ask("balance", "999").dump();
    return text;
  };
  EXPECT_EQ(day(), day());
}

}  // namespace
