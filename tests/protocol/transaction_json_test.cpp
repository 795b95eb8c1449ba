// tests/protocol/transaction_json_test.cpp: the server's answer and journal records into the record, and
// journal records out of it.
#include "protocol/transaction_json.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <string>
#include <utility>

#include "journal/logger.h"
#include "protocol/full_record.h"
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
    return lumo::ParseOperationResponse(record, answer.c_str(), static_cast<uint32_t>(answer.size()));
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
  EXPECT_EQ(lumo::ParseOperationResponse(record, nullptr, 0), -402);
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
  for (const StatusCase &row : cases) {
    EXPECT_EQ(lumo::ParseHttpStatus(row.answer), row.status) << row.answer;
  }
  EXPECT_EQ(lumo::ParseHttpStatus(nullptr), 0);
}

class PartReader : public ProtocolTest {
 protected:
  uint32_t Load(const std::string &json) {
    const Document document(json);
    folder.ClearTrace();
    return lumo::LoadParts(record, document.root());
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
  for (const auto &[key, bit] : parts) {
    EXPECT_EQ(Load(std::string("{\"") + key + "\":{}}"), bit) << key;
  }
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
  EXPECT_EQ(lumo::LoadParts(record, nullptr), 0U);
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

class RecordWriter : public ProtocolTest {
 protected:
  RecordWriter() {
    lumo::SetLogSize(1000);
    FillRecord(record);
    folder.ClearTrace();
  }
};

struct RecordCase {
  int32_t type;
  const char *type_text;
  const char *parts;  // behind the request part
};

std::ostream &operator<<(std::ostream &out, const RecordCase &operation) {
  return out << operation.type_text;
}

const RecordCase kRecords[] = {
    {0, "ACTIVATION", ",\"activation\":" FULL_ACTIVATION ",\"activationResult\":" FULL_ACTIVATION_RESULT},
    {1, "PAYMENT", ",\"bill\":" FULL_BILL},
    {2, "PAYMENT_AND_CONFIRM", ",\"bill\":" FULL_BILL},
    {3, "PAYMENT_CONFIRM", ",\"paymentConfirm\":{\"requestId\":\"T000112120400009\",\"isConfirm\":true}"},
    {4, "BALANCE", ""},
    {5, "CASHBACK", ""},
    {6, "LINK", ""},
    {7, "EXCHANGE", ""},
    {8, "DEPOSIT", ",\"deposit\":{\"amount\":7500}"},
    {9, "AD", ""},
    {10, "LAST_RRN", ""},
};

class OperationRecord : public RecordWriter, public ::testing::WithParamInterface<RecordCase> {};

TEST_P(OperationRecord, IsOneLineOfTheLog) {
  record->request.type = GetParam().type;
  EXPECT_EQ(lumo::WriteTransactionRecord(record), 0);
  EXPECT_EQ(folder.Read("LOG"),
            "{\"request\":" + FullRequest(GetParam().type_text, "false") + GetParam().parts + "}\n");
  EXPECT_FALSE(folder.Exists("OFFLINE"));
}

TEST_P(OperationRecord, OfAnOfflineOperationGoesToBothJournals) {
  record->request.type = GetParam().type;
  record->request.isOffline = 1;
  EXPECT_EQ(lumo::WriteTransactionRecord(record), 0);
  const std::string line =
      "{\"request\":" + FullRequest(GetParam().type_text, "true") + GetParam().parts + "}\n";
  EXPECT_EQ(folder.Read("LOG"), line);
  EXPECT_EQ(folder.Read("OFFLINE"), line);
}

TEST_P(OperationRecord, ReadsBackAsItWasWritten) {
  record->request.type = GetParam().type;
  EXPECT_EQ(lumo::WriteTransactionRecord(record), 0);
  const std::string line = folder.Read("LOG");
  lumo::Transaction *copy = lumo::new_transaction();
  EXPECT_EQ(lumo::LoadLogRecord(copy, line.c_str()), 0);
  copy->bill.spendAmount = record->bill.spendAmount;  // never read back
  folder.Remove("LOG");
  EXPECT_EQ(lumo::WriteTransactionRecord(copy), 0);
  EXPECT_EQ(folder.Read("LOG"), line);
  lumo::free_transaction(copy);
}

INSTANTIATE_TEST_SUITE_P(Operations, OperationRecord, ::testing::ValuesIn(kRecords),
                         [](const auto &test_case) { return std::string(test_case.param.type_text); });

TEST_F(RecordWriter, LogThatCannotBeOpenedIsReported) {
  std::filesystem::create_directory(std::filesystem::u8path(folder.path() + "LOG"));
  record->request.type = lumo::REQUEST_BALANCE;
  EXPECT_EQ(lumo::WriteTransactionRecord(record), -201);
}

TEST_F(RecordWriter, ResultOfTheOfflineJournalReplacesThatOfTheLog) {
  std::filesystem::create_directory(std::filesystem::u8path(folder.path() + "LOG"));
  record->request.type = lumo::REQUEST_BALANCE;
  record->request.isOffline = 1;
  EXPECT_EQ(lumo::WriteTransactionRecord(record), 0);
  folder.Remove("LOG");
  folder.Remove("OFFLINE");
  std::filesystem::create_directory(std::filesystem::u8path(folder.path() + "OFFLINE"));
  EXPECT_EQ(lumo::WriteTransactionRecord(record), -201);
  EXPECT_TRUE(folder.Exists("LOG"));
}

TEST_F(RecordWriter, HoldsNoLineFeedOfItsTexts) {
  record->request.type = lumo::REQUEST_BALANCE;
  Store(&record->request.cardNum, "one\ntwo");
  EXPECT_EQ(lumo::WriteTransactionRecord(record), 0);
  EXPECT_THAT(folder.Read("LOG"), HasSubstr("\"cardNum\":\"one\\ntwo\""));
}

const test::Folder *traced_folder;

void ShowTrace() {
  std::fputs(traced_folder->Trace().c_str(), stderr);
}

using RecordWriterDeathTest = RecordWriter;

TEST_F(RecordWriterDeathTest, UnhandledTypeEndsTheProcess) {
  const auto write_type = [&](int32_t type) {
    traced_folder = &folder;
    std::atexit(ShowTrace);
    record->request.type = type;
    lumo::WriteTransactionRecord(record);
  };
  const char *const line = "ERROR: ASSERT IN transaction_json.* LINE .*: Unhandled request type!";
  EXPECT_EXIT(write_type(11), ::testing::ExitedWithCode(kExitMinusOne), line);
  EXPECT_EXIT(write_type(-1), ::testing::ExitedWithCode(kExitMinusOne), line);
  EXPECT_FALSE(folder.Exists("LOG"));
}

class RecordReader : public ProtocolTest {};

TEST_F(RecordReader, LoadsThePartsOfItsRoot) {
  EXPECT_EQ(lumo::LoadLogRecord(
                record, "{\"request\":{\"type\":\"DEPOSIT\",\"isOffline\":true},\"deposit\":{\"amount\":5}}"),
            0);
  EXPECT_EQ(record->request.type, 8);
  EXPECT_EQ(record->request.isOffline, 1);
  EXPECT_EQ(record->depositAmount, 5);
  EXPECT_EQ(TakeTrace(), "LoadLogRecord\nrequest.type = DEPOSIT\nrequest.offline = 1\ndeposit.amount = 5\n");
}

TEST_F(RecordReader, BlankLineIsAnEmptyRecord) {
  EXPECT_EQ(lumo::LoadLogRecord(record, ""), 0);
  EXPECT_EQ(lumo::LoadLogRecord(record, nullptr), 0);
  EXPECT_EQ(TakeTrace(), "LoadLogRecord\nLoadLogRecord\n");
  EXPECT_EQ(record->request.type, 0);
}

TEST_F(RecordReader, RecordThatIsNoJsonReturnsTheParsersResult) {
  EXPECT_EQ(lumo::LoadLogRecord(record, "garbage"), -303);
  EXPECT_THAT(TakeTrace(), StartsWith("LoadLogRecord\nERROR: JSON Parser Error "));
}

TEST_F(RecordReader, RootThatIsNoObjectLoadsNothing) {
  EXPECT_EQ(lumo::LoadLogRecord(record, "[1]"), 0);
  EXPECT_EQ(lumo::LoadLogRecord(record, "\"text\""), 0);
  EXPECT_EQ(TakeTrace(), "LoadLogRecord\nLoadLogRecord\n");
}

TEST_F(RecordReader, DamagedBillDoesNotStopTheRecord) {
  EXPECT_EQ(lumo::LoadLogRecord(record, "{\"bill\":null,\"deposit\":{\"amount\":5}}"), 0);
  EXPECT_EQ(record->depositAmount, 5);
}

}  // namespace
