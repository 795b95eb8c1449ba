// protocol/answer_test.cpp: the server's answer into the record.
#include "protocol/answer.h"

#include <cstdlib>
#include <ostream>
#include <string>

#include "record/enumerations.h"
#include "support/record_fixture.h"

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class AnswerReader : public ProtocolTest {
 protected:
  int Parse(const std::string &answer) {
    folder.ClearTrace();
    return lumo::ParseOperationResponse(record, answer.c_str());
  }
};

std::string Response(const std::string &state) {
  return "\"response\":{\"requestState\":\"" + state + "\"}";
}

std::string AnswerOf(const std::string &name, const std::string &parts) {
  return "{\"" + name + "\":{" + parts + "}}";
}

struct AnswerCase {
  const char *name;
  const char *mask;  // as the trace shows it
  const char *part;  // beside the response; null for none
};

std::ostream &operator<<(std::ostream &out, const AnswerCase &answer) {
  return out << answer.name;
}

const AnswerCase kAnswers[] = {
    {"cardActivationResponse", "0x0101", "\"activationResult\":{}"},
    {"getBalanceResponse", "0x0011", "\"balance\":{}"},
    {"putPaymentResponse", "0x0005", "\"bill\":{}"},
    {"putPaymentConfirmResponse", "0x0001", nullptr},
    {"putDepositResponse", "0x0001", nullptr},
    {"cardExchangeResponse", "0x0001", nullptr},
    {"putCashBackResponse", "0x0041", "\"cashBackResult\":{}"},
    {"putPaymentAndConfirmResponse", "0x0005", "\"bill\":{}"},
    {"linkedCardResponse", "0x0001", nullptr},
    {"getAdResponse", "0x2001", "\"ad\":{}"},
    {"getLastRrnResponse", "0x1001", "\"rrn\":{}"},
};

class Answer : public AnswerReader, public ::testing::WithParamInterface<AnswerCase> {
 protected:
  std::string Part() const { return GetParam().part != nullptr ? std::string(",") + GetParam().part : ""; }
};

TEST_P(Answer, IsCompleteWithItsParts) {
  EXPECT_EQ(Parse(AnswerOf(GetParam().name, Response("SUCCESS") + Part())), 0);
  EXPECT_THAT(TakeTrace(), Not(HasSubstr("Response ")));
  EXPECT_EQ(lumo::ResponsePartsMask(GetParam().name), std::strtoul(GetParam().mask, nullptr, 16));
}

TEST_P(Answer, WithoutItsPartIsNotFull) {
  if (GetParam().part == nullptr) return;
  EXPECT_EQ(Parse(AnswerOf(GetParam().name, Response("SUCCESS"))), -404);
  EXPECT_THAT(TakeTrace(), EndsWith(std::string("ERROR: Response is not full [") + GetParam().mask +
                                    " | 0x0001] [" + GetParam().name + "]\n"));
}

TEST_P(Answer, WithoutResponseIsNotFull) {
  EXPECT_EQ(Parse(AnswerOf(GetParam().name, "\"deposit\":{}")), -404);
  EXPECT_THAT(TakeTrace(), EndsWith(std::string("ERROR: Response is not full [0x0001 | 0x0200] [") +
                                    GetParam().name + "]\n"));
}

TEST_P(Answer, OfAnotherStateNeedsTheResponseAlone) {
  for (const char *state : {"OK", "PROCESSED", "ERROR", "CANCELED", "unheard of"}) {
    EXPECT_EQ(Parse(AnswerOf(GetParam().name, Response(state))), -405) << state;
    EXPECT_THAT(TakeTrace(), Not(HasSubstr("Response ")));
  }
}

INSTANTIATE_TEST_SUITE_P(Answers, Answer, ::testing::ValuesIn(kAnswers),
                         [](const auto &test_case) { return std::string(test_case.param.name); });

TEST_F(AnswerReader, LoadsAWholePaymentAnswer) {
  EXPECT_EQ(
      Parse("{\"putPaymentResponse\":{\"response\":{\"ver\":\"1.2\",\"requestId\":\"T000112120500001\","
            "\"responseId\":\"P-1\",\"responseDate\":\"2012-12-05T10:00:01Z\",\"requestState\":\"SUCCESS\","
            "\"requestStateCode\":\"OK\",\"message\":\"Спасибо\",\"isNeedUpdate\":false},\"bill\":{"
            "\"totalSum\":10000,\"billNum\":\"B-1\",\"orderLen\":1,\"billDate\":\"2012-12-05T09:59:00Z\","
            "\"partnerFee\":250,\"goodList\":{\"good\":[{\"title\":\"Чай\",\"productCode\":\"008\","
            "\"positionCost\":10000,\"orderNum\":1,\"cnt\":1,\"bonus\":[{\"earned\":300,\"spend\":0,"
            "\"organizerFee\":100,\"accountType\":\"GLOBAL\"}]}]}}}}"),
      0);
  EXPECT_EQ(
      TakeTrace(),
      "ParseOperationResponse\n"
      "response.ver = 1.2\nresponse.requestId = T000112120500001\nresponse.responseId = P-1\n"
      "response.responseDate = 2012-12-05T10:00:01Z\nresponse.state = SUCCESS\nresponse.stateCode = OK\n"
      "response.message = Спасибо\nresponse.needUpdate = 0\n"
      " totalSum [10000]\n billNum [B-1]\n orderLen [1]\n billDate [2012-12-05T09:59:00Z]\n"
      " partnerFee [250]\n title [Чай]\n productCode [008]\n positionCost [10000]\n orderNum [1]\n cnt [1]\n"
      "  earned [300]\n  spend [0]\n  organizerFee [100]\n  accountType [0]\n");
  EXPECT_STREQ(record->response.requestId, "T000112120500001");
  EXPECT_EQ(record->response.requestState, 1);
  ASSERT_EQ(record->bill.goodCount, 1);
  ASSERT_EQ(record->bill.goods[0].bonusCount, 1);
  EXPECT_EQ(record->bill.goods[0].bonuses[0].earned, 300);
}

TEST_F(AnswerReader, NameNeedNotBelongToTheRequest) {
  record->request.type = lumo::REQUEST_PAYMENT;
  EXPECT_EQ(Parse(AnswerOf("putDepositResponse", Response("SUCCESS"))), 0);
}

TEST_F(AnswerReader, ExtraPartIsWarnedOfAndLoaded) {
  EXPECT_EQ(
      Parse(AnswerOf("putPaymentResponse", Response("SUCCESS") + ",\"bill\":{},\"ad\":{\"text\":\"A\"}")), 0);
  EXPECT_THAT(
      TakeTrace(),
      EndsWith("ad.ad = A\nWARNING: Response has extra parts [0x0005 | 0x2005] [putPaymentResponse]\n"));
  EXPECT_STREQ(record->adText, "A");
}

TEST_F(AnswerReader, RefusedAnswerWithItsPartHasItAsExtra) {
  EXPECT_EQ(Parse(AnswerOf("putPaymentResponse", Response("ERROR") + ",\"bill\":{\"totalSum\":7}")), -405);
  EXPECT_THAT(TakeTrace(),
              EndsWith("WARNING: Response has extra parts [0x0001 | 0x0005] [putPaymentResponse]\n"));
  EXPECT_EQ(record->bill.totalSum, 7);
}

TEST_F(AnswerReader, MayRenameTheOperation) {
  record->request.type = lumo::REQUEST_DEPOSIT;
  EXPECT_EQ(
      Parse(AnswerOf("putDepositResponse", Response("SUCCESS") + ",\"request\":{\"type\":\"BALANCE\"}")), 0);
  EXPECT_EQ(record->request.type, 4);
}

TEST_F(AnswerReader, UnknownTypeOfOperationIsTracedAndNotTaken) {
  record->request.type = lumo::REQUEST_DEPOSIT;
  EXPECT_EQ(Parse(AnswerOf("putDepositResponse",
                           Response("SUCCESS") + ",\"request\":{\"cardNum\":\"7\",\"type\":\"FOO\"}")),
            0);
  EXPECT_EQ(record->request.type, 8);
  EXPECT_STREQ(record->request.cardNum, "7") << "the rest is taken";
  EXPECT_THAT(TakeTrace(),
              HasSubstr("request.cardNum = 7\n"
                        "ERROR: Unknown enumiratoin for RequestType [FOO]\nrequest.type = FOO\n"));
}

TEST_F(AnswerReader, OfSeveralTypesOfOperationTheLastKnownIsTaken) {
  const char *const members[] = {
      "\"type\":\"BALANCE\",\"type\":\"FOO\"",
      "\"type\":\"FOO\",\"type\":\"BALANCE\"",
      "\"type\":\"AD\",\"type\":\"BALANCE\",\"t\":\"\"",
  };
  for (const char *const types : members) {
    record->request.type = lumo::REQUEST_DEPOSIT;
    EXPECT_EQ(Parse(AnswerOf("putDepositResponse", Response("SUCCESS") + ",\"request\":{" + types + "}")), 0);
    EXPECT_EQ(record->request.type, 4) << types;
  }
}

TEST_F(AnswerReader, UnknownTypeOfActivationIsTracedAndNotTaken) {
  record->activation.activationType = lumo::ACTIVATION_GIFT_CARD;
  EXPECT_EQ(
      Parse(AnswerOf("cardActivationResponse",
                     Response("SUCCESS") + ",\"activationResult\":{},\"activation\":{\"activationType\":"
                                           "\"FOO\",\"amount\":7,\"type\":\"FOO\"}")),
      0);
  EXPECT_EQ(record->activation.activationType, 1);
  EXPECT_EQ(record->activation.amount, 7);
  EXPECT_EQ(record->activation.type, 3) << "an account is taken as it comes";
  EXPECT_THAT(TakeTrace(), HasSubstr("ERROR: Unknown enumiratoin for ActivationType [FOO]\n"
                                     "activation.activationType = FOO\n"));
}

TEST_F(AnswerReader, RefusalLeavesStateCodeAndMessage) {
  EXPECT_EQ(Parse("{\"getBalanceResponse\":{\"response\":{\"requestState\":\"ERROR\",\"requestStateCode\":"
                  "\"LOCKED_CARD\",\"message\":\"Карта заблокирована\"}}}"),
            -405);
  EXPECT_EQ(record->response.requestState, 3);
  EXPECT_EQ(record->response.requestStateCode, 9);
  EXPECT_STREQ(record->response.message, "Карта заблокирована");
}

TEST_F(AnswerReader, IncompleteAnswerLeavesWhatItHeld) {
  EXPECT_EQ(Parse("{\"putPaymentResponse\":{\"response\":{\"requestState\":\"SUCCESS\",\"message\":\"M\"}}}"),
            -404);
  EXPECT_EQ(record->response.requestState, 1);
  EXPECT_STREQ(record->response.message, "M");
}

TEST_F(AnswerReader, StaleSuccessDoesNotReplaceAMissingResponse) {
  record->response.requestState = lumo::STATE_SUCCESS;
  EXPECT_EQ(Parse(AnswerOf("putDepositResponse", "")), -404);
  EXPECT_EQ(TakeTrace(),
            "ParseOperationResponse\nERROR: Response is not full [0x0001 | 0x0000] [putDepositResponse]\n");
}

TEST_F(AnswerReader, BillThatCannotBeReadStillCountsAsThere) {
  EXPECT_EQ(Parse(AnswerOf("putPaymentResponse", Response("SUCCESS") + ",\"bill\":[]")), 0);
  EXPECT_THAT(TakeTrace(), EndsWith("ERROR: root element is not an object\n"));
}

TEST_F(AnswerReader, ResponseThatIsNoObjectIsFoundEmpty) {
  EXPECT_EQ(Parse(AnswerOf("putDepositResponse", "\"response\":null")), -405);
}

struct FailureCase {
  const char *name;
  const char *answer;
  int code;
  const char *trace;  // after the function's own line
};

std::ostream &operator<<(std::ostream &out, const FailureCase &failure) {
  return out << failure.name;
}

const FailureCase kFailures[] = {
    {"Empty", "", -402, "ERROR: no root element in json response\n"},
    {"WhiteSpace", " \r\n\t ", -402, "ERROR: no root element in json response\n"},
    {"Scalar", "17", -402, "ERROR: no root element in json response\n"},
    {"List", "[{}]", -402, "ERROR: root element is not an object\n"},
    {"EmptyRoot", "{}", -402, "ERROR: root element is empty!\n"},
    {"UnknownName", "{\"putRefundResponse\":{\"response\":{\"requestState\":\"SUCCESS\"}}}", -403,
     "WARNING: Unsupport Response Name: putRefundResponse\n"
     "ERROR: No parts in transaction [putRefundResponse]\n"},
    {"NameIsNotAPrefix", "{\"putPayment\":{}}", -403,
     "WARNING: Unsupport Response Name: putPayment\nERROR: No parts in transaction [putPayment]\n"},
    {"NameInAnotherCase", "{\"putpaymentresponse\":{}}", -403,
     "WARNING: Unsupport Response Name: putpaymentresponse\n"
     "ERROR: No parts in transaction [putpaymentresponse]\n"},
    {"KnownNameBehindAnUnknownOne", "{\"x\":1,\"putDepositResponse\":{\"response\":{}}}", -403,
     "WARNING: Unsupport Response Name: x\nERROR: No parts in transaction [x]\n"},
    {"EmptyName", "{\"\":{}}", -403,
     "WARNING: Unsupport Response Name: \nERROR: No parts in transaction []\n"},
    {"ValueIsNoObject", "{\"putDepositResponse\":[]}", -404,
     "ERROR: Response is not full [0x0001 | 0x0000] [putDepositResponse]\n"},
    {"Rejected", "<html>HTTP Status 400 - Bad Request</html>", -406, "ERROR: HTTP status 400\n"},
    {"ServerFailure", "<html>HTTP Status 500 - </html>", -407, "ERROR: HTTP status 500\n"},
    {"StatusInsideAnAnswer", "{\"putDepositResponse\":{\"response\":{\"message\":\"HTTP Status 500\"}}}",
     -407, "ERROR: HTTP status 500\n"},
    {"OtherStatusInAGoodAnswer",
     "{\"putDepositResponse\":{\"response\":{\"requestState\":\"SUCCESS\",\"message\":\"HTTP Status 404\"}}}",
     0, "ERROR: HTTP status 404\nresponse.state = SUCCESS\nresponse.message = HTTP Status 404\n"},
    {"UnknownPart", "{\"putDepositResponse\":{\"cashBackGood\":1,\"response\":{}}}", -405,
     "ERROR: Unsupported part of activation [cashBackGood]\n"},
};

class AnswerFailure : public AnswerReader, public ::testing::WithParamInterface<FailureCase> {};

TEST_P(AnswerFailure, HasItsCodeAndTrace) {
  EXPECT_EQ(Parse(GetParam().answer), GetParam().code);
  EXPECT_EQ(TakeTrace(), std::string("ParseOperationResponse\n") + GetParam().trace);
}

INSTANTIATE_TEST_SUITE_P(Failures, AnswerFailure, ::testing::ValuesIn(kFailures),
                         [](const auto &test_case) { return std::string(test_case.param.name); });

TEST_F(AnswerReader, TextThatIsNoJsonFailsTheParse) {
  for (const char *answer :
       {"HTTP/1.1 200 OK\n\n{}", "<html/>", "{\"putDepositResponse\":{}} x", "{\"a\" 1}"}) {
    EXPECT_EQ(Parse(answer), -303) << answer;
    EXPECT_THAT(TakeTrace(), StartsWith("ParseOperationResponse\nERROR: JSON Parser Error ")) << answer;
  }
}

TEST_F(AnswerReader, OtherHttpStatusIsTracedAndThenFailsTheParse) {
  EXPECT_EQ(Parse("<html><h1>HTTP Status 404 - Not Found</h1></html>"), -303);
  EXPECT_THAT(TakeTrace(),
              StartsWith("ParseOperationResponse\nERROR: HTTP status 404\nERROR: JSON Parser Error "));
}

TEST_F(AnswerReader, WhiteSpaceMayStandAroundTheDocument) {
  EXPECT_EQ(Parse("\r\n \t" + AnswerOf("putDepositResponse", Response("SUCCESS")) + "\n\n"), 0);
}

TEST_F(AnswerReader, AnswerCutShortIsReadAsFarAsItWent) {
  const std::string whole = AnswerOf("putDepositResponse", Response("SUCCESS"));
  for (size_t length = 0; length < whole.size(); ++length) {
    const int code = Parse(whole.substr(0, length));
    EXPECT_TRUE(code <= -402 || code == 0) << length << " " << code;
  }
  EXPECT_EQ(Parse(whole), 0);
}

TEST_F(AnswerReader, NullAnswerIsAnEmptyOne) {
  EXPECT_EQ(lumo::ParseOperationResponse(record, nullptr), -402);
}

TEST_F(AnswerReader, NamesOf101BytesAreRefusedSilently) {
  const std::string longest(100, 'n');
  EXPECT_EQ(lumo::ResponsePartsMask(longest.c_str()), 0U);
  EXPECT_EQ(TakeTrace(), "WARNING: Unsupport Response Name: " + longest + "\n");
  EXPECT_EQ(lumo::ResponsePartsMask((longest + "n").c_str()), 0U);
  EXPECT_EQ(lumo::ResponsePartsMask(nullptr), 0U);
  EXPECT_EQ(TakeTrace(), "");
  EXPECT_EQ(Parse("{\"" + longest + "n\":{}}"), -403);
  EXPECT_EQ(TakeTrace(), "ParseOperationResponse\nERROR: No parts in transaction [" + longest + "n]\n");
}

struct StatusCase {
  const char *answer;
  int status;
};

TEST(HttpStatus, IsTheNumberBehindTheTitle) {
  const StatusCase cases[] = {
      {"", 0},
      {"HTTP/1.1 500 Internal", 0},
      {"HTTP Status", 0},
      {"HTTP Status 404", 404},
      {"HTTP Status400", 400},
      {"HTTP Status \t\r\n 400 x", 400},
      {"HTTP Status +500 x", 500},
      {"HTTP Status -1 x", -1},
      {"HTTP Status: 500", 0},
      {"HTTP Status 500.9", 500},
      {"HTTP Status 99999999999999999999999", 2147483647},
      {"HTTP Status -99999999999999999999999", INT32_MIN},
      {"HTTP Status x HTTP Status 400", 0},
      {"HTTP Status 404 HTTP Status 400", 404},
      {"HTTP HTTP Status 403", 403},
      {"http status 400", 0},
  };
  for (const StatusCase &row : cases) EXPECT_EQ(lumo::ParseHttpStatus(row.answer), row.status) << row.answer;
  EXPECT_EQ(lumo::ParseHttpStatus(nullptr), 0);
}

}  // namespace
