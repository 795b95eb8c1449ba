// loyalty_server/data_file_posix_test.cpp: cards, payments and ids in a file: what is kept, and what an end
// without a word leaves.
#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>
#include <stdexcept>

#include "loyalty_server/bench.h"
#include "loyalty_server/data_file.h"
#include "loyalty_server/folder.h"
#include "loyalty_server/state_text.h"

namespace {

using bench::Bill;
using bench::StateText;
using bench::Terminal;
using loyalty::OpenDataFile;

class DataFile : public testing::Test {
 protected:
  loyalty::Programme Start() {
    return loyalty::Programme(
        loyalty::ShopFromJson(bench::kShop), [] { return bench::kMorning; }, OpenDataFile(path));
  }
  std::string Kept() { return StateText(OpenDataFile(path)->Load()); }
  // Runs SQL on the file, as somebody else would.
  void Run(const std::string &sql) {
    sqlite3 *connection = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection);
    sqlite3_close(connection);
  }
  std::string Complaint() {
    try {
      Start();
    } catch (const std::runtime_error &error) {
      return error.what();
    }
    return "none";
  }

  bench::Folder folder;
  std::string path = folder.Path("bench.db");
};

TEST_F(DataFile, HoldsWhatTheProgrammeRemembers) {
  {
    loyalty::Programme programme = Start();
    Terminal terminal(&programme);
    EXPECT_EQ(terminal.Code("payment", "100", Bill(true)), "OK");
    EXPECT_EQ(terminal.Code("paymentAndConfirm", "200", Bill(false)), "OK");
    EXPECT_EQ(terminal.Code("cashBack", "200",
                            R"({"requestId":")" + terminal.lastId +
                                R"(","cashBackType":"SEQ","cashBackGood":[{"pos":1,"sum":2500,"cnt":1}]})"),
              "OK");
    EXPECT_EQ(terminal.Code("activate", "300",
                            R"({"activationType":"REFER_A_FRIEND","amount":0,"referParentCardNum":"100"})"),
              "OK");
    EXPECT_EQ(terminal.Code("linkCard", "301", R"({"linkedCardNum":"100"})"), "OK");
    EXPECT_EQ(terminal.Code("cardExchange", "200", R"({"token":"TOKEN-1"})"), "OK");
    programme.LockTerminal("54321", true);
    programme.LockTerminal("66666", false);
  }
  // By hand, from the shop, the rules and the order of the requests. Of the two positions, 100.00 and 9.99,
  // the first payment spends 50.00 LOCAL, then 4.99 GLOBAL; a quarter of the first position comes back.
  EXPECT_EQ(Kept(),
            "card 100 100 active 0 1\n"
            "card 200 200 locked 1 0\n"
            "card 300 300 active 2 0\n"
            "card 301 301 active 0 0\n"
            "card 302 302 sold 4 0\n"
            "card 400 400 locked 5 0\n"
            "card 500 500 active 1 0\n"
            "card 501 501 sold 8 0\n"
            "card 600 600 active 6 0\n"
            "account 10000-499+110 5700-5000+165 1000-0+55\n"
            "account 169-0+0 254-0+0 84-0+0\n"
            "account 5000-0+0 0-0+0 0-0+0\n"
            "account 0-0+0 0-0+0 0-0+0\n"
            "account 0-0+0 0-0+0 0-0+0\n"
            "account 700-0+0 0-0+0 0-0+0\n"
            "account 2147483647-0+0 0-0+0 0-0+0\n"
            "account 0-0+0 0-0+0 0-0+0\n"
            "account 0-0+0 0-0+0 0-0+0\n"
            "payment 1234512120500001 1234512120500001 1 2012-12-05T10:30:30Z 12345 100 0 held 10999\n"
            "  1 10000 4 -0 -5000 -0 +100 +150 +50 200 0 0\n"
            "  2 999 1 -499 -0 -0 +10 +15 +5 20 0 0\n"
            "payment 1234512120500002 1234512120500002 2 2012-12-05T10:30:30Z 12345 200 1 confirmed 10999\n"
            "  1 10000 4 -0 -0 -0 +200 +300 +100 400 2500 1\n"
            "  2 999 1 -0 -0 -0 +19 +29 +9 39 0 0\n"
            "id 1234512120500001\n"
            "id 1234512120500002\n"
            "id 1234512120500003\n"
            "id 1234512120500004\n"
            "id 1234512120500005\n"
            "id 1234512120500006\n"
            "last 12345 1234512120500006\n"
            "lock 54321 1\n"
            "lock 66666 0\n"
            "token TOKEN-1\n"
            "answers 6\n");
}

// Days of random operations, started anew in between: the file always holds what a programme in memory knows.
TEST_F(DataFile, AgreesWithAProgrammeThatNeverStops) {
  std::mt19937 random(20121205);
  loyalty::Programme in_memory = bench::MakeProgramme();
  int number = 0;
  const char *cards[] = {"100", "200", "300", "301", "302", "400", "500", "501", "600"};
  const auto any_card = [&] { return std::string(cards[random() % std::size(cards)]); };
  for (int start = 0; start < 6; ++start) {
    loyalty::Programme programme = Start();
    for (int step = 0; step < 60; ++step) {
      const loyalty::OperationNames &operation = loyalty::kOperations[random() % loyalty::kOperations.size()];
      bench::Head head;
      head.requestId = bench::Quoted("12345121205" + std::to_string(10000 + ++number));
      head.cardNum = bench::Quoted(any_card());
      const std::string earlier =
          "12345121205" + std::to_string(10000 + random() % static_cast<unsigned>(number));
      std::string part;
      switch (operation.operation) {
        case loyalty::Operation::kActivation:
          part = R"({"activationType":"REFER_A_FRIEND","amount":5,"referParentCardNum":")" + any_card() +
                 R"("})";
          break;
        case loyalty::Operation::kPayment:
        case loyalty::Operation::kPaymentAndConfirm:
          part = Bill(random() % 2 == 0);
          break;
        case loyalty::Operation::kPaymentConfirm:
          part =
              R"({"requestId":")" + earlier + R"(","isConfirm":)" + (random() % 2 == 0 ? "true}" : "false}");
          break;
        case loyalty::Operation::kCashBack:
          part = R"({"requestId":")" + earlier + R"(","cashBackType":"FULL"})";
          break;
        case loyalty::Operation::kLink:
          part = R"({"linkedCardNum":")" + any_card() + R"("})";
          break;
        case loyalty::Operation::kExchange:
          part = R"({"token":"TOKEN-1"})";
          break;
        case loyalty::Operation::kDeposit:
          part = R"({"amount":100})";
          break;
        default:
          break;
      }
      const std::string document = bench::Document(operation, head, part);
      ASSERT_EQ(programme.Handle(operation, document).answer, in_memory.Handle(operation, document).answer);
    }
    for (const auto &card : in_memory.cards()) {
      ASSERT_EQ(bench::Purses(programme, card.first), bench::Purses(in_memory, card.first));
    }
  }
}

// From now on the process is killed in the middle of its n-th write to a file of the database: half of the
// bytes get there.
void KillInWrite(int number) {
  static int left;
  static sqlite3_vfs *system;
  static const sqlite3_io_methods *methods;
  static sqlite3_io_methods deadly;
  static sqlite3_vfs shim;
  left = number;
  if (system != nullptr) return;
  system = sqlite3_vfs_find(nullptr);
  shim = *system;
  shim.zName = "deadly";
  shim.xOpen = [](sqlite3_vfs *, const char *name, sqlite3_file *file, int flags, int *out_flags) {
    const int result = system->xOpen(system, name, file, flags, out_flags);
    if (result != SQLITE_OK) return result;
    methods = file->pMethods;
    deadly = *methods;
    deadly.xWrite = [](sqlite3_file *to, const void *bytes, int size, sqlite3_int64 offset) {
      if (--left != 0) return methods->xWrite(to, bytes, size, offset);
      methods->xWrite(to, bytes, size / 2, offset);
      return raise(SIGKILL);
    };
    file->pMethods = &deadly;
    return result;
  };
  sqlite3_vfs_register(&shim, 1);
}

TEST_F(DataFile, IsNeverLeftWithHalfAnExchange) {
  std::string goods;
  for (int i = 1; i <= 300; ++i) {
    goods += (i == 1 ? "" : ",") + (R"({"title":"a","productCode":"b","positionCost":100,"orderNum":)" +
                                    std::to_string(i) + R"(,"cnt":1})");
  }
  const std::string bill = Bill(true, R"({"good":[)" + goods + "]}", 30000, 300);
  const auto begin = [&] {
    std::filesystem::remove(path);
    std::filesystem::remove(path + "-wal");
    loyalty::Programme programme = Start();
    EXPECT_EQ(Terminal(&programme).Code("linkCard", "300", R"({"linkedCardNum":"100"})"), "OK");
  };
  const auto finish = [&] {
    loyalty::Programme programme = Start();
    return Terminal(&programme).Code("paymentAndConfirm", "300", bill, "1234512120500002");
  };
  begin();
  const std::string before = Kept();
  EXPECT_EQ(finish(), "OK");
  const std::string after = Kept();
  ASSERT_NE(after, before);

  int kills = 0;
  for (bool is_killed = true; is_killed && !HasFailure();) {
    begin();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      KillInWrite(0);
      loyalty::Programme programme = Start();
      KillInWrite(kills + 1);
      Terminal(&programme).Code("paymentAndConfirm", "300", bill, "1234512120500002");
      _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    is_killed = WIFSIGNALED(status);
    EXPECT_EQ(is_killed ? WTERMSIG(status) : WEXITSTATUS(status), is_killed ? SIGKILL : 0);
    EXPECT_EQ(Kept(), is_killed ? before : after) << "write " << kills + 1;
    if (is_killed) ++kills;
  }
  EXPECT_GT(kills, 10) << "the exchange is one of many writes";
}

TEST_F(DataFile, IsHeldByOneProgramAtATime) {
  const loyalty::Programme programme = Start();
  EXPECT_EQ(Complaint(), path + ": another program is using it");
}

TEST_F(DataFile, ThatIsNoneOfOursIsLeftAlone) {
  folder.Write("bench.db",
               "{\"cards\":[]}, much longer than the head of a file of the database would be, or so: "
               "a hundred bytes and more");
  EXPECT_EQ(Complaint(), path + ": file is not a database");
  std::filesystem::remove(path);
  Run("CREATE TABLE cards (number TEXT)");
  EXPECT_EQ(Complaint(), path + ": not a data file of loyalty_server");
  Run("INSERT INTO cards VALUES ('7')");
  path = folder.Path("missing/bench.db");
  EXPECT_EQ(Complaint(), path + ": unable to open database file");
}

TEST_F(DataFile, OfAnotherVersionIsRefused) {
  Start();
  Run("PRAGMA user_version = 99");
  EXPECT_EQ(Complaint(), path + ": made by another version of loyalty_server");
}

TEST_F(DataFile, ThatIsDamagedIsRefusedWithWhatIsWrong) {
  const std::pair<const char *, const char *> rows[] = {
      {"UPDATE cards SET state = 'lost' WHERE number = '100'", "a card of an unknown state"},
      {"UPDATE cards SET account = 99 WHERE number = '100'", "an account is missing"},
      {"UPDATE cards SET account = -1 WHERE number = '100'", "an account is missing"},
      {"UPDATE accounts SET type = 'SILVER' WHERE account = 0 AND type = 'LOCAL'",
       "an account of an unknown type"},
      {"DELETE FROM accounts WHERE account = 0", "an account is missing"},
      {"UPDATE payments SET state = 'lost'", "a payment of an unknown state"},
      {"DELETE FROM payments", "a position without its payment"},
      {"UPDATE last_ids SET request_id = '12345'", "a last request id that is none"},
      {"DROP TABLE last_ids", "no such table: last_ids"},
  };
  for (const auto &row : rows) {
    std::filesystem::remove(path);
    {
      loyalty::Programme programme = Start();
      EXPECT_EQ(Terminal(&programme).Code("payment", "100", Bill(true)), "OK");
    }
    Run(row.first);
    EXPECT_EQ(Complaint(), path + ": " + row.second);
  }
}

}  // namespace
