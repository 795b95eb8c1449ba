// register/message_test.cpp: the cashier's texts.
#include "register/till.h"

namespace {

class Message : public test::Till {};

TEST_F(Message, IsTheCashiersTextForACode) {
  const auto before = Files();
  const test::Outcome run = Run({"message", "-405"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "  Ошибка с сервера\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(Files(), before);
}

TEST_F(Message, IsToldToAProgram) {
  EXPECT_EQ(Facts({"message", "-405"}), nlohmann::json({{"code", -405}, {"message", "Ошибка с сервера"}}));
}

TEST_F(Message, WantsANumber) {
  EXPECT_EQ(Run({"message"}).status, 2);
  EXPECT_EQ(Run({"message", "many"}).status, 2);
}

TEST_F(Message, NeedsTheLibraryFile) {
  std::filesystem::remove(library);
  const test::Outcome run = Run({"message", "-405"});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, testing::StartsWith("register: cannot load "));
}

}  // namespace
