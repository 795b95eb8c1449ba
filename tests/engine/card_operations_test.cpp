// engine/card_operations_test.cpp: activation, balance, link, deposit, exchange and the read-outs of answers.
#include "engine/card_operations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "record/transaction.h"
#include "support/shop.h"

namespace {

using lumo::Transaction;
using test::Count;
using test::InOrder;
using test::Reply;
using test::RequestPart;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char kActivationResult[] =
    R"("activationResult":{"activationSum":1100,"activationSumType":"GLOBAL","referralSum":2200,)"
    R"("referralSumType":"LOCAL","giftSum":3300,"giftSumType":"DISCOUNT"})";
class CardOperation : public test::Shop {};

// ---- What all operations share ----

struct Operation : test::NamedCase {
  int (*run)(Transaction *transaction);
  const char *firstLine;
  const char *type;
  std::string goodAnswer;
  uint32_t bit;  // 0: the operation is not marked
  bool journalled;
  bool offlineOnly;  // the server is asked for an offline record only
};

std::vector<Operation> Operations() {
  return {
      {"Activation",
       [](Transaction *transaction) {
         return lumo::ActivationProcess(transaction, "SIMPLE_ACTIVATION", nullptr, 500, "GLOBAL", nullptr);
       },
       "ActivationProcess\n", "ACTIVATION", Reply("cardActivationResponse", kActivationResult), 0x10, true,
       false},
      {"Balance", lumo::BalanceProcess, "BalanceProcess\n", "BALANCE",
       Reply("getBalanceResponse", R"("balance":{"account":[]})"), 0x04, false, false},
      {"Link", [](Transaction *transaction) { return lumo::LinkCardProcess(transaction, "555"); },
       "LinkCardProcess card [555]\n", "LINK", Reply("linkedCardResponse"), 0x40, true, true},
      {"Deposit", [](Transaction *transaction) { return lumo::DepositProcess(transaction, 500); },
       "DepositProcess amount [500]\n", "DEPOSIT", Reply("putDepositResponse"), 0x20, true, false},
      {"Exchange", [](Transaction *transaction) { return lumo::ExchangeProcess(transaction, "abc"); },
       "ExchangeProcess token [abc]\n", "EXCHANGE", Reply("cardExchangeResponse"), 0x80, true, false},
      {"Ad", lumo::GetAdProcess, "GetAdProcess\n", "AD", Reply("getAdResponse", R"("ad":{"text":"Скидки"})"),
       0, false, false},
  };
}

class EveryOperation : public test::Shop, public testing::WithParamInterface<Operation> {
 protected:
  // A record for which the operation asks the server.
  void OpenCardThatIsSent() {
    OpenCard();
    card->request.isOffline = GetParam().offlineOnly ? 1 : 0;
  }
};

TEST_P(EveryOperation, TracesItsNameAndRefusesAMissingRecord) {
  OpenShop();
  const std::string state = State();
  EXPECT_EQ(GetParam().run(nullptr), -100);
  EXPECT_EQ(folder.Trace(), std::string(GetParam().firstLine) + "ERROR: Pointer \"trans\" is null\n");
  EXPECT_EQ(State(), state);
}

TEST_P(EveryOperation, FillsTheRequestAndSendsIt) {
  StartServer({GetParam().goodAnswer});
  OpenShop();
  OpenCardThatIsSent();
  EXPECT_EQ(GetParam().run(card), 0);
  const std::string type = GetParam().type;
  EXPECT_THAT(folder.Trace(), StartsWith(GetParam().firstLine + ("FillRequest(" + type + ")\n")));
  EXPECT_THAT(folder.Trace(), HasSubstr("TransactionProcess [" + type + "]\n"));
  EXPECT_EQ(RequestCount(), 1U);
  EXPECT_THAT(RequestDocument(0), HasSubstr("\"type\":\"" + type + "\""));
}

TEST_P(EveryOperation, MarksItsBitBesideTheOthers) {
  StartServer({GetParam().goodAnswer});
  OpenShop();
  OpenCardThatIsSent();
  card->completedOperations = 0x100;
  EXPECT_EQ(GetParam().run(card), 0);
  EXPECT_EQ(card->completedOperations, 0x100U | GetParam().bit);
}

TEST_P(EveryOperation, ARefusalIsReturnedWithoutMarkRecordOrReceipt) {
  StartServer({Reply("putDepositResponse", "", test::kRefusal)});
  OpenShop();
  OpenCardThatIsSent();
  EXPECT_EQ(GetParam().run(card), -405);
  EXPECT_EQ(card->completedOperations, 0U);
  EXPECT_EQ(Body(), "");
  EXPECT_FALSE(folder.Exists("LOG"));
}

TEST_P(EveryOperation, AFailedRequestsNumberStaysTaken) {
  OpenShop();
  OpenCardThatIsSent();
  EXPECT_EQ(GetParam().run(card), -501);
  EXPECT_EQ(card->completedOperations, 0U);
  EXPECT_EQ(Body(), "");
  EXPECT_FALSE(folder.Exists("LOG"));
  const bool takes_a_number = GetParam().type != std::string("AD");
  EXPECT_STREQ(lumo::CopyRequestId(), takes_a_number ? "TERM012120500008" : "TERM012120500007");
}

INSTANTIATE_TEST_SUITE_P(Operations, EveryOperation, testing::ValuesIn(Operations()), test::CaseName());

std::vector<Operation> Those(bool journalled) {
  std::vector<Operation> chosen;
  for (const Operation &operation : Operations()) {
    if (operation.journalled == journalled) chosen.push_back(operation);
  }
  return chosen;
}

using JournalledOperation = EveryOperation;

TEST_P(JournalledOperation, LeavesOneRecord) {
  StartServer({GetParam().goodAnswer});
  OpenShop();
  OpenCardThatIsSent();
  EXPECT_EQ(GetParam().run(card), 0);
  EXPECT_EQ(Count(folder.Read("LOG"), "\n"), 1U);
  EXPECT_THAT(folder.Read("LOG"), HasSubstr(std::string("\"type\":\"") + GetParam().type + "\""));
}

TEST_P(JournalledOperation, GivesTheJournalsResultAndIsStillMarkedAndPrinted) {
  StartServer({GetParam().goodAnswer});
  OpenShop();
  OpenCard();
  MakeLogUnwritable();
  EXPECT_EQ(GetParam().run(card), -201);
  EXPECT_EQ(card->completedOperations, GetParam().bit);
  EXPECT_THAT(Body(), HasSubstr("RRN: TERM012120500008\n"));
}

INSTANTIATE_TEST_SUITE_P(Operations, JournalledOperation, testing::ValuesIn(Those(true)), test::CaseName());

using Question = EveryOperation;

TEST_P(Question, LeavesNoRecord) {
  StartServer({GetParam().goodAnswer});
  OpenShop();
  OpenCard();
  EXPECT_EQ(GetParam().run(card), 0);
  EXPECT_FALSE(folder.Exists("LOG"));
}

INSTANTIATE_TEST_SUITE_P(Operations, Question, testing::ValuesIn(Those(false)), test::CaseName());

TEST_F(CardOperation, WithoutAnIdThereIsNoRrnLine) {
  StartServer({Reply("getLastRrnResponse", R"("rrn":{})", R"({"requestState":"SUCCESS"})"),
               Reply("putDepositResponse")});
  OpenShop();
  SetState("{}");
  OpenCard();
  EXPECT_EQ(lumo::DepositProcess(card, 500), 0);
  EXPECT_EQ(card->request.requestId, nullptr);
  EXPECT_EQ(Body(),
            "******* ДЕПОЗИТ *******\n"
            "Зачислено (бнс.):\n"
            "                    5.00");
  EXPECT_THAT(RequestDocument(1), HasSubstr(R"("requestId":"",)"));
}

// ---- Activation ----

struct ActivationCase : test::NamedCase {
  const char *activationType;
  int32_t amount;
  const char *accountType;
  const char *referCardNum;
  const char *part;  // of request and journal record
  const char *body;
};
const ActivationCase kActivationCases[] = {
    {"Simple", "SIMPLE_ACTIVATION", 1250, "LOCAL", "777",
     R"("activation":{"activationType":"SIMPLE_ACTIVATION","amount":1250,"type":"GLOBAL"})",
     "****** АКТИВАЦИЯ *******\n"
     "RRN: TERM012120500008\n"
     "        Успешно!        \n"},
    {"GiftCardLocal", "GIFT_CARD", 1250, "LOCAL", "777",
     R"("activation":{"activationType":"GIFT_CARD","amount":1250,"type":"LOCAL"})",
     "*** ПОДАРОЧНАЯ КАРТА ***\n"
     "RRN: TERM012120500008\n"
     "Начислено (бнс.):\n"
     "                   12.50\n"},
    {"GiftCardDiscount", "GIFT_CARD", 0, "DISCOUNT", nullptr,
     R"("activation":{"activationType":"GIFT_CARD","amount":0,"type":"DISCOUNT"})",
     "*** ПОДАРОЧНАЯ КАРТА ***\n"
     "RRN: TERM012120500008\n"
     "Начислено (бнс.):\n"
     "                    0.00\n"},
    {"ReferAFriend", "REFER_A_FRIEND", 5, "LOCAL", "9643000000000001",
     R"("activation":{"activationType":"REFER_A_FRIEND","amount":5,"type":"GLOBAL",)"
     R"("referParentCardNum":"9643000000000001"})",
     "**** ПРИВЕДИ ДРУГА *****\n"
     "RRN: TERM012120500008\n"
     "        Успешно!        \n"
     "***  КАРТА РЕФЕРЕНТА ***\n"
     "    9643000000000001\n"},
    {"ReferAFriendWithoutCard", "REFER_A_FRIEND", 5, nullptr, nullptr,
     R"("activation":{"activationType":"REFER_A_FRIEND","amount":5,"type":"GLOBAL"})",
     "**** ПРИВЕДИ ДРУГА *****\n"
     "RRN: TERM012120500008\n"
     "        Успешно!        \n"
     "***  КАРТА РЕФЕРЕНТА ***\n"
     "    \n"},
};

class Activation : public test::Shop, public testing::WithParamInterface<ActivationCase> {};

TEST_P(Activation, SendsJournalsAndPrints) {
  StartServer({Reply("cardActivationResponse", kActivationResult)});
  OpenShop();
  OpenCard();
  const ActivationCase &wanted = GetParam();
  EXPECT_EQ(lumo::ActivationProcess(card, wanted.activationType, nullptr, wanted.amount, wanted.accountType,
                                    wanted.referCardNum),
            0);
  EXPECT_EQ(RequestDocument(0),
            "{\"cardActivationRequest\":{" + RequestPart("ACTIVATION") + "," + wanted.part + "}}");
  EXPECT_EQ(folder.Read("LOG"),
            "{" + RequestPart("ACTIVATION") + "," + wanted.part + "," + kActivationResult + "}\n");
  EXPECT_EQ(Body(), wanted.body);
}

INSTANTIATE_TEST_SUITE_P(Cases, Activation, testing::ValuesIn(kActivationCases), test::CaseName());

TEST_F(CardOperation, AnswerCannotMakeTheOperationUnknown) {
  StartServer({Reply("putDepositResponse", R"("request":{"type":"FOO"})")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::DepositProcess(card, 700), 0);
  EXPECT_EQ(folder.Read("LOG"), "{" + RequestPart("DEPOSIT") + R"(,"deposit":{"amount":700}})" + "\n");
}

TEST_F(CardOperation, AnswerCannotMakeTheActivationUnknown) {
  StartServer({Reply("cardActivationResponse",
                     kActivationResult + std::string(R"(,"activation":{"activationType":"FOO"})"))});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::ActivationProcess(card, "REFER_A_FRIEND", nullptr, 500, nullptr, "777"), 0);
  EXPECT_THAT(folder.Read("LOG"), HasSubstr(R"("activationType":"REFER_A_FRIEND","amount":500)"));
  folder.ClearTrace();
  lumo::GetActivationAmountProcess(card);
  EXPECT_EQ(folder.Trace(), "GetActivationAmountProcess\n");
}

TEST_F(CardOperation, GiftCardsSlipShowsTheAmountThatWasSent) {
  StartServer({Reply("cardActivationResponse",
                     kActivationResult +
                         std::string(R"(,"activation":{"activationType":"SIMPLE_ACTIVATION","amount":1})"))});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::ActivationProcess(card, "GIFT_CARD", nullptr, 1250, "LOCAL", nullptr), 0);
  EXPECT_EQ(Body(),
            "*** ПОДАРОЧНАЯ КАРТА ***\n"
            "RRN: TERM012120500008\n"
            "Начислено (бнс.):\n"
            "                   12.50\n");
  EXPECT_THAT(folder.Read("LOG"), HasSubstr(R"("activationType":"SIMPLE_ACTIVATION","amount":1,)"))
      << "the record is the answer's";
}

struct RefusedActivationCase : test::NamedCase {
  const char *activationType;
  const char *accountType;
  int result;
  int32_t activationTypeAfter;
  int32_t typeAfter;
  const char *traceEnd;
};
const RefusedActivationCase kRefusedActivationCases[] = {
    {"UnknownType", "GIFT", "LOCAL", -102, 3, 0, "ERROR: Unknown enumiratoin for ActivationType [GIFT]\n"},
    {"LowerCaseType", "gift_card", "LOCAL", -102, 3, 0,
     "ERROR: Unknown enumiratoin for ActivationType [gift_card]\n"},
    {"NullType", nullptr, "LOCAL", -102, 3, 0, "ERROR: Unknown enumiratoin for ActivationType [(null)]\n"},
    {"UnknownAccount", "GIFT_CARD", "BONUS", -103, 1, 3,
     "ERROR: Unknown enumiratoin for AccountType [BONUS]\n"},
    {"NullAccount", "GIFT_CARD", nullptr, -103, 1, 3,
     "ERROR: Unknown enumiratoin for AccountType [(null)]\n"},
};

class RefusedActivation : public test::Shop, public testing::WithParamInterface<RefusedActivationCase> {};

TEST_P(RefusedActivation, IsNotSentAndLeavesTheUnknownValue) {
  StartServer({});
  OpenShop();
  OpenCard();
  EXPECT_EQ(
      lumo::ActivationProcess(card, GetParam().activationType, nullptr, 500, GetParam().accountType, nullptr),
      GetParam().result);
  EXPECT_EQ(card->activation.activationType, GetParam().activationTypeAfter);
  EXPECT_EQ(card->activation.type, GetParam().typeAfter);
  EXPECT_THAT(folder.Trace(), EndsWith(GetParam().traceEnd));
  EXPECT_EQ(RequestCount(), 0U);
  EXPECT_EQ(Body(), "");
  EXPECT_EQ(card->completedOperations, 0U);
  EXPECT_STREQ(lumo::CopyRequestId(), "TERM012120500008") << "the number stays taken";
}

INSTANTIATE_TEST_SUITE_P(Cases, RefusedActivation, testing::ValuesIn(kRefusedActivationCases),
                         test::CaseName());

TEST_F(CardOperation, ActivationWithABillSendsTheBillsTotal) {
  StartServer({Reply("cardActivationResponse", kActivationResult)});
  OpenShop();
  folder.Write("BILL", R"({"totalSum":9900,"orderLen":0,"billNum":"7"})");
  OpenCard();
  EXPECT_EQ(lumo::ActivationProcess(card, "GIFT_CARD", "BILL", 100, "LOCAL", nullptr), 0);
  EXPECT_THAT(RequestDocument(0), HasSubstr(R"("amount":9900,"type":"LOCAL")"));
  EXPECT_THAT(Body(), EndsWith("                   99.00\n"));
  EXPECT_EQ(folder.Read("BILL"), R"({"totalSum":9900,"orderLen":0,"billNum":"7"})") << "not rewritten";
}

struct BadBillCase : test::NamedCase {
  const char *path;
  const char *traceEnd;
};
const BadBillCase kBadBills[] = {
    {"Missing", "NONE", "ERROR: BillParse res [-307] "},
    {"EmptyPath", "", "ERROR: BillParse res [-307] "},
    {"Damaged", "BILL", "ERROR: BillParse res [-303] "},
    {"Cut", "CUT", "ERROR: BillParse res [-402] "},
};

class BadBill : public test::Shop, public testing::WithParamInterface<BadBillCase> {};

TEST_P(BadBill, EndsTheActivationUnsent) {
  StartServer({});
  OpenShop();
  folder.Write("BILL", R"({"totalSum" 5})");
  folder.Write("CUT", R"({"totalSum":)");
  OpenCard();
  EXPECT_EQ(lumo::ActivationProcess(card, "SIMPLE_ACTIVATION", GetParam().path, 100, nullptr, nullptr), -106);
  const std::string trace = folder.Trace();
  const size_t last_line = trace.rfind("\nERROR: ") + 1;
  EXPECT_THAT(trace.substr(last_line), StartsWith(GetParam().traceEnd));
  EXPECT_EQ(trace.back(), '\n');
  EXPECT_GT(trace.size() - last_line, std::string(GetParam().traceEnd).size() + 1) << "the code's message";
  EXPECT_EQ(RequestCount(), 0U);
  EXPECT_EQ(Body(), "");
}

INSTANTIATE_TEST_SUITE_P(Cases, BadBill, testing::ValuesIn(kBadBills), test::CaseName());

// ---- The activation's sum ----

struct SumCase {
  int32_t activationType;
  int sum;
  const char *trace;
};
const SumCase kSumCases[] = {
    {0, 1100, "GetActivationAmountProcess\n"},
    {1, 3300, "GetActivationAmountProcess\n"},
    {2, 2200, "GetActivationAmountProcess\n"},
    {3, 0, "GetActivationAmountProcess\nERROR: Not supported activation type\n"},
    {-1, 0, "GetActivationAmountProcess\nERROR: Not supported activation type\n"},
};

TEST_F(CardOperation, ActivationAmountIsTheSumOfTheKind) {
  OpenShop();
  OpenCard();
  card->activationResult.activationSum = 1100;
  card->activationResult.referralSum = 2200;
  card->activationResult.giftSum = 3300;
  for (const SumCase &wanted : kSumCases) {
    folder.ClearTrace();
    card->activation.activationType = static_cast<lumo::ActivationType>(wanted.activationType);
    EXPECT_EQ(lumo::GetActivationAmountProcess(card), wanted.sum) << wanted.activationType;
    EXPECT_EQ(folder.Trace(), wanted.trace) << wanted.activationType;
  }
}

TEST_F(CardOperation, ActivationAmountNeedsARecord) {
  EXPECT_EQ(lumo::GetActivationAmountProcess(nullptr), -100);
  EXPECT_EQ(folder.Trace(), "GetActivationAmountProcess\nERROR: Pointer \"trans\" is null\n");
}

TEST_F(CardOperation, CashBackResultIsTheReturnedSum) {
  OpenShop();
  OpenCard();
  card->returnedSum = 4400;
  EXPECT_EQ(lumo::GetCashBackResultProcess(card), 4400);
  EXPECT_EQ(folder.Trace(), "GetCashBackResultProcess\n");
}

TEST_F(CardOperation, CashBackResultNeedsARecord) {
  EXPECT_EQ(lumo::GetCashBackResultProcess(nullptr), -100);
  EXPECT_EQ(folder.Trace(), "GetCashBackResultProcess\nERROR: Pointer \"trans\" is null\n");
}

// ---- Balance ----

std::string Account(const char *type, int32_t available, int32_t amount) {
  return std::string(R"({"accountType":")") + type + R"(","availableAmount":)" + std::to_string(available) +
         R"(,"amount":)" + std::to_string(amount) + "}";
}

struct BalanceCase : test::NamedCase {
  std::vector<std::string> accounts;
  const char *body;
};

std::vector<BalanceCase> BalanceCases() {
  return {
      {"AllKinds",
       {Account("GLOBAL", 10000, 20000), Account("LOCAL", 1005, 2005), Account("DISCOUNT", 303, 707)},
       "**** ИНФО ПО КАРТЕ ****\n"
       "Начислено всего:\n"
       "             200.00 бнс.\n"
       "Начислено всего\n"
       "ЛАВКА:\n"
       "             220.05 бнс.\n"
       "Начислено скид бон \n"
       "ЛАВКА:\n"
       "              17.12 бнс.\n"
       "************************\n"
       "Доступно всего:\n"
       "             100.00 бнс.\n"
       "Доступно всего\n"
       "ЛАВКА:\n"
       "             117.12 бнс.\n"
       "Доступно скид бон \n"
       "ЛАВКА:\n"
       "               3.03 ски.\n"},
      {"OneDiscountAccount",
       {Account("DISCOUNT", 300, 500)},
       "**** ИНФО ПО КАРТЕ ****\n"
       "Начислено всего:\n"
       "               0.00 бнс.\n"
       "Начислено всего\n"
       "ЛАВКА:\n"
       "               0.00 бнс.\n"
       "Начислено скид бон \n"
       "ЛАВКА:\n"
       "               5.00 бнс.\n"
       "************************\n"
       "Доступно всего:\n"
       "               0.00 бнс.\n"
       "Доступно всего\n"
       "ЛАВКА:\n"
       "               5.00 бнс.\n"
       "Доступно скид бон \n"
       "ЛАВКА:\n"
       "               3.00 ски.\n"},
      {"AccountsOfOneKindAddUp",
       {Account("GLOBAL", 100, 1), Account("GLOBAL", 200, 2), Account("GLOBAL", -50, -5)},
       "**** ИНФО ПО КАРТЕ ****\n"
       "Начислено всего:\n"
       "               0.-2 бнс.\n"
       "Начислено всего\n"
       "ЛАВКА:\n"
       "               0.-2 бнс.\n"
       "Начислено скид бон \n"
       "ЛАВКА:\n"
       "               0.00 бнс.\n"
       "************************\n"
       "Доступно всего:\n"
       "               2.50 бнс.\n"
       "Доступно всего\n"
       "ЛАВКА:\n"
       "               2.50 бнс.\n"
       "Доступно скид бон \n"
       "ЛАВКА:\n"
       "               0.00 ски.\n"},
      {"UnknownKindsAreIgnored",
       {Account("OTHER", 300, 500), Account("LOCAL", 1, 2)},
       "**** ИНФО ПО КАРТЕ ****\n"
       "Начислено всего:\n"
       "               0.00 бнс.\n"
       "Начислено всего\n"
       "ЛАВКА:\n"
       "               0.02 бнс.\n"
       "Начислено скид бон \n"
       "ЛАВКА:\n"
       "               0.01 бнс.\n"
       "************************\n"
       "Доступно всего:\n"
       "               0.00 бнс.\n"
       "Доступно всего\n"
       "ЛАВКА:\n"
       "               0.01 бнс.\n"
       "Доступно скид бон \n"
       "ЛАВКА:\n"
       "               0.00 ски.\n"},
      {"SumsWrapAt32Bits",
       {Account("GLOBAL", 2147483647, 2147483647), Account("GLOBAL", 1, 2)},
       "**** ИНФО ПО КАРТЕ ****\n"
       "Начислено всего:\n"
       "       -21474836.47 бнс.\n"
       "Начислено всего\n"
       "ЛАВКА:\n"
       "       -21474836.47 бнс.\n"
       "Начислено скид бон \n"
       "ЛАВКА:\n"
       "               0.00 бнс.\n"
       "************************\n"
       "Доступно всего:\n"
       "       -21474836.48 бнс.\n"
       "Доступно всего\n"
       "ЛАВКА:\n"
       "       -21474836.48 бнс.\n"
       "Доступно скид бон \n"
       "ЛАВКА:\n"
       "               0.00 ски.\n"},
  };
}

class Balance : public test::Shop, public testing::WithParamInterface<BalanceCase> {};

TEST_P(Balance, PrintsTheTotalsOfTheAccounts) {
  std::string list;
  for (const std::string &account : GetParam().accounts) list += (list.empty() ? "" : ",") + account;
  StartServer({Reply("getBalanceResponse", "\"balance\":{\"account\":[" + list + "]}")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::BalanceProcess(card), 0);
  EXPECT_EQ(Body(), GetParam().body);
}

INSTANTIATE_TEST_SUITE_P(Cases, Balance, testing::ValuesIn(BalanceCases()), test::CaseName());

TEST_F(CardOperation, BalanceSendsOnlyTheRequestPart) {
  StartServer({Reply("getBalanceResponse", R"("balance":{"account":[]})")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::BalanceProcess(card), 0);
  EXPECT_EQ(RequestDocument(0), "{\"getBalanceRequest\":{" + RequestPart("BALANCE") + "}}");
}

TEST_F(CardOperation, BalanceTracesItsAccounts) {
  StartServer({Reply("getBalanceResponse", "\"balance\":{\"account\":[" + Account("GLOBAL", 1, 2) + "," +
                                               Account("OTHER", 3, 4) + "]}")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::BalanceProcess(card), 0);
  EXPECT_THAT(folder.Trace(), EndsWith("SaveState\n"
                                       "Balance has 2 accounts\n"
                                       "Amount [2] Available [1]\n"
                                       "Amount [4] Available [3]\n"));
}

TEST_F(CardOperation, BalanceOfAnOfflineRecordAsksAndPrintsNothing) {
  StartServer({});
  OpenShop();
  OpenCard();
  card->request.isOffline = 1;
  EXPECT_EQ(lumo::BalanceProcess(card), 0);
  EXPECT_EQ(RequestCount(), 0U);
  EXPECT_EQ(Body(), "");
  EXPECT_EQ(card->completedOperations, 0U);
  EXPECT_STREQ(lumo::CopyRequestId(), "TERM012120500008") << "the number is taken all the same";
}

TEST_F(CardOperation, AnAbsentNetworkNamePrintsAsEmpty) {
  StartServer({Reply("getBalanceResponse", R"("balance":{"account":[]})")});
  OpenShop();
  folder.Write("CONFIG", R"({"timeout":30,"serverAddr":")" + server->address() + "\"}");
  ASSERT_EQ(lumo::LoadConfig(), 0);
  OpenCard();
  EXPECT_EQ(lumo::BalanceProcess(card), 0);
  EXPECT_EQ(Count(Body(), "\n:\n"), 4U);
}

// ---- The balance's sum ----

TEST_F(CardOperation, BalanceSumCountsGlobalAndLocalAccounts) {
  OpenShop();
  OpenCard();
  lumo::BalanceAccount accounts[] = {
      {lumo::ACCOUNT_GLOBAL, 1000, 1}, {lumo::ACCOUNT_LOCAL, 250, 2}, {lumo::ACCOUNT_DISCOUNT, 70, 3}};
  card->balance.count = 3;
  card->balance.accounts = accounts;
  EXPECT_EQ(lumo::SumBalanceAmounts(card), 1250);
  EXPECT_EQ(folder.Trace(), "Ignore DISCOUNT 70\n");
}

TEST_F(CardOperation, BalanceSumTracesUnknownKinds) {
  OpenShop();
  OpenCard();
  lumo::BalanceAccount accounts[] = {{lumo::ACCOUNT_UNKNOWN, 1000, 1},
                                     {static_cast<lumo::AccountType>(-1), 250, 2},
                                     {lumo::ACCOUNT_LOCAL, 70, 3}};
  card->balance.count = 3;
  card->balance.accounts = accounts;
  EXPECT_EQ(lumo::SumBalanceAmounts(card), 70);
  EXPECT_EQ(folder.Trace(), "ERROR: Unknown account type 3\nERROR: Unknown account type -1\n");
}

TEST_F(CardOperation, BalanceSumWrapsAt32Bits) {
  OpenShop();
  OpenCard();
  lumo::BalanceAccount accounts[] = {{lumo::ACCOUNT_GLOBAL, INT32_MAX, 0}, {lumo::ACCOUNT_LOCAL, 1, 0}};
  card->balance.count = 2;
  card->balance.accounts = accounts;
  EXPECT_EQ(lumo::SumBalanceAmounts(card), INT32_MIN);
}

TEST_F(CardOperation, BalanceSumWithoutAccountsIs0) {
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::SumBalanceAmounts(card), 0);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(CardOperation, BalanceSumWithoutARecordIs0AndTraced) {
  EXPECT_EQ(lumo::SumBalanceAmounts(nullptr), 0);
  EXPECT_EQ(folder.Trace(), "ERROR: Pointer \"trans\" is null\n");
}

// ---- Link ----

const char kLinkBody[] =
    "**** ПРИСОЕДИНЕНИЕ *****\n"
    "RRN: TERM012120500008\n"
    "Карта  активирована   и\n"
    "присоединена  к  счету\n"
    "карты:\n"
    "    9643000000000002\n";

TEST_F(CardOperation, LinkOfAnOrdinaryRecordIsNotSent) {
  StartServer({});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::LinkCardProcess(card, "9643000000000002"), 0);
  EXPECT_EQ(RequestCount(), 0U);
  EXPECT_STREQ(card->linkedCardNum, "9643000000000002");
  EXPECT_EQ(folder.Read("LOG"), "{" + RequestPart("LINK") + "}\n");
  EXPECT_EQ(Body(), kLinkBody);
  EXPECT_EQ(card->completedOperations, 0x40U);
  EXPECT_THAT(folder.Trace(), Not(HasSubstr("TransactionProcess")));
}

TEST_F(CardOperation, LinkOfAnOfflineRecordIsSent) {
  StartServer({Reply("linkedCardResponse")});
  OpenShop();
  OpenCard();
  card->request.isOffline = 1;
  EXPECT_EQ(lumo::LinkCardProcess(card, "9643000000000002"), 0);
  EXPECT_THAT(RequestDocument(0), EndsWith(R"("linkedCard":{"linkedCardNum":"9643000000000002"}}})"));
  EXPECT_EQ(Body(), kLinkBody);
  EXPECT_TRUE(folder.Exists("OFFLINE"));
}

TEST_F(CardOperation, LinkWithoutACardPrintsAnEmptyOne) {
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::LinkCardProcess(card, nullptr), 0);
  EXPECT_EQ(card->linkedCardNum, nullptr);
  EXPECT_THAT(folder.Trace(), StartsWith("LinkCardProcess card [(null)]\n"));
  EXPECT_THAT(folder.Trace(), HasSubstr("ERROR: trans_strcpy src == NULL\n"));
  EXPECT_THAT(Body(), EndsWith("карты:\n    \n"));
}

// ---- Deposit, exchange, advertisement ----

struct DepositCase : test::NamedCase {
  int32_t amount;
  const char *part;
  const char *body;
};
const DepositCase kDepositCases[] = {
    {"Amount", 1250, R"("deposit":{"amount":1250})",
     "******* ДЕПОЗИТ *******\n"
     "RRN: TERM012120500008\n"
     "Зачислено (бнс.):\n"
     "                   12.50"},
    {"ZeroPrintsOnlyTitleAndRrn", 0, R"("deposit":{"amount":0})",
     "******* ДЕПОЗИТ *******\n"
     "RRN: TERM012120500008\n"},
    {"Negative", -123, R"("deposit":{"amount":-123})",
     "******* ДЕПОЗИТ *******\n"
     "RRN: TERM012120500008\n"
     "Зачислено (бнс.):\n"
     "                   -1.23"},
};

class Deposit : public test::Shop, public testing::WithParamInterface<DepositCase> {};

TEST_P(Deposit, SendsJournalsAndPrints) {
  StartServer({Reply("putDepositResponse")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::DepositProcess(card, GetParam().amount), 0);
  EXPECT_EQ(RequestDocument(0),
            "{\"putDepositRequest\":{" + RequestPart("DEPOSIT") + "," + GetParam().part + "}}");
  EXPECT_EQ(folder.Read("LOG"), "{" + RequestPart("DEPOSIT") + "," + GetParam().part + "}\n");
  EXPECT_EQ(Body(), GetParam().body);
}

INSTANTIATE_TEST_SUITE_P(Cases, Deposit, testing::ValuesIn(kDepositCases), test::CaseName());

TEST_F(CardOperation, TwoOperationsOnOneRecordShareItsReceipt) {
  StartServer(
      {Reply("putDepositResponse", "", R"({"requestState":"SUCCESS"})"), Reply("cardExchangeResponse")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::DepositProcess(card, 0), 0);
  EXPECT_EQ(lumo::ExchangeProcess(card, "abc"), 0);
  EXPECT_EQ(Body(),
            "******* ДЕПОЗИТ *******\n"
            "RRN: TERM012120500008\n"
            "******** ЗАМЕНА ********\n"
            "RRN: TERM012120500009\n");
  EXPECT_EQ(card->completedOperations, 0xA0U);
}

TEST_F(CardOperation, ExchangeSendsTheTokenAndJournalsWithoutIt) {
  StartServer({Reply("cardExchangeResponse")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::ExchangeProcess(card, "a\"b"), 0);
  EXPECT_EQ(RequestDocument(0),
            "{\"cardExchangeRequest\":{" + RequestPart("EXCHANGE") + R"(,"cardExchange":{"token":"a\"b"}}})");
  EXPECT_EQ(folder.Read("LOG"), "{" + RequestPart("EXCHANGE") + "}\n");
  EXPECT_EQ(Body(),
            "******** ЗАМЕНА ********\n"
            "RRN: TERM012120500008\n");
}

TEST_F(CardOperation, ExchangeWithoutATokenSendsAnEmptyOne) {
  StartServer({Reply("cardExchangeResponse")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::ExchangeProcess(card, nullptr), 0);
  EXPECT_THAT(folder.Trace(), StartsWith("ExchangeProcess token [(null)]\n"));
  EXPECT_THAT(RequestDocument(0), EndsWith(R"("cardExchange":{"token":""}}})"));
}

TEST_F(CardOperation, AdTakesTheTextAndNoNumber) {
  StartServer({Reply("getAdResponse", R"("ad":{"text":"Скидки"})", R"({"requestState":"SUCCESS"})")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::GetAdProcess(card), 0);
  EXPECT_STREQ(card->adText, "Скидки");
  EXPECT_EQ(RequestDocument(0), "{\"getAdRequest\":{" + RequestPart("AD", "0000000000000000") + "}}");
  EXPECT_EQ(Body(), "");
  EXPECT_STREQ(lumo::CopyRequestId(), "TERM012120500007");
}

}  // namespace
