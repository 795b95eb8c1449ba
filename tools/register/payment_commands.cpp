#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <optional>

#include "commands.h"
#include "operation.h"
#include "options.h"
#include "shop_files.h"
#include "terminal_settings.h"

namespace reg {
namespace {

constexpr char kBillFile[] = "BILL.JSN";

void AddBill(CLI::App &app, Till &till) {
  CLI::App *command = app.add_subcommand("bill", "Write a bill file with one position for a plain amount");
  auto amount = AddAmount(command, "amount", "The bill's total", true);
  auto path = std::make_shared<std::string>(kBillFile);
  command->add_option("file", *path, "File, relative to the library's folder")->capture_default_str();
  command->callback([=, &till] {
    till.RefuseKeptFile(*path);
    till.Check(till.Started().CreateAmountBill(*amount, path->c_str()));
    // The library does not tell when the disk was full.
    const auto file = std::filesystem::u8path(till.Folder().u8string() + "/" + *path);
    if (StopsLibrary(TryToRead(file).value_or(""))) {
      throw Failure(kNoFile, *path + " could not be written: do not pay it");
    }
    till.Show(Facts().Add("file", *path).Add("total", *amount),
              [&] { std::cout << "  written: " << *path << '\n'; });
  });
}

void AddPay(CLI::App &app, Till &till) {
  CLI::App *command = app.add_subcommand("pay", "Pay a bill; confirm or cancel it afterwards");
  auto card = AddCard(command);
  auto bill = std::make_shared<std::string>(kBillFile);
  command->add_option("bill", *bill, "Bill file, relative to the library's folder")->capture_default_str();
  auto spends = std::make_shared<bool>(false);
  command->add_flag("--spend", *spends, "The customer wishes to spend bonuses; how many, the server decides");
  auto confirms = std::make_shared<bool>(false);
  command->add_flag("--confirm", *confirms, "Confirm in the same call");
  command->callback([=, &till] {
    till.RefuseKeptFile(*bill);  // a paid bill is rewritten
    const auto call = [&](Library &library) {
      const int wish = *spends ? 1 : 0;
      return *confirms ? library.PaymentAndConfirmProc(wish, bill->c_str())
                       : library.PaymentProc(wish, bill->c_str());
    };
    const auto amounts = [](Library &library) {
      return Amounts{{"earned", library.GetEarnBonusAmount()},
                     {"spent", library.GetSpendBonusAmount()},
                     {"discount", library.GetDiscountAmount()}};
    };
    Operate(till, *card, {"pay", call, amounts});
  });
}

std::shared_ptr<std::string> AddRrn(CLI::App *command) {
  auto rrn = std::make_shared<std::string>();
  Needs(command->add_option("rrn", *rrn, "RRN of the payment"));
  return rrn;
}

}  // namespace

void AddPaymentCommands(CLI::App &app, Till &till) {
  AddBill(app, till);
  AddPay(app, till);

  CLI::App *confirm = app.add_subcommand("confirm", "Confirm an earlier payment");
  auto card = AddCard(confirm);
  auto rrn = AddRrn(confirm);
  // The library prints the lines of a cancellation here too; they are not for the customer.
  confirm->callback([=, &till] {
    const auto call = [&](Library &library) { return library.PaymentConfirmProc(rrn->c_str()); };
    Operate(till, *card, {"confirm", call, nullptr, false});
  });

  CLI::App *cancel = app.add_subcommand("cancel", "Cancel an earlier payment");
  card = AddCard(cancel);
  rrn = AddRrn(cancel);
  cancel->callback([=, &till] {
    Operate(till, *card,
            {"cancel", [&](Library &library) { return library.PaymentCancelProc(rrn->c_str()); }, nullptr});
  });

  CLI::App *command =
      app.add_subcommand("return", "Take goods back: all of a payment, or the positions of a list");
  card = AddCard(command);
  rrn = AddRrn(command);
  auto list = std::make_shared<std::optional<std::string>>();
  command->add_option("--list", *list, "Return-list file, relative to the library's folder");
  command->callback([=, &till] {
    const auto call = [&](Library &library) { return library.CashBackProc(rrn->c_str(), OrNull(*list)); };
    const auto amounts = [](Library &library) {
      return Amounts{{"returnedBonuses", library.GetCashBackResult()}};
    };
    Operate(till, *card, {"return", call, amounts});
  });
}

}  // namespace reg
