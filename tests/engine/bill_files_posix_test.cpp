// engine/bill_files_posix_test.cpp: a medium that takes no more bytes, as this host can show one.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "engine/bill_files.h"
#include "support/shop.h"

namespace {

class FullMedium : public test::Shop {
 protected:
  FullMedium() { std::filesystem::create_symlink("/dev/full", folder.path() + "BILL.JSN"); }
};

TEST_F(FullMedium, EveryFragmentOfAnAmountBillIsTriedAndTraced) {
  std::string expected = "CreateAmountBill\n";
  for (int i = 0; i < 14; ++i) expected += "ERROR: WriteFile function failed with error 112\n";
  EXPECT_EQ(lumo::CreateAmountBill(15000, "BILL.JSN"), 0);
  EXPECT_EQ(folder.Trace(), expected);
}

TEST_F(FullMedium, ABillThatCannotBeWrittenIsTracedOnly) {
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::BillModify(card, "BILL.JSN"), 0);
  EXPECT_EQ(folder.Trace(), "BillModify\nERROR: WriteFile function failed with error 112\n");
}

}  // namespace
