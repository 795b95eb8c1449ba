// model/random_days_test.cpp: thousands of random days: calls in any order, hostile arguments, a server that
// misbehaves. After each call a small model of what must be true judges the files, results and receipts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "end_to_end/shop.h"
#include "loyalty_server/server.h"
#include "model/heap.h"
#include "support/wine.h"

namespace {

using Json = nlohmann::json;
using test::HeapInUse;
using test::Shop;

class Dice {
 public:
  explicit Dice(uint32_t seed) : engine_(seed) {}
  uint32_t Below(uint32_t count) { return static_cast<uint32_t>(engine_() % count); }
  bool OneIn(uint32_t count) { return Below(count) == 0; }
  template <typename T>
  const T &Of(const std::vector<T> &values) {
    return values[Below(static_cast<uint32_t>(values.size()))];
  }

 private:
  std::mt19937 engine_;
};

// A text the register may pass, or null.
struct Argument {
  bool isNull = false;
  std::string text;
  const char *get() const { return isNull ? nullptr : text.c_str(); }
};

std::vector<std::string> Lines(const std::string &bytes) {
  std::vector<std::string> lines;
  size_t at = 0;
  for (size_t end; (end = bytes.find('\n', at)) != std::string::npos; at = end + 1) {
    lines.push_back(bytes.substr(at, end - at));
  }
  EXPECT_EQ(at, bytes.size()) << "a journal ends with a line feed";
  return lines;
}

// Bytes that are no UTF-8 come from hostile arguments and pass through. The structure must still be JSON.
Json ParseLoosely(std::string text) {
  for (char &byte : text) {
    if (static_cast<unsigned char>(byte) >= 0x80) byte = '?';
  }
  return Json::parse(text, nullptr, false);
}

// What the register did on one operation, as far as the model must know it.
enum class Kind {
  kActivation,
  kBalance,
  kPayment,
  kPaymentAndConfirm,
  kConfirm,
  kCancel,
  kReturn,
  kDeposit,
  kExchange,
  kLink
};

const char *TypeOf(Kind kind) {
  switch (kind) {
    case Kind::kActivation:
      return "ACTIVATION";
    case Kind::kBalance:
      return "BALANCE";
    case Kind::kPayment:
      return "PAYMENT";
    case Kind::kPaymentAndConfirm:
      return "PAYMENT_AND_CONFIRM";
    case Kind::kConfirm:
    case Kind::kCancel:
      return "PAYMENT_CONFIRM";
    case Kind::kReturn:
      return "CASHBACK";
    case Kind::kDeposit:
      return "DEPOSIT";
    case Kind::kExchange:
      return "EXCHANGE";
    case Kind::kLink:
      return "LINK";
  }
  return "";
}

bool IsPayment(Kind kind) {
  return kind == Kind::kPayment || kind == Kind::kPaymentAndConfirm;
}
bool IsConfirm(Kind kind) {
  return kind == Kind::kConfirm || kind == Kind::kCancel;
}

class Day {
 public:
  Day(Shop &shop, loyalty::Server &server, Dice &dice, int number)
      : shop_(shop), server_(server), dice_(dice), number_(number) {}

  void Run() {
    Begin();
    const uint32_t calls = 10 + dice_.Below(40);
    for (uint32_t i = 0; i < calls && !testing::Test::HasFailure(); ++i) {
      Tick();
      if (dice_.OneIn(4)) ChangeWeather();
      shop_.ClearTrace();
      Call();
      CheckFiles();
    }
    if (testing::Test::HasFailure()) std::cout << "The trace of the last call:\n" << shop_.Trace();
    End();
  }

 private:
  void Begin() {
    second_ = 8 * 3600 + static_cast<int>(dice_.Below(3600));
    Tick();
    offline_mode_ = static_cast<int>(dice_.Below(3)) != 0 ? 1 : 0;
    shift_mode_ = static_cast<int>(dice_.Below(2));
    log_size_ = dice_.OneIn(3) ? static_cast<int>(dice_.Below(30)) : 100000;
    fee_ = static_cast<int>(dice_.Below(5));
    local_ = static_cast<int>(dice_.Below(4));
    global_ = static_cast<int>(dice_.Below(4));
    const Json config = {{"terminalId", "12345"},
                         {"protocolVersion", "1.0"},
                         {"serverAddr", "http://" + server_.address() + "/ws"},
                         {"retailNetworkName", "Сеть"},
                         {"timeout", 20},
                         {"offlineMode", offline_mode_},
                         {"shiftMode", shift_mode_},
                         {"localBonusOffline", local_},
                         {"globalBonusOffline", global_},
                         {"orgFeeOffline", fee_},
                         {"logSize", log_size_},
                         {"receiptHeader", "Магазин"},
                         {"receiptFooter", "Спасибо"}};
    shop_.Write("CONFIG", config.dump());
    if (dice_.OneIn(10)) shop_.Write("STATE", "rubbish");
    SetFault("off");
    const bool damaged = ParseLoosely(shop_.Exists("STATE") ? shop_.Read("STATE") : "").is_discarded();
    ASSERT_EQ(shop_.LUMOInit(), 0);
    const Json state = ParseLoosely(shop_.Read("STATE"));
    if (damaged) {
      EXPECT_EQ(state, Json::object()) << "a damaged state gives way to an empty one";
    }
    shift_ = state.value("shiftState", 0);
    Remember();
  }

  void End() {
    EXPECT_EQ(shop_.CloseTransaction(), 0);
    transaction_ = false;
    EXPECT_EQ(shop_.CloseShift(), 0);
    SetFault("off");
  }

  void Tick() {
    second_ += static_cast<int>(dice_.Below(60));
    const int day = number_ % 28 + 1, month = number_ / 28 % 12 + 1, year = 2012 + number_ / 336;
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", year, month, day, second_ / 3600,
                  second_ / 60 % 60, second_ % 60);
    now_ = text;
    test::SetClock(year, month, day, second_ / 3600, second_ / 60 % 60, second_ % 60);
  }

  void SetFault(const std::string &text) {
    fault_ = text;
    server_.SetFault(loyalty::ParseFault(text));
  }

  void ChangeWeather() {
    static const std::vector<std::string> kFaults = {
        "off",
        "off",
        "off",
        "off",
        "refuse",
        "http 400",
        "http 500",
        "rubbish",
        "cut 0",
        "cut 1",
        "cut 40",
        "cut 200",
        "cut 500",
        "reset 0",
        "reset 100",
        "reset",
        "duplicate",
        "without bill",
        "without rrn",
        "without response",
        "without response/requestId",
        "extra ad {\"text\":\"x\"}",
        "extra bill 5",
        "extra response 7",
        "extra balance "
        "{\"account\":[{\"accountType\":\"GLOBAL\",\"amount\":2147483647,\"availableAmount\":2147483647}]}",
        "extra response/requestState \"CANCELED\"",
        "extra response/requestState \"WHATEVER\"",
        "extra response/isNeedUpdate true",
        "name getAdResponse",
        "name noSuchResponse",
        "refusal LOCKED_CARD",
        "refusal SMS_AUTH_FAILED"};
    SetFault(dice_.Of(kFaults));
  }

  // ---- Arguments ----

  Argument Text(const std::vector<std::string> &sensible) {
    static const std::vector<std::string> kHostile = {"",
                                                      " ",
                                                      "\"",
                                                      "\\",
                                                      "{\"a\":1}",
                                                      "%s%s%n%d",
                                                      "\x01\x02\n\r\t",
                                                      "\xff\xfe\xc0\x80",
                                                      "../..",
                                                      "Карта №1",
                                                      "0",
                                                      "-1",
                                                      "99999999999999999999",
                                                      std::string(900, 'x'),
                                                      "\xf0\x9f\x98\x80",
                                                      "a\nb\nc",
                                                      "null"};
    Argument argument;
    if (dice_.OneIn(15)) {
      argument.isNull = true;
    } else if (dice_.OneIn(8)) {
      argument.text = dice_.Of(kHostile);
    } else {
      argument.text = dice_.Of(sensible);
    }
    return argument;
  }

  int Amount() {
    static const std::vector<int> kAmounts = {0,      1,  99,   100,        5000,
                                              100000, -1, -100, 2147483647, -2147483647 - 1};
    return dice_.Of(kAmounts);
  }

  Argument Card() {
    return Text({"1000000001", "1000000002", "1000000003", "1000000004", "1000000005", "1000000006",
                 "1000000007", "7"});
  }

  Argument Rrn() {
    std::vector<std::string> known = {"1234512010100000", "0000000000000000"};
    for (size_t i = 0; i < log_.size() && i < 5; ++i) {
      const Json record = ParseLoosely(log_[log_.size() - 1 - i]);
      known.push_back(record["request"].value("requestId", ""));
    }
    return Text(known);
  }

  // A bill file of the register's, good most of the time. Null or a path that is no file now and then.
  Argument Bill() {
    Argument path = Text({"BILL.JSN", "BILL.JSN", "BILL.JSN", "Счёт.jsn", "no such folder/BILL.JSN"});
    if (path.isNull || (path.text != "BILL.JSN" && path.text != "Счёт.jsn")) {
      path.text = dice_.OneIn(2) ? "MISSING" : "no such folder/BILL.JSN";
      return path;
    }
    Json goods = Json::array();
    const uint32_t count = dice_.Below(4);
    int64_t total = 0;
    for (uint32_t i = 0; i < count; ++i) {
      const int64_t cost = dice_.OneIn(20) ? 2147483647 : 100 * (1 + dice_.Below(500));
      total += cost;
      goods.push_back({{"title", "Товар \"" + std::to_string(i) + "\""},
                       {"productCode", "00" + std::to_string(i)},
                       {"positionCost", cost},
                       {"orderNum", i + 1},
                       {"cnt", 1 + dice_.Below(5)}});
    }
    const Json bill = {{"totalSum", total}, {"orderLen", count},  {"billNum", std::to_string(second_)},
                       {"billDate", now_},  {"partnerFee", 1000}, {"goodList", {{"good", goods}}}};
    static const std::vector<std::string> kBad = {"",
                                                  "[]",
                                                  "{",
                                                  "[[[[",
                                                  "{\"goodList\":[]}",
                                                  "{\"goodList\":{\"good\":{}}}",
                                                  "7",
                                                  "{\"totalSum\":\"12\",\"x\":null}"};
    shop_.Write(path.text, dice_.OneIn(8) ? dice_.Of(kBad) : bill.dump());
    return path;
  }

  Argument ReturnList() {
    Argument path = Text({"RETURN.JSN", "RETURN.JSN", "MISSING"});
    if (path.isNull) return path;
    if (path.text != "RETURN.JSN") {
      path.text = "MISSING";
      return path;
    }
    static const std::vector<std::string> kLists = {"{\"cashBackGood\":[{\"pos\":1,\"sum\":100,\"cnt\":1}]}",
                                                    "{\"cashBackGood\":[{\"pos\":9,\"sum\":-1,\"cnt\":0}]}",
                                                    "{\"cashBackType\":\"FULL\"}",
                                                    "{}",
                                                    "[]",
                                                    "",
                                                    "{",
                                                    "{\"cashBackGood\":7,\"requestId\":\"0\"}"};
    shop_.Write(path.text, dice_.Of(kLists));
    return path;
  }

  // ---- Calls ----

  void Call() {
    switch (dice_.Below(20)) {
      case 0: {
        const Argument id = Text({"42", "43"});
        const int code = shop_.OpenShift(id.get());
        EXPECT_EQ(code, shift_ != 0 ? -601 : 0);
        if (code == 0) shift_ = 1;
        break;
      }
      case 1: {
        const int code = shop_.CloseShift();
        EXPECT_EQ(code, transaction_ ? -603 : 0);
        if (code == 0) shift_ = 0;
        break;
      }
      case 2:
      case 3:
      case 4: {
        const Argument card = Card(), cashier = Text({"1", "7"});
        const int code = shop_.CreateTransaction(card.get(), cashier.get());
        EXPECT_EQ(code, shift_mode_ > 0 && shift_ == 0 ? -602 : transaction_ ? -112 : 0);
        if (code == 0) {
          transaction_ = true;
          transaction_offline_ = false;
        }
        break;
      }
      case 5:
        if (dice_.OneIn(2)) {
          EXPECT_EQ(shop_.CloseTransaction(), 0);
          transaction_ = false;
        } else {
          Replay();
        }
        break;
      case 6:
        Report();
        break;
      case 7:
        Getters();
        break;
      default:
        if (!transaction_ && (shift_mode_ == 0 || shift_ != 0) && !dice_.OneIn(10)) {
          ASSERT_EQ(shop_.CreateTransaction(Card().get(), "1"), 0);
          transaction_ = true;
          transaction_offline_ = false;
        }
        Operation();
        break;
    }
  }

  void Operation() {
    const Kind kind = static_cast<Kind>(dice_.Below(10));
    Argument bill;
    bool payment_file = false;
    int code = 0;
    const size_t receipt_before = transaction_ ? std::string(shop_.getReceiptBodyPtr()).size() : 0;
    switch (kind) {
      case Kind::kActivation: {
        const Argument type = Text({"SIMPLE_ACTIVATION", "GIFT_CARD", "REFER_A_FRIEND"});
        const Argument account = Text({"GLOBAL", "LOCAL", "DISCOUNT"});
        if (dice_.OneIn(3)) {
          bill = Bill();
        } else {
          bill.isNull = true;
        }
        const char *type_text = dice_.OneIn(5)
                                    ? reinterpret_cast<const char *>(static_cast<uintptr_t>(dice_.Below(3)))
                                    : type.get();
        code = shop_.ActivationProc(type_text, bill.get(), Amount(), account.get(), Card().get());
        break;
      }
      case Kind::kBalance:
        code = shop_.BalanceProc();
        break;
      case Kind::kPayment:
        bill = Bill();
        payment_file = true;
        code = shop_.PaymentProc(Amount(), bill.get());
        break;
      case Kind::kPaymentAndConfirm:
        bill = Bill();
        payment_file = true;
        code = shop_.PaymentAndConfirmProc(Amount(), bill.get());
        break;
      case Kind::kConfirm:
        code = shop_.PaymentConfirmProc(Rrn().get());
        break;
      case Kind::kCancel:
        code = shop_.PaymentCancelProc(Rrn().get());
        break;
      case Kind::kReturn:
        code = shop_.CashBackProc(Rrn().get(), ReturnList().get());
        break;
      case Kind::kDeposit:
        code = shop_.DepositProc(Amount());
        break;
      case Kind::kExchange:
        code = shop_.ExchangeProc(Text({"TOKEN7", "TOKEN8"}).get());
        break;
      case Kind::kLink:
        code = shop_.LinkCardProc(Card().get());
        break;
    }
    if (!transaction_) {
      EXPECT_EQ(code, -100) << TypeOf(kind);
      return;
    }
    CheckCode(kind, code);
    CheckOutcome(kind, code, receipt_before);
    // The answer to an offline record carries the server's last id, which may lie behind the terminal's.
    if (transaction_offline_) last_rrn_.clear();
    if (code == 0 && payment_file) CheckPaidBill(bill.text);
  }

  // The codes that this weather allows.
  void CheckCode(Kind kind, int code) {
    SCOPED_TRACE(std::string(TypeOf(kind)) + " in the weather \"" + fault_ + "\"");
    std::vector<int> allowed;
    if (kind == Kind::kActivation) allowed = {-102, -103, -106};
    if (kind == Kind::kPayment) allowed = {-106};
    if (kind == Kind::kPaymentAndConfirm) allowed = {-303, -307, -402};
    if (kind == Kind::kReturn) allowed = {-113};
    if (code < 0 && std::count(allowed.begin(), allowed.end(), code) != 0) return;
    const bool goes_out =
        kind == Kind::kLink
            ? transaction_offline_
            : !(transaction_offline_ && (kind == Kind::kBalance || IsConfirm(kind) || kind == Kind::kReturn));
    if (!goes_out) {
      EXPECT_EQ(code, 0);
      return;
    }
    const std::string word =
        test::IsConnectLost(shop_.Trace()) ? "refuse" : fault_.substr(0, fault_.find(' '));
    if (word == "refuse") {
      if (IsPayment(kind) && offline_mode_ == 1) {
        EXPECT_EQ(code, fee_ > global_ + local_ ? -104 : 0);
      } else if (IsConfirm(kind) && offline_mode_ == 1) {
        EXPECT_EQ(code, 0);
      } else {
        EXPECT_EQ(code, -501);
      }
    } else if (word == "http") {
      EXPECT_EQ(code, fault_ == "http 400" ? -406 : -407);
    } else if (word == "rubbish" || word == "duplicate") {
      EXPECT_EQ(code, -303);
    } else if (word == "cut" || word == "reset") {
      EXPECT_THAT(code, testing::AnyOf(0, -401, -303, -402, -404, -405));
    } else if (word == "off") {
      EXPECT_THAT(code, testing::AnyOf(0, -405));
    } else if (word == "refusal") {
      EXPECT_EQ(code, -405);
      EXPECT_STREQ(shop_.getResponseState(), "ERROR");
    } else if (fault_ == "name noSuchResponse") {
      EXPECT_EQ(code, -403);
    } else {
      EXPECT_THAT(code, testing::AnyOf(0, -404, -405));
    }
  }

  // A completed operation is in LOG exactly once, and in OFFLINE when it was completed here.
  void CheckOutcome(Kind kind, int code, size_t receipt_before) {
    const bool completed_here =
        shop_.Exists("TRACE.TXT") && shop_.Trace().find("PaymentProcessOffline()\n") != std::string::npos;
    const std::vector<std::string> offline_now =
        shop_.Exists("OFFLINE") ? Lines(shop_.Read("OFFLINE")) : std::vector<std::string>();
    if (code == 0 &&
        ((IsPayment(kind) && completed_here) || (IsConfirm(kind) && offline_now.size() > offline_.size()))) {
      transaction_offline_ = true;
    }
    const bool silent = kind == Kind::kBalance && transaction_offline_;
    const std::string body = shop_.getReceiptBodyPtr();
    if (code == 0 && !silent) {
      EXPECT_GT(body.size(), receipt_before) << "a completed operation prints";
    } else {
      EXPECT_EQ(body.size(), receipt_before) << "nothing is printed";
    }
    EXPECT_EQ(shop_.getReceiptBody(nullptr), static_cast<int>(body.size()) + 1);
    if (code != 0 || kind == Kind::kBalance) return;

    // The trim, then the append.
    if (static_cast<int64_t>(log_.size()) + 1 >= log_size_ && log_size_ / 3 > 0) {
      log_.erase(log_.begin(),
                 log_.begin() + std::min<ptrdiff_t>(log_size_ / 3, static_cast<ptrdiff_t>(log_.size())));
    }
    const std::vector<std::string> log_now = Lines(shop_.Read("LOG"));
    ASSERT_FALSE(log_now.empty());
    log_.push_back(log_now.back());
    const Json record = ParseLoosely(log_now.back());
    ASSERT_TRUE(record.is_object());
    EXPECT_EQ(record["request"]["type"], TypeOf(kind));
    EXPECT_EQ(record["request"]["requestDate"], now_);
    EXPECT_EQ(record["request"]["isOffline"], transaction_offline_);
    CheckRrn(record["request"]["requestId"]);
    if (transaction_offline_) offline_.push_back(log_now.back());
  }

  // RRNs grow within a day, unless the last one could not be learnt or lies in the future.
  void CheckRrn(const std::string &rrn) {
    const std::string trace = shop_.Trace();
    if (trace.find("GetLastRrnProcess error") != std::string::npos ||
        trace.find("Date compare error") != std::string::npos) {
      return;
    }
    ASSERT_GE(rrn.size(), 16U);
    EXPECT_EQ(rrn.substr(0, 5), "12345");
    EXPECT_EQ(rrn.substr(5, 6), now_.substr(2, 2) + now_.substr(5, 2) + now_.substr(8, 2));
    if (!last_rrn_.empty()) {
      EXPECT_GT(rrn, last_rrn_);
    }
    last_rrn_ = rrn;
  }

  void CheckPaidBill(const std::string &path) {
    const Json bill = ParseLoosely(shop_.Read(path));
    ASSERT_TRUE(bill.is_object());
    uint32_t earned = 0, spent = 0, discount = 0;
    if (bill.contains("goodList")) {
      for (const Json &good : bill["goodList"]["good"]) {
        if (!good.contains("bonus")) continue;
        for (const Json &bonus : good["bonus"]) {
          const std::string account = bonus["accountType"];
          if (account == "GLOBAL" || account == "LOCAL") {
            earned += static_cast<uint32_t>(bonus["earned"].get<int>());
            spent += static_cast<uint32_t>(bonus["spend"].get<int>());
          } else if (account == "DISCOUNT") {
            discount += static_cast<uint32_t>(bonus["spend"].get<int>());
          }
        }
      }
    }
    EXPECT_EQ(shop_.GetEarnBonusAmount(), static_cast<int>(earned));
    EXPECT_EQ(shop_.GetSpendBonusAmount(), static_cast<int>(spent));
    EXPECT_EQ(shop_.GetDiscountAmount(), static_cast<int>(discount));
  }

  void Replay() {
    const std::vector<std::string> before = offline_;
    const std::string bytes = shop_.Exists("OFFLINE") ? shop_.Read("OFFLINE") : "";
    const int sent = shop_.SendOfflinePayments();
    last_rrn_.clear();  // an answer to an old record takes the counter back to it
    ASSERT_GE(sent, 0);
    ASSERT_LE(static_cast<size_t>(sent), before.size());
    EXPECT_FALSE(shop_.Exists("OFFLINE_TMP"));
    if (fault_ == "refuse" || fault_ == "http 400" || fault_ == "rubbish") {
      EXPECT_EQ(sent, 0);
    }
    if (before.empty() || static_cast<size_t>(sent) == before.size()) {
      EXPECT_EQ(shop_.Exists("OFFLINE") ? shop_.Read("OFFLINE") : "", bytes)
          << "nothing failed, nothing changes";
      return;
    }
    offline_ = Lines(shop_.Read("OFFLINE"));
    EXPECT_EQ(offline_.size() + static_cast<size_t>(sent), before.size());
    auto at = before.begin();
    for (const std::string &kept : offline_) {
      at = std::find(at, before.end(), kept);
      ASSERT_NE(at, before.end()) << "what is kept is kept unchanged and in order";
      ++at;
    }
  }

  static bool Within(const Json &record, const std::string &from, const std::string &to) {
    const std::string date = record["request"]["requestDate"];
    return from < date && date < to;
  }

  void Report() {
    static const std::vector<std::string> kBounds = {"", "2012-01-01T00:00:00Z", "2012-06-01T00:00:00Z",
                                                     "2013", "9"};
    const Argument from = Text(kBounds), to = Text(kBounds);
    const bool in_order = (from.isNull ? "" : from.text) < (to.isNull ? "" : to.text);
    const int detailed = shop_.GenerateReport(from.get(), to.get());
    if (!in_order) {
      EXPECT_EQ(detailed, -701);
      EXPECT_EQ(shop_.GenerateSummaryReport(from.get(), to.get()), -701);
      return;
    }
    ASSERT_GE(detailed, 0);
    EXPECT_EQ(std::string(shop_.GetReportPtr()).size(), static_cast<size_t>(detailed));
    const int length = shop_.GenerateSummaryReport(from.get(), to.get());
    ASSERT_GE(length, 0);
    const std::string report = shop_.GetReportPtr();
    EXPECT_EQ(report.size(), static_cast<size_t>(length));

    // The counts, by the plainest reading of the log.
    std::vector<std::pair<std::string, int>> payments;
    int deposits = 0, returns = 0;
    for (const std::string &line : log_) {
      const Json record = ParseLoosely(line);
      if (!Within(record, from.isNull ? "" : from.text, to.isNull ? "" : to.text)) continue;
      const std::string type = record["request"]["type"];
      const std::string rrn = record["request"]["requestId"].get<std::string>().substr(0, 20);
      if (type == "PAYMENT") payments.emplace_back(rrn, -1);
      if (type == "PAYMENT_AND_CONFIRM") payments.emplace_back(rrn, 1);
      if (type == "PAYMENT_CONFIRM") {
        const std::string confirmed = record["paymentConfirm"]["requestId"].get<std::string>().substr(0, 20);
        for (auto &payment : payments) {
          if (payment.first == confirmed) {
            payment.second = record["paymentConfirm"]["isConfirm"].get<bool>() ? 1 : 0;
          }
        }
      }
      if (type == "DEPOSIT") ++deposits;
      if (type == "CASHBACK") ++returns;
    }
    const auto with_state = [&](int state) {
      return static_cast<int>(
          std::count_if(payments.begin(), payments.end(), [&](const auto &p) { return p.second == state; }));
    };
    ExpectCategory(report, "ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:\n", with_state(1));
    ExpectCategory(report, "ОТМЕНЕННЫЕ ПЛАТЕЖИ:\n", with_state(0));
    ExpectCategory(report, "НЕПОДТВЕРЖД. ПЛАТЕЖИ:\n", with_state(-1));
    ExpectCategory(report, "ДЕПОЗИТЫ:\n", deposits);
    ExpectCategory(report, "ВОЗВРАТЫ:\n", returns);
  }

  static void ExpectCategory(const std::string &report, const std::string &title, int count) {
    const size_t at = report.find(title);
    if (count == 0) {
      EXPECT_EQ(at, std::string::npos) << title;
    } else {
      ASSERT_NE(at, std::string::npos) << title;
      const std::string line = "Кол-во: " + std::to_string(count) + "\n";
      EXPECT_EQ(report.substr(at + title.size(), line.size()), line) << title;
    }
  }

  void Getters() {
    EXPECT_NE(shop_.getResponseState(), nullptr);
    EXPECT_NE(shop_.getResponseStateCode(), nullptr);
    EXPECT_STREQ(shop_.getResponseMessage(), "");
    EXPECT_EQ(shop_.getReceiptBodyPtr() == nullptr, !transaction_);
    EXPECT_EQ(shop_.getReceiptHeaderPtr() == nullptr, !transaction_);
    EXPECT_EQ(shop_.getReceiptFooterPtr() == nullptr, !transaction_);
    if (!transaction_) {
      EXPECT_EQ(shop_.GetBalance(), 0);
      EXPECT_EQ(shop_.GetActivationAmount(), -100);
      EXPECT_EQ(shop_.GetCashBackResult(), -100);
      EXPECT_EQ(shop_.GetEarnBonusAmount(), 0);
    }
    EXPECT_STREQ(shop_.getTerminalId(), "12345");
    EXPECT_NE(shop_.GetErrorMessage(Amount()), nullptr);
    const Json state = ParseLoosely(shop_.Read("STATE"));
    EXPECT_EQ(shop_.getOfflineState(), state.value("offline", 0));
    EXPECT_EQ(shop_.RunUpdater("x"), -1);
    EXPECT_EQ(shop_.CommitUpdates(), -1);
  }

  // ---- What is true after every call ----

  void Remember() {
    log_ = shop_.Exists("LOG") ? Lines(shop_.Read("LOG")) : std::vector<std::string>();
    offline_ = shop_.Exists("OFFLINE") ? Lines(shop_.Read("OFFLINE")) : std::vector<std::string>();
  }

  void CheckFiles() {
    const Json state = ParseLoosely(shop_.Read("STATE"));
    ASSERT_TRUE(state.is_object()) << shop_.Read("STATE");
    EXPECT_EQ(state.value("shiftState", 0), shift_);
    EXPECT_THAT(state.value("offline", 0), testing::AnyOf(0, 1));
    const std::vector<std::string> log =
        shop_.Exists("LOG") ? Lines(shop_.Read("LOG")) : std::vector<std::string>();
    ASSERT_EQ(log.size(), log_.size());
    EXPECT_EQ(log, log_);
    const std::vector<std::string> offline =
        shop_.Exists("OFFLINE") ? Lines(shop_.Read("OFFLINE")) : std::vector<std::string>();
    EXPECT_EQ(offline, offline_);
    EXPECT_FALSE(shop_.Exists("LOG.old"));
  }

  Shop &shop_;
  loyalty::Server &server_;
  Dice &dice_;
  int number_;
  int second_ = 0;
  std::string now_;
  std::string fault_;
  int offline_mode_ = 0;
  int shift_mode_ = 0;
  int log_size_ = 0;
  int fee_ = 0;
  int local_ = 0;
  int global_ = 0;
  int shift_ = 0;
  bool transaction_ = false;
  bool transaction_offline_ = false;
  std::string last_rrn_;
  std::vector<std::string> log_;
  std::vector<std::string> offline_;
};

class RandomDays : public testing::TestWithParam<uint32_t> {};

constexpr int kDaysInAShard = 150;

TEST_P(RandomDays, KeepEveryRecordAndEveryPromise) {
  Shop shop;
  Dice dice(GetParam());
  loyalty::Server server{loyalty::Programme(loyalty::BuiltInShop())};
  size_t settled = 0;
  for (int day = 0; day < kDaysInAShard && !HasFailure(); ++day) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()) + ", day " + std::to_string(day));
    Day(shop, server, dice, day).Run();
    shop.Write("LOG", "");
    shop.Write("OFFLINE", "");
    if (day == kDaysInAShard / 3) settled = HeapInUse();
  }
  EXPECT_GT(settled, 0U);
  // The server remembers every payment; the library must not. A hundred days are some thousand calls.
  EXPECT_LT(HeapInUse(), settled + 8 * 1024 * 1024);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomDays, testing::Range(1U, 5U));
INSTANTIATE_TEST_SUITE_P(LongRunOfSeeds, RandomDays, testing::Range(5U, 17U));

}  // namespace
