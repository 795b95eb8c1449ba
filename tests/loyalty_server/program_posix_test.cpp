// loyalty_server/program_posix_test.cpp: the program itself: what it prints, how it ends, and what it finds
// again when it is started anew.
#include <gmock/gmock.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>

#include "loyalty_server/bench.h"
#include "loyalty_server/client.h"
#include "loyalty_server/command_line.h"
#include "loyalty_server/folder.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Outcome {
  std::string output;
  int status = -1;
};

// Runs the program with the commands on its standard input, both its outputs in one.
Outcome Start(const std::string &arguments, const std::string &commands,
              const std::string &program = LOYALTY_SERVER_PROGRAM) {
  const std::string line = "printf '" + commands + "' | " + program + " " + arguments + " 2>&1";
  Outcome run;
  FILE *pipe = popen(line.c_str(), "r");
  if (pipe == nullptr) return run;
  char buffer[4096];
  for (size_t count; (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    run.output.append(buffer, count);
  }
  run.status = WEXITSTATUS(pclose(pipe));
  return run;
}

// The program while it runs. Its standard input stays open.
class Running {
 public:
  // `before` is put before the program in a shell's line.
  explicit Running(const std::string &arguments, const std::string &before = "") {
    int in[2];
    int out[2];
    if (pipe(in) != 0 || pipe(out) != 0) throw std::runtime_error("no pipe");
    const std::string line = before + "exec " + LOYALTY_SERVER_PROGRAM + " --quiet " + arguments;
    child_ = fork();
    if (child_ == 0) {
      dup2(in[0], STDIN_FILENO);
      dup2(out[1], STDOUT_FILENO);
      for (const int end : {in[0], in[1], out[0], out[1]}) close(end);
      execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
      _exit(127);
    }
    close(in[0]);
    close(out[1]);
    in_ = in[1];
    out_ = fdopen(out[0], "r");
    const std::string place = Line();
    port_ = static_cast<uint16_t>(std::stoi(place.substr(place.rfind(':') + 1)));
  }
  ~Running() {
    if (child_ > 0) End(SIGKILL);
    std::fclose(out_);
    close(in_);
  }
  Running(const Running &) = delete;
  Running &operator=(const Running &) = delete;

  uint16_t port() const { return port_; }
  std::string Line() {
    char line[4096];
    return fgets(line, sizeof line, out_) == nullptr ? std::string() : line;
  }
  std::string Command(const std::string &command) {
    const std::string line = command + "\n";
    EXPECT_EQ(write(in_, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    return Line();
  }
  void Signal(int signal) const { kill(child_, signal); }
  // Gives the exit status, or the number of the signal that ended it below 0.
  int Wait() {
    int status = 0;
    waitpid(child_, &status, 0);
    child_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  int End(int signal) {
    Signal(signal);
    return Wait();
  }

 private:
  pid_t child_ = 0;
  int in_ = -1;
  FILE *out_ = nullptr;
  uint16_t port_ = 0;
};

TEST(Program, SaysWhereItListensAndDoesItsCommands) {
  const Outcome run = Start("--fault 'cut 5'", "fault\\ncard 1000000006\\nquit\\n");
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.output,
              testing::MatchesRegex(
                  "listening on 127\\.0\\.0\\.1:[0-9]+\nfault cut 5\n"
                  "1000000006  locked  account 6  GLOBAL 100\\.00  LOCAL 0\\.00  DISCOUNT 0\\.00\n"));
}

TEST(Program, ComplainsAboutWhatItCannotUse) {
  Running other("--page 0");
  const std::string address = "127.0.0.1:" + std::to_string(other.port());
  const std::string page = other.Line();
  const std::string page_address = page.substr(page.find("127"), page.rfind('/') - page.find("127"));
  const std::string page_port = page_address.substr(page_address.find(':') + 1);
  const bench::Folder folder;
  const std::string text = folder.Write("text", std::string(5000, 'x'));
  struct Row {
    std::string arguments;
    int status;
    std::string complaint;
  };
  const Row rows[] = {
      {"--fault explode", 2, "loyalty_server: no such fault: explode"},
      {"--faults " + folder.Write("faults", "off\nexplode\n"), 2, "faults: line 2: no such fault: explode"},
      {"--shop missing.json", 2, "loyalty_server: missing.json cannot be read"},
      {"--shop " + text, 2, text + ": not a JSON document"},
      {"--global 101", 2, "--global"},
      {"--teapot", 2, "--teapot"},
      {"--max-request -1", 2, "--max-request"},
      {"--max-request 0", 2, "--max-request"},
      {"--shop .", 2, "loyalty_server: . cannot be read"},
      {"--log no/such/folder/log", 2, "no/such/folder/log cannot be written"},
      {"--address nowhere", 3, "loyalty_server: cannot listen on nowhere:0: "},
      {"--port " + std::to_string(other.port()), 3,
       "loyalty_server: cannot listen on " + address + ": Address already in use"},
      {"--page " + page_port, 3,
       "loyalty_server: cannot listen on " + page_address + ": Address already in use"},
      {"--data " + text, 4, "loyalty_server: " + text + ": file is not a database"},
      {"--data no/such/folder/data", 4, "loyalty_server: no/such/folder/data: unable to open database file"},
  };
  for (const Row &row : rows) {
    const Outcome run = Start(row.arguments, "quit\\n");
    EXPECT_EQ(run.status, row.status) << row.arguments;
    EXPECT_THAT(run.output, HasSubstr(row.complaint)) << row.arguments;
    EXPECT_THAT(run.output, testing::Not(HasSubstr("listening"))) << row.arguments;
  }
}

// A script's variable that was never set: the page would be open to all, the data would be kept nowhere.
TEST(Program, TakesNoEmptyValue) {
  for (const char *option :
       {"--address", "--port", "--shop", "--global", "--terminal", "--protocol", "--update", "--fault",
        "--faults", "--data", "--page", "--page 0 --page-address", "--idle", "--max-request", "--log"}) {
    const Outcome run = Start(std::string(option) + " ''", "quit\\n");
    EXPECT_EQ(run.status, 2) << option;
    EXPECT_THAT(run.output, HasSubstr(std::string(option).substr(std::string(option).rfind("--")) + ": "));
    EXPECT_THAT(run.output, testing::Not(HasSubstr("listening"))) << option;
  }
}

TEST(Program, EndsInOrderWhenItIsInterrupted) {
  for (const int signal : {SIGINT, SIGTERM}) {
    Running server("--page 0");
    server.Line();
    bench::Client waiting(server.port());
    EXPECT_EQ(server.Command("fault"), "fault off\n");
    EXPECT_EQ(server.End(signal), 0);
  }
}

TEST(Program, ReadsItsShopFromAFile) {
  const bench::Folder folder;
  const std::string shop =
      folder.Write("shop.json", R"({"cards":[{"number":"7","state":"active","local":5}]})");
  EXPECT_THAT(Start("--shop " + shop, "cards\\nquit\\n").output,
              HasSubstr("7  active  account 1  GLOBAL 0.00  LOCAL 0.05  DISCOUNT 0.00\n"));
  folder.Write("shop.json", R"({"card":[]})");
  const Outcome run = Start("--shop " + shop, "quit\\n");
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.output, HasSubstr(shop + ": card: no such setting"));
}

TEST(Program, WarnsWhenReplaysAreAnsweredWithTheirOwnIds) {
  const char *warning = "warning: a replayed record is answered with its own id";
  EXPECT_THAT(Start("--no-resume-ids", "quit\\n").output, HasSubstr(warning));
  EXPECT_THAT(Start("", "quit\\n").output, testing::Not(HasSubstr("warning")));
}

TEST(Program, TellsEverythingInItsHelp) {
  const Outcome run = Start("--help", "");
  EXPECT_EQ(run.status, 0);
  for (const char *word : {"--port", "--shop", "--fault", "--quiet", "--data", "--page", "1000000001",
                           "TOKEN7", "cut [BYTES]", "Exit status"}) {
    EXPECT_THAT(run.output, HasSubstr(word));
  }
}

TEST(Program, HasADocumentOfEveryOptionCommandAndFault) {
  std::ifstream file(LOYALTY_SERVER_DOCUMENT);
  const std::string document{std::istreambuf_iterator<char>(file), {}};
  std::istringstream help(Start("--help", "").output);
  int options = 0;
  for (std::string word; help >> word;) {
    if (word.rfind("--", 0) != 0 || word == "--help" || word.find(',') != std::string::npos) continue;
    const std::string option = word.substr(0, word.find_first_of("=;\""));
    EXPECT_NE(document.find("`" + option), std::string::npos) << option;
    ++options;
  }
  EXPECT_GT(options, 20);
  const auto has_row = [&document](const std::string &name) {
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
      const bool is_named = line.find("`" + name + " ") != std::string::npos ||
                            line.find("`" + name + "`") != std::string::npos;
      if (line[0] == '|' && is_named) return true;
    }
    return false;
  };
  for (const loyalty::FaultForm &form : loyalty::FaultForms()) {
    EXPECT_TRUE(form.kind == loyalty::FaultKind::kOff || has_row(form.word)) << form.word;
  }
  std::istringstream commands(loyalty::ConsoleHelp());
  for (std::string line; std::getline(commands, line) && !line.empty();) {
    EXPECT_TRUE(has_row(line.substr(0, line.find(' ')))) << line;
  }
}

TEST(Program, ShowsItsPageWhereItSays) {
  Running server("--page 0");
  const std::string line = server.Line();
  EXPECT_THAT(line, testing::MatchesRegex("page at http://127\\.0\\.0\\.1:[0-9]+/\n"));
  const std::string host = line.substr(line.find("127"), line.rfind('/') - line.find("127"));
  bench::Client client(static_cast<uint16_t>(std::stoi(host.substr(host.find(':') + 1))));
  client.Send("GET /api/state HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
  EXPECT_THAT(client.ReceiveAll(),
              HasSubstr("\"address\":\"127.0.0.1:" + std::to_string(server.port()) + "\""));
}

TEST(Program, NeedsTheModuleOfThePageForThePageAlone) {
  const bench::Folder folder;
  const std::string alone = folder.Path("loyalty_server");
  std::filesystem::copy_file(LOYALTY_SERVER_PROGRAM, alone);
  const Outcome without = Start("", "quit\\n", alone);
  EXPECT_EQ(without.status, 0);
  EXPECT_THAT(without.output, StartsWith("listening on "));
  const Outcome with = Start("--page 0", "quit\\n", alone);
  EXPECT_EQ(with.status, 2);
  EXPECT_THAT(with.output, StartsWith("loyalty_server: no page can be shown: "));
  EXPECT_THAT(with.output, HasSubstr("loyalty_server_page.so"));
}

// ---- The file of --data ----

class KeptData : public testing::Test {
 protected:
  std::string Arguments() const { return "--data " + folder.Path("bench.db"); }

  // One payment of 100.00 that spends nothing and is confirmed at once: it earns 2.00 GLOBAL and 3.00 LOCAL.
  std::string Pay(uint16_t port, int number) {
    bench::Head head;
    head.cardNum = bench::Quoted("1000000002");
    head.requestId = bench::Quoted(Id(number));
    const std::string goods =
        R"({"good":[{"title":"a","productCode":"b","positionCost":10000,"orderNum":1,"cnt":1}]})";
    return bench::Exchange(port, "paymentAndConfirm",
                           bench::Document(*loyalty::FindOperation("paymentAndConfirm"), head,
                                           bench::Bill(false, goods, 10000, 1)));
  }
  static std::string Id(int number) { return "12345121205" + std::to_string(10000 + number); }

  // What the server knows of so many payments.
  static std::string Card(int payments) {
    return "1000000002  active  account 2  GLOBAL " + std::to_string(2 * payments) + ".00  LOCAL " +
           std::to_string(3 * payments) + ".00  DISCOUNT 0.00\n";
  }

  bench::Folder folder;
};

TEST_F(KeptData, OutlivesTheProgram) {
  {
    Running server(Arguments());
    EXPECT_THAT(Pay(server.port(), 1), HasSubstr("\"responseId\":\"1\""));
    EXPECT_EQ(server.Command("terminal 54321 lock"), "terminal 54321 is locked\n");
    EXPECT_EQ(server.Command("card 1000000003 locked"),
              "1000000003  locked  account 3  GLOBAL 0.00  LOCAL 0.00  DISCOUNT 0.00\n");
    EXPECT_EQ(server.End(SIGTERM), 0);
  }
  Running server(Arguments());
  EXPECT_EQ(server.Command("card 1000000002"), Card(1));
  EXPECT_EQ(server.Command("payments"), "1234512120510001  card 1000000002  sum 100.00  confirmed\n");
  EXPECT_EQ(server.Command("last 12345"), "1234512120510001\n");
  EXPECT_EQ(server.Command("card 1000000003"),
            "1000000003  locked  account 3  GLOBAL 0.00  LOCAL 0.00  DISCOUNT 0.00\n");
  EXPECT_THAT(Pay(server.port(), 1), HasSubstr("DUPLICATE_REQUEST_ID"));
  EXPECT_THAT(Pay(server.port(), 2), HasSubstr("\"responseId\":\"3\""));
  EXPECT_THAT(Start(Arguments(), "quit\\n").output, HasSubstr("bench.db: another program is using it"));
}

TEST_F(KeptData, IsGoneWithTheProgramWhereThereIsNoFile) {
  { Pay(Running("").port(), 1); }
  Running server("");
  EXPECT_EQ(server.Command("card 1000000002"), Card(0));
}

// Killed again and again while a register pays without a pause, each time a little later after the second
// answer: whatever was answered is there, the payment that was under way is there or not, and the bonuses are
// those of the payments.
TEST_F(KeptData, HasEveryAnsweredPaymentAfterAKill) {
  int answered = 0;
  for (int round = 0; round < 10; ++round) {
    Running server(Arguments());
    const std::string last = server.Command("last 12345");
    ASSERT_TRUE(last == Id(answered) + "\n" || last == Id(answered + 1) + "\n" ||
                (answered == 0 && last == "none\n"))
        << last << answered;
    if (last == Id(answered + 1) + "\n") ++answered;
    ASSERT_EQ(server.Command("card 1000000002"), Card(answered));

    std::thread killer;
    try {
      for (int paid = 0; Pay(server.port(), answered + 1).find("SUCCESS") != std::string::npos;) {
        ++answered;
        if (++paid != 2) continue;
        killer = std::thread([&server, round] {
          std::this_thread::sleep_for(std::chrono::microseconds(1700 * round));
          server.Signal(SIGKILL);
        });
      }
    } catch (const std::system_error &) {  // it is gone
    }
    ASSERT_TRUE(killer.joinable());
    killer.join();
    ASSERT_EQ(server.Wait(), -SIGKILL);
  }
  EXPECT_GE(answered, 20);
}

TEST_F(KeptData, DoesNotAcceptWhatAFullDiskCannotKeep) {
  int answered = 0;
  {
    Running server(Arguments(), "trap '' XFSZ; ulimit -f 2000; ");
    std::string answer;
    while (answered < 10000 &&
           (answer = Pay(server.port(), answered + 1)).find("SUCCESS") != std::string::npos) {
      ++answered;
    }
    EXPECT_THAT(answer, HasSubstr("\"requestState\":\"ERROR\",\"requestStateCode\":\"INTERNAL_ERROR\""));
    EXPECT_GT(answered, 5);
    EXPECT_EQ(server.Command("card 1000000002"), Card(answered));
  }
  Running server(Arguments());
  EXPECT_EQ(server.Command("card 1000000002"), Card(answered));
  EXPECT_THAT(Pay(server.port(), answered + 1), HasSubstr("SUCCESS"));
}

}  // namespace
