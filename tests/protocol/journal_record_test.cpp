// protocol/journal_record_test.cpp: an operation as a line of the journals, out of the record and back.
#include "protocol/journal_record.h"

#include <ostream>
#include <string>

#include "foundation/lumostring.h"
#include "protocol/full_record.h"
#include "record/enumerations.h"
#include "support/fatal.h"
#include "support/record_fixture.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string Printed(const lumo::Transaction *record) {
  lumo::String *output = lumo::StringCreate();
  EXPECT_EQ(lumo::PrintTransactionRecord(record, output), 0);
  std::string text(lumo::StringGetText(output), lumo::StringGetLength(output));
  lumo::StringFree(output);
  return text;
}

class RecordWriter : public ProtocolTest {
 protected:
  RecordWriter() {
    FillRecord(record);
    folder.ClearTrace();
  }
};

struct RecordCase {
  int32_t number;
  const char *typeText;
  const char *parts;  // behind the request part

  lumo::RequestType type() const { return static_cast<lumo::RequestType>(number); }
};

std::ostream &operator<<(std::ostream &out, const RecordCase &operation) {
  return out << operation.typeText;
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

TEST_P(OperationRecord, IsItsRequestAndItsParts) {
  record->request.type = GetParam().type();
  EXPECT_EQ(Printed(record),
            "{\"request\":" + FullRequest(GetParam().typeText, "false") + GetParam().parts + "}");
  record->request.isOffline = 1;
  EXPECT_EQ(Printed(record),
            "{\"request\":" + FullRequest(GetParam().typeText, "true") + GetParam().parts + "}");
  EXPECT_EQ(TakeTrace(), "");
}

TEST_P(OperationRecord, ReadsBackAsItWasWritten) {
  record->request.type = GetParam().type();
  const std::string text = Printed(record);
  lumo::Transaction *copy = lumo::TransactionCreate();
  EXPECT_EQ(lumo::LoadLogRecord(copy, text.c_str()), 0);
  copy->bill.spendAmount = record->bill.spendAmount;  // never read back
  EXPECT_EQ(Printed(copy), text);
  lumo::TransactionFree(copy);
}

INSTANTIATE_TEST_SUITE_P(Operations, OperationRecord, ::testing::ValuesIn(kRecords),
                         [](const auto &test_case) { return std::string(test_case.param.typeText); });

TEST_F(RecordWriter, HoldsNoLineFeedOfItsTexts) {
  record->request.type = lumo::REQUEST_BALANCE;
  Store(&record->request.cardNum, "one\ntwo");
  EXPECT_THAT(Printed(record), HasSubstr("\"cardNum\":\"one\\ntwo\""));
}

using RecordWriterDeathTest = RecordWriter;

TEST_F(RecordWriterDeathTest, UnhandledTypeEndsTheProcess) {
  const auto write_type = [&](int32_t type) {
    test::PrintTraceAtExit(folder);
    record->request.type = static_cast<lumo::RequestType>(type);
    Printed(record);
  };
  const char *const line = "ERROR: ASSERT IN transaction_json.* LINE .*: Unhandled request type!";
  EXPECT_EXIT(write_type(11), ::testing::ExitedWithCode(kExitMinusOne), line);
  EXPECT_EXIT(write_type(-1), ::testing::ExitedWithCode(kExitMinusOne), line);
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

TEST_F(RecordReader, UnknownTypesAreTakenAndTheLastOfTwoCounts) {
  EXPECT_EQ(lumo::LoadLogRecord(record,
                                "{\"request\":{\"type\":\"BALANCE\",\"type\":\"FOO\"},"
                                "\"activation\":{\"activationType\":\"FOO\"}}"),
            0);
  EXPECT_EQ(record->request.type, 11);
  EXPECT_EQ(record->activation.activationType, 3);
  EXPECT_EQ(lumo::LoadLogRecord(record, "{\"request\":{\"type\":\"FOO\",\"type\":\"BALANCE\"}}"), 0);
  EXPECT_EQ(record->request.type, 4);
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
