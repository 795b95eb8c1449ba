// register/facts_test.cpp: what a program reads: one line of JSON on standard output for each command.
#include "register/till.h"

namespace {

class Json : public test::Till {};

TEST_F(Json, TellsWhyTheLibraryRefused) {
  const nlohmann::json facts = Facts({"balance", "--card", test::kRichCard}, 1);
  EXPECT_EQ(facts["code"], -111);
  EXPECT_EQ(facts["error"], "Не удалось загрузить конфигурацию");
}

TEST_F(Json, TellsWhatTheRegisterCannotDo) {
  EXPECT_EQ(Facts({"balance"}, 2)["error"], "which card? --card NUMBER");
}

}  // namespace
