// end_to_end/held_file_test.cpp: files that somebody else holds.
#include <chrono>
#include <filesystem>
#include <memory>
#include <thread>

#include "end_to_end/register.h"
#include "support/wine.h"

#ifndef _WIN32
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/time.h>
#include <unistd.h>
#endif

namespace {

using test::kFirstRrn;
using test::kSecondRrn;
using test::Record;
using test::State;
using test::Success;
using testing::HasSubstr;

// A file of the shop, open in another program that shares it with nobody.
class Held {
 public:
  Held(const test::Shop &shop, const std::string &name);
  ~Held();
  Held(const Held &) = delete;
  Held &operator=(const Held &) = delete;
#ifndef _WIN32
  void LetGo() const {
    flock(descriptor_, LOCK_UN);
  }
#endif

 private:
#ifdef _WIN32
  HANDLE handle_;
#else
  int descriptor_;
#endif
};

#ifdef _WIN32
Held::Held(const test::Shop &shop, const std::string &name)
    : handle_(CreateFileW(std::filesystem::u8path(shop.folder() + name).c_str(), GENERIC_READ | GENERIC_WRITE,
                          0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {
  EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
}
Held::~Held() {
  CloseHandle(handle_);
}
#else
Held::Held(const test::Shop &shop, const std::string &name)
    : descriptor_(open((shop.folder() + name).c_str(), O_RDWR | O_CREAT, 0600)) {
  EXPECT_EQ(flock(descriptor_, LOCK_EX | LOCK_NB), 0);
}
Held::~Held() {
  close(descriptor_);
}
#endif

class HeldFile : public test::Register {};

constexpr char kRefused[] = "ERROR: CreateFile function failed with error 32\n";

TEST_F(HeldFile, ConfigIsAFailedStart) {
  shop.Write("CONFIG", "{}");
  {
    const Held held(shop, "CONFIG");
    EXPECT_EQ(shop.LUMOInit(), -111);
  }
  EXPECT_THAT(shop.Trace(), HasSubstr(std::string(kRefused) + "ERROR: parserJsonFile error [-307]\n"));
  EXPECT_EQ(shop.LUMOInit(), 0);
}

TEST_F(HeldFile, StateStopsNoSale) {
  Open({Success("cardExchangeResponse")});
  {
    const Held held(shop, "STATE");
    EXPECT_EQ(shop.LoadState(), -109);
    EXPECT_THAT(shop.Trace(), HasSubstr(kRefused));
    shop.ClearTrace();
    EXPECT_EQ(shop.setNeedUpdate(1), -110);
    EXPECT_THAT(shop.Trace(), HasSubstr(kRefused));
    EXPECT_EQ(shop.OpenShift("42"), 0);
  }
  EXPECT_EQ(shop.Read("STATE"), State("1234512120500007"));
  EXPECT_EQ(shop.LoadState(), 0);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.Read("STATE"), State());
}

TEST_F(HeldFile, LogIsADoneOperationWithoutARecord) {
  Open({Success("cardExchangeResponse"), Success("putDepositResponse", "", kSecondRrn)});
  shop.Write("LOG", "1\n");
  {
    const Held held(shop, "LOG");
    EXPECT_EQ(shop.ExchangeProc("t"), -201);
    EXPECT_THAT(shop.Trace(), HasSubstr(kRefused));
    EXPECT_EQ(Body(), "******** ЗАМЕНА ********\nRRN: 1234512120500008\n");
    EXPECT_EQ(shop.GenerateReport("1", "3"), 0);
  }
  EXPECT_EQ(shop.DepositProc(0), 0);
  EXPECT_EQ(shop.Read("LOG"), "1\n" + Record("DEPOSIT", R"("deposit":{"amount":0})", kSecondRrn));
}

TEST_F(HeldFile, OfflineIsNotReplayed) {
  Open({Success("putDepositResponse")});
  shop.Write("OFFLINE", Record("DEPOSIT", R"("deposit":{"amount":0})", kFirstRrn, true));
  {
    const Held held(shop, "OFFLINE");
    EXPECT_EQ(shop.SendOfflinePayments(), 0);
    EXPECT_THAT(shop.Trace(), HasSubstr(kRefused));
    EXPECT_EQ(server->requests().size(), 0U);
    EXPECT_FALSE(shop.Exists("OFFLINE_TMP"));
  }
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
}

TEST_F(HeldFile, BillIsNotPaid) {
  Open({Success("putPaymentResponse", "\"bill\":{}")});
  ASSERT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  const std::string bill = shop.Read("BILL.JSN");
  {
    const Held held(shop, "BILL.JSN");
    EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), -106);
    EXPECT_EQ(shop.PaymentAndConfirmProc(0, "BILL.JSN"), -307);
    shop.ClearTrace();
    EXPECT_EQ(shop.CreateAmountBill(200, "BILL.JSN"), -105);
    EXPECT_EQ(shop.Trace(), std::string(kRefused) + "CreateAmountBill\n");
  }
  EXPECT_EQ(shop.Read("BILL.JSN"), bill);
  EXPECT_EQ(server->requests().size(), 0U);
}

// Only on Windows does a file that is held keep the trace out.
#ifdef _WIN32
constexpr char kTraced[] = "";
#else
constexpr char kTraced[] = "WARNING: Unknown error code 1\n";
#endif

TEST_F(HeldFile, TraceStopsNothing) {
  Open({Success("cardExchangeResponse")});
  {
    const Held held(shop, "TRACE.TXT");
    EXPECT_EQ(shop.ExchangeProc("t"), 0);
  }
  shop.ClearTrace();
  {
    const Held held(shop, "TRACE.TXT");
    EXPECT_STREQ(shop.GetErrorMessage(1), "Неизвестная ошибка 1");
  }
  EXPECT_EQ(shop.Trace(), kTraced);
}

// Held, and let go of 60 ms later.
#ifdef _WIN32
class HeldForAMoment {
 public:
  HeldForAMoment(const test::Shop &shop, const std::string &name)
      : held_(std::make_unique<Held>(shop, name)), other_([this] {
          std::this_thread::sleep_for(std::chrono::milliseconds(60));
          held_.reset();
        }) {}
  ~HeldForAMoment() { other_.join(); }
  HeldForAMoment(const HeldForAMoment &) = delete;
  HeldForAMoment &operator=(const HeldForAMoment &) = delete;

 private:
  std::unique_ptr<Held> held_;
  std::thread other_;
};
#else
// A signal lets go, since a thread may be late on a busy machine: its handler precedes whatever the register
// does after that time.
std::unique_ptr<Held> held_for_a_moment;

class HeldForAMoment {
 public:
  HeldForAMoment(const test::Shop &shop, const std::string &name) {
    held_for_a_moment = std::make_unique<Held>(shop, name);
    struct sigaction action = {};
    action.sa_handler = [](int) { held_for_a_moment->LetGo(); };
    EXPECT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
    const itimerval in_a_moment = {{0, 0}, {0, 60000}};
    EXPECT_EQ(setitimer(ITIMER_REAL, &in_a_moment, nullptr), 0);
  }
  ~HeldForAMoment() {
    const itimerval never = {};
    setitimer(ITIMER_REAL, &never, nullptr);
    held_for_a_moment.reset();
  }
  HeldForAMoment(const HeldForAMoment &) = delete;
  HeldForAMoment &operator=(const HeldForAMoment &) = delete;
};
#endif

// A program that copies the folder lets go of each file again: nobody notices.
TEST_F(HeldFile, ForAMomentIsWaitedFor) {
  Open({Success("cardExchangeResponse"), Success("putDepositResponse", "", kSecondRrn)});
  for (const char *name : {"STATE", "LOG", "OFFLINE"}) {
    shop.Write("OFFLINE", Record("DEPOSIT", R"("deposit":{"amount":0})", kFirstRrn, true));
    const HeldForAMoment held(shop, name);
    if (std::string(name) == "OFFLINE") {
      EXPECT_EQ(shop.SendOfflinePayments(), 1) << name;
    } else if (std::string(name) == "LOG") {
      EXPECT_EQ(shop.ExchangeProc("t"), 0) << name;
    } else {
      EXPECT_EQ(shop.getOfflineState(), 0) << name;
      EXPECT_EQ(shop.Read("STATE"), State("1234512120500007"));
    }
  }
  EXPECT_THAT(shop.Trace(), testing::Not(HasSubstr(kRefused)));
}

}  // namespace
