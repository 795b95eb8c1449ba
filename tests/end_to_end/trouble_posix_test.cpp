// end_to_end/trouble_posix_test.cpp: files that somebody else holds, a disk that is full, a connection that
// is reset and a register that is killed, as this host can show them.
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
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

// A file of the shop, open in another program that shares it with nobody.
class Held {
 public:
  Held(const test::Shop &shop, const std::string &name)
      : descriptor_(open((shop.folder() + name).c_str(), O_RDWR | O_CREAT, 0600)) {
    EXPECT_EQ(flock(descriptor_, LOCK_EX | LOCK_NB), 0);
  }
  ~Held() { close(descriptor_); }
  Held(const Held &) = delete;
  Held &operator=(const Held &) = delete;

 private:
  int descriptor_;
};

class Trouble : public test::Register {};

TEST_F(Trouble, ConfigHeldBySomebodyIsAFailedStart) {
  shop.Write("CONFIG", "{}");
  {
    const Held held(shop, "CONFIG");
    EXPECT_EQ(shop.LUMOInit(), -111);
    EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: CreateFile function failed with error 32\n"
                                        "ERROR: parserJsonFile error [-307]\n"));
  }
  EXPECT_EQ(shop.LUMOInit(), 0);
}

TEST_F(Trouble, StateHeldBySomebodyStopsNoSale) {
  Open({Success("cardExchangeResponse")});
  {
    const Held held(shop, "STATE");
    EXPECT_EQ(shop.LoadState(), -109);
    EXPECT_EQ(shop.setNeedUpdate(1), -110);
    EXPECT_EQ(shop.OpenShift("42"), 0);
  }
  EXPECT_EQ(shop.Read("STATE"), State("1234512120500007"));
  EXPECT_EQ(shop.LoadState(), 0);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.Read("STATE"), State());
}

TEST_F(Trouble, LogHeldBySomebodyIsADoneOperationWithoutARecord) {
  Open({Success("cardExchangeResponse"), Success("putDepositResponse", "", kSecondRrn)});
  shop.Write("LOG", "1\n");
  {
    const Held held(shop, "LOG");
    EXPECT_EQ(shop.ExchangeProc("t"), -201);
    EXPECT_EQ(Body(), "******** ЗАМЕНА ********\nRRN: 1234512120500008\n");
    EXPECT_EQ(shop.GenerateReport("1", "3"), 0);
  }
  EXPECT_EQ(shop.DepositProc(0), 0);
  EXPECT_EQ(shop.Read("LOG"), "1\n" + Record("DEPOSIT", R"("deposit":{"amount":0})", kSecondRrn));
}

TEST_F(Trouble, OfflineHeldBySomebodyIsNotReplayed) {
  Open({Success("putDepositResponse")});
  shop.Write("OFFLINE", Record("DEPOSIT", R"("deposit":{"amount":0})", kFirstRrn, true));
  const Held held(shop, "OFFLINE");
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_EQ(server->requests().size(), 0U);
  EXPECT_FALSE(shop.Exists("OFFLINE_TMP"));
}

TEST_F(Trouble, BillHeldBySomebodyIsNotPaid) {
  Open({Success("putPaymentResponse", "\"bill\":{}")});
  ASSERT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  const std::string bill = shop.Read("BILL.JSN");
  const Held held(shop, "BILL.JSN");
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), -106);
  EXPECT_EQ(shop.PaymentAndConfirmProc(0, "BILL.JSN"), -307);
  EXPECT_EQ(shop.CreateAmountBill(200, "BILL.JSN"), -105);
  EXPECT_EQ(shop.Read("BILL.JSN"), bill);
  EXPECT_EQ(server->requests().size(), 0U);
}

TEST_F(Trouble, TraceHeldBySomebodyIsLost) {
  Open({Success("cardExchangeResponse")});
  const Held held(shop, "TRACE.TXT");
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.Trace(), "");
}

// A bill that may be read and is held when it is to be rewritten: paid all the same, and the record is kept.
TEST_F(Trouble, PaidBillThatCannotBeRewrittenIsPaid) {
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

TEST_F(Trouble, FullDiskEndsNothingAndTheServerKnowsOfTheSale) {
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

TEST_F(Trouble, ResetConnectionIsNoAnswer) {
  const std::string begin = R"({"putDepositResponse":{"response":{"requestState":"SUCCESS","message":")";
  Open({Answer{{}, Answer::End::kReset},
        Answer{{begin + std::string(500 - begin.size() - 4, 'm') + "\"}}}"}, Answer::End::kReset},
        Answer{{Success("putDepositResponse", "", test::kThirdRrn)}}});
  EXPECT_EQ(shop.DepositProc(0), -401);
  EXPECT_THAT(shop.Trace(), HasSubstr("Receiving \n"
                                      "ERROR: recv failed with error: 10054\n"
                                      "ERROR: LUMO_Receive res -1\n"
                                      "ERROR: LUMO_Receive error: -1\n"
                                      "Disconnect\n"));
  // Whole pieces that were received do not make an answer either.
  EXPECT_EQ(shop.DepositProc(0), -401);
  EXPECT_EQ(Body(), "");
  EXPECT_FALSE(shop.Exists("LOG"));
  EXPECT_EQ(shop.DepositProc(0), 0);
}

// The register is killed while it waits for the answer to a payment.
TEST_F(Trouble, RegisterKilledInAnExchangeGoesOnWithTheNextRrn) {
  server = std::make_unique<test::ScriptedServer>(
      std::vector<Answer>{{{}, Answer::End::kSilence}, {{Success("cardExchangeResponse", "", kSecondRrn)}}});
  shop.Start(server->address(), R"("timeout":0)");
  shop.Write("LOG", "1\n");
  ASSERT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  const std::string bill = shop.Read("BILL.JSN");
  const pid_t first = fork();
  if (first == 0) {
    shop.CreateTransaction(kCard, kCashier);
    shop.PaymentProc(0, "BILL.JSN");
    _exit(1);
  }
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
