// engine/bill_files_test.cpp: reading, rewriting and making the register's files.
#include "engine/bill_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "record/enumerations.h"
#include "record/transaction.h"
#include "support/shop.h"

namespace {

using testing::StartsWith;

const char kReadBill[] =
    R"({"totalSum":15000,"orderLen":2,"billNum":"77","billDate":"2012-12-05T09:59:00Z","partnerFee":1000,)"
    R"("goodList":{"good":[)"
    R"({"title":"Чай \"Ёлка\"","productCode":"008","positionCost":5000,"orderNum":1,"cnt":1,)"
    R"("bonus":[{"earned":250,"spend":100,"organizerFee":25,"accountType":"LOCAL"}]},)"
    R"({"title":"Хлеб","productCode":"009","positionCost":10000,"orderNum":2,"cnt":3}]}})";

class BillFiles : public test::Shop {
 protected:
  BillFiles() {
    OpenShop();
    OpenCard();
  }

  void FillBill() {
    card->bill.totalSum = 1;
    card->bill.spendAmount = 2;
    card->bill.goodCount = 1;
    card->bill.goods = static_cast<lumo::Good *>(lumo::TransactionAllocate(card, sizeof(lumo::Good)));
    card->bill.billNum = "old";
    card->bill.billDate[0] = 'x';
  }
  void ExpectZeroBill() const {
    EXPECT_EQ(card->bill.goods, nullptr);
    EXPECT_EQ(card->bill.goodCount, 0);
    EXPECT_EQ(card->bill.totalSum, 0);
    EXPECT_EQ(card->bill.orderLen, 0);
    EXPECT_EQ(card->bill.billNum, nullptr);
    EXPECT_EQ(card->bill.spendAmount, 0);
    EXPECT_EQ(std::string(card->bill.billDate, sizeof card->bill.billDate), std::string(32, '\0'));
    EXPECT_EQ(card->bill.partnerFee, 0);
  }
};

TEST_F(BillFiles, ABillIsReadWithItsGoods) {
  folder.Write("BILL.JSN", kReadBill);
  EXPECT_EQ(lumo::BillParse(card, "BILL.JSN", lumo::GoodBonuses::kPassOver), 0);
  const lumo::BillBlock &bill = card->bill;
  EXPECT_EQ(bill.totalSum, 15000);
  EXPECT_EQ(bill.orderLen, 2);
  EXPECT_STREQ(bill.billNum, "77");
  EXPECT_STREQ(bill.billDate, "2012-12-05T09:59:00Z");
  EXPECT_EQ(bill.partnerFee, 1000);
  ASSERT_EQ(bill.goodCount, 2);
  EXPECT_STREQ(bill.goods[0].title, "Чай \"Ёлка\"");
  EXPECT_STREQ(bill.goods[0].productCode, "008");
  EXPECT_EQ(bill.goods[0].positionCost, 5000);
  EXPECT_EQ(bill.goods[0].orderNum, 1);
  EXPECT_EQ(bill.goods[0].cnt, 1);
  EXPECT_STREQ(bill.goods[1].title, "Хлеб");
  EXPECT_EQ(bill.goods[1].cnt, 3);
}

TEST_F(BillFiles, TheBonusesOfItsGoodsArePassedOver) {
  folder.Write("BILL.JSN", kReadBill);
  EXPECT_EQ(lumo::BillParse(card, "BILL.JSN", lumo::GoodBonuses::kPassOver), 0);
  EXPECT_EQ(card->bill.goods[0].bonusCount, 0);
}

TEST_F(BillFiles, TheBonusesOfItsGoodsAreReadWhenAskedFor) {
  folder.Write("BILL.JSN", kReadBill);
  EXPECT_EQ(lumo::BillParse(card, "BILL.JSN", lumo::GoodBonuses::kLoad), 0);
  ASSERT_EQ(card->bill.goods[0].bonusCount, 1);
  const lumo::Bonus &bonus = card->bill.goods[0].bonuses[0];
  EXPECT_EQ(bonus.earned, 250);
  EXPECT_EQ(bonus.spend, 100);
  EXPECT_EQ(bonus.organizerFee, 25);
  EXPECT_EQ(bonus.accountType, lumo::ACCOUNT_LOCAL);
  EXPECT_EQ(card->bill.goods[1].bonusCount, 0);
}

TEST_F(BillFiles, ReadingStartsFromAnEmptyBill) {
  FillBill();
  folder.Write("BILL.JSN", R"({"orderLen":5})");
  EXPECT_EQ(lumo::BillParse(card, "BILL.JSN", lumo::GoodBonuses::kPassOver), 0);
  EXPECT_EQ(card->bill.orderLen, 5);
  card->bill.orderLen = 0;
  ExpectZeroBill();
}

TEST_F(BillFiles, ABillBehindAByteOrderMarkIsRead) {
  folder.Write("BILL.JSN", std::string("\xEF\xBB\xBF") + kReadBill);
  EXPECT_EQ(lumo::BillParse(card, "BILL.JSN", lumo::GoodBonuses::kPassOver), 0);
  EXPECT_EQ(card->bill.totalSum, 15000);
}

struct DamagedBillCase : test::NamedCase {
  const char *text;
  int code;
};

const DamagedBillCase kDamagedBills[] = {
    {"NotJson", "totalSum=1", -303},
    {"StrayCharacterBehindAMember", R"({"totalSum":1;"orderLen":2})", -303},
    {"SecondDocument", R"({"totalSum":1}{})", -303},
    {"EmptyFile", "", -402},
    {"Array", "[]", -402},
    {"Number", "15000", -402},
    {"GoodListIsAnArray", R"({"goodList":[]})", -402},
    {"GoodIsAnObject", R"({"goodList":{"good":{}}})", -402},
    {"GoodIsANumber", R"({"goodList":{"good":[5]}})", -402},
};

class DamagedBill : public BillFiles, public testing::WithParamInterface<DamagedBillCase> {};

TEST_P(DamagedBill, GivesItsCode) {
  FillBill();
  folder.Write("BILL.JSN", GetParam().text);
  EXPECT_EQ(lumo::BillParse(card, "BILL.JSN", lumo::GoodBonuses::kPassOver), GetParam().code);
  EXPECT_EQ(card->bill.spendAmount, 0);
  if (GetParam().code == -303) ExpectZeroBill();
}

INSTANTIATE_TEST_SUITE_P(Cases, DamagedBill, testing::ValuesIn(kDamagedBills), test::CaseName());

TEST_F(BillFiles, AMissingBillLeavesAnEmptyBlock) {
  FillBill();
  EXPECT_EQ(lumo::BillParse(card, "BILL.JSN", lumo::GoodBonuses::kPassOver), -307);
  ExpectZeroBill();
  EXPECT_EQ(folder.Trace(),
            "BillParse\n"
            "parseJsonFile [BILL.JSN]\n"
            "ERROR: CreateFile function failed with error 2\n");
}

TEST_F(BillFiles, ANullPathIsAMissingFile) {
  EXPECT_EQ(lumo::BillParse(card, nullptr, lumo::GoodBonuses::kPassOver), -307);
  EXPECT_THAT(folder.Trace(),
              StartsWith("BillParse\nparseJsonFile [(null)]\nERROR: CreateFile function failed"));
}

TEST_F(BillFiles, AnEmptyPathCannotBeOpened) {
  EXPECT_EQ(lumo::BillParse(card, "", lumo::GoodBonuses::kPassOver), -307);
}

TEST_F(BillFiles, ReadingWithoutARecordTracesThePointer) {
  EXPECT_EQ(lumo::BillParse(nullptr, "BILL.JSN", lumo::GoodBonuses::kPassOver), -100);
  EXPECT_EQ(folder.Trace(), "BillParse\nERROR: Pointer \"trans\" is null\n");
}

TEST_F(BillFiles, ABillIsRewrittenWithItsBonuses) {
  folder.Write("BILL.JSN", kReadBill);
  ASSERT_EQ(lumo::BillParse(card, "BILL.JSN", lumo::GoodBonuses::kLoad), 0);
  card->bill.spendAmount = 300;
  folder.ClearTrace();
  EXPECT_EQ(lumo::BillModify(card, "BILL.JSN"), 0);
  EXPECT_EQ(folder.Trace(), "BillModify\n");
  EXPECT_EQ(
      folder.Read("BILL.JSN"),
      R"({"totalSum":15000,"spendBonus":true,"orderLen":2,"billNum":"77","billDate":"2012-12-05T09:59:00Z",)"
      R"("partnerFee":1000,"goodList":{"good":[)"
      R"({"title":"Чай \"Ёлка\"","productCode":"008","positionCost":5000,"orderNum":1,"cnt":1,)"
      R"("bonus":[{"earned":250,"spend":100,"organizerFee":25,"accountType":"LOCAL"}]},)"
      R"({"title":"Хлеб","productCode":"009","positionCost":10000,"orderNum":2,"cnt":3}]}})");
}

TEST_F(BillFiles, RewritingCutsALongerFileAndMakesAMissingOne) {
  const std::string empty_bill =
      R"({"totalSum":0,"spendBonus":false,"orderLen":0,"billNum":"","billDate":"","partnerFee":0})";
  folder.Write("BILL.JSN", std::string(10000, ' '));
  EXPECT_EQ(lumo::BillModify(card, "BILL.JSN"), 0);
  EXPECT_EQ(folder.Read("BILL.JSN"), empty_bill);
  EXPECT_EQ(lumo::BillModify(card, "NEW.JSN"), 0);
  EXPECT_EQ(folder.Read("NEW.JSN"), empty_bill);
}

TEST_F(BillFiles, ABillOfMoreThan65535GoodsIsRewrittenWhole) {
  constexpr int32_t kGoods = 65540;
  card->bill.goodCount = kGoods;
  card->bill.goods = static_cast<lumo::Good *>(lumo::TransactionAllocate(card, kGoods * sizeof(lumo::Good)));
  for (int32_t i = 0; i < kGoods; ++i) card->bill.goods[i].orderNum = i + 1;
  EXPECT_EQ(lumo::BillModify(card, "BILL.JSN"), 0);
  const std::string text = folder.Read("BILL.JSN");
  EXPECT_EQ(test::Count(text, R"("title":"")"), size_t{kGoods});
  EXPECT_THAT(text, testing::EndsWith(R"("orderNum":65540,"cnt":0}]}})"));
}

TEST_F(BillFiles, ABillInAMissingFolderCannotBeRewritten) {
  FillBill();
  EXPECT_EQ(lumo::BillModify(card, "nowhere/BILL.JSN"), -105);
  EXPECT_EQ(folder.Trace(),
            "BillModify\n"
            "ERROR: CreateFile function failed with error 3\n"
            "ERROR: Cant open file \"nowhere/BILL.JSN\"!\n");
  EXPECT_EQ(card->bill.totalSum, 1);
  EXPECT_EQ(card->bill.spendAmount, 2);
  EXPECT_EQ(card->bill.goodCount, 1);
}

TEST_F(BillFiles, RewritingANullPathFails) {
  EXPECT_EQ(lumo::BillModify(card, nullptr), -105);
  EXPECT_THAT(folder.Trace(), testing::EndsWith("ERROR: Cant open file \"(null)\"!\n"));
}

TEST_F(BillFiles, RewritingWithoutARecordTracesThePointerAndTouchesNoFile) {
  folder.Write("BILL.JSN", "kept");
  EXPECT_EQ(lumo::BillModify(nullptr, "BILL.JSN"), -100);
  EXPECT_EQ(folder.Trace(), "BillModify\nERROR: Pointer \"trans\" is null\n");
  EXPECT_EQ(folder.Read("BILL.JSN"), "kept");
}

TEST_F(BillFiles, AReturnListIsRead) {
  folder.Write("RETURN.JSN", R"({"cashBackGood":[{"pos":1,"sum":5000,"cnt":1},{"pos":2,"sum":20,"cnt":3}]})");
  card->cashBack.cashBackType = lumo::CASHBACK_SEQ;
  EXPECT_EQ(lumo::CashbackParse(card, "RETURN.JSN"), 0);
  ASSERT_EQ(card->cashBack.goodCount, 2);
  EXPECT_EQ(card->cashBack.goods[0].pos, 1);
  EXPECT_EQ(card->cashBack.goods[0].sum, 5000);
  EXPECT_EQ(card->cashBack.goods[1].cnt, 3);
  EXPECT_EQ(card->cashBack.cashBackType, lumo::CASHBACK_SEQ);
}

TEST_F(BillFiles, AReturnListEmptiesTheBillToo) {
  FillBill();
  folder.Write("RETURN.JSN", "{}");
  EXPECT_EQ(lumo::CashbackParse(card, "RETURN.JSN"), 0);
  ExpectZeroBill();
}

TEST_F(BillFiles, AMissingReturnListIsTracedStepByStep) {
  FillBill();
  EXPECT_EQ(lumo::CashbackParse(card, "RETURN.JSN"), -307);
  ExpectZeroBill();
  EXPECT_EQ(folder.Trace(),
            "CashbackParse\n"
            "parseJsonFile [RETURN.JSN]\n"
            "ERROR: CreateFile function failed with error 2\n"
            "Cashback File Parse Finished\n"
            "Bill Parse Res -307\n");
}

struct BadReturnListCase : test::NamedCase {
  const char *text;
  int code;
};

const BadReturnListCase kBadReturnLists[] = {
    {"NotJson", "pos=1", -303},
    {"EmptyFile", "", -402},
    {"Array", "[]", -402},
};

class DamagedReturnList : public BillFiles, public testing::WithParamInterface<BadReturnListCase> {};

TEST_P(DamagedReturnList, GivesItsCode) {
  folder.Write("RETURN.JSN", GetParam().text);
  EXPECT_EQ(lumo::CashbackParse(card, "RETURN.JSN"), GetParam().code);
  EXPECT_THAT(folder.Trace(), test::InOrder({"CashbackParse\n", "Cashback File Parse Finished\n",
                                             "Bill Parse Res " + std::to_string(GetParam().code) + "\n"}));
}

INSTANTIATE_TEST_SUITE_P(Cases, DamagedReturnList, testing::ValuesIn(kBadReturnLists), test::CaseName());

TEST_F(BillFiles, AReturnListWithoutARecordTracesThePointer) {
  EXPECT_EQ(lumo::CashbackParse(nullptr, "RETURN.JSN"), -100);
  EXPECT_EQ(folder.Trace(), "CashbackParse\nERROR: Pointer \"trans\" is null\n");
}

struct AmountCase : test::NamedCase {
  int32_t amount;
  const char *text;
};

const AmountCase kAmounts[] = {
    {"Plain", 15000,
     R"({"totalSum":15000,"orderLen":1,"billNum":"1","billDate":"2012-12-05T10:00:00Z","partnerFee":1000,)"
     R"("goodList":{"good":[{"title":"TOTAL_AMOUNT","productCode":"008","positionCost":15000,"orderNum":1,"cnt":1}]}})"},
    {"Zero", 0,
     R"({"totalSum":0,"orderLen":1,"billNum":"1","billDate":"2012-12-05T10:00:00Z","partnerFee":1000,)"
     R"("goodList":{"good":[{"title":"TOTAL_AMOUNT","productCode":"008","positionCost":0,"orderNum":1,"cnt":1}]}})"},
    {"Smallest", INT32_MIN,
     R"({"totalSum":-2147483648,"orderLen":1,"billNum":"1","billDate":"2012-12-05T10:00:00Z","partnerFee":1000,)"
     R"("goodList":{"good":[{"title":"TOTAL_AMOUNT","productCode":"008","positionCost":-2147483648,"orderNum":1,"cnt":1}]}})"},
};

class AmountBill : public BillFiles, public testing::WithParamInterface<AmountCase> {};

TEST_P(AmountBill, IsOneLineOfFixedForm) {
  folder.Write("BILL.JSN", std::string(5000, 'x'));
  EXPECT_EQ(lumo::CreateAmountBill(GetParam().amount, "BILL.JSN"), 0);
  EXPECT_EQ(folder.Read("BILL.JSN"), GetParam().text);
  EXPECT_EQ(folder.Trace(), "CreateAmountBill\n");
}

INSTANTIATE_TEST_SUITE_P(Cases, AmountBill, testing::ValuesIn(kAmounts), test::CaseName());

TEST_F(BillFiles, AnAmountBillIsABillOfOnePosition) {
  ASSERT_EQ(lumo::CreateAmountBill(12345, "BILL.JSN"), 0);
  EXPECT_EQ(lumo::BillParse(card, "BILL.JSN", lumo::GoodBonuses::kPassOver), 0);
  EXPECT_EQ(card->bill.totalSum, 12345);
  EXPECT_EQ(card->bill.orderLen, 1);
  EXPECT_EQ(card->bill.partnerFee, 1000);
  ASSERT_EQ(card->bill.goodCount, 1);
  EXPECT_STREQ(card->bill.goods[0].title, "TOTAL_AMOUNT");
  EXPECT_EQ(card->bill.goods[0].positionCost, 12345);
  EXPECT_EQ(card->bill.goods[0].orderNum, 1);
  EXPECT_EQ(card->bill.goods[0].cnt, 1);
}

TEST_F(BillFiles, AnAmountBillThatCannotBeOpenedIsTracedBehindTheOpen) {
  EXPECT_EQ(lumo::CreateAmountBill(15000, "nowhere/BILL.JSN"), -105);
  EXPECT_EQ(folder.Trace(), "ERROR: CreateFile function failed with error 3\nCreateAmountBill\n");
}

TEST_F(BillFiles, AnAmountBillWithoutAPathCannotBeOpened) {
  EXPECT_EQ(lumo::CreateAmountBill(15000, nullptr), -105);
  EXPECT_EQ(lumo::CreateAmountBill(15000, ""), -105);
}

}  // namespace
