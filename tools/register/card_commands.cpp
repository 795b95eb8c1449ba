#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <optional>

#include "amount.h"
#include "commands.h"
#include "operation.h"
#include "options.h"

namespace reg {

void AddCardCommands(CLI::App &app, Till &till) {
  {
    CLI::App *command = app.add_subcommand("activate", "Activate a card: simple, gift or friend");
    auto card = AddCard(command);
    auto type = std::make_shared<std::string>("simple");
    command->add_option("type", *type, "simple, gift or friend")
        ->check(CLI::IsMember({"simple", "gift", "friend"}))
        ->capture_default_str();
    auto amount = AddAmount(command, "--amount", "Sum of the activation", false);
    auto account = std::make_shared<std::string>("GLOBAL");
    command->add_option("--account", *account, "GLOBAL, LOCAL or DISCOUNT (gift cards)")
        ->capture_default_str();
    auto referrer = std::make_shared<std::optional<std::string>>();
    command->add_option("--referrer", *referrer, "Card of the friend who brought the customer");
    auto bill = std::make_shared<std::optional<std::string>>();
    command->add_option("--bill", *bill, "Bill file, relative to the library's folder");
    command->callback([=, &till] {
      const char *name = *type == "gift"     ? "GIFT_CARD"
                         : *type == "friend" ? "REFER_A_FRIEND"
                                             : "SIMPLE_ACTIVATION";
      Operate(
          till, *card,
          [&](Library &library) {
            return library.ActivationProc(name, OrNull(*bill), *amount, account->c_str(), OrNull(*referrer));
          },
          [](Library &library) {
            std::cout << "  credited " << ShowAmount(library.GetActivationAmount()) << '\n';
          });
    });
  }
  {
    CLI::App *command = app.add_subcommand("balance", "Ask for a card's balance");
    auto card = AddCard(command);
    command->callback([=, &till] {
      Operate(
          till, *card, [](Library &library) { return library.BalanceProc(); },
          [](Library &library) { std::cout << "  balance " << ShowAmount(library.GetBalance()) << '\n'; });
    });
  }
  {
    CLI::App *command = app.add_subcommand("deposit", "Put an amount on a card");
    auto card = AddCard(command);
    auto amount = AddAmount(command, "amount", "How much", true);
    command->callback(
        [=, &till] { Operate(till, *card, [&](Library &library) { return library.DepositProc(*amount); }); });
  }
  {
    CLI::App *command = app.add_subcommand("exchange", "Move a card's accounts to the card of a token");
    auto card = AddCard(command);
    auto token = std::make_shared<std::string>();
    command->add_option("token", *token, "The token")->required();
    command->callback([=, &till] {
      Operate(till, *card, [&](Library &library) { return library.ExchangeProc(token->c_str()); });
    });
  }
  {
    CLI::App *command = app.add_subcommand("link", "Link a card to another card's account");
    auto card = AddCard(command);
    auto linked = std::make_shared<std::string>();
    command->add_option("linked", *linked, "Card number to link")->required();
    command->callback([=, &till] {
      Operate(till, *card, [&](Library &library) { return library.LinkCardProc(linked->c_str()); });
    });
  }
}

}  // namespace reg
