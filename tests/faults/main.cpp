// faults/main.cpp: tries the library with every system call failing in turn, killed at every call, and with
// every byte of its files damaged, and looks at what is left each time.
//   faults [calls|kills|bytes] [STEP [OPERATION]]     all of it; one part; every STEP-th try; of one
//   operation
// The last line tells how many were tried and how many broke a promise; the exit status is 0 when none did.
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "faults/calls.h"
#include "faults/folder.h"
#include "faults/operations.h"
#include "faults/server.h"
#include "foundation/module_path.h"
#include "lumo.h"
#include "platform/platform.h"

namespace faults {
namespace {

constexpr unsigned kLongestRun = 30;  // seconds
constexpr int kMemoryStatus = 255;    // a process that ran out of memory ends with -1

struct Outcome {
  bool ended;  // by itself
  int status;  // its exit status, or the signal
};

class Sweep {
 public:
  Sweep(int step, const std::string &only) : step_(step), only_(only) {
    report_ = static_cast<Report *>(
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  }

  void Calls();
  void Kills();
  void Bytes();
  int Finish() const {
    std::printf("faults: %ld tried, %ld violations\n", tried_, violations_);
    return violations_ == 0 ? 0 : 1;
  }

 private:
  // A part of the tries only, evenly spread.
  bool IsChosen() { return counter_++ % step_ == 0; }
  void Fill(const Operation &operation);
  Outcome InAProcess(const std::function<int()> &run);
  // The operation in a process of its own, with what `arm` does before it.
  Outcome Run(const Operation &operation, const std::function<void()> &arm);
  void Fail(const std::string &what) {
    ++violations_;
    if (violations_ <= 40) std::printf("%s: %s\n", what_.c_str(), what.c_str());
  }
  void Check(const std::string &fault) {
    if (!fault.empty()) Fail(fault);
  }
  void CheckCode(const Operation &operation, const Outcome &outcome);
  void CarryOnAndCheck(const Operation &operation);
  void CheckPayment(const std::string &bill);
  void TryFault(const Operation &operation, int n, Way way, bool for_ever);
  void TryDamage(const std::string &name, const std::string &original, const std::string &damaged);

  int step_;
  std::string only_;  // the operation, when it is one alone
  long counter_ = 0;
  long tried_ = 0;
  long violations_ = 0;
  std::string what_;  // is tried now
  Report *report_;
  Folder folder_;
  Server server_;
};

void Sweep::Fill(const Operation &operation) {
  Files files = TerminalFiles(operation.serverIsThere ? server_.address() : DeadAddress());
  for (const auto &[name, bytes] : operation.moreFiles) {
    files[name] = bytes;
    if (bytes.empty()) files.erase(name);
  }
  folder_.Fill(files);
  server_.Reset();
  *report_ = {};
}

Outcome Sweep::InAProcess(const std::function<int()> &run) {
  std::fflush(stdout);
  std::unique_lock<std::mutex> rest = server_.AtRest();
  const pid_t child = fork();
  if (child == 0) {
    alarm(kLongestRun);
    std::u16string wide(folder_.path().begin(), folder_.path().end());
    lumo::SetModuleDirectory(wide.c_str());
    if (chdir(folder_.path().c_str()) != 0) _exit(1);
    _exit(run());
  }
  rest.unlock();
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status)) return {true, WEXITSTATUS(status)};
  return {false, WTERMSIG(status)};
}

Outcome Sweep::Run(const Operation &operation, const std::function<void()> &arm) {
  return InAProcess([&] {
    if (!operation.isAStart && LUMOInit() != 0) return 1;
    operation.prepare();
    arm();
    report_->code = operation.run(report_);
    StopCounting();
    report_->calls = CallsCounted();
    report_->faultWasMet = FaultWasMet();
    std::strncpy(report_->faultyCall, FaultyCall().c_str(), sizeof report_->faultyCall - 1);
    return 0;
  });
}

void Sweep::CheckCode(const Operation &operation, const Outcome &outcome) {
  if (!outcome.ended) {
    Fail("the process ended with signal " + std::to_string(outcome.status));
  } else if (outcome.status != 0) {
    Fail("the process ended with status " + std::to_string(outcome.status));
  } else if (!operation.mayReturn(report_->code)) {
    Fail("code " + std::to_string(report_->code));
  }
}

// Known to the server once, or waiting still.
void Sweep::CheckPayment(const std::string &bill) {
  const int taken = server_.Taken(bill);
  const int waiting = CountBill(folder_, "OFFLINE", bill) + CountBill(folder_, "OFFLINE_TMP", bill);
  if (taken > 1) Fail("bill " + bill + " was taken " + std::to_string(taken) + " times");
  if (taken == 0 && waiting == 0) Fail("bill " + bill + " is lost");
  if (waiting > 1) Fail("bill " + bill + " waits " + std::to_string(waiting) + " times");
}

// The next process sells and replays with nothing in its way; then everything must be where it belongs.
void Sweep::CarryOnAndCheck(const Operation &operation) {
  Files files = TerminalFiles(server_.address());
  const std::string config = files["CONFIG"];
  std::FILE *file = std::fopen((folder_.path() + "CONFIG").c_str(), "wb");
  std::fwrite(config.data(), 1, config.size(), file);
  std::fclose(file);
  const Outcome outcome = InAProcess(CarryOn);
  if (!outcome.ended || outcome.status != 0) {
    Fail("the next process stops at step " + std::to_string(outcome.status));
    return;
  }
  Check(FaultOfState(folder_));
  Check(FaultOfJournal(folder_, "LOG", false));
  // What a killed process left behind its last line feed goes with the next record.
  Check(FaultOfJournal(folder_, "OFFLINE", true));
  CheckPayment("N1");
  for (const char *bill : {"W1", "W2"}) {
    if (operation.moreFiles.count("OFFLINE") == 0) CheckPayment(bill);
  }
  const auto set_aside = operation.moreFiles.find("OFFLINE_TMP");
  if (set_aside != operation.moreFiles.end() && set_aside->second.find("\"W3\"") != std::string::npos) {
    CheckPayment("W3");
  }
  for (int i = 0; i < report_->saleCount; ++i) {
    const Report::Sale &sale = report_->sales[i];
    if (sale.code == 0 && sale.offline && !sale.unkept) CheckPayment(sale.bill);
  }
  // A trim takes three.
  for (const char *name : {"LOG", "LOG.old"}) {
    const auto own = operation.moreFiles.find(name);
    const std::string before = own != operation.moreFiles.end() ? own->second : files[name];
    const std::vector<std::string> lines = LinesOf(before);
    const std::vector<std::string> now = LinesOf(folder_.Read("LOG"));
    for (size_t i = lines.size() > 5 ? 3 : 0; i < lines.size(); ++i) {
      const auto count = std::count(now.begin(), now.end(), lines[i]);
      if (count != 1) Fail("LOG has " + std::to_string(count) + " times " + lines[i]);
    }
  }
  for (const char *name : {"LOG.old", "LOG.new", "STATE.new", "OFFLINE_TMP"}) {
    if (folder_.Exists(name)) Fail(std::string("left: ") + name);
  }
}

void Sweep::TryFault(const Operation &operation, int n, Way way, bool for_ever) {
  ++tried_;
  what_ =
      operation.name + ", call " + std::to_string(n) + " " + NameOf(way) + (for_ever ? " for ever" : " once");
  Fill(operation);
  const Outcome outcome = Run(operation, [&] { FailCall(n, way, for_ever); });
  if (report_->faultyCall[0] != '\0') what_ += std::string(" (") + report_->faultyCall + ")";
  const bool memory = outcome.ended && outcome.status == kMemoryStatus;
  if (!memory) CheckCode(operation, outcome);
  if (outcome.ended && outcome.status == 0 && !report_->faultWasMet) Fail("nothing failed");
  Check(FaultOfState(folder_));
  // An open tail belongs to no record; the next append cuts it off.
  Check(FaultOfJournal(folder_, "LOG", true));
  Check(FaultOfJournal(folder_, "OFFLINE", true));
  CarryOnAndCheck(operation);
}

void Sweep::Calls() {
  for (const Operation &operation : Operations()) {
    if (!only_.empty() && only_ != operation.name) continue;
    what_ = operation.name + ", nothing fails";
    ++tried_;
    Fill(operation);
    CheckCode(operation, Run(operation, [&] { StartCounting(report_->abilities, Report::kMostCalls); }));
    const int calls = report_->calls;
    if (calls > Report::kMostCalls) Fail("more calls than there is room to note");
    const std::vector<unsigned char> abilities(report_->abilities,
                                               report_->abilities + std::min(calls, Report::kMostCalls));
    CarryOnAndCheck(operation);
    what_ = operation.name + ", the trace is lost";
    ++tried_;
    Fill(operation);
    CheckCode(operation, Run(operation, LoseTrace));
    CarryOnAndCheck(operation);
    for (size_t n = 1; n <= abilities.size(); ++n) {
      for (const Way way : kWays) {
        for (const bool for_ever : {false, true}) {
          if (!CanFail(abilities[n - 1], way) || !IsChosen()) continue;
          TryFault(operation, static_cast<int>(n), way, for_ever);
        }
      }
    }
    std::printf("  %s: %d calls\n", operation.name.c_str(), calls);
  }
}

void Sweep::Kills() {
  for (const Operation &operation : Operations()) {
    if (!only_.empty() && only_ != operation.name) continue;
    bool ended = false;
    for (int n = 1; !ended; ++n) {
      for (const End end : kEnds) {
        if (!IsChosen()) continue;
        what_ = operation.name + ", killed " + NameOf(end) + " call " + std::to_string(n);
        Fill(operation);
        const Outcome outcome = Run(operation, [&] { EndAtCall(n, end); });
        if (outcome.ended && outcome.status == 0) {
          // Either there are fewer calls, or this one cannot end halfway.
          ended = ended || (n > report_->calls);
          continue;
        }
        ++tried_;
        if (outcome.ended || outcome.status != SIGKILL) {
          Fail("ended otherwise: " + std::to_string(outcome.status));
          continue;
        }
        CarryOnAndCheck(operation);
      }
    }
  }
}

// What a damaged file may do: stop the start with a code, or be passed over. Never end the process, and never
// harm a record that is not damaged.
void Sweep::TryDamage(const std::string &name, const std::string &original, const std::string &damaged) {
  ++tried_;
  Files files = TerminalFiles(server_.address());
  files[name] = damaged;
  folder_.Fill(files);
  server_.Reset();
  *report_ = {};
  const Outcome outcome = InAProcess([&] {
    report_->code = LUMOInit();
    if (report_->code != 0) return report_->code == -108 || report_->code == -111 ? 0 : 1;
    CreateTransaction("9000000001", "7");
    PaymentAndConfirmProc(0, "B1.JSN");
    CashBackProc(getRRN(), "R1.JSN");
    CloseTransaction();
    if (SendOfflinePayments() < 0) return 2;
    if (GenerateSummaryReport("1", "3") < 0) return 3;
    return 0;
  });
  if (!outcome.ended || outcome.status != 0) {
    Fail("the process ended with " + std::to_string(outcome.status));
    return;
  }
  if (report_->code == 0) Check(FaultOfState(folder_));
  if (report_->code != 0 && name != "STATE" && name != "CONFIG") Fail("the start fails");
  // A record whose own bytes are whole is not lost.
  if (name == "OFFLINE" && report_->code == 0) {
    const std::vector<std::string> before = LinesOf(original), now = LinesOf(damaged);
    for (size_t i = 0; i < before.size(); ++i) {
      if (std::count(now.begin(), now.end(), before[i]) == 1) CheckPayment("W" + std::to_string(i + 1));
    }
  }
  if (name != "OFFLINE" && report_->code == 0 && name != "CONFIG") {
    CheckPayment("W1");
    CheckPayment("W2");
  }
}

void Sweep::Bytes() {
  for (const char *name : {"STATE", "CONFIG", "OFFLINE", "LOG", "B1.JSN", "R1.JSN"}) {
    const std::string original = TerminalFiles(server_.address())[name];
    for (size_t at = 0; at < original.size(); ++at) {
      std::set<std::string> damaged = {original.substr(0, at),
                                       original.substr(0, at) + original.substr(at + 1)};
      for (const char byte : {'\n', '"', '{', '}', 'x', '9', '\0', '\xFF'}) {
        std::string changed = original;
        changed[at] = byte;
        damaged.insert(changed);
      }
      for (const std::string &text : damaged) {
        if (text == original || !IsChosen()) continue;
        what_ =
            std::string(name) + ", damaged at byte " + std::to_string(at) + ": " + text.substr(0, at + 20);
        TryDamage(name, original, text);
      }
    }
  }
}

}  // namespace
}  // namespace faults

int main(int count, char **words) {
  const std::string part = count > 1 ? words[1] : "all";
  const int step = count > 2 ? std::max(1, std::atoi(words[2])) : 1;
  if (part != "all" && part != "calls" && part != "kills" && part != "bytes") {
    std::fprintf(stderr, "usage: faults [calls|kills|bytes] [STEP [OPERATION]]\n");
    return 2;
  }
  faults::Sweep sweep(step, count > 3 ? words[3] : "");
  if (part == "all" || part == "calls") sweep.Calls();
  if (part == "all" || part == "kills") sweep.Kills();
  if (part == "all" || part == "bytes") sweep.Bytes();
  return sweep.Finish();
}
