// register/journal_test.cpp: the records of the log, and their sums.
#include "register/till.h"

namespace {

using testing::HasSubstr;

std::string Line(const std::string &type, const std::string &date, const std::string &shift,
                 const std::string &part) {
  return R"({"request":{"type":")" + type + R"(","requestId":"1234512120500008","requestDate":")" + date +
         R"(","cardNum":"7","isOffline":false,"shiftId":")" + shift + "\"}" +
         (part.empty() ? "" : "," + part) + "}\n";
}

class Journal : public test::Till {
 protected:
  Journal() {
    const std::string bonuses =
        R"([{"earned":200,"spend":0,"accountType":"GLOBAL"},{"earned":100,"spend":50,"accountType":"LOCAL"},)"
        R"({"earned":0,"spend":30,"accountType":"DISCOUNT"}])";
    Write("LOG", Line("DEPOSIT", "2012-12-04T10:00:00Z", "41", R"("deposit":{"amount":50000})") +
                     Line("PAYMENT", "2012-12-05T10:00:00Z", "42",
                          R"("bill":{"totalSum":10000,"goodList":{"good":[{"bonus":)" + bonuses + "}]}}") +
                     Line("PAYMENT_CONFIRM", "2012-12-05T10:01:00Z", "42",
                          R"("paymentConfirm":{"requestId":"1234512120500008","isConfirm":true})") +
                     Line("PAYMENT_CONFIRM", "2012-12-05T10:02:00Z", "42",
                          R"("paymentConfirm":{"requestId":"1234512120500009","isConfirm":false})") +
                     Line("ACTIVATION", "2012-12-05T23:59:59Z", "43",
                          R"("activation":{"activationType":"GIFT_CARD","amount":700})") +
                     "rubbish\n" + Line("CASHBACK", "2012-12-06T00:00:00Z", "43", "") + "{\"torn");
  }
};

TEST_F(Journal, ListsAllWithTheirSums) {
  const auto before = Files();
  const test::Outcome run = Run({"journal"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(
      run.out,
      "  1  2012-12-04T10:00:00Z  1234512120500008  DEPOSIT  card 7  amount 500.00\n"
      "  2  2012-12-05T10:00:00Z  1234512120500008  PAYMENT  card 7  total 100.00\n"
      "  3  2012-12-05T10:01:00Z  1234512120500008  PAYMENT_CONFIRM  card 7  confirms 1234512120500008\n"
      "  4  2012-12-05T10:02:00Z  1234512120500008  PAYMENT_CONFIRM  card 7  cancels 1234512120500009\n"
      "  5  2012-12-05T23:59:59Z  1234512120500008  ACTIVATION  card 7  GIFT_CARD 7.00\n"
      "  6  UNREADABLE\n"
      "  7  2012-12-06T00:00:00Z  1234512120500008  CASHBACK  card 7\n"
      "  7 records\n"
      "  ACTIVATION                1            7.00\n"
      "  CASHBACK                  1                \n"
      "  DEPOSIT                   1          500.00\n"
      "  PAYMENT                   1          100.00\n"
      "  PAYMENT_CANCEL            1                \n"
      "  PAYMENT_CONFIRM           1                \n"
      "  UNREADABLE 1\n"
      "  bonuses earned 3.00, spent 0.50, discount 0.30\n");
  EXPECT_EQ(Files(), before);
}

TEST_F(Journal, TakesAShiftOrADay) {
  EXPECT_THAT(Run({"journal", "--shift", "42"}).out, HasSubstr("\n  3 records\n"));
  EXPECT_THAT(Run({"journal", "--day", "2012-12-05"}).out, HasSubstr("\n  4 records\n"));
  EXPECT_THAT(Run({"journal", "--day", "2012-12-05", "--shift", "43"}).out, HasSubstr("\n  1 record\n"));
  EXPECT_EQ(Run({"journal", "--shift", "9"}).out, "  0 records\n");
  EXPECT_EQ(Run({"journal", "--sum", "--day", "2012-12-04"}).out,
            "  1 record\n  DEPOSIT                   1          500.00\n");
}

TEST_F(Journal, TellsAProgram) {
  const auto before = Files();
  const nlohmann::json facts = Facts({"journal", "--shift", "42"});
  EXPECT_EQ(facts["file"], (folder / "LOG").u8string());
  ASSERT_EQ(facts["records"].size(), 3U);
  EXPECT_EQ(facts["records"][2]["number"], 4);
  EXPECT_EQ(facts["records"][2]["detail"], "cancels 1234512120500009");
  EXPECT_EQ(facts["sums"], nlohmann::json({{"types",
                                            {{"PAYMENT", {{"count", 1}, {"amount", 10000}}},
                                             {"PAYMENT_CONFIRM", {{"count", 1}, {"amount", 0}}},
                                             {"PAYMENT_CANCEL", {{"count", 1}, {"amount", 0}}}}},
                                           {"unreadable", 0},
                                           {"earned", 300},
                                           {"spent", 50},
                                           {"discount", 30}}));
  EXPECT_FALSE(Facts({"journal", "--sum"}).contains("records"));
  EXPECT_EQ(Files(), before);
}

TEST_F(Journal, ShowsTheQueueToo) {
  Write("OFFLINE", "rubbish\n");
  EXPECT_EQ(Run({"journal", "--offline"}).out, "  1  UNREADABLE\n  1 record\n  UNREADABLE 1\n");
}

TEST_F(Journal, OfATerminalWithoutOneIsEmpty) {
  std::filesystem::remove(folder / "LOG");
  EXPECT_EQ(Run({"journal"}).out, "  0 records\n");
  EXPECT_FALSE(Exists("TRACE.TXT"));
}

TEST_F(Journal, RefusesWhatIsNoDay) {
  for (const char *day : {"today", "2012-12-5", "2012/12/05", "2012-12-05T00", "", "2026-13-45", "2026-00-10",
                          "2026-01-00", "2026-01-32", "2026-04-31", "2026-02-29", "1900-02-29"}) {
    const test::Outcome run = Run({"journal", "--day", day});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("--day"));
  }
  for (const char *day : {"2024-02-29", "2000-02-29", "2026-01-31", "2026-04-30", "2026-12-31"}) {
    EXPECT_EQ(Run({"journal", "--day", day}).status, 0) << day;
  }
  EXPECT_EQ(Run({"journal", "more"}).status, 2);
}

}  // namespace
