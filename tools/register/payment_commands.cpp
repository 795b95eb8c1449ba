#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <optional>

#include "amount.h"
#include "commands.h"
#include "operation.h"
#include "options.h"

namespace reg {
namespace {

void ShowBonuses(Library &library) {
  std::cout << "  earned " << ShowAmount(library.GetEarnBonusAmount()) << ", spent "
            << ShowAmount(library.GetSpendBonusAmount()) << ", discount "
            << ShowAmount(library.GetDiscountAmount()) << '\n';
}

}  // namespace

void AddPaymentCommands(CLI::App &app, Till &till) {
  {
    CLI::App *command = app.add_subcommand("bill", "Write a bill file with one position for a plain amount");
    auto amount = AddAmount(command, "amount", "The bill's total", true);
    auto path = std::make_shared<std::string>("BILL.JSN");
    command->add_option("file", *path, "File, relative to the library's folder")->capture_default_str();
    command->callback([=, &till] {
      Library &library = till.Started();
      till.Check(library.CreateAmountBill(*amount, path->c_str()));
      std::cout << "  written: " << *path << '\n';
    });
  }
  {
    CLI::App *command = app.add_subcommand("pay", "Pay a bill");
    auto card = AddCard(command);
    auto bill = std::make_shared<std::string>("BILL.JSN");
    command->add_option("bill", *bill, "Bill file, relative to the library's folder")->capture_default_str();
    auto spend = AddAmount(command, "--spend", "Bonuses the customer asks to spend", false);
    auto confirm = std::make_shared<bool>(false);
    command->add_flag("--confirm", *confirm, "Confirm in the same call");
    command->callback([=, &till] {
      Operate(
          till, *card,
          [&](Library &library) {
            return *confirm ? library.PaymentAndConfirmProc(*spend, bill->c_str())
                            : library.PaymentProc(*spend, bill->c_str());
          },
          ShowBonuses);
    });
  }
  for (const bool is_confirm : {true, false}) {
    CLI::App *command =
        app.add_subcommand(is_confirm ? "confirm" : "cancel",
                           is_confirm ? "Confirm an earlier payment" : "Cancel an earlier payment");
    auto card = AddCard(command);
    auto rrn = std::make_shared<std::string>();
    command->add_option("rrn", *rrn, "RRN of the payment")->required();
    command->callback([=, &till] {
      Operate(till, *card, [&](Library &library) {
        return is_confirm ? library.PaymentConfirmProc(rrn->c_str())
                          : library.PaymentCancelProc(rrn->c_str());
      });
    });
  }
  {
    CLI::App *command =
        app.add_subcommand("return", "Take goods back: all of a payment, or the positions of a list");
    auto card = AddCard(command);
    auto rrn = std::make_shared<std::string>();
    command->add_option("rrn", *rrn, "RRN of the payment")->required();
    auto list = std::make_shared<std::optional<std::string>>();
    command->add_option("--list", *list, "Return-list file, relative to the library's folder");
    command->callback([=, &till] {
      Operate(
          till, *card, [&](Library &library) { return library.CashBackProc(rrn->c_str(), OrNull(*list)); },
          [](Library &library) {
            std::cout << "  returned " << ShowAmount(library.GetCashBackResult()) << '\n';
          });
    });
  }
}

}  // namespace reg
