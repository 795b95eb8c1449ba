// end_to_end/card_test.cpp: the operations on a card that are not purchases: what leaves the register, what
// is printed, what is kept.
#include "end_to_end/register.h"

namespace {

using test::kFirstRrn;
using test::kSecondRrn;
using test::Record;
using test::Refusal;
using test::Request;
using test::State;
using test::Success;
using testing::ElementsAre;

class Card : public test::Register {
 protected:
  // One operation was done: it was asked with these bytes, and LOG holds this record.
  void ExpectExchange(const std::string &method, const std::string &request, const std::string &record) {
    EXPECT_THAT(server->requests(), ElementsAre(Post(method, request)));
    EXPECT_EQ(shop.Read("LOG"), record);
    EXPECT_FALSE(shop.Exists("OFFLINE"));
    EXPECT_EQ(shop.Read("STATE"), State());
    EXPECT_STREQ(shop.getRRN(), kFirstRrn);
    EXPECT_STREQ(shop.getResponseState(), "SUCCESS");
    EXPECT_STREQ(shop.getResponseStateCode(), "OK");
    EXPECT_EQ(shop.CloseTransaction(), 0);
  }
};

constexpr char kActivationResult[] =
    R"("activationResult":{"activationSum":1500,"activationSumType":"GLOBAL","referralSum":700,)"
    R"("referralSumType":"LOCAL","giftSum":900,"giftSumType":"DISCOUNT"})";

TEST_F(Card, IsActivated) {
  Open({Success("cardActivationResponse", kActivationResult)});
  EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", nullptr, 2500, nullptr, nullptr), 0);
  EXPECT_EQ(shop.GetActivationAmount(), 1500);
  EXPECT_EQ(Body(),
            "****** АКТИВАЦИЯ *******\n"
            "RRN: 1234512120500008\n"
            "        Успешно!        \n");
  const std::string part =
      R"("activation":{"activationType":"SIMPLE_ACTIVATION","amount":2500,"type":"GLOBAL"})";
  ExpectExchange("activate", Request("cardActivationRequest", "ACTIVATION", part),
                 Record("ACTIVATION", part + "," + kActivationResult));
}

TEST_F(Card, IsActivatedByTheNumberOfTheType) {
  Open({Success("cardActivationResponse", kActivationResult)});
  EXPECT_EQ(shop.ActivationProc(reinterpret_cast<const char *>(2), nullptr, 0, nullptr, "9000000002"), 0);
  EXPECT_EQ(shop.GetActivationAmount(), 700);
  EXPECT_THAT(
      server->requests(),
      ElementsAre(Post("activate", Request("cardActivationRequest", "ACTIVATION",
                                           R"("activation":{"activationType":"REFER_A_FRIEND","amount":0,)"
                                           R"("type":"GLOBAL","referParentCardNum":"9000000002"})"))));
}

TEST_F(Card, IsActivatedWithTheTotalOfABill) {
  Open({Success("cardActivationResponse", kActivationResult)});
  shop.Write("BILL.JSN", R"({"totalSum":4300,"orderLen":0,"billNum":"1","billDate":"","partnerFee":0})");
  EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", "BILL.JSN", 2500, nullptr, nullptr), 0);
  EXPECT_THAT(
      server->requests(),
      ElementsAre(Post(
          "activate",
          Request("cardActivationRequest", "ACTIVATION",
                  R"("activation":{"activationType":"SIMPLE_ACTIVATION","amount":4300,"type":"GLOBAL"})"))));
  EXPECT_EQ(shop.Read("BILL.JSN"),
            R"({"totalSum":4300,"orderLen":0,"billNum":"1","billDate":"","partnerFee":0})");
}

TEST_F(Card, IsAGiftCard) {
  Open({Success("cardActivationResponse", kActivationResult)});
  EXPECT_EQ(shop.ActivationProc("GIFT_CARD", nullptr, 50000, "LOCAL", nullptr), 0);
  EXPECT_EQ(shop.GetActivationAmount(), 900);
  EXPECT_EQ(Body(),
            "*** ПОДАРОЧНАЯ КАРТА ***\n"
            "RRN: 1234512120500008\n"
            "Начислено (бнс.):\n"
            "                  500.00\n");
  const std::string part = R"("activation":{"activationType":"GIFT_CARD","amount":50000,"type":"LOCAL"})";
  ExpectExchange("activate", Request("cardActivationRequest", "ACTIVATION", part),
                 Record("ACTIVATION", part + "," + kActivationResult));
}

TEST_F(Card, IsReferredByAFriend) {
  Open({Success("cardActivationResponse", kActivationResult)});
  EXPECT_EQ(shop.ActivationProc("REFER_A_FRIEND", nullptr, 0, nullptr, "9000\"000002"), 0);
  EXPECT_EQ(shop.GetActivationAmount(), 700);
  EXPECT_EQ(Body(),
            "**** ПРИВЕДИ ДРУГА *****\n"
            "RRN: 1234512120500008\n"
            "        Успешно!        \n"
            "***  КАРТА РЕФЕРЕНТА ***\n"
            "    9000\"000002\n");
  const std::string part = R"("activation":{"activationType":"REFER_A_FRIEND","amount":0,"type":"GLOBAL",)"
                           R"("referParentCardNum":"9000\"000002"})";
  ExpectExchange("activate", Request("cardActivationRequest", "ACTIVATION", part),
                 Record("ACTIVATION", part + "," + kActivationResult));
}

TEST_F(Card, WithAnUnknownActivationTypeIsNotSent) {
  Open({Success("cardActivationResponse", kActivationResult)});
  EXPECT_EQ(shop.ActivationProc("simple_activation", nullptr, 100, nullptr, nullptr), -102);
  EXPECT_EQ(shop.ActivationProc("GIFT_CARD", nullptr, 100, "GLOBALLY", nullptr), -103);
  EXPECT_EQ(Body(), "");
  EXPECT_FALSE(shop.Exists("LOG"));
  EXPECT_EQ(server->requests().size(), 0U);
  EXPECT_EQ(shop.Read("STATE"), State(kSecondRrn));
}

TEST_F(Card, ShowsItsAccounts) {
  Open({Success("getBalanceResponse",
                R"("balance":{"account":[{"accountType":"GLOBAL","availableAmount":100000,"amount":120050},)"
                R"({"accountType":"LOCAL","availableAmount":2500,"amount":3000},)"
                R"({"accountType":"DISCOUNT","availableAmount":300,"amount":500}]})")});
  EXPECT_EQ(shop.GetBalance(), 0);
  EXPECT_EQ(shop.BalanceProc(), 0);
  EXPECT_EQ(shop.GetBalance(), 102500);
  EXPECT_EQ(Body(),
            "**** ИНФО ПО КАРТЕ ****\n"
            "Начислено всего:\n"
            "            1200.50 бнс.\n"
            "Начислено всего\n"
            "Сеть:\n"
            "            1230.50 бнс.\n"
            "Начислено скид бон \n"
            "Сеть:\n"
            "              30.00 бнс.\n"
            "************************\n"
            "Доступно всего:\n"
            "            1000.00 бнс.\n"
            "Доступно всего\n"
            "Сеть:\n"
            "            1030.00 бнс.\n"
            "Доступно скид бон \n"
            "Сеть:\n"
            "               3.00 ски.\n");
  EXPECT_THAT(server->requests(), ElementsAre(Post("balance", Request("getBalanceRequest", "BALANCE", ""))));
  EXPECT_FALSE(shop.Exists("LOG"));
  EXPECT_EQ(shop.Read("STATE"), State());
}

TEST_F(Card, TakesADeposit) {
  Open({Success("putDepositResponse")});
  EXPECT_EQ(shop.DepositProc(123456), 0);
  EXPECT_EQ(Body(),
            "******* ДЕПОЗИТ *******\n"
            "RRN: 1234512120500008\n"
            "Зачислено (бнс.):\n"
            "                 1234.56");
  const std::string part = R"("deposit":{"amount":123456})";
  ExpectExchange("deposit", Request("putDepositRequest", "DEPOSIT", part), Record("DEPOSIT", part));
}

TEST_F(Card, TakesADepositOfNothing) {
  Open({Success("putDepositResponse")});
  EXPECT_EQ(shop.DepositProc(0), 0);
  EXPECT_EQ(Body(),
            "******* ДЕПОЗИТ *******\n"
            "RRN: 1234512120500008\n");
}

TEST_F(Card, IsExchanged) {
  Open({Success("cardExchangeResponse")});
  EXPECT_EQ(shop.ExchangeProc("токен\\1"), 0);
  EXPECT_EQ(Body(),
            "******** ЗАМЕНА ********\n"
            "RRN: 1234512120500008\n");
  ExpectExchange("cardExchange",
                 Request("cardExchangeRequest", "EXCHANGE", R"("cardExchange":{"token":"токен\\1"})"),
                 Record("EXCHANGE", ""));
}

constexpr char kLinkSlip[] =
    "**** ПРИСОЕДИНЕНИЕ *****\n"
    "RRN: 1234512120500008\n"
    "Карта  активирована   и\n"
    "присоединена  к  счету\n"
    "карты:\n"
    "    9000000002\n";

TEST_F(Card, IsLinkedWithoutAskingTheServer) {
  Open({Success("linkedCardResponse")});
  EXPECT_EQ(shop.LinkCardProc("9000000002"), 0);
  EXPECT_EQ(Body(), kLinkSlip);
  EXPECT_EQ(server->requests().size(), 0U);
  EXPECT_EQ(shop.Read("LOG"), Record("LINK", ""));
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_EQ(shop.Read("STATE"), State());
}

TEST_F(Card, HasASlipThatGrowsWithEachOperation) {
  Open({Success("cardExchangeResponse"), Success("putDepositResponse", "", kSecondRrn)});
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.DepositProc(0), 0);
  EXPECT_EQ(Body(),
            "******** ЗАМЕНА ********\n"
            "RRN: 1234512120500008\n"
            "******* ДЕПОЗИТ *******\n"
            "RRN: 1234512120500009\n");
  EXPECT_EQ(shop.Read("LOG"),
            Record("EXCHANGE", "") + Record("DEPOSIT", R"("deposit":{"amount":0})", kSecondRrn));
}

// The clock has gone back behind the last operation: the terminal makes no new id.
TEST_F(Card, WithoutAnRrnHasASlipWithoutTheLine) {
  Open({Success("cardExchangeResponse"), Success("putDepositResponse"),
        Success("cardActivationResponse", kActivationResult)});
  test::SetClock(2012, 12, 4, 10, 0, 0);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.Read("LOG"),
            R"({"request":{"ver":"1.0","type":"EXCHANGE","requestId":"","terminalId":"12345",)"
            R"("requestDate":"2012-12-04T10:00:00Z","employeeId":"7","cardNum":"9000000001",)"
            R"("isOffline":false,"shiftId":""}})"
            "\n");
  EXPECT_EQ(shop.DepositProc(100), 0);
  EXPECT_EQ(shop.ActivationProc("GIFT_CARD", nullptr, 100, "GLOBAL", nullptr), 0);
  EXPECT_EQ(shop.LinkCardProc("9000000002"), 0);
  EXPECT_EQ(Body(),
            "******** ЗАМЕНА ********\n"
            "******* ДЕПОЗИТ *******\n"
            "Зачислено (бнс.):\n"
            "                    1.00"
            "*** ПОДАРОЧНАЯ КАРТА ***\n"
            "Начислено (бнс.):\n"
            "                    1.00\n"
            "**** ПРИСОЕДИНЕНИЕ *****\n"
            "Карта  активирована   и\n"
            "присоединена  к  счету\n"
            "карты:\n"
            "    9000000002\n");
}

TEST_F(Card, IsRefusedWithTheServersReason) {
  Open({Refusal("putDepositResponse", "LOCKED_CARD", "1234512120500050")});
  EXPECT_EQ(shop.DepositProc(100), -405);
  EXPECT_STREQ(shop.GetErrorMessage(-405), "Ошибка с сервера");
  EXPECT_STREQ(shop.getResponseState(), "ERROR");
  EXPECT_STREQ(shop.getResponseStateCode(), "LOCKED_CARD");
  EXPECT_STREQ(shop.getResponseMessage(), "");
  EXPECT_EQ(Body(), "");
  EXPECT_FALSE(shop.Exists("LOG"));
  EXPECT_EQ(shop.Read("STATE"), State("1234512120500050", 0, 1));
  EXPECT_EQ(shop.getNeedUpdate(), 1);
}

TEST_F(Card, HasAStateThatTheTerminalDoesNotKnow) {
  Open({R"({"putDepositResponse":{"response":{"requestState":"MAYBE","requestStateCode":"WHY"}}})"});
  EXPECT_EQ(shop.DepositProc(100), -405);
  EXPECT_STREQ(shop.getResponseState(), "");
  EXPECT_STREQ(shop.getResponseStateCode(), "");
}

// The first operation of a terminal that knows no id of its own.
TEST_F(Card, AsksTheServerForTheLastRrn) {
  server = std::make_unique<test::ScriptedServer>(std::vector<test::Answer>{
      {{Success("getLastRrnResponse", R"("rrn":{"rrNumber":"9999912120500041"})", "0000000000000000")}},
      {{Success("cardExchangeResponse", "", "1234512120500042")}}});
  shop.Start(server->address());
  shop.Write("STATE", "{}");
  ASSERT_EQ(shop.LUMOInit(), 0);
  ASSERT_EQ(shop.CreateTransaction(test::kCard, test::kCashier), 0);
  EXPECT_EQ(shop.getRRN(), nullptr);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_STREQ(shop.getRRN(), "1234512120500042");
  EXPECT_THAT(
      server->requests(),
      ElementsAre(Post("rrn", Request("getLastRrnRequest", "LAST_RRN", "", "0000000000000000")),
                  Post("cardExchange", Request("cardExchangeRequest", "EXCHANGE",
                                               R"("cardExchange":{"token":"t"})", "1234512120500042"))));
  EXPECT_STREQ(shop.getReceiptHeaderPtr(),
               "Магазин\n"
               "2012/12/05      10:00:00\n"
               "Терминал          12345\n"
               "     *** КАРТА ***\n"
               "    9000000001\n");
}

}  // namespace
