// loyalty_server/vocabulary_test.cpp: the words of the protocol.
#include "loyalty_server/vocabulary.h"

#include <gmock/gmock.h>

#include <climits>

#include "support/state_codes.h"

namespace {

using loyalty::Code;

TEST(Vocabulary, KnowsARequestId) {
  for (const char *id : {"1234512120500000", "<\n\"> 12123100000", "00012121205123456789"}) {
    EXPECT_TRUE(loyalty::IsRequestId(id)) << id;
  }
  for (const char *id : {"", "12345", "123451212050000", "000121212051234567890", "1234512130500000",
                         "1234512120000000", "12345121205000 0"}) {
    EXPECT_FALSE(loyalty::IsRequestId(id)) << id;
  }
}

TEST(Vocabulary, TellsWhatIsNestedTooDeep) {
  const std::string open(101, '[');
  EXPECT_TRUE(loyalty::IsNestedTooDeep(open));
  EXPECT_TRUE(loyalty::IsNestedTooDeep("{\"a\":\"\\\"\"," + open));
  EXPECT_FALSE(loyalty::IsNestedTooDeep(open.substr(1)));
  EXPECT_FALSE(loyalty::IsNestedTooDeep("\"" + open + "\""));
  EXPECT_FALSE(loyalty::IsNestedTooDeep("\"\\\"" + open + "\""));
  std::string list;
  for (int i = 0; i < 200; ++i) list += "[{}],";
  EXPECT_FALSE(loyalty::IsNestedTooDeep(list));
}

TEST(Vocabulary, EveryMethodFindsItsOperation) {
  struct Row {
    const char *method;
    const char *type;
    const char *request;
    const char *response;
  };
  const Row rows[] = {
      {"activate", "ACTIVATION", "cardActivationRequest", "cardActivationResponse"},
      {"payment", "PAYMENT", "putPaymentRequest", "putPaymentResponse"},
      {"paymentAndConfirm", "PAYMENT_AND_CONFIRM", "putPaymentAndConfirmRequest",
       "putPaymentAndConfirmResponse"},
      {"confirm", "PAYMENT_CONFIRM", "putPaymentConfirmRequest", "putPaymentConfirmResponse"},
      {"balance", "BALANCE", "getBalanceRequest", "getBalanceResponse"},
      {"cashBack", "CASHBACK", "putCashBackRequest", "putCashBackResponse"},
      {"linkCard", "LINK", "linkedCardRequest", "linkedCardResponse"},
      {"cardExchange", "EXCHANGE", "cardExchangeRequest", "cardExchangeResponse"},
      {"deposit", "DEPOSIT", "putDepositRequest", "putDepositResponse"},
      {"ad", "AD", "getAdRequest", "getAdResponse"},
      {"rrn", "LAST_RRN", "getLastRrnRequest", "getLastRrnResponse"},
  };
  for (const Row &row : rows) {
    const loyalty::OperationNames *operation = loyalty::FindOperation(row.method);
    ASSERT_NE(operation, nullptr) << row.method;
    EXPECT_STREQ(operation->type, row.type);
    EXPECT_STREQ(operation->request, row.request);
    EXPECT_STREQ(operation->response, row.response);
  }
  EXPECT_EQ(loyalty::FindOperation("Payment"), nullptr);
  EXPECT_EQ(loyalty::FindOperation(""), nullptr);
}

TEST(Vocabulary, EveryCodeHasItsNameAndAMessage) {
  const auto &names = test::kStateCodes;
  ASSERT_EQ(std::size(names), 33u);
  for (size_t i = 0; i < std::size(names); ++i) {
    EXPECT_STREQ(loyalty::CodeName(static_cast<Code>(i)), names[i]);
    EXPECT_STRNE(loyalty::CodeMessage(static_cast<Code>(i)), "");
    Code found = Code::kOk;
    EXPECT_TRUE(loyalty::FindCode(names[i], &found));
    EXPECT_EQ(static_cast<size_t>(found), i);
  }
  Code found;
  EXPECT_FALSE(loyalty::FindCode("ok", &found));
}

TEST(Vocabulary, AmountsAreWrittenWithTwoDecimals) {
  EXPECT_EQ(loyalty::AmountText(0), "0.00");
  EXPECT_EQ(loyalty::AmountText(7), "0.07");
  EXPECT_EQ(loyalty::AmountText(1250), "12.50");
  EXPECT_EQ(loyalty::AmountText(-5), "-0.05");
  EXPECT_EQ(loyalty::AmountText(LLONG_MIN), "-92233720368547758.08");
}

TEST(Vocabulary, DatesFollowTheCalendar) {
  EXPECT_EQ(loyalty::DateText(0), "1970-01-01T00:00:00Z");
  EXPECT_EQ(loyalty::DateText(-1), "1969-12-31T23:59:59Z");
  EXPECT_EQ(loyalty::DateText(951782399), "2000-02-28T23:59:59Z");
  EXPECT_EQ(loyalty::DateText(951782400), "2000-02-29T00:00:00Z");
  EXPECT_EQ(loyalty::DateText(951868800), "2000-03-01T00:00:00Z");
  EXPECT_EQ(loyalty::DateText(1354703430), "2012-12-05T10:30:30Z");
  EXPECT_EQ(loyalty::DateText(4107542400), "2100-03-01T00:00:00Z");
}

TEST(Vocabulary, PrintableTakesTheTeethOutOfATerminalsText) {
  EXPECT_EQ(loyalty::Printable("a\r\nb\x1b[2J\x7f"), "a??b?[2J?");
  EXPECT_EQ(loyalty::Printable("abcdef", 3), "abc");
  EXPECT_EQ(loyalty::Printable("Чай"), "Чай");
}

}  // namespace
