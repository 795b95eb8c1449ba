// bench/payment.h: one online payment, made by the library file and by a register written by hand on
// well-kept libraries. Both send the same request, rewrite the bill, print the same slip, keep the same
// record and leave the same trace, line by line: `payment check` compares them.
#pragma once

#include <memory>
#include <string>

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

// `folder` ends with "/"; the journal and the trace lie in it. The library file is copied there.
std::unique_ptr<Till> OpenLumo(const std::string &library, const std::string &folder, int port);
std::unique_ptr<Till> OpenByHand(const std::string &folder, int port, TraceBy trace_by);

// A server in a process of its own that answers every payment with a bill of `goods` goods and two bonuses
// each.
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
// written by hand with that trace.
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

// Ends the program with a message when something that must work does not.
void Require(bool works, const char *what);

}  // namespace bench
