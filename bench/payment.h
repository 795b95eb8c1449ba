// bench/payment.h: one online payment, made by the library file and by a register written by hand on
// well-kept libraries. Both send the same request, rewrite the bill, print the same slip, keep the same
// record and leave the same trace, line by line: `payment check` compares them.
#pragma once

#include <time.h>

#include <memory>
#include <string>
#include <vector>

namespace bench {

// The shop both work for.
constexpr char kTerminal[] = "12345";
constexpr char kRetailNetwork[] = "Сеть";
constexpr char kHeader[] = "Магазин";
constexpr char kFooter[] = "Спасибо";
constexpr char kFirstRrn[] = "1234512120500007";
constexpr char kCard[] = "9000000001";
constexpr char kCashier[] = "7";
constexpr char kBill[] = "BILL.JSN";
constexpr int kSpend = 2000;
constexpr int kLogSize = 1000;

class Till {
 public:
  virtual ~Till() = default;
  // Opens a transaction, pays the bill in the folder, takes the slip and closes the transaction. Returns the
  // slip; ends the program when the payment fails.
  virtual std::string Pay() = 0;
  // The newest record of the journal.
  virtual std::string LastRecord() = 0;
};

// How the register written by hand writes its trace. Each line opens the file, appends and closes it.
enum class TraceBy {
  kStdio,  // fopen, vfprintf, fclose
  kPosix,  // vsnprintf, open, write, close
};

// How its database goes to the disk.
enum class Journal {
  kUnhurried,  // a write-ahead log, and no waiting for the disk at a payment: as far as lumo goes
  kDefault,    // as the database comes: each transaction waits for the disk
};

// `folder` ends with "/"; the journal and the trace lie in it. The library file is copied there.
std::unique_ptr<Till> OpenLumo(const std::string &library, const std::string &folder, int port);
std::unique_ptr<Till> OpenByHand(const std::string &folder, int port, TraceBy trace_by, Journal journal);
// Its first payment is one by hand; every later one only leaves the lines of the first, by open, write,
// close. No register that leaves this trace can take less.
std::unique_ptr<Till> OpenTraceAlone(const std::string &folder, int port);

// A server in a process of its own. It answers every payment with a bill of `goods` goods, two bonuses each.
class PaymentServer {
 public:
  explicit PaymentServer(int goods);
  ~PaymentServer();
  PaymentServer(const PaymentServer &) = delete;
  PaymentServer &operator=(const PaymentServer &) = delete;

  int port() const { return port_; }

 private:
  int port_ = 0;
  int process_ = 0;
};

// A till at work in a folder of its own, WHERE/NAME: lumo is the library file, stdio and posix the register
// written by hand with that trace, waiting the same as stdio with its database as it comes, trace what no
// register can do without.
struct Stand {
  Stand(const std::string &name, const std::string &where, int goods, int port);

  void WriteBill() const;  // as the register's program does before it has the bill paid
  void ClearTrace() const;
  std::string Read(const char *file) const;

  std::string name;
  std::string folder;
  std::string bill;
  std::unique_ptr<Till> till;
};

// Microseconds.
double Now(clockid_t clock);

// What a payment takes while nothing else wants the processor: a quarter of them took less.
double FastestQuarter(std::vector<double> times);

// Ends the program with a message when something that must work does not.
[[noreturn]] void Fail(const char *what);
inline void Require(bool works, const char *what) {
  if (!works) Fail(what);
}

}  // namespace bench
