// engine/payment_operations_posix_test.cpp: a bill that can be read and then not be written, as this host can
// show one: a pipe that gives way to a folder of the same name once it is read.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "engine/payment_operations.h"
#include "record/transaction.h"
#include "support/shop.h"

namespace {

class VanishingBill : public test::Shop {
 protected:
  ~VanishingBill() override { writer_.join(); }

  void Offer(const std::string &bill) {
    // More than a pipe holds, so that the last of it is taken only by a reader that has the pipe open. The
    // mark at its start spares the reader to seek, which a pipe cannot.
    const std::string text = "\xEF\xBB\xBF" + std::string(200000, ' ') + bill;
    const std::string path = folder.path() + "BILL.JSN";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    writer_ = std::thread([text, path] {
      const int pipe = open(path.c_str(), O_WRONLY);
      EXPECT_EQ(write(pipe, text.data(), text.size()), static_cast<ssize_t>(text.size()));
      EXPECT_EQ(unlink(path.c_str()), 0);
      EXPECT_EQ(mkdir(path.c_str(), 0700), 0);
      close(pipe);
    });
  }

 private:
  std::thread writer_;
};

TEST_F(VanishingBill, APaidBillThatCannotBeRewrittenIsPaidAndPrinted) {
  StartServer({test::Reply("putPaymentResponse", R"("bill":{"totalSum":15000})")});
  OpenShop();
  OpenCard();
  Offer(R"({"totalSum":15000})");
  EXPECT_EQ(lumo::PaymentProcess(card, 0, "BILL.JSN"), -105);
  EXPECT_EQ(card->completedOperations, 0x01U);
  EXPECT_TRUE(folder.Exists("LOG"));
  EXPECT_EQ(Body(),
            "******* ПОКУПКА ********\n"
            "  Полагающиеся бонусы   \n"
            "  будут перечислены в   \n"
            "      Клуб Тавиро       \n"
            "************************\n"
            "RRN: TERM012120500008\n"
            "Сумма (нал.):\n"
            "                  150.00\n"
            "************************\n");
}

}  // namespace
