// register/operation_test.cpp: what a cashier does: cards, sales, shifts, reports.
#include <chrono>
#include <regex>
#include <sstream>

#include "register/till.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// A star in the place of each number of this terminal.
std::string Masked(const std::string &text) {
  return std::regex_replace(text, std::regex("12345[0-9]{11}"), "*");
}

class Operation : public test::Till {
 protected:
  Operation() { Configure("\"offlineMode\":1,\"localBonusOffline\":3"); }

  // Of the card that has money.
  nlohmann::json Do(Words words, int status = 0) const {
    words.insert(words.end(), {"--card", test::kRichCard});
    return Facts(words, status);
  }
  // An amount of a bill is paid; gives the facts.
  nlohmann::json Pay(const Words &more = {}) const {
    EXPECT_EQ(Run({"bill", "100"}).status, 0);
    Words words = {"pay"};
    words.insert(words.end(), more.begin(), more.end());
    return Do(words);
  }
  std::string StateOf(const std::string &rrn) {
    std::string state = "unknown";
    server.Visit([&](loyalty::Programme &programme) {
      const auto payment = programme.payments().find(rrn);
      if (payment != programme.payments().end()) state = loyalty::PaymentStateName(payment->second.state);
    });
    return state;
  }
};

const nlohmann::json kSuccess = {{"state", "SUCCESS"}, {"code", "OK"}};

TEST_F(Operation, BalanceShowsTheSlipAndTheServersAnswer) {
  const test::Outcome run = Run({"balance", "--card", test::kRichCard});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, StartsWith("    ┌──"));
  EXPECT_THAT(run.out, EndsWith("\n  balance 700.00\n"));
  EXPECT_THAT(run.out, HasSubstr("  server SUCCESS / OK, RRN 12345"));
  const nlohmann::json facts = Do({"balance"});
  EXPECT_EQ(facts["operation"], "balance");
  EXPECT_EQ(facts["balance"], 70000);
  EXPECT_EQ(facts["offline"], false);
  EXPECT_EQ(facts["server"], kSuccess);
  EXPECT_THAT(facts["slip"].get<std::string>(), StartsWith("Магазин\n"));
  EXPECT_EQ(Masked(facts["rrn"]), "*");
}

TEST_F(Operation, ActivationsAreOfThreeKinds) {
  EXPECT_EQ(Facts({"activate", "--card", "1000000003"})["server"], kSuccess);
  const nlohmann::json gift =
      Facts({"activate", "gift", "--amount", "10.50", "--account", "LOCAL", "--card", "1000000004"});
  EXPECT_EQ(gift["credited"], 1050);
  EXPECT_EQ(Facts({"activate", "friend", "--referrer", test::kRichCard, "--card", "1000000005"})["server"],
            kSuccess);
  const nlohmann::json again = Facts({"activate", "--card", "1000000003"}, 1);
  EXPECT_EQ(again["code"], -405);
  EXPECT_EQ(again["server"], nlohmann::json({{"state", "ERROR"}, {"code", "ALREADY_ACTIVATED"}}));
  EXPECT_EQ(again["mayBeDone"], false);
  EXPECT_EQ(Run({"activate", "big", "--card", "1000000003"}).status, 2);
  EXPECT_EQ(Run({"activate", "gift", "--amount", "much", "--card", "1000000003"}).status, 2);
  EXPECT_EQ(Facts({"activate", "gift", "--account", "MINE", "--card", "1000000003"}, 1)["code"], -103);
  EXPECT_EQ(Facts({"activate", "--bill", "none", "--card", "1000000003"}, 1)["code"], -106);
}

TEST_F(Operation, DepositExchangeAndLink) {
  EXPECT_EQ(Do({"deposit", "500"})["server"], kSuccess);
  EXPECT_EQ(Do({"balance"})["balance"], 120000);
  for (const char *amount : {"", "much", "1.234", "-", "99999999999"}) {
    const test::Outcome run = Run({"deposit", amount, "--card", test::kRichCard});
    EXPECT_EQ(run.status, 2) << amount;
    EXPECT_THAT(run.err, HasSubstr("not an amount"));
  }
  EXPECT_EQ(Facts({"exchange", "TOKEN7", "--card", "1000000002"})["server"], kSuccess);
  EXPECT_EQ(Facts({"exchange", "NONE", "--card", test::kRichCard}, 1)["server"]["code"], "INCORRECT_TOKEN");
  EXPECT_EQ(Run({"exchange", "--card", "1"}).status, 2);
  // The library asks no server.
  const nlohmann::json link = Do({"link", "1000000008"});
  EXPECT_EQ(link["server"], nullptr);
  EXPECT_THAT(Run({"link", "1000000008", "--card", test::kRichCard}).out,
              HasSubstr("  link asks no server, RRN "));
  // Nor is the answer to an operation before it its own.
  const test::Outcome after = Run({"interactive"}, "card 1000000001\nbalance\nlink 1000000008\n");
  EXPECT_THAT(after.out, HasSubstr("  link asks no server, RRN "));
  EXPECT_EQ(Run({"link"}).status, 2);
}

TEST_F(Operation, PaymentIsConfirmedWithoutASlip) {
  const nlohmann::json payment = Pay({"--spend"});
  const std::string rrn = payment["rrn"];
  EXPECT_GT(payment["spent"], 0);
  EXPECT_EQ(StateOf(rrn), "held");
  const test::Outcome run = Run({"confirm", rrn, "--card", test::kRichCard});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(Masked(run.out), "  server SUCCESS / OK, RRN *\n");
  EXPECT_EQ(StateOf(rrn), "confirmed");
  EXPECT_EQ(Do({"confirm", rrn}, 1)["server"]["code"], "BILL_INCORRECT_STATE");
  EXPECT_EQ(Run({"confirm", "--card", "1"}).status, 2);
}

TEST_F(Operation, PaymentWithoutTheWishSpendsNothing) {
  EXPECT_EQ(Pay()["spent"], 0);
  // There is no sum to say.
  EXPECT_EQ(Run({"pay", "BILL.JSN", "50", "--spend", "--card", test::kRichCard}).status, 2);
}

TEST_F(Operation, PaymentMayBeCancelledOrReturned) {
  const std::string rrn = Pay()["rrn"];
  const nlohmann::json cancelled = Do({"cancel", rrn});
  EXPECT_THAT(cancelled["slip"].get<std::string>(), HasSubstr("ОТМЕНА ПОКУПКИ"));
  EXPECT_EQ(StateOf(rrn), "canceled");
  EXPECT_EQ(Run({"cancel"}).status, 2);
  const nlohmann::json payment = Pay({"--confirm", "--spend"});
  const std::string bought = payment["rrn"];
  EXPECT_EQ(StateOf(bought), "confirmed");
  EXPECT_EQ(Do({"return", bought, "--list", "NONE.JSN"}, 1)["code"], -113);
  Write("RETURN.JSN", R"({"cashBackGood":[{"pos":1,"sum":4000,"cnt":1}]})");
  EXPECT_EQ(Do({"return", bought})["returnedBonuses"], payment["spent"]);
  EXPECT_EQ(StateOf(bought), "returned");
  EXPECT_EQ(Run({"return"}).status, 2);
  const std::string partly = Pay({"--confirm"})["rrn"];
  EXPECT_EQ(Do({"return", partly, "--list", "RETURN.JSN"})["server"], kSuccess);
}

TEST_F(Operation, PaymentWithoutTheServerSaysSo) {
  Do({"balance"});
  Run({"bill", "100"});
  GoAway();
  const test::Outcome run = Run({"pay", "--spend", "--card", test::kRichCard});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("ОФФЛАЙН"));
  EXPECT_THAT(run.out,
              HasSubstr("\n  OFFLINE: no server was reached, the record waits to be sent, RRN 12345"));
  EXPECT_THAT(run.out, EndsWith("\n  earned 3.00, spent 0.00, discount 0.00\n"));
  EXPECT_THAT(run.out, Not(HasSubstr("server SUCCESS")));
}

TEST_F(Operation, PaymentWithoutTheServerAndWithoutARecordSaysSo) {
  Do({"balance"});
  Run({"bill", "100"});
  GoAway();
  EXPECT_EQ(Do({"pay"})["kept"], true);
  EXPECT_FALSE(Do({"balance"}, 1).contains("kept"));
  // A folder in its place cannot be written.
  std::filesystem::remove(folder / "OFFLINE");
  std::filesystem::create_directory(folder / "OFFLINE");
  const test::Outcome run = Run({"pay", "--card", test::kRichCard});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, HasSubstr("ОФФЛАЙН"));
  EXPECT_THAT(run.out,
              HasSubstr("\n  OFFLINE: no server was reached, and the record was NOT kept, RRN 12345"));
  EXPECT_EQ(run.err,
            "register: OFFLINE could not be written: no replay will tell the server of this operation\n");
  const nlohmann::json facts = Do({"pay"}, 1);
  EXPECT_EQ(facts["offline"], true);
  EXPECT_EQ(facts["kept"], false);
}

TEST_F(Operation, WhoseRecordIsNotInTheLogSaysSo) {
  constexpr char kMissing[] =
      "register: LOG could not be written: this operation is missing from the reports\n";
  EXPECT_FALSE(Do({"balance"}).contains("logged"));
  EXPECT_EQ(Do({"deposit", "1"})["logged"], true);
  Run({"bill", "100"});
  EXPECT_EQ(Do({"pay"})["logged"], true);
  // A folder in its place cannot be written.
  std::filesystem::remove(folder / "LOG");
  std::filesystem::create_directory(folder / "LOG");
  // With a server, without one, and when OFFLINE has the other of the two records.
  for (const bool is_away : {false, true}) {
    if (is_away) GoAway();
    const test::Outcome run = Run({"pay", "--confirm", "--card", test::kRichCard});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, kMissing);
    EXPECT_THAT(run.out,
                HasSubstr(is_away ? "\n  OFFLINE: no server was reached, the record waits to be sent, RRN"
                                  : "\n  server SUCCESS / OK, RRN"));
    const nlohmann::json facts = Do({"pay", "--confirm"}, 1);
    EXPECT_EQ(facts["logged"], false);
    EXPECT_EQ(facts.contains("kept"), is_away);
    EXPECT_FALSE(facts.contains("code"));
  }
  EXPECT_EQ(Do({"pay", "--confirm"}, 1)["kept"], true);
  EXPECT_EQ(Run({"confirm", "1234512120500001", "--card", test::kRichCard}).err, kMissing);
  ComeBack();
  // These the library itself refuses.
  const nlohmann::json deposit = Do({"deposit", "1"}, 1);
  EXPECT_EQ(deposit["code"], -201);
  EXPECT_EQ(deposit["logged"], false);
}

TEST_F(Operation, FindsItsRecordAtTheEndOfALongLog) {
  Write("LOG", "no record\n" + std::string(100000, 'x') + "\n");
  EXPECT_EQ(Do({"deposit", "1"})["logged"], true);
  // Longer than what is read at first, and the only one.
  std::string bill =
      R"({"bill":{"totalSum":100,"orderLen":1,"billNum":"1","billDate":"2012-12-05T10:00:00Z",)";
  bill += R"("goodList":{"good":[{"title":")" + std::string(20000, 'T');
  bill += R"(","productCode":"008","positionCost":100,"orderNum":1,"cnt":1}]}}})";
  Write("LONG.JSN", bill);
  std::filesystem::remove(folder / "LOG");
  EXPECT_EQ(Do({"pay", "LONG.JSN"})["logged"], true);
  // Without a number.
  Write("STATE", R"({"offline":0,"shiftState":0,"update":0})");
  GoAway();
  const nlohmann::json facts = Do({"pay", "LONG.JSN"});
  EXPECT_EQ(facts["rrn"], nullptr);
  EXPECT_EQ(facts["logged"], true);
}

TEST_F(Operation, ThatNoServerAnsweredShowsNoState) {
  Do({"balance"});
  GoAway();
  const nlohmann::json away = Do({"balance"}, 1);
  EXPECT_EQ(away["code"], -501);
  EXPECT_EQ(away["server"], nullptr);
  EXPECT_EQ(away["mayBeDone"], false);
  const test::Outcome run = Run({"balance", "--card", test::kRichCard});
  EXPECT_EQ(Masked(run.out), "  no server answered, RRN *\n");
  EXPECT_EQ(run.err, "error -501: Ошибка соединения с сервером\n");
}

TEST_F(Operation, WhoseAnswerWasLostSaysThatItMayBeDone) {
  Do({"balance"});
  Run({"bill", "100"});
  server.SetFault(loyalty::ParseFault("cut 5"));
  const test::Outcome run = Run({"pay", "--card", test::kRichCard});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(Masked(run.out), StartsWith("  no server answered, RRN *\n"
                                          "  The server may have done it or not: "));
  EXPECT_EQ(Do({"deposit", "1"}, 1)["mayBeDone"], true);
}

TEST_F(Operation, WithoutANumberShowsNone) {
  Write("STATE", R"({"reqId":"1234599123100007","offline":0,"shiftState":0,"update":0})");
  const nlohmann::json facts = Do({"balance"}, 1);
  EXPECT_EQ(facts["rrn"], nullptr);
  EXPECT_EQ(facts["server"]["code"], "REQUEST_ID_EMPTY");
}

TEST_F(Operation, ThatTheLibraryRefusesAskedNoServer) {
  Do({"balance"});
  Run({"bill", "100"});
  const auto refused = [this](Words words) {
    words.insert(words.end(), {"--card", test::kRichCard});
    const test::Outcome run = Run(words);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Masked(run.out), "  no server was asked, RRN *\n");
    return run.err.substr(0, run.err.find(':'));
  };
  EXPECT_EQ(refused({"pay", "none.JSN"}), "error -106");
  EXPECT_EQ(refused({"pay", "none.JSN", "--confirm"}), "error -307");
  EXPECT_EQ(refused({"return", "1234512120500001", "--list", "none.JSN"}), "error -113");
  EXPECT_EQ(refused({"activate", "gift", "--account", "NONE"}), "error -103");
}

TEST_F(Operation, WordsThatCannotWorkAreRefusedBeforeAnythingIsDone) {
  const auto before = Files();
  const Words card = {"--card", test::kRichCard};
  for (Words words :
       {Words{"deposit", "-5"}, Words{"bill", "-0.01"}, Words{"activate", "--amount", "-1"},
        Words{"confirm", ""}, Words{"cancel", ""}, Words{"return", ""}, Words{"exchange", ""},
        Words{"link", ""}, Words{"deposit", "21474836.48"}, Words{"deposit", ""}, Words{"deposit", "1,50"}}) {
    if (words[0] != "bill") words.insert(words.end(), card.begin(), card.end());
    const test::Outcome run = Run(words);
    EXPECT_EQ(run.status, 2) << words[0] << words[1];
    EXPECT_NE(run.err, "") << words[0] << words[1];
    EXPECT_EQ(run.out, "") << words[0] << words[1];
  }
  EXPECT_EQ(Files(), before);
}

TEST_F(Operation, BillIsWrittenOrNot) {
  EXPECT_EQ(Run({"bill", "12.34"}).out, "  written: BILL.JSN\n");
  EXPECT_EQ(nlohmann::json::parse(Read("BILL.JSN"))["totalSum"], 1234);
  EXPECT_EQ(Facts({"bill", "1", "OTHER.JSN"}), nlohmann::json({{"file", "OTHER.JSN"}, {"total", 100}}));
  EXPECT_EQ(Facts({"bill", "1", "none/BILL.JSN"}, 1)["code"], -105);
  EXPECT_EQ(Run({"bill"}).status, 2);
  EXPECT_EQ(Do({"pay", "none.JSN"}, 1)["code"], -106);
}

TEST_F(Operation, BillIsNeverAFileOfTheTerminal) {
  Do({"balance"});
  Write("OFFLINE", "{}\n");
  Write("TRACE_2.TXT", "a trace");
  std::error_code error;
  std::filesystem::create_hard_link(folder / "OFFLINE", folder / "ELSE.JSN", error);
  ASSERT_FALSE(error) << error.message();
  const uintmax_t size = std::filesystem::file_size(library);
  const auto before = Files();
  for (const std::string &name :
       {std::string("OFFLINE"), std::string("offline"), std::string("OFFLINE_TMP"), std::string("CONFIG"),
        std::string("CONFIG.JSN"), std::string("STATE"), std::string("STATE.new"), std::string("LOG"),
        std::string("LOG.old"), std::string("TRACE.TXT"), std::string("TRACE_2.TXT"), std::string("./LOG"),
        std::string("/STATE"), std::string("../terminal/LOG"), std::string("LOG. "), std::string("ELSE.JSN"),
        library.filename().u8string()}) {
    const test::Outcome run = Run({"bill", "5", name});
    EXPECT_EQ(run.status, 2) << name;
    EXPECT_EQ(run.err, "register: " + name + " is a file of the terminal's own: a bill needs another name\n");
    EXPECT_EQ(Run({"pay", name, "--card", test::kRichCard}).status, 2) << name;
  }
  EXPECT_EQ(Files(), before);
  EXPECT_EQ(std::filesystem::file_size(library), size);
  for (const char *name : {"LOGO.JSN", "STATEMENT", "OFFLINE-BILL.JSN"}) {
    EXPECT_EQ(Run({"bill", "5", name}).status, 0) << name;
  }
}

TEST_F(Operation, ShiftIsOpenedAndClosed) {
  EXPECT_EQ(Run({"shift", "open", "42"}).out, "  shift open, id 42\n");
  EXPECT_EQ(Facts({"shift", "open"}, 1)["code"], -601);
  EXPECT_EQ(Facts({"shift", "close"}), nlohmann::json({{"open", false}, {"id", "42"}}));
  EXPECT_EQ(Run({"shift"}).status, 2);
  EXPECT_EQ(Run({"shift", "pause"}).status, 2);
}

TEST_F(Operation, OfflineFlagIsShownAndSet) {
  EXPECT_EQ(Run({"offline-state"}).out, "  offline state 0\n");
  EXPECT_EQ(Facts({"offline-state", "1"}), nlohmann::json({{"offline", true}}));
  EXPECT_EQ(Run({"offline-state"}).out, "  offline state 1\n");
  EXPECT_EQ(Run({"offline-state", "2"}).status, 2);
}

TEST_F(Operation, ReportOfALongLogShowsHowFarItHasCome) {
  using std::chrono::steady_clock;
  constexpr char kRecord[] =
      R"({"request":{"type":"DEPOSIT","requestId":"1234512120500008","requestDate":"2012-12-05T10:00:00Z",)"
      R"("cardNum":"7","shiftId":"1"},"deposit":{"amount":100}})";
  // As many as this machine takes long enough for to show more than one line. Half a minute is, anywhere.
  for (size_t count = 20000, shown = 0; shown < 2; count *= 2) {
    std::string log;
    for (size_t i = 0; i < count; ++i) log.append(kRecord).append("\n");
    Write("LOG", log);
    std::filesystem::remove(folder / "TRACE.TXT");
    const auto begin = steady_clock::now();
    const test::Outcome run = Run({"--progress", "report", "--all"});
    const auto lasted = steady_clock::now() - begin;
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr(std::to_string(count) + ".00"));
    // Each line tells of more records than the one before.
    std::istringstream lines(run.err);
    size_t before = 0;
    shown = 0;
    for (std::string line; std::getline(lines, line); ++shown) {
      std::smatch found;
      const std::regex expected("  [0-9]+ s  ([0-9]+) of " + std::to_string(count) + " records");
      ASSERT_TRUE(std::regex_match(line, found, expected)) << line;
      EXPECT_GT(std::stoul(found[1]), before);
      before = std::stoul(found[1]);
    }
    EXPECT_LE(before, count);
    if (shown < 2) {
      ASSERT_LT(lasted, std::chrono::seconds(30)) << run.err;
    }
  }
}

TEST_F(Operation, ReportIsThatOfTheOpenShift) {
  Write("LOG",
        R"({"request":{"type":"DEPOSIT","requestId":"1234512120500008","requestDate":"2012-12-05T10:00:00Z",)"
        R"("cardNum":"7","shiftId":"1"},"deposit":{"amount":77700}})"
        "\n");
  const test::Outcome closed = Run({"report"});
  EXPECT_EQ(closed.status, 2);
  EXPECT_EQ(closed.err, "register: no shift is open: say --all, or --from and --to\n");
  Run({"shift", "open", "42"});
  EXPECT_EQ(Run({"report"}).out, "  nothing to report\n");
  Do({"deposit", "500"});
  for (const char *kind : {"summary", "detailed"}) {
    const std::string text = Facts({"report", kind})["report"];
    EXPECT_THAT(text, HasSubstr("500.00"));
    EXPECT_THAT(text, Not(HasSubstr("777.00")));
    EXPECT_THAT(Run({"report", kind}).out, HasSubstr("500.00"));
  }
  EXPECT_THAT(Run({"report", "detailed", "--all"}).out, HasSubstr("777.00"));
  EXPECT_THAT(Run({"report", "detailed", "--to", "2012-12-06"}).out, Not(HasSubstr("500.00")));
  EXPECT_EQ(Facts({"report", "--from", "2", "--to", "1"}, 1)["code"], -701);
  EXPECT_EQ(Run({"report", "weekly"}).status, 2);
  for (const char *time : {"", "yesterday", "5.12.2012", "2012-12-05 10:00:00", "2012-12-05T10:00:00Z0"}) {
    EXPECT_EQ(Run({"report", "--from", time}).status, 2) << time;
    EXPECT_THAT(Run({"report", "--to", time}).err, HasSubstr("not a time as 2012-12-05T10:00:00Z")) << time;
  }
}

}  // namespace
