// bindings/scopes.cpp: the scopes of lumo.hpp: what they close, and what they leave alone; scopes.txt has
// what this prints.
#include <iostream>

#include "lumo.hpp"

namespace {

void Show(const char *name, lumo::Result result) {
  std::cout << name << ": " << result.code() << "\n";
}

bool IsTransactionOpen() {
  return !lumo::getReceiptHeaderPtr().empty();
}

}  // namespace

int main() {
  Show("start", lumo::LUMOInit());
  {
    lumo::ShiftScope shift;
    Show("open", shift.Open("1"));
    lumo::TransactionScope sale;
    Show("create", sale.Create("1000000001", "7"));
    {
      lumo::TransactionScope other;
      Show("create another", other.Create("1000000002", "7"));
    }
    std::cout << "the sale goes on: " << IsTransactionOpen() << "\n";
    Show("close the shift too early", shift.Close());
    sale.Close();
    std::cout << "the sale is over: " << !IsTransactionOpen() << "\n";
    Show("next sale", sale.Create("1000000002", "7"));
  }
  std::cout << "the next sale is over: " << !IsTransactionOpen() << "\n";
  Show("the shift is closed: open", lumo::OpenShift("2"));
  {
    lumo::ShiftScope restarted;
    Show("open an open one", restarted.Open("3"));
  }
  Show("it is closed with the scope: open", lumo::OpenShift("4"));
  {
    lumo::ShiftScope kept;
    Show("open an open one", kept.Open("5"));
    kept.Keep();
  }
  Show("it is kept: open", lumo::OpenShift("6"));
  {
    lumo::ShiftScope never;
    lumo::TransactionScope nothing;
  }
  Show("still: open", lumo::OpenShift("7"));
  {
    lumo::ShiftScope shift;
    Show("open an open one", shift.Open("8"));
    Show("close", shift.Close());
    Show("close again", shift.Close());
  }
  std::cout << lumo::Result(0).message() << lumo::Result(ERR_SHIFT_NOT_OPEN).message() << "\n";
}
