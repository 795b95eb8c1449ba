// faults/operations.h: every exported call that does something, as a register makes it.
#pragma once

#include <string>
#include <vector>

#include "faults/folder.h"

namespace faults {

// What a process tells of itself, in memory that its parent shares.
struct Report {
  static constexpr int kMostSales = 8;
  static constexpr int kMostCalls = 4096;
  int code;  // of the operation
  int calls;
  unsigned char abilities[kMostCalls];  // of each call, in a run that counts
  bool faultWasMet;
  char faultyCall[32];
  int saleCount;
  struct Sale {
    char bill[16];
    int code;
    bool offline;
    bool unkept;  // OFFLINE did not take the record, and for ever: a payment returns 0 all the same
  } sales[kMostSales];
};

struct Operation {
  std::string name;
  bool serverIsThere;
  Files moreFiles;       // beside those of every terminal, or in their place
  void (*prepare)();     // once the library is started; nothing fails yet
  int (*run)(Report *);  // what is tried; gives its code
  bool (*mayReturn)(int code);
  bool isAStart = false;  // it is LUMOInit that is tried
};

const std::vector<Operation> &Operations();

// The files of a terminal that has sold before and holds two payments that wait: the bills W1 and W2.
Files TerminalFiles(const std::string &server_address);

// A bill of two goods with this number.
std::string Bill(const std::string &number);

// A process that comes after: starts the library, sells bill N1 and sends what waits. 0, or where it failed.
int CarryOn();

}  // namespace faults
