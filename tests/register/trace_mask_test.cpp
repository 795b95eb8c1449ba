// register/trace_mask_test.cpp: card numbers in what is shown of a trace.
#include <gtest/gtest.h>

#include <string>

#include "card_mask.h"

namespace {

// What is shown of a document that is read alone.
std::string HiddenAlone(const std::string &document) {
  reg::CardMask mask;
  mask.Learn({}, {document});
  return mask.Hide(document);
}

TEST(CardMask, LeavesTheLastFourOfALongNumber) {
  EXPECT_EQ(HiddenAlone(R"({"cardNum":"1000000001"})"), R"({"cardNum":"******0001"})");
  EXPECT_EQ(HiddenAlone(R"({"cardNum":"12345678"})"), R"({"cardNum":"****5678"})");
  EXPECT_EQ(HiddenAlone(R"({"cardNum":"1234567"})"), R"({"cardNum":"*******"})");
}

TEST(CardMask, KnowsEveryMemberThatHoldsOne) {
  EXPECT_EQ(HiddenAlone(R"({"linkedCard":{"linkedCardNum":"1000000008"}})"),
            R"({"linkedCard":{"linkedCardNum":"******0008"}})");
  EXPECT_EQ(HiddenAlone(R"({"referParentCardNum" : "1000000001"})"),
            R"({"referParentCardNum" : "******0001"})");
  EXPECT_EQ(HiddenAlone(R"({"newCard":1000000001})"), R"({"newCard":******0001})");
}

TEST(CardMask, LeavesWhatOnlySoundsLikeACard) {
  const std::string document =
      R"({"cashBack":{"cashBackGood":[{"pos":1}]},"cardExchange":{"token":"T1"},"cardType":"GOLD"})";
  EXPECT_EQ(HiddenAlone(document), document);
}

TEST(CardMask, HidesTheSameNumberWhereverItStands) {
  EXPECT_EQ(HiddenAlone(R"({"cardNum":"1000000001","message":"Карта 1000000001, A1000000001B"})"),
            R"({"cardNum":"******0001","message":"Карта ******0001, A******0001B"})");
}

TEST(CardMask, HidesAShortNumberInItsMemberAlone) {
  EXPECT_EQ(HiddenAlone(R"({"cardNum":"77","billNum":"77"})"), R"({"cardNum":"**","billNum":"77"})");
  EXPECT_EQ(HiddenAlone(R"({"cardNum":"7777","billNum":"7777"})"), R"({"cardNum":"****","billNum":"****"})");
  EXPECT_EQ(HiddenAlone(R"({"cardNum":"","billNum":"77"})"), R"({"cardNum":"","billNum":"77"})");
}

TEST(CardMask, HidesLettersToo) {
  EXPECT_EQ(HiddenAlone(R"({"cardNum":"КАРТА","a":"КАРТА"})"), R"({"cardNum":"*****","a":"*****"})");
}

TEST(CardMask, ReadsEscapes) {
  EXPECT_EQ(HiddenAlone(R"({"cardNum":"\u0031000000001","a":"1000000001"})"),
            R"({"cardNum":"***************","a":"******0001"})");
  EXPECT_EQ(HiddenAlone(R"({"cardNum":"10\"0000001","a":1})"), R"({"cardNum":"***********","a":1})");
}

TEST(CardMask, HidesInADocumentThatIsCutAnywhere) {
  const std::string document = R"({"a":"b","cardNum":"9643001234567890","c":"9643001234567890"})";
  for (size_t begin = 0; begin < 10; ++begin) {
    for (size_t end = begin; end <= document.size(); ++end) {
      const std::string hidden = HiddenAlone(document.substr(begin, end - begin));
      EXPECT_EQ(hidden.find("96430012"), std::string::npos) << hidden;
    }
  }
}

TEST(CardMask, HidesWhatTheTraceSaysBesides) {
  reg::CardMask mask;
  mask.Learn({"1000000001"}, {});
  EXPECT_EQ(mask.Hide("LinkCardProc(1000000001)"), "LinkCardProc(******0001)");
}

TEST(CardMask, RemembersTheCardsOfOtherExchanges) {
  reg::CardMask mask;
  mask.Learn({"1000000001", "5000"}, {});
  mask.Learn({}, {});
  EXPECT_EQ(mask.Hide("card 1000000001, sum 5000, number 21000000001"),
            "card ******0001, sum 5000, number 21000000001");
}

TEST(CardMask, HidesALongerNumberBeforeOneInIt) {
  reg::CardMask mask;
  mask.Learn({"1000", "10001234"}, {});
  EXPECT_EQ(mask.Hide("10001234 1000"), "****1234 ****");
}

TEST(CardMask, ShowsAllWhenAsked) {
  reg::CardMask mask(true);
  mask.Learn({"1000000001"}, {});
  EXPECT_EQ(mask.Hide(R"({"cardNum":"1000000001"})"), R"({"cardNum":"1000000001"})");
}

}  // namespace
