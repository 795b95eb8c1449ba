#include "records.h"

#include <cstdio>
#include <iostream>

#include "amount.h"
#include "till.h"

namespace reg {

void Sums::Add(const Record &record) {
  if (!record.readable) {
    ++unreadable;
    return;
  }
  const bool is_cancel = record.detail.rfind("cancels ", 0) == 0;
  Kind &kind = kinds[is_cancel ? "PAYMENT_CANCEL" : record.type];
  ++kind.count;
  kind.amount += record.amount;
  earned += record.earned;
  spent += record.spent;
  discount += record.discount;
}

Facts Sums::AsFacts() const {
  Facts by_type;
  for (const auto &[type, kind] : kinds) {
    by_type.Add(type.c_str(), Facts().Add("count", kind.count).Add("amount", kind.amount));
  }
  return Facts()
      .Add("types", by_type)
      .Add("unreadable", unreadable)
      .Add("earned", earned)
      .Add("spent", spent)
      .Add("discount", discount);
}

void Sums::Print() const {
  for (const auto &[type, kind] : kinds) {
    char line[128];
    std::snprintf(line, sizeof line, "  %-20.20s %6llu  %14s\n", type.c_str(),
                  static_cast<unsigned long long>(kind.count),
                  kind.amount == 0 ? "" : ShowAmount(kind.amount).c_str());
    std::cout << line;
  }
  if (unreadable != 0) std::cout << "  UNREADABLE " << unreadable << '\n';
  if (earned != 0 || spent != 0 || discount != 0) {
    std::cout << "  bonuses earned " << ShowAmount(earned) << ", spent " << ShowAmount(spent) << ", discount "
              << ShowAmount(discount) << '\n';
  }
}

Facts FactsOf(size_t number, const Record &record) {
  Facts facts;
  facts.Add("number", uint64_t{number}).Add("readable", record.readable);
  if (!record.readable) return facts;
  facts.Add("date", record.date)
      .Add("rrn", record.rrn)
      .Add("type", record.type)
      .Add("card", record.card)
      .Add("shift", record.shift)
      .Add("offline", record.offline)
      .Add("amount", record.amount)
      .Add("detail", record.detail);
  return facts;
}

std::string LineOf(size_t number, const Record &record) {
  const std::string begin = "  " + std::to_string(number) + "  ";
  if (!record.readable) return begin + "UNREADABLE";
  return begin + record.date + "  " + OrDash(record.rrn) + "  " + record.type + "  card " +
         OrDash(record.card) + (record.offline ? "  offline" : "") +
         (record.detail.empty() ? "" : "  " + record.detail);
}

}  // namespace reg
