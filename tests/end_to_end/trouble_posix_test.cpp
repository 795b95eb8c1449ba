// end_to_end/trouble_posix_test.cpp: a paid bill that cannot be rewritten, a disk that is full and a register
// that is killed, as this host can show them.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "end_to_end/register.h"

namespace {

using test::Answer;
using test::kCard;
using test::kCashier;
using test::kFirstRrn;
using test::kSecondRrn;
using test::Record;
using test::State;
using test::Success;
using testing::HasSubstr;

class MachineTrouble : public test::Register {};

// A bill that may be read and is held when it is to be rewritten: paid all the same, and the record is kept.
TEST_F(MachineTrouble, PaidBillThatCannotBeRewrittenIsPaid) {
  OpenAlone(R"("offlineMode":1)");
  ASSERT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  const std::string bill = shop.Read("BILL.JSN");
  shop.Remove("BILL.JSN");
  // A pipe in the bill's place, which its writer replaces by a folder once all of it has been read.
  const std::string path = shop.folder() + "BILL.JSN";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const pid_t writer = fork();
  if (writer == 0) {
    const std::string text = "\xEF\xBB\xBF" + std::string(200000, ' ') + bill;
    const int pipe = open(path.c_str(), O_WRONLY);
    const bool written = write(pipe, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    _exit(written && unlink(path.c_str()) == 0 && mkdir(path.c_str(), 0700) == 0 ? 0 : 1);
  }
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), -105);
  int status = 0;
  ASSERT_EQ(waitpid(writer, &status, 0), writer);
  EXPECT_EQ(status, 0);
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: Cant open file \"BILL.JSN\"!\n"));
  EXPECT_THAT(Body(), HasSubstr("Сумма (нал.):\n                    1.00\n"));
  EXPECT_THAT(shop.Read("LOG"), HasSubstr("\"requestId\":\"1234512120500008\""));
  EXPECT_EQ(shop.Read("OFFLINE"), shop.Read("LOG"));
}

// No file may grow beyond this many bytes from here on.
void FillTheDisk(rlim_t bytes) {
  signal(SIGXFSZ, SIG_IGN);
  const rlimit limit = {bytes, RLIM_INFINITY};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

TEST_F(MachineTrouble, FullDiskEndsNothingAndTheServerKnowsOfTheSale) {
  Open({Success("cardExchangeResponse"), Success("putDepositResponse", "", kSecondRrn)});
  FillTheDisk(0);
  EXPECT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  const int code = shop.ExchangeProc("t");
  EXPECT_TRUE(code == 0 || code == -201) << code;
  EXPECT_STREQ(shop.getResponseState(), "SUCCESS");
  EXPECT_EQ(Body(), "******** ЗАМЕНА ********\nRRN: 1234512120500008\n");
  FillTheDisk(RLIM_INFINITY);
  EXPECT_EQ(shop.Read("BILL.JSN"), "");
  EXPECT_EQ(shop.DepositProc(0), 0);
  EXPECT_EQ(Body(),
            "******** ЗАМЕНА ********\n"
            "RRN: 1234512120500008\n"
            "******* ДЕПОЗИТ *******\n"
            "RRN: 1234512120500009\n");
  EXPECT_EQ(shop.Read("STATE"), State(kSecondRrn));
}

// Nobody but OFFLINE knows of a sale without the server: it is lost, and only the count tells.
TEST_F(MachineTrouble, FullDiskLosesTheSaleThatNoServerSaw) {
  OpenAlone(R"("offlineMode":1)");
  ASSERT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  FillTheDisk(0);
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
  EXPECT_EQ(shop.lumoIsOffline(), 1);
  EXPECT_EQ(shop.lumoOfflineCount(), 0);
  EXPECT_EQ(shop.PaymentConfirmProc(kFirstRrn), -201);
  EXPECT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), -106);
  FillTheDisk(RLIM_INFINITY);
  EXPECT_EQ(shop.Read("OFFLINE"), "");
  EXPECT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
  EXPECT_EQ(shop.lumoOfflineCount(), 1);
}

// The register is killed while it waits for the answer to a payment. It is forked before the server has a
// thread, whose locks it would inherit.
TEST_F(MachineTrouble, RegisterKilledInAnExchangeGoesOnWithTheNextRrn) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t first = fork();
  if (first == 0) {
    close(ready[1]);
    char byte = 0;
    if (read(ready[0], &byte, 1) != 1 || shop.LUMOInit() != 0) _exit(1);
    shop.CreateTransaction(kCard, kCashier);
    shop.PaymentProc(0, "BILL.JSN");
    _exit(1);
  }
  server = std::make_unique<test::ScriptedServer>(
      std::vector<Answer>{{{}, Answer::End::kSilence}, {{Success("cardExchangeResponse", "", kSecondRrn)}}});
  shop.Start(server->address(), R"("timeout":0)");
  shop.Write("LOG", "1\n");
  ASSERT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  const std::string bill = shop.Read("BILL.JSN");
  ASSERT_EQ(write(ready[1], "", 1), 1);
  while (server->requests().empty() || server->requests().at(0).find("}}\n") == std::string::npos) {
    ASSERT_EQ(waitpid(first, nullptr, WNOHANG), 0);
  }
  ASSERT_EQ(kill(first, SIGKILL), 0);
  ASSERT_EQ(waitpid(first, nullptr, 0), first);

  EXPECT_EQ(shop.Read("STATE"), State(kFirstRrn));
  EXPECT_EQ(shop.Read("LOG"), "1\n");
  EXPECT_EQ(shop.Read("BILL.JSN"), bill);
  shop.LoadAgain();
  ASSERT_EQ(shop.LUMOInit(), 0);
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_STREQ(shop.getRRN(), kSecondRrn);
  EXPECT_EQ(shop.Read("LOG"), "1\n" + Record("EXCHANGE", "", kSecondRrn));
}

}  // namespace
